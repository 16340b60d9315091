#include "kodo/render/debug_drawer.hpp"

#include "tests/support/allocation_hook.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace
{

void drawFrame(Kodo::DebugDrawer::Context& context, const std::vector<Kodo::Vector3>& strip)
{
    context.clear();
    for (int i = 0; i < 10000; ++i)
    {
        context.sphere().position({1.0F, 2.0F, 3.0F}).scale({2.0F, 2.0F, 2.0F}).zTestEnable(false);
        context.line().point(strip).width(0.04F);
    }
}

TEST(DebugDrawerAllocationTest, AFrameLikeTheLastAllocatesNothing)
{
    Kodo::DebugDrawer::Context context;
    const std::vector<Kodo::Vector3> strip(3);
    const AllocationCount first;
    drawFrame(context, strip);
    EXPECT_GT(first.count(), 0U) << "the count counts";

    const AllocationCount second;
    drawFrame(context, strip);
    EXPECT_EQ(second.count(), 0U);
    EXPECT_EQ(context.commands().size(), 20000U);
    EXPECT_EQ(context.points().size(), 30000U);
}

} // namespace
