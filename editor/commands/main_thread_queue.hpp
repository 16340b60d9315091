#pragma once

#include <functional>
#include <mutex>
#include <vector>

/// Work that other threads leave for the main thread. Safe from any thread; drain() on the main thread.
class MainThreadQueue
{
public:
    void post(std::function<void()> work)
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(work));
    }

    /// Does what has been posted, in order. Work that throws is done with; the rest follows at the next call.
    void drain()
    {
        for (;;)
        {
            std::function<void()> work;
            {
                const std::lock_guard lock(m_mutex);
                if (m_work.empty())
                {
                    return;
                }
                work = std::move(m_work.front());
                m_work.erase(m_work.begin());
            }
            work();
        }
    }

private:
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_work;
};
