#include "tern_common/curve_view/sampling_steps.hpp"

#include "tests/support/random_seed.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace
{

using TernCommonDetail::stepsEnd;

constexpr float INF = std::numeric_limits<float>::infinity();
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

/// Runs the loop from one of the floats it may be at. A step that gets stuck does so after 2^24 steps or
/// more, which is why most tests start near the end.
bool getsStuckFrom(float start, float length, float step)
{
    for (float t = start; t < length;)
    {
        const float next = t + step;
        if (next == t)
        {
            return true;
        }
        t = next;
    }
    return false;
}

TEST(SamplingStepsTest, AWayThatIsNotEnteredEnds)
{
    for (const float step : {0.0F, -0.0F, 1.0F, -1.0F, INF, -INF, NOT_A_NUMBER})
    {
        EXPECT_TRUE(stepsEnd(0.0F, step));
        EXPECT_TRUE(stepsEnd(-1.0F, step));
        EXPECT_TRUE(stepsEnd(-INF, step));
        EXPECT_TRUE(stepsEnd(NOT_A_NUMBER, step));
    }
}

TEST(SamplingStepsTest, StepsThatAreNoNumberOrInfiniteEndAtOnce)
{
    for (const float length : {0.1F, 1.0F, 1e30F, INF})
    {
        EXPECT_TRUE(stepsEnd(length, NOT_A_NUMBER));
        EXPECT_TRUE(stepsEnd(length, INF));
        EXPECT_FALSE(stepsEnd(length, -INF));
    }
}

TEST(SamplingStepsTest, StepsBackOrOnTheSpotNeverEnd)
{
    for (const float length : {0.1F, 1.0F, 1e30F, INF})
    {
        EXPECT_FALSE(stepsEnd(length, 0.0F));
        EXPECT_FALSE(stepsEnd(length, -0.0F));
        EXPECT_FALSE(stepsEnd(length, -1.0F));
        EXPECT_FALSE(stepsEnd(length, -std::numeric_limits<float>::denorm_min()));
    }
    EXPECT_FALSE(stepsEnd(INF, 1.0F)) << "no sum of finite steps is infinite";
}

TEST(SamplingStepsTest, AgreesWithTheLoopNearTheEndOfTheWay)
{
    std::mt19937_64 random(randomSeed());
    std::uniform_real_distribution<float> exponent(-3.0F, 20.0F);
    std::uniform_real_distribution<float> relative(0.2F, 1.3F);
    int stuck = 0;
    for (int i = 0; i < 20000; ++i)
    {
        float length = std::exp2(exponent(random));
        if (i % 7 == 0)
        {
            length = std::exp2(std::floor(exponent(random))); // powers of two, and their neighbours
        }
        if (i % 21 == 0)
        {
            length = std::nextafter(length, INF);
        }
        const float below = std::nextafter(length, 0.0F);
        const float ulp = length - below;
        const float step = i % 3 == 0 ? ulp * 0.5F : (i % 5 == 0 ? ulp : ulp * relative(random));
        // Steps that small touch the last power of two before the end.
        const float last = std::ldexp(1.0F, std::ilogb(below));
        const bool stuckSomewhere =
            getsStuckFrom(std::max(last, below - 500 * ulp), length, step) || last + step == last;
        stuck += stuckSomewhere ? 1 : 0;
        ASSERT_EQ(stepsEnd(length, step), !stuckSomewhere) << length << " by " << step;
    }
    EXPECT_GT(stuck, 1000);
}

TEST(SamplingStepsTest, AgreesWithTheWholeLoopOfFewSteps)
{
    std::mt19937_64 random(randomSeed());
    std::uniform_real_distribution<float> exponent(-12.0F, 3.0F);
    std::uniform_real_distribution<float> length(0.1F, 1000.0F);
    for (int i = 0; i < 20000; ++i)
    {
        const float way = length(random);
        const float step = way * std::exp2(exponent(random));
        ASSERT_TRUE(stepsEnd(way, step));
        ASSERT_FALSE(getsStuckFrom(0.0F, way, step));
    }
}

TEST(SamplingStepsTest, AgreesWithTheWholeLoopWhereItGetsStuckLate)
{
    // Both run 2^24 steps and more: one gets there, the other stops just before.
    EXPECT_TRUE(stepsEnd(0.5F, 0x1p-25F));
    EXPECT_FALSE(getsStuckFrom(0.0F, 0.5F, 0x1p-25F));
    EXPECT_FALSE(stepsEnd(std::nextafter(0.5F, 1.0F), 0x1p-25F));
    EXPECT_TRUE(getsStuckFrom(0.0F, std::nextafter(0.5F, 1.0F), 0x1p-25F));
}

} // namespace
