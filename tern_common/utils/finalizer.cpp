#include "tern_common/utils/finalizer.hpp"

Finalizer::Finalizer() noexcept = default;

Finalizer::Finalizer(bool onDestruction) noexcept : m_finalizeOnDestruction(onDestruction) {}

Finalizer::Finalizer(Finalizer&& other) noexcept
    : m_actions(std::exchange(other.m_actions, {})), m_finalizeOnDestruction(other.m_finalizeOnDestruction)
{
}

Finalizer& Finalizer::operator=(Finalizer&& other) noexcept
{
    if (this != &other)
    {
        discard();
        m_actions = std::exchange(other.m_actions, {});
    }
    m_finalizeOnDestruction = other.m_finalizeOnDestruction;
    return *this;
}

Finalizer::~Finalizer()
{
    if (m_finalizeOnDestruction)
    {
        finalize();
    }
    discard();
}

void Finalizer::finalize() noexcept
{
    // Either releases or removes the last action, whichever that is after the function before: it may have
    // added some, or finalized by itself.
    while (!m_actions.empty())
    {
        if (m_actions.back().isReleased())
        {
            m_actions.pop_back();
        }
        else
        {
            m_actions.back().release();
        }
    }
}

void Finalizer::discard() noexcept
{
    // One by one, since the order is promised: standard libraries differ in how a vector destroys its
    // elements.
    while (!m_actions.empty())
    {
        for (Action& action : std::exchange(m_actions, {}))
        {
            action.release();
        }
    }
}
