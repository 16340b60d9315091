#include "kodo/core/stack_tracker.hpp"

#include "tests/support/allocation_hook.hpp"

#include <gtest/gtest.h>

namespace
{

TEST(StackTrackerIdleTest, AScopeAllocatesWhileRecordingOnly)
{
    const AllocationCount allocations;
    {
        KODO_PROFILE_SCOPE("a name that is too long to be stored without an allocation");
    }
    EXPECT_EQ(allocations.count(), 0U);

    Kodo::StackTracker::startRecording();
    {
        KODO_PROFILE_SCOPE("a name that is too long to be stored without an allocation");
    }
    EXPECT_GT(allocations.count(), 0U) << "the count counts";
    Kodo::StackTracker::stopRecording();
}

} // namespace
