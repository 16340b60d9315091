#include "kodo/core/async_manager.hpp"
#include "kodo/core/main_thread_tracker.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using Kodo::AsyncManager;
using Job = Kodo::AsyncManager::Job;

namespace
{

static_assert(!std::is_copy_constructible_v<Job>);
static_assert(std::is_nothrow_move_constructible_v<Job> && std::is_nothrow_move_assignable_v<Job>);

class AsyncManagerTest : public testing::Test
{
protected:
    void TearDown() override { EXPECT_EQ(AsyncManager::pendingCount(), 0U) << "the next test starts empty"; }

    /// A task that notes @p name and is done.
    AsyncManager::Task note(std::string name)
    {
        return [this, name = std::move(name)]
        {
            m_notes += name;
            return true;
        };
    }

    std::string m_notes;
};

/// Lets this thread be the main thread until the end of the scope, and the test's thread again from then on.
class MainThreadElsewhere
{
public:
    /// Runs @p work as the main thread in another thread while @p meanwhile runs in this one.
    template <class Work, class Meanwhile>
    static void run(Work work, Meanwhile meanwhile)
    {
        std::thread thread(
            [&work]
            {
                Kodo::MainThreadTracker::setCurrentThreadMain();
                work();
            });
        meanwhile();
        thread.join();
        Kodo::MainThreadTracker::setCurrentThreadMain();
    }
};

TEST_F(AsyncManagerTest, ScheduledWorkRunsInOrderAtTheNextBatch)
{
    const Job first = AsyncManager::sync(false, note("a"));
    const Job second = AsyncManager::sync(false, note("b"));
    EXPECT_EQ(m_notes, "");
    EXPECT_EQ(AsyncManager::pendingCount(), 2U);
    EXPECT_TRUE(first.isPending());

    AsyncManager::runMainThreadJobs();

    EXPECT_EQ(m_notes, "ab");
    EXPECT_FALSE(first.isPending());
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "ab");
}

TEST_F(AsyncManagerTest, DroppingAJobLeavesItsWorkScheduled)
{
    Job job = AsyncManager::sync(false, note("a"));
    job = AsyncManager::sync(false, note("b"));
    static_cast<void>(AsyncManager::sync(false, note("c")));
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "abc");
}

TEST_F(AsyncManagerTest, ATaskThatIsNotDoneRunsAgainWithTheNextBatch)
{
    int runs = 0;
    const Job job = AsyncManager::sync(false, [&runs] { return ++runs == 3; });
    for (int batch = 1; batch <= 4; ++batch)
    {
        AsyncManager::runMainThreadJobs();
        EXPECT_EQ(runs, std::min(batch, 3));
        EXPECT_EQ(job.isPending(), batch < 3);
    }
}

TEST_F(AsyncManagerTest, WhatATaskSchedulesWaitsForTheNextBatch)
{
    const Job job = AsyncManager::sync(false,
                                       [this]
                                       {
                                           static_cast<void>(AsyncManager::sync(false, note("later")));
                                           m_notes += "now ";
                                           return true;
                                       });
    const Job behind = AsyncManager::sync(false, note("behind "));
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "now behind ");
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "now behind later");
}

TEST_F(AsyncManagerTest, ATaskMayRunTheRestOfTheBatch)
{
    const Job job = AsyncManager::sync(false,
                                       [this]
                                       {
                                           m_notes += "<";
                                           AsyncManager::runMainThreadJobs();
                                           m_notes += ">";
                                           return true;
                                       });
    const Job behind = AsyncManager::sync(false, note("b"));
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "<b>");
}

TEST_F(AsyncManagerTest, OnTheMainThreadWaitingMeansRunningAtOnce)
{
    const Job scheduled = AsyncManager::sync(false, note("later"));
    const Job job = AsyncManager::sync(true, note("now "));
    EXPECT_EQ(m_notes, "now ");
    EXPECT_FALSE(job.isPending());

    int runs = 0;
    const Job again = AsyncManager::sync(true, [&runs] { return ++runs == 2; });
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(again.isPending());
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(m_notes, "now later");

    EXPECT_THROW(
        static_cast<void>(AsyncManager::sync(true, []() -> bool { throw std::runtime_error("no"); })),
        std::runtime_error);
}

