#include "tern_common/utils/color_hue.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace
{

constexpr double PI = 3.14159265358979323846;

static_assert(ColorHue::PI == static_cast<float>(PI));
static_assert(ColorHue::TWO_PI == static_cast<float>(2 * PI));
static_assert(ColorHue::THIRD_OF_PI == static_cast<float>(PI / 3));
static_assert(0.5235988F == static_cast<float>(PI / 6));
static_assert(0.003921569F == 1.0F / 255.0F && 255.0F * 0.003921569F == 1.0F);

float hueOf(float r, float g, float b)
{
    return ColorHue::hueOf({r, g, b, 1.0F});
}

float rounded(double angle)
{
    return static_cast<float>(angle);
}

} // namespace

TEST(ColorHueTest, GreenTopsAreMeasuredFromTwoThirdsOfPi)
{
    EXPECT_FLOAT_EQ(hueOf(0, 1, 0), rounded(2 * PI / 3));
    EXPECT_FLOAT_EQ(hueOf(0, 1, 1), rounded(PI)) << "green and blue tie: green's formula";
    EXPECT_FLOAT_EQ(hueOf(0.25F, 1, 0), rounded(1.75 * PI / 3));
}

TEST(ColorHueTest, ATieOfRedAndGreenTakesGreensFormula)
{
    EXPECT_EQ(hueOf(1, 1, 0), 1.0471976F);
}

TEST(ColorHueTest, RedAndBlueTopsShareTheFormulaForBlue)
{
    EXPECT_FLOAT_EQ(hueOf(0, 0, 1), rounded(4 * PI / 3 - 2 * PI));
    EXPECT_FLOAT_EQ(hueOf(1, 0, 0), rounded(5 * PI / 3 - 2 * PI));
    EXPECT_FLOAT_EQ(hueOf(1, 0, 1), rounded(5 * PI / 3 - 2 * PI));
    EXPECT_FLOAT_EQ(hueOf(1, 0.5F, 0), rounded(4.5 * PI / 3 - 2 * PI));
}

TEST(ColorHueTest, GreysHaveHueZeroUpToAThreshold)
{
    EXPECT_EQ(hueOf(0.5F, 0.5F, 0.5F), 0.0F);
    EXPECT_EQ(hueOf(0.0F, 0.00039F, 0.0F), 0.0F);
    EXPECT_NE(hueOf(0.0F, 0.0004F, 0.0F), 0.0F) << "the threshold itself is a colour";
}

TEST(ColorHueTest, AnglesAreBroughtAroundIntoOneTurn)
{
    constexpr float PI_F = ColorHue::PI;
    EXPECT_EQ(ColorHue::wrapAngle(1.0F), 1.0F);
    EXPECT_EQ(ColorHue::wrapAngle(PI_F), PI_F);
    EXPECT_EQ(ColorHue::wrapAngle(-PI_F), -PI_F + ColorHue::TWO_PI) << "-pi becomes pi";
    EXPECT_EQ(ColorHue::wrapAngle(4.0F), 4.0F - ColorHue::TWO_PI);
    EXPECT_EQ(ColorHue::wrapAngle(3.0F * PI_F), 3.0F * PI_F - ColorHue::TWO_PI);
    EXPECT_EQ(ColorHue::wrapAngle(-4.0F), -4.0F + ColorHue::TWO_PI);
    EXPECT_FLOAT_EQ(ColorHue::wrapAngle(20.0F), rounded(20 - 6 * PI));
    EXPECT_FLOAT_EQ(ColorHue::wrapAngle(-20.0F), rounded(-20 + 6 * PI));
}

TEST(ColorHueTest, DistancesGoTheShorterWayRound)
{
    EXPECT_EQ(ColorHue::distance(1.0F, 1.0F), 0.0F);
    EXPECT_EQ(ColorHue::distance(2.0F, 1.5F), 0.5F);
    EXPECT_FLOAT_EQ(ColorHue::distance(1.5F, 2.0F), 0.5F);
    EXPECT_EQ(ColorHue::distance(3.0F, -3.0F), ColorHue::TWO_PI - 6.0F);
    EXPECT_EQ(ColorHue::distance(-3.0F, 3.0F), ColorHue::TWO_PI - 6.0F);
    EXPECT_EQ(ColorHue::distance(ColorHue::PI, 0.0F), ColorHue::PI);
}

TEST(ColorHueTest, WhatIsNoNumberIsCloseToNothing)
{
    const float none = hueOf(std::numeric_limits<float>::quiet_NaN(), 0, 0);
    EXPECT_FALSE(ColorHue::distance(none, 1.0F) < ColorHue::PI);
}
