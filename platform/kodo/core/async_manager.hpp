#pragma once

#include "kodo/export.hpp"

#include <cstddef>
#include <functional>
#include <memory>

namespace Kodo
{

/// Hands work to the main thread. Every operation may be called from any thread, but for runMainThreadJobs().
class KODO_API AsyncManager
{
public:
    /// Work for the main thread: true when it is done, false to be run again with the next batch.
    using Task = std::function<bool()>;

    /// Refers to scheduled work; dropping it leaves the work scheduled. Movable, not copyable. Empty by
    /// default.
    class KODO_API Job
    {
    public:
        Job() noexcept;
        Job(Job&&) noexcept;
        /// Drops the job held before, which stays scheduled.
        Job& operator=(Job&&) noexcept;
        ~Job();

        /// Whether the work still waits or runs.
        bool isPending() const noexcept;
        /// Takes the work back: it won't be started again, and the task object has been destroyed on return.
        /// With
        /// @p wait, a run that is under way in another thread is waited for first; a task may cancel itself.
        /// Nothing happens when the work is done or the job is empty.
        void cancel(bool wait);

    private:
        friend class AsyncManager;
        class State;
        explicit Job(std::shared_ptr<State> state) noexcept;

        std::shared_ptr<State> m_state;
    };

    AsyncManager() = delete;

    /// Schedules @p task to run on the main thread. With @p wait, returns once it has run (at once, when
    /// called on the main thread); without, it runs in the next runMainThreadJobs().
    [[nodiscard]] static Job sync(bool wait, Task task);

    /// Runs what is scheduled now, in order; what is scheduled meanwhile waits for the next batch. Main
    /// thread only, usually once a frame. What a task throws reaches the caller; the tasks behind it stay
    /// scheduled.
    static void runMainThreadJobs();
    static std::size_t pendingCount() noexcept;
};

} // namespace Kodo
