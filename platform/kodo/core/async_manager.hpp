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
        /// Takes the work back: it won't be started again. Work that waits has its task object destroyed, in
        /// this thread. A run that is under way in another thread is waited for with @p wait, so that the
        /// task object is gone on return in any case; without, the task object goes when that run ends. A
        /// task may cancel itself: its object goes when it returns. Nothing happens when the work is done or
        /// the job is empty.
        void cancel(bool wait);

    private:
        friend class AsyncManager;
        class State;
        explicit Job(std::shared_ptr<State> state) noexcept;

        std::shared_ptr<State> m_state;
    };

    AsyncManager() = delete;

    /// Schedules @p task to run on the main thread. With @p wait, returns once it has run (at once, when
    /// called on the main thread, ahead of what is scheduled); without, it runs in the next
    /// runMainThreadJobs(). An empty task gives an empty job.
    [[nodiscard]] static Job sync(bool wait, Task task);

    /// Runs what is scheduled now, in order; what is scheduled meanwhile waits for the next batch. Main
    /// thread only, usually once a frame; in another thread that is reported and nothing is run. What a task
    /// throws reaches the caller, and that task is done; the tasks behind it stay scheduled. A task may call
    /// this: it runs the rest of the batch then, and what was scheduled since.
    static void runMainThreadJobs();
    /// How many tasks wait to be run.
    static std::size_t pendingCount() noexcept;

private:
    class Queue;
};

} // namespace Kodo