TEST_F(AsyncManagerTest, AnotherThreadWaitsUntilItsWorkHasRun)
{
    std::atomic<bool> isBack = false;
    const std::thread::id mainThread = std::this_thread::get_id();
    std::thread worker(
        [&]
        {
            auto watched = std::make_shared<int>(0);
            const std::weak_ptr<int> observer = watched;
            const Job job = AsyncManager::sync(true,
                                               [this, mainThread, watched = std::move(watched)]
                                               {
                                                   EXPECT_EQ(std::this_thread::get_id(), mainThread);
                                                   m_notes += "run";
                                                   return true;
                                               });
            EXPECT_EQ(m_notes, "run");
            EXPECT_TRUE(observer.expired()) << "the task object is gone";
            EXPECT_FALSE(job.isPending());

            std::atomic<int> runs = 0; // the main thread goes on running it until it is cancelled
            Job again = AsyncManager::sync(true,
                                           [&runs]
                                           {
                                               ++runs;
                                               return false;
                                           });
            EXPECT_GE(runs.load(), 1);
            again.cancel(true);
            isBack = true;
        });
    while (!isBack)
    {
        AsyncManager::runMainThreadJobs();
        std::this_thread::yield();
    }
    worker.join();
}

TEST_F(AsyncManagerTest, AThreadWhoseTaskThrowsGoesOn)
{
    std::atomic<bool> isBack = false;
    std::thread worker(
        [&isBack]
        {
            const Job job =
                AsyncManager::sync(true, []() -> bool { throw std::runtime_error("out of the task"); });
            EXPECT_FALSE(job.isPending());
            isBack = true;
        });
    int thrown = 0;
    while (!isBack)
    {
        try
        {
            AsyncManager::runMainThreadJobs();
        }
        catch (const std::runtime_error&)
        {
            ++thrown;
        }
    }
    worker.join();
    EXPECT_EQ(thrown, 1);
}

TEST_F(AsyncManagerTest, ACancelledTaskIsDestroyedAndNeverRun)
{
    auto watched = std::make_shared<int>(0);
    const std::weak_ptr<int> observer = watched;
    Job job = AsyncManager::sync(false,
                                 [this, watched = std::move(watched)]
                                 {
                                     m_notes += "run";
                                     return true;
                                 });
    for (const bool wait : {true, false, true})
    {
        job.cancel(wait); // the second and third time there is nothing to cancel
        EXPECT_TRUE(observer.expired());
        EXPECT_FALSE(job.isPending());
    }
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "");

    Job empty;
    empty.cancel(true);
    EXPECT_FALSE(empty.isPending());
    EXPECT_FALSE(AsyncManager::sync(false, {}).isPending());
}

TEST_F(AsyncManagerTest, CancellingAFinishedJobChangesNothing)
{
    Job job = AsyncManager::sync(false, note("a"));
    const Job other = AsyncManager::sync(false, note("b"));
    AsyncManager::runMainThreadJobs();
    job.cancel(true);
    EXPECT_EQ(m_notes, "ab");
}

TEST_F(AsyncManagerTest, ATaskMayCancelItselfAndIsNotRunAgain)
{
    Job job;
    auto watched = std::make_shared<int>(0);
    const std::weak_ptr<int> observer = watched;
    int runs = 0;
    job = AsyncManager::sync(false,
                             [&job, &runs, &observer, watched = std::move(watched)]
                             {
                                 ++runs;
                                 job.cancel(true);
                                 EXPECT_FALSE(observer.expired()) << "it still runs";
                                 return false;
                             });
    AsyncManager::runMainThreadJobs();
    EXPECT_TRUE(observer.expired());
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(runs, 1);
}

TEST_F(AsyncManagerTest, ATaskMayReplaceTheJobThatHoldsIt)
{
    Job job;
    job = AsyncManager::sync(false,
                             [this, &job]
                             {
                                 Job next = AsyncManager::sync(false, note("next"));
                                 job.cancel(true);
                                 job = std::move(next);
                                 return true;
                             });
    AsyncManager::runMainThreadJobs();
    EXPECT_TRUE(job.isPending());
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "next");
}

TEST_F(AsyncManagerTest, ATaskMayCancelTheOnesBehindIt)
{
    Job behind;
    const Job job = AsyncManager::sync(false,
                                       [&behind]
                                       {
                                           behind.cancel(true);
                                           return true;
                                       });
    behind = AsyncManager::sync(false, note("behind"));
    const Job last = AsyncManager::sync(false, note("last"));
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "last");
}

TEST_F(AsyncManagerTest, ATaskObjectMayScheduleAndCancelAsItGoes)
{
    Job job;
    const auto farewell = [&]
    {
        return std::shared_ptr<int>(new int(0),
                                    [&](const int* number)
                                    {
                                        delete number;
                                        job.cancel(true);
                                        static_cast<void>(AsyncManager::sync(false, note("x")));
                                    });
    };
    job = AsyncManager::sync(false, [held = farewell()] { return true; });
    AsyncManager::runMainThreadJobs();
    job = AsyncManager::sync(false, [held = farewell()] { return true; });
    job.cancel(true);
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "xx");
}

