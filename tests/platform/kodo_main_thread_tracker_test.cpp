#include "kodo/core/main_thread_tracker.hpp"

#include <gtest/gtest.h>

#include <thread>

namespace
{

using Kodo::MainThreadTracker;

bool isMainInAnotherThread()
{
    bool isMain = true;
    std::thread([&isMain] { isMain = MainThreadTracker::isCurrentThreadMain(); }).join();
    return isMain;
}

TEST(MainThreadTrackerTest, TheThreadThatLoadedTheLibraryIsMain)
{
    EXPECT_TRUE(MainThreadTracker::isCurrentThreadMain());
    EXPECT_FALSE(isMainInAnotherThread());
}

TEST(MainThreadTrackerTest, AnotherThreadMayBeNamed)
{
    std::thread(
        []
        {
            MainThreadTracker::setCurrentThreadMain();
            EXPECT_TRUE(MainThreadTracker::isCurrentThreadMain());
        })
        .join();
    EXPECT_FALSE(MainThreadTracker::isCurrentThreadMain());

    MainThreadTracker::setCurrentThreadMain();
    EXPECT_TRUE(MainThreadTracker::isCurrentThreadMain());
    EXPECT_FALSE(isMainInAnotherThread());
}

} // namespace
