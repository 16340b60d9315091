#include "tern_common/utils/finalizer.hpp"

Finalizer::Finalizer() noexcept = default;

Finalizer::Finalizer(bool onDestruction) noexcept : finalizeOnDestruction(onDestruction) {}

Finalizer::Finalizer(Finalizer&& other) noexcept
    : actions(std::exchange(other.actions, {})), finalizeOnDestruction(other.finalizeOnDestruction)
{
}

Finalizer& Finalizer::operator=(Finalizer&& other) noexcept
{
    if (this != &other)
    {
        discard();
        actions = std::exchange(other.actions, {});
    }
    finalizeOnDestruction = other.finalizeOnDestruction;
    return *this;
}

Finalizer::~Finalizer()
{
    if (finalizeOnDestruction)
    {
        finalize();
    }
    discard();
}

void Finalizer::finalize() noexcept
{
    // Either releases or removes the last action, whichever that is after the function before: it may have
    // added some, or finalized by itself.
    while (!actions.empty())
    {
        if (actions.back().isReleased())
        {
            actions.pop_back();
        }
        else
        {
            actions.back().release();
        }
    }
}

void Finalizer::discard() noexcept
{
    // One by one, since the order is promised: standard libraries differ in how a vector destroys its
    // elements.
    while (!actions.empty())
    {
        for (Action& action : std::exchange(actions, {}))
        {
            action.release();
        }
    }
}
