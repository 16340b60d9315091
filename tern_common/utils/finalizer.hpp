#pragma once

#include "tern_common/export.hpp"

#include <concepts>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

/// Clean-up actions for the end of a scope, or for a moment of the owner's choice. Each action runs exactly
/// once, wherever the list of them has been moved to by then. For one owner and one thread.
///
/// Actions must not throw: what leaves one ends the process. A running action may add actions, finalize
/// again, or move from this object, but not destroy it:
/// - what it adds runs before the operation that runs it returns: next under finalize(), which takes the last
///   one first, and behind all others where a list is discarded;
/// - finalize() called from within an action runs what is pending and leaves out every action that has been
///   started, the caller included. From within the actions of a list that is being discarded it finds only
///   what has been added since.
class TERN_COMMON_API Finalizer
{
public:
    using ReleaseFunction = void (*)(void* pointer);

    /// Finalizes on destruction.
    Finalizer() noexcept;
    /// With @p onDestruction the destructor runs what is pending last added first, else first added
    /// first. It runs either way.
    explicit Finalizer(bool onDestruction) noexcept;
    /// Takes the actions; the source is empty afterwards and keeps its way of destruction.
    Finalizer(Finalizer&& other) noexcept;
    /// Runs this object's own actions, first added first, before it takes those of @p other together with its
    /// way of destruction.
    Finalizer& operator=(Finalizer&& other) noexcept;
    ~Finalizer();

    /// Adds a call of @p release with @p pointer; a null pointer is never released. When there is no memory
    /// for the action, the pointer is released at once and std::bad_alloc thrown.
    void add(void* pointer, ReleaseFunction release) { append(release, pointer); }

    /// Adds a call of @p callable. When there is no memory for the action, it is called at once and
    /// std::bad_alloc thrown: what it cleans up is not left behind.
    template <class Callable>
        requires std::invocable<Callable&>
    void add(Callable callable) { append(&runAndDelete<Callable>, store(callable)); }

    /// Runs and removes all pending actions, last added first.
    void finalize() noexcept;

    /// True when no action is pending. An action that finalize() runs is pending until it has returned.
    bool empty() const noexcept { return m_actions.empty(); }

private:
    /// Owns what a pointer stands for: two words, the function first.
    class Action
    {
    public:
        Action(ReleaseFunction function, void* pointer) noexcept : m_function(function), m_pointer(pointer) {}
        Action(Action&& other) noexcept
            : m_function(other.m_function), m_pointer(std::exchange(other.m_pointer, nullptr))
        {
        }
        Action& operator=(Action&& other) = delete;
        ~Action() { release(); }

        bool isReleased() const noexcept { return m_pointer == nullptr; }

        /// Nothing of this object is touched once the function runs: it may move or destroy the list that
        /// this object stands in.
        void release() noexcept
        {
            if (void* const pointer = std::exchange(m_pointer, nullptr))
            {
                m_function(pointer);
            }
        }

    private:
        ReleaseFunction m_function;
        void* m_pointer;
    };

    template <class Callable>
    static void* store(Callable& callable)
    {
        try
        {
            return std::make_unique<Callable>(std::move(callable)).release();
        }
        catch (...)
        {
            callable();
            throw;
        }
    }

    template <class Callable>
    static void runAndDelete(void* pointer) noexcept
    {
        const std::unique_ptr<Callable> callable(static_cast<Callable*>(pointer));
        (*callable)();
    }

    void append(ReleaseFunction release, void* pointer)
    {
        Action unlisted(release, pointer); // releases the pointer when there is no memory
        if (m_actions.capacity() == 0)
        {
            m_actions.reserve(USUAL_COUNT); // growing from one on would allocate four times on the way
        }
        m_actions.push_back(std::move(unlisted));
    }

    void discard() noexcept;

    static constexpr std::size_t USUAL_COUNT = 8;

    std::vector<Action> m_actions;
    bool m_finalizeOnDestruction = true;
};
