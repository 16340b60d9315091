// Construction when memory runs out, at whichever point.

#include "tern_common/localization/localization.hpp"

#include "tests/support/allocation_hook.hpp"
#include "tests/support/resource_tree.hpp"
#include "tests/tern_common/localization/scripted_framework.hpp"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace
{

constexpr const char* LONG_TEXT = "a text that is too long to stand in the string object itself";

TEST(LocalizationFailureTest, ConstructionThatFailsHalfWayLeavesNothingBehind)
{
    ResourceTree tree;
    tree.writeVehicles("a", "<tug><userString>#v:tug</userString></tug>"
                            "<a_vehicle_with_a_name_of_some_length><userString>#v:tug</userString>"
                            "</a_vehicle_with_a_name_of_some_length>");
    tree.writeVehicles("b", "<tug><userString>#v:tug</userString></tug>");
    tree.writeArena("01.xml", "<name>#v:bay</name>");
    const auto answer = [](const std::string&) { return std::string(LONG_TEXT); };
    std::size_t allocations = 0;
    for (int attempt = 0; attempt < 2; ++attempt) // the first one takes what is taken once in a process
    {
        ScriptedFramework framework(answer);
        const AllocationCount count;
        const Localization whole;
        allocations = count.count();
    }
    for (std::size_t successes = 0; successes < allocations; ++successes)
    {
        SCOPED_TRACE("at allocation " + std::to_string(successes));
        const std::size_t before = liveHeapBytes();
        bool failed = false;
        {
            ScriptedFramework framework(answer);
            try
            {
                const FailingAllocation one(successes);
                const Localization whole;
            }
            catch (const std::bad_alloc&)
            {
                failed = true;
            }
        }
        EXPECT_TRUE(failed);
        EXPECT_EQ(liveHeapBytes(), before);
    }
    EXPECT_GT(allocations, 30U);
}

} // namespace
