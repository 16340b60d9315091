#include "kodo/core/async_manager.hpp"

#include "kodo/core/assertion.hpp"
#include "kodo/core/main_thread_tracker.hpp"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace Kodo
{

/// Scheduled work. Guarded by the queue's lock, but for the task of a busy one, which belongs to the thread
/// that is busy with it.
class AsyncManager::Job::State
{
public:
    enum class Phase
    {
        Waiting, ///< stands in the queue
        Busy,    ///< its task runs or is being destroyed
        Done     ///< its task is destroyed
    };

    explicit State(Task work) : task(std::move(work)) {}

    void beBusy()
    {
        phase = Phase::Busy;
        busyThread = std::this_thread::get_id();
    }
    bool isBusyElsewhere() const { return phase == Phase::Busy && busyThread != std::this_thread::get_id(); }

    Task task;
    Phase phase = Phase::Waiting;
    std::thread::id busyThread;
    bool isCancelled = false;
    bool hasRun = false;      ///< set once the first run is over, its task destroyed unless it runs again
    std::uint64_t ticket = 0; ///< the place in the queue: grows with every one taken
};

/// The work that waits, in the order of its tickets. Tasks are run and destroyed without the lock, so that
/// they may schedule and cancel.
class AsyncManager::Queue
{
public:
    using State = Job::State;
    using Phase = State::Phase;

    static Queue& instance()
    {
        static Queue queue;
        return queue;
    }

    Queue() = default;
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;
    /// Drops what nobody ran, one by one: a task object may still schedule and cancel as it goes.
    ~Queue()
    {
        while (const std::shared_ptr<State> state = takeNext(m_lastTicket))
        {
            Task().swap(state->task);
        }
    }

    void add(const std::shared_ptr<State>& state)
    {
        const std::lock_guard lock(m_mutex);
        enqueue(state);
    }

    std::uint64_t lastTicket() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lastTicket;
    }

    /// The next of the work up to a ticket, now busy in this thread; null when there is none.
    std::shared_ptr<State> takeNext(std::uint64_t lastTicket)
    {
        const std::lock_guard lock(m_mutex);
        if (m_waiting.empty() || m_waiting.front()->ticket > lastTicket)
        {
            return nullptr;
        }
        std::shared_ptr<State> state = std::move(m_waiting.front());
        m_waiting.pop_front();
        state->beBusy();
        return state;
    }

    /// Runs work that is busy in this thread.
    void run(const std::shared_ptr<State>& state)
    {
        bool isDone = true;
        try
        {
            isDone = state->task();
        }
        catch (...)
        {
            endRun(state, true);
            throw;
        }
        endRun(state, isDone);
    }

    void waitForRun(const State& state)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&state] { return state.hasRun; });
    }

    void cancel(const std::shared_ptr<State>& state, bool wait)
    {
        std::unique_lock lock(m_mutex);
        state->isCancelled = true;
        if (state->phase == Phase::Waiting)
        {
            std::erase(m_waiting, state);
            state->beBusy();
            finish(lock, *state);
        }
        else if (wait)
        {
            m_changed.wait(lock, [&state] { return !state->isBusyElsewhere(); });
        }
    }

    bool isPending(const State& state) const
    {
        const std::lock_guard lock(m_mutex);
        return state.phase != Phase::Done;
    }

    std::size_t waitingCount() const
    {
        const std::lock_guard lock(m_mutex);
        return m_waiting.size();
    }

private:
    void enqueue(const std::shared_ptr<State>& state)
    {
        state->phase = Phase::Waiting;
        state->ticket = ++m_lastTicket;
        m_waiting.push_back(state);
    }

    void endRun(const std::shared_ptr<State>& state, bool isDone)
    {
        std::unique_lock lock(m_mutex);
        if (isDone || state->isCancelled)
        {
            finish(lock, *state);
            return;
        }
        enqueue(state);
        state->hasRun = true;
        m_changed.notify_all();
    }

    /// Destroys the task of work that is busy in this thread.
    void finish(std::unique_lock<std::mutex>& lock, State& state)
    {
        lock.unlock();
        Task().swap(state.task);
        lock.lock();
        state.phase = Phase::Done;
        state.hasRun = true;
        m_changed.notify_all();
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::shared_ptr<State>> m_waiting;
    std::uint64_t m_lastTicket = 0;
};

AsyncManager::Job::Job() noexcept = default;
AsyncManager::Job::Job(std::shared_ptr<State> state) noexcept : m_state(std::move(state)) {}
AsyncManager::Job::Job(Job&&) noexcept = default;
AsyncManager::Job& AsyncManager::Job::operator=(Job&&) noexcept = default;
AsyncManager::Job::~Job() = default;

bool AsyncManager::Job::isPending() const noexcept
{
    return m_state != nullptr && Queue::instance().isPending(*m_state);
}

void AsyncManager::Job::cancel(bool wait)
{
    if (const std::shared_ptr<State> state = m_state) // the task's destructor may drop this job
    {
        Queue::instance().cancel(state, wait);
    }
}

AsyncManager::Job AsyncManager::sync(bool wait, Task task)
{
    if (!task)
    {
        return {};
    }
    auto state = std::make_shared<Job::State>(std::move(task));
    Queue& queue = Queue::instance();
    if (wait && MainThreadTracker::isCurrentThreadMain())
    {
        state->beBusy();
        queue.run(state);
    }
    else
    {
        queue.add(state);
        if (wait)
        {
            queue.waitForRun(*state);
        }
    }
    return Job(std::move(state));
}

void AsyncManager::runMainThreadJobs()
{
    if (!KODO_ASSERT(MainThreadTracker::isCurrentThreadMain()))
    {
        return;
    }
    Queue& queue = Queue::instance();
    const std::uint64_t lastTicket = queue.lastTicket();
    while (const std::shared_ptr<Job::State> state = queue.takeNext(lastTicket))
    {
        queue.run(state);
    }
}

std::size_t AsyncManager::pendingCount() noexcept
{
    return Queue::instance().waitingCount();
}

namespace
{
/// Has the queue made when the library is loaded, so that it goes after whatever is linked to it.
[[maybe_unused]] const std::size_t waitingAtLoad = AsyncManager::pendingCount();
} // namespace

} // namespace Kodo