TEST_F(AsyncManagerTest, WhatATaskThrowsReachesTheCallerAndTheRestStays)
{
    int runs = 0;
    const Job first = AsyncManager::sync(false,
                                         [&runs]() -> bool
                                         {
                                             ++runs;
                                             throw std::runtime_error("out of the task");
                                         });
    const Job second = AsyncManager::sync(false, note("behind"));

    EXPECT_THROW(AsyncManager::runMainThreadJobs(), std::runtime_error);
    EXPECT_FALSE(first.isPending());
    EXPECT_TRUE(second.isPending());
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "behind");
    EXPECT_EQ(runs, 1);
}

TEST_F(AsyncManagerTest, OtherThreadsDoNotRunTheJobs)
{
    const Job job = AsyncManager::sync(false, note("a"));
    {
        const ExpectReports reports{"MainThreadTracker::isCurrentThreadMain()"};
        std::thread(&AsyncManager::runMainThreadJobs).join();
    }
    EXPECT_EQ(m_notes, "");
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(m_notes, "a");
}

TEST_F(AsyncManagerTest, CancellingWaitsForARunInAnotherThread)
{
    std::latch started(1);
    std::atomic<bool> isOver = false;
    auto watched = std::make_shared<int>(0);
    const std::weak_ptr<int> observer = watched;
    Job job = AsyncManager::sync(false,
                                 [&started, &isOver, watched = std::move(watched)]
                                 {
                                     started.count_down();
                                     std::this_thread::sleep_for(std::chrono::milliseconds(30));
                                     isOver = true;
                                     return false;
                                 });
    MainThreadElsewhere::run([] { AsyncManager::runMainThreadJobs(); },
                             [&]
                             {
                                 started.wait();
                                 job.cancel(true);
                                 EXPECT_TRUE(isOver);
                                 EXPECT_TRUE(observer.expired());
                             });
    EXPECT_FALSE(job.isPending());
}

TEST_F(AsyncManagerTest, CancellingWaitsForATaskObjectThatGoesInAnotherThread)
{
    std::latch goes(1);
    std::atomic<bool> isGone = false;
    auto slow = std::shared_ptr<int>(new int(0),
                                     [&goes, &isGone](const int* number)
                                     {
                                         goes.count_down();
                                         std::this_thread::sleep_for(std::chrono::milliseconds(30));
                                         delete number;
                                         isGone = true;
                                     });
    Job job = AsyncManager::sync(false, [held = std::move(slow)] { return true; });
    MainThreadElsewhere::run([] { AsyncManager::runMainThreadJobs(); },
                             [&]
                             {
                                 goes.wait();
                                 EXPECT_TRUE(job.isPending());
                                 job.cancel(true);
                                 EXPECT_TRUE(isGone);
                                 EXPECT_FALSE(job.isPending());
                             });
}

TEST_F(AsyncManagerTest, WithoutWaitingCancellingOnlyKeepsItFromRunningAgain)
{
    std::latch started(1);
    std::latch cancelled(1);
    int runs = 0;
    Job job = AsyncManager::sync(false,
                                 [&]
                                 {
                                     ++runs;
                                     started.count_down();
                                     cancelled.wait();
                                     return false;
                                 });
    MainThreadElsewhere::run([] { AsyncManager::runMainThreadJobs(); },
                             [&]
                             {
                                 started.wait();
                                 job.cancel(false);
                                 EXPECT_TRUE(job.isPending()) << "the run is under way";
                                 cancelled.count_down();
                             });
    EXPECT_FALSE(job.isPending());
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(runs, 1);
}

TEST_F(AsyncManagerTest, ThreadsScheduleAndCancelWhileTheMainThreadRuns)
{
    constexpr int THREADS = 3;
    constexpr int ROUNDS = 300;
    std::atomic<int> kept = 0;
    std::atomic<int> running = THREADS;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread)
    {
        threads.emplace_back(
            [&kept, &running]
            {
                for (int round = 0; round < ROUNDS; ++round)
                {
                    // Freed right after the cancelling: a run that came later would touch freed memory.
                    auto runs = std::make_unique<int>(0);
                    Job job = AsyncManager::sync(round % 3 == 0, [&count = *runs] { return ++count > 2; });
                    static_cast<void>(AsyncManager::sync(false,
                                                         [&kept]
                                                         {
                                                             ++kept;
                                                             return true;
                                                         }));
                    job.cancel(true);
                    EXPECT_LE(*runs, 3);
                    runs.reset();
                }
                --running;
            });
    }
    while (running > 0)
    {
        AsyncManager::runMainThreadJobs();
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    AsyncManager::runMainThreadJobs();
    EXPECT_EQ(kept, THREADS * ROUNDS);
}

} // namespace
