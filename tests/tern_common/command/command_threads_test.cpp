// Futures are fulfilled on other threads while the main thread ticks.

#include "tern_common/command_system.hpp"

#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{

/// Threads that fulfil promises handed to them, every third one with an exception.
class Workers
{
public:
    explicit Workers(unsigned count)
    {
        for (unsigned i = 0; i < count; ++i)
        {
            m_threads.emplace_back([this] { work(); });
        }
    }
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    ~Workers()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_done = true;
        }
        m_wake.notify_all();
        for (std::thread& thread : m_threads)
        {
            thread.join();
        }
    }

    /// @p result is written by the worker before it fulfils the future.
    std::future<void> post(int& result, bool well)
    {
        Job job{{}, &result, well};
        std::future<void> future = job.promise.get_future();
        {
            const std::lock_guard lock(m_mutex);
            m_jobs.push_back(std::move(job));
        }
        m_wake.notify_one();
        return future;
    }

private:
    struct Job
    {
        std::promise<void> promise;
        int* result;
        bool well;
    };

    void work()
    {
        for (;;)
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_done || !m_jobs.empty(); });
            if (m_jobs.empty())
            {
                return;
            }
            Job job = std::move(m_jobs.front());
            m_jobs.pop_front();
            lock.unlock();
            ++*job.result;
            if (job.well)
            {
                job.promise.set_value();
            }
            else
            {
                job.promise.set_exception(std::make_exception_ptr(std::runtime_error("worker")));
            }
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Job> m_jobs;
    std::vector<std::thread> m_threads;
    bool m_done = false;
};

TEST(CommandThreadsTest, FuturesMayBeFulfilledOnAnyThread)
{
    constexpr int COMMANDS = 600;
    const TemporaryDirectory directory;
    std::string script;
    for (int i = 0; i < COMMANDS; ++i)
    {
        script += i % 3 == 0 ? "fail()\n" : "work()\n";
    }
    int finished = 0; // written by the workers, read between commands: the future orders the accesses
    Workers workers(3);
    CommandSystem system;
    system.rootObject().addCommand("work", [&] { return workers.post(finished, true); });
    system.rootObject().addCommand("fail", [&] { return workers.post(finished, false); });
    system.rootObject().addCommand("check",
                                   [&]
                                   {
                                       EXPECT_EQ(finished, COMMANDS);
                                       std::promise<void> promise;
                                       promise.set_value();
                                       return promise.get_future();
                                   });
    system.parseScriptFile(directory.write("script.txt", script + "check()\n").wstring());

    int failures = 0;
    while (!system.isIdle())
    {
        try
        {
            system.tick();
        }
        catch (const std::runtime_error&)
        {
            ++failures;
        }
    }
    EXPECT_EQ(failures, COMMANDS / 3);
    EXPECT_EQ(finished, COMMANDS);
}

TEST(CommandThreadsTest, ASystemMayDieWhileAWorkerFulfilsItsFuture)
{
    const TemporaryDirectory directory;
    const std::wstring script = directory.write("script.txt", "work()\n").wstring();
    for (int i = 0; i < 200; ++i)
    {
        std::promise<void> promise;
        std::thread worker;
        {
            CommandSystem system;
            system.rootObject().addCommand("work", [&] { return promise.get_future(); });
            system.parseScriptFile(script);
            system.tick();
            worker = std::thread([&promise] { promise.set_value(); });
        }
        worker.join();
    }
}

} // namespace
