#include "kodo/render/debug_drawer.hpp"

#include <gtest/gtest.h>

#include <vector>

using Kodo::Quaternion;
using Kodo::Vector3;
using Kodo::DebugDrawer::Context;
using Kodo::DebugDrawer::LineRecord;
using Kodo::DebugDrawer::SphereRecord;
using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;

namespace
{

constexpr ColourRGBAFloat WHITE(1.0F, 1.0F, 1.0F, 1.0F);

std::vector<Vector3> pointsOf(const Context& context, std::size_t line)
{
    const auto points = context.pointsOf(context.lines()[line]);
    return {points.begin(), points.end()};
}

TEST(DebugDrawerTest, WhatIsAskedForIsDrawnPlainly)
{
    Context context;
    context.line();
    context.sphere();

    const LineRecord& line = context.lines()[0];
    EXPECT_EQ(line.pointCount, 0U);
    EXPECT_EQ(line.colour, WHITE);
    EXPECT_TRUE(line.zTest && line.zWrite);
    EXPECT_EQ(line.width, 0.0F);
    const SphereRecord& sphere = context.spheres()[0];
    EXPECT_EQ(sphere.position, Vector3::ZERO);
    EXPECT_EQ(sphere.rotation, Quaternion::IDENTITY);
    EXPECT_EQ(sphere.scale, Vector3(1.0F, 1.0F, 1.0F));
    EXPECT_EQ(sphere.colour, WHITE);
    EXPECT_TRUE(sphere.zTest && sphere.zWrite);
}

TEST(DebugDrawerTest, EachPropertyIsRecorded)
{
    Context context;
    const ColourRGBAFloat red = Colour32Bit(0xFFFF0000);
    const Quaternion turn = Quaternion::fromAngleAxis(1.0F, {0.0F, 1.0F, 0.0F});
    context.line().colour(red).width(0.5F).zTestEnable(false).zWriteEnable(false);
    context.sphere()
        .colour(red)
        .position({1.0F, 2.0F, 3.0F})
        .rotation(turn)
        .scale({4.0F, 5.0F, 6.0F})
        .zTestEnable(false)
        .zWriteEnable(false);

    const LineRecord& line = context.lines()[0];
    EXPECT_EQ(line.colour, red);
    EXPECT_EQ(line.width, 0.5F);
    EXPECT_FALSE(line.zTest || line.zWrite);
    const SphereRecord& sphere = context.spheres()[0];
    EXPECT_EQ(sphere.colour, red);
    EXPECT_EQ(sphere.position, Vector3(1.0F, 2.0F, 3.0F));
    EXPECT_EQ(sphere.rotation, turn);
    EXPECT_EQ(sphere.scale, Vector3(4.0F, 5.0F, 6.0F));
    EXPECT_FALSE(sphere.zTest || sphere.zWrite);
}

TEST(DebugDrawerTest, TheLastSettingOfAPropertyHolds)
{
    Context context;
    Context::Line line = context.line();
    line.width(1.0F).width(2.0F).zTestEnable(false).zTestEnable(true);
    EXPECT_EQ(context.lines()[0].width, 2.0F);
    EXPECT_TRUE(context.lines()[0].zTest);
}

TEST(DebugDrawerTest, LinesAndSpheresKeepTheirOrder)
{
    Context context;
    context.sphere();
    context.line();
    context.line();
    context.sphere();

    ASSERT_EQ(context.commands().size(), 4U);
    const auto expectCommand = [&context](std::size_t at, Context::Kind kind, std::size_t index)
    {
        EXPECT_EQ(context.commands()[at].kind, kind);
        EXPECT_EQ(context.commands()[at].index, index);
    };
    expectCommand(0, Context::Kind::Sphere, 0);
    expectCommand(1, Context::Kind::Line, 0);
    expectCommand(2, Context::Kind::Line, 1);
    expectCommand(3, Context::Kind::Sphere, 1);
}

TEST(DebugDrawerTest, AStripIsAsLongAsThePointsItWasGiven)
{
    Context context;
    const std::vector<Vector3> three{{1.0F, 0.0F, 0.0F}, {2.0F, 0.0F, 0.0F}, {3.0F, 0.0F, 0.0F}};
    context.line().point(std::vector<Vector3>());
    context.line().point(three).point({4.0F, 0.0F, 0.0F}).point(three);

    ASSERT_EQ(context.lines().size(), 2U);
    EXPECT_TRUE(pointsOf(context, 0).empty()) << "a strip without points is recorded as it is";
    EXPECT_EQ(pointsOf(context, 1),
              (std::vector<Vector3>{
                  three[0], three[1], three[2], {4.0F, 0.0F, 0.0F}, three[0], three[1], three[2]}));
    EXPECT_EQ(context.points().size(), 7U);
}

TEST(DebugDrawerTest, AStripGrowsWhileOthersDo)
{
    Context context;
    Context::Line first = context.line();
    first.point({1.0F, 0.0F, 0.0F}).point({2.0F, 0.0F, 0.0F});
    Context::Line second = context.line();
    second.point({0.0F, 1.0F, 0.0F});
    first.point({3.0F, 0.0F, 0.0F});
    second.point(context.points()[0]);
    first.point({4.0F, 0.0F, 0.0F});
    first.colour(Colour32Bit(0xFF00FF00));

    EXPECT_EQ(pointsOf(context, 0),
              (std::vector<Vector3>{
                  {1.0F, 0.0F, 0.0F}, {2.0F, 0.0F, 0.0F}, {3.0F, 0.0F, 0.0F}, {4.0F, 0.0F, 0.0F}}));
    EXPECT_EQ(pointsOf(context, 1), (std::vector<Vector3>{{0.0F, 1.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}));
    EXPECT_EQ(context.lines()[0].colour, ColourRGBAFloat(0.0F, 1.0F, 0.0F, 1.0F));
    EXPECT_EQ(context.lines()[1].colour, WHITE);
}

TEST(DebugDrawerTest, ClearingForgetsTheFrame)
{
    Context context;
    context.line().point({1.0F, 0.0F, 0.0F});
    context.sphere().scale({2.0F, 2.0F, 2.0F});
    context.clear();
    EXPECT_TRUE(context.commands().empty());
    EXPECT_TRUE(context.lines().empty());
    EXPECT_TRUE(context.spheres().empty());
    EXPECT_TRUE(context.points().empty());

    context.sphere();
    EXPECT_EQ(context.spheres()[0].scale, Vector3(1.0F, 1.0F, 1.0F)) << "nothing is left of the last frame";
}

} // namespace
