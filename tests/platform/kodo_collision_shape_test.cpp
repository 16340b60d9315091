#include "kodo/collision/collision_scene.hpp"

#include "tests/platform/collision_fixture.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

namespace
{

using Kodo::CollisionScene;
using Kodo::Matrix;
using Kodo::Quaternion;
using Kodo::SceneObject;
using Kodo::Vector3;
using Kodo::Collisions::Ray;

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
constexpr float INFINITE = std::numeric_limits<float>::infinity();

/// Both templates with radius or half extent 1: what a ray along an axis through the centre sees is the same.
class EitherShapeTest : public CollisionTest, public testing::WithParamInterface<int>
{
};

INSTANTIATE_TEST_SUITE_P(Shapes, EitherShapeTest, testing::Values(SPHERE, BOX));

TEST_P(EitherShapeTest, IsHitWhereTheRayEntersIt)
{
    const SceneObject object = add(GetParam(), placedAt({5.0F, 1.0F, 2.0F}));
    Collector collector;
    scene->collideRay({{0.0F, 1.0F, 2.0F}, {1.0F, 0.0F, 0.0F}}, collector, nullptr);
    ASSERT_EQ(collector.hits.size(), 1U);
    EXPECT_EQ(collector.hits[0].id, object.id());
    EXPECT_EQ(collector.hits[0].distance, 4.0);
    EXPECT_EQ(collector.hits[0].mask, MASK);
}

TEST_P(EitherShapeTest, TheDistanceIsAMultipleOfTheDirection)
{
    add(GetParam(), placedAt({5.0F, 0.0F, 0.0F}));
    EXPECT_EQ(distanceBy({Vector3::ZERO, {0.25F, 0.0F, 0.0F}}), 16.0);
    EXPECT_EQ(distanceBy({Vector3::ZERO, {400.0F, 0.0F, 0.0F}}), 0.01);
    EXPECT_NEAR(*distanceBy({Vector3::ZERO, {1e-37F, 0.0F, 0.0F}}), 4e37, 1e31);
    EXPECT_TRUE(distanceBy({Vector3::ZERO, {std::numeric_limits<float>::max(), 0.0F, 0.0F}}));
}

TEST_P(EitherShapeTest, IsHitFromInsideAndOnItsSurfaceWithDistanceZero)
{
    add(GetParam(), placedAt({5.0F, 0.0F, 0.0F}));
    for (const float x : {4.0F, 4.5F, 5.0F, 5.5F, 6.0F})
    {
        EXPECT_EQ(distanceBy({{x, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}), 0.0) << x;
        EXPECT_EQ(distanceBy({{x, 0.0F, 0.0F}, {-1.0F, 0.5F, 0.0F}}), 0.0) << x;
    }
    EXPECT_EQ(distanceBy({{6.000001F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}), std::nullopt);
    EXPECT_EQ(distanceBy({{3.999999F, 0.0F, 0.0F}, {-1.0F, 0.0F, 0.0F}}), std::nullopt);
}

TEST_P(EitherShapeTest, ARayThatGrazesItHitsIt)
{
    add(GetParam(), placedAt({5.0F, 0.0F, 0.0F}));
    EXPECT_TRUE(distanceBy({{0.0F, 1.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}));
    EXPECT_TRUE(distanceBy({{0.0F, 0.0F, -1.0F}, {3.0F, 0.0F, 0.0F}}));
    EXPECT_FALSE(distanceBy({{0.0F, 1.0000001F, 0.0F}, {1.0F, 0.0F, 0.0F}}));
    const float third = 1.0F / 3.0F; // not exact, and yet it is on the surface
    scene = std::make_unique<CollisionScene>();
    add(GetParam(), placedAt({5.0F, 0.0F, 0.0F}, {third, third, third}));
    EXPECT_TRUE(distanceBy({{0.0F, third, 0.0F}, {1.0F, 0.0F, 0.0F}}));
}

TEST_P(EitherShapeTest, ARayEndsWhereItSays)
{
    add(GetParam(), placedAt({5.0F, 0.0F, 0.0F}));
    EXPECT_TRUE(distanceBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}, 4.0F}));
    EXPECT_FALSE(distanceBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}, 3.9999F}));
    EXPECT_TRUE(distanceBy({Vector3::ZERO, {8.0F, 0.0F, 0.0F}, 0.5F}));
    EXPECT_FALSE(distanceBy({Vector3::ZERO, {8.0F, 0.0F, 0.0F}, 0.4999F}));
    EXPECT_TRUE(distanceBy({{5.0F, 0.0F, 0.0F}, {8.0F, 0.0F, 0.0F}, 0.0F})) << "begins inside";
    EXPECT_FALSE(distanceBy({{5.0F, 0.0F, 0.0F}, {8.0F, 0.0F, 0.0F}, -1.0F}));
    EXPECT_FALSE(distanceBy({{9.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}, -9.0F})) << "it does not run backwards";
}

TEST_P(EitherShapeTest, ANegativeScaleCountsAsItsAbsoluteValue)
{
    for (const Vector3& scale : {Vector3{-2.0F, -2.0F, -2.0F}, Vector3{2.0F, -2.0F, 2.0F}})
    {
        scene = std::make_unique<CollisionScene>();
        add(GetParam(), placedAt({5.0F, 0.0F, 0.0F}, scale));
        EXPECT_EQ(distanceBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}), 3.0);
        EXPECT_TRUE(distanceBy({{0.0F, -2.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}));
        EXPECT_FALSE(distanceBy({{0.0F, -2.001F, 0.0F}, {1.0F, 0.0F, 0.0F}}));
    }
    scene = std::make_unique<CollisionScene>();
    const SceneObject object;
    scene->addUserObject(object, shape(GetParam(), {-2.0F, -2.0F, -2.0F}), placedAt({5.0F, 0.0F, 0.0F}), 0, 0,
                         MASK);
    EXPECT_EQ(distanceBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}), 4.0);
    scene->updateTransform(object, placedAt({6.0F, 0.0F, 0.0F}));
    EXPECT_EQ(distanceBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}), 5.0);
}

TEST_P(EitherShapeTest, WhatHasNoVolumeIsNotHit)
{
    const Ray through{{-5.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}};
    const Ray from{Vector3::ZERO, {0.0F, 0.0F, 1.0F}};
    const SceneObject object = add(GetParam(), Matrix());
    const auto expectNothing = [&](const Matrix& transform)
    {
        scene->updateTransform(object, placedAt(Vector3::ZERO));
        EXPECT_TRUE(distanceBy(through));
        scene->updateTransform(object, transform);
        EXPECT_FALSE(distanceBy(through));
        EXPECT_FALSE(distanceBy(from));
    };
    EXPECT_FALSE(distanceBy(through)) << "all zeros";
    expectNothing(placedAt(Vector3::ZERO, Vector3::ZERO));
    expectNothing(placedAt(Vector3::ZERO, {0.0F, 1.0F, 1.0F}));
    expectNothing(placedAt(Vector3::ZERO, {1.0F, 1.0F, -0.0F}));
    const Quaternion turn = Quaternion::fromAngleAxis(0.7F, {1.0F, 2.0F, 3.0F});
    expectNothing(Matrix::constructTransformationMatrix(Vector3::ZERO, turn, {2.0F, 0.0F, 3.0F}));
    Matrix flattened = placedAt(Vector3::ZERO);
    flattened.m[1][0] = flattened.m[0][0]; // two axes on one line
    flattened.m[1][1] = 0.0F;
    expectNothing(flattened);
    Matrix plane = placedAt(Vector3::ZERO);
    for (int column = 0; column < 3; ++column)
    {
        plane.m[0][column] = 0.1F * static_cast<float>(column + 1);
        plane.m[1][column] = 0.3F;
        plane.m[2][column] = plane.m[0][column] + plane.m[1][column];
    }
    plane.m[2][0] = 0.4F;
    plane.m[2][1] = 0.5F;
    plane.m[2][2] = 0.6F;
    scene->updateTransform(object, plane);
    EXPECT_FALSE(distanceBy({{-5.0F, -4.0F, 0.5F}, {1.0F, 0.0F, 0.0F}}));

    for (const Vector3& extent : {Vector3::ZERO, Vector3{2.0F, 0.0F, 2.0F}})
    {
        scene = std::make_unique<CollisionScene>();
        scene->addUserObject(SceneObject(), shape(GetParam(), extent), placedAt(Vector3::ZERO), 0, 0, MASK);
        EXPECT_FALSE(distanceBy(through));
        EXPECT_FALSE(distanceBy(from));
    }
}

TEST_P(EitherShapeTest, WhatIsNotFiniteHitsNothingAndIsNotHit)
{
    const Ray through{{-5.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}};
    const SceneObject object = add(GetParam(), placedAt(Vector3::ZERO));
    for (const float bad : {NOT_A_NUMBER, INFINITE, -INFINITE})
    {
        for (int row = 0; row < 4; ++row)
        {
            for (int column = 0; column < 3; ++column)
            {
                Matrix transform = placedAt(Vector3::ZERO);
                transform.m[row][column] = bad;
                scene->updateTransform(object, transform);
                EXPECT_FALSE(distanceBy(through)) << row << ' ' << column;
                EXPECT_FALSE(distanceBy({Vector3::ZERO, {0.0F, 1.0F, 0.0F}})) << row << ' ' << column;
            }
        }
        Matrix transform = placedAt(Vector3::ZERO);
        transform.m[0][0] = transform.m[1][1] = transform.m[2][2] = bad;
        scene->updateTransform(object, transform);
        EXPECT_FALSE(distanceBy(through));
        transform = placedAt(Vector3::ZERO);
        transform.m[0][3] = transform.m[3][3] = bad; // the fourth column does not count
        scene->updateTransform(object, transform);
        EXPECT_EQ(distanceBy(through), 4.0);

        Ray ray = through;
        ray.length = bad;
        EXPECT_FALSE(distanceBy(ray));
        for (float Vector3::*component : {&Vector3::x, &Vector3::y, &Vector3::z})
        {
            ray = through;
            ray.origin.*component = bad;
            EXPECT_FALSE(distanceBy(ray));
            ray = through;
            ray.direction.*component = bad;
            EXPECT_FALSE(distanceBy(ray));
        }
        for (const auto& odd : {shape(GetParam(), {bad, bad, bad}), shape(GetParam(), {2.0F, bad, 2.0F}),
                                shape(GetParam(), {2.0F, 2.0F, 2.0F}, {0.0F, 0.0F, bad})})
        {
            const SceneObject other;
            EXPECT_TRUE(scene->addUserObject(other, odd, placedAt(Vector3::ZERO), 0, 0, MASK));
            EXPECT_EQ(hitBy(through), std::vector{object.id()});
            scene->updateTransform(other, placedAt(Vector3::ZERO));
            EXPECT_EQ(hitBy(through), std::vector{object.id()});
            scene->deleteObstacle(other);
        }
    }
}

TEST_P(EitherShapeTest, ARayWithoutADirectionHitsNothing)
{
    add(GetParam(), placedAt(Vector3::ZERO));
    EXPECT_FALSE(distanceBy({Vector3::ZERO, Vector3::ZERO}));
    EXPECT_FALSE(distanceBy({{-5.0F, 0.0F, 0.0F}, {0.0F, -0.0F, 0.0F}}));
}

TEST_P(EitherShapeTest, NumbersOfAnySizeAreWithinReach)
{
    const float huge = std::numeric_limits<float>::max();
    const float tiny = std::numeric_limits<float>::min();
    scene->addUserObject(SceneObject(), shape(GetParam(), {huge, huge, huge}),
                         placedAt(Vector3::ZERO, {huge, huge, huge}), 0, 0, MASK);
    EXPECT_EQ(distanceBy({{huge, huge, -huge}, {huge, 0.0F, 0.0F}}), 0.0);
    scene = std::make_unique<CollisionScene>();
    scene->addUserObject(SceneObject(), shape(GetParam(), {tiny, tiny, tiny}),
                         placedAt({1.0F, 0.0F, 0.0F}, {tiny, 2.0F * tiny, tiny}), 0, 0, MASK);
    EXPECT_EQ(distanceBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}), 1.0);
    EXPECT_FALSE(distanceBy({{0.0F, tiny, 0.0F}, {1.0F, 0.0F, 0.0F}}));
    scene = std::make_unique<CollisionScene>();
    add(GetParam(), placedAt({0.0F, 1e30F, 0.0F}));
    EXPECT_EQ(distanceBy({Vector3::ZERO, {0.0F, 1e30F, 0.0F}}), 1.0);
}

TEST_P(EitherShapeTest, ASmallObjectFarAwayIsNeitherLostNorFoundBesideItself)
{
    add(GetParam(), placedAt({1048576.0F, 0.0F, 0.0F}, {0.001F, 0.001F, 0.001F}));
    EXPECT_TRUE(distanceBy({{0.0F, 0.000999F, 0.0F}, {1.0F, 0.0F, 0.0F}}));
    EXPECT_FALSE(distanceBy({{0.0F, 0.001001F, 0.0F}, {1.0F, 0.0F, 0.0F}}));
}

TEST_P(EitherShapeTest, ItsOffsetGoesThroughTheTransform)
{
    const SceneObject object;
    scene->addUserObject(object, shape(GetParam(), {2.0F, 2.0F, 2.0F}, {0.0F, 3.0F, 0.0F}), Matrix::IDENTITY,
                         0, 0, MASK);
    EXPECT_EQ(distanceBy({Vector3::ZERO, {0.0F, 1.0F, 0.0F}}), 2.0);
    EXPECT_FALSE(distanceBy({Vector3::ZERO, {0.0F, -1.0F, 0.0F}}));
    scene->updateTransform(object, placedAt({1.0F, 0.0F, 0.0F}, {2.0F, -2.0F, 2.0F}));
    EXPECT_EQ(distanceBy({{1.0F, 0.0F, 0.0F}, {0.0F, -1.0F, 0.0F}}), 4.0);
}

TEST_F(CollisionTest, ASphereUnderUnevenScaleIsAnEllipsoid)
{
    add(SPHERE, placedAt({10.0F, 0.0F, 0.0F}, {4.0F, 1.0F, 0.5F}));
    EXPECT_NEAR(*distanceBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}), 6.0, 1e-12);
    EXPECT_NEAR(*distanceBy({{10.0F, 5.0F, 0.0F}, {0.0F, -1.0F, 0.0F}}), 4.0, 1e-12);
    EXPECT_NEAR(*distanceBy({{10.0F, 0.0F, 5.0F}, {0.0F, 0.0F, -1.0F}}), 4.5, 1e-12);
    // At y = 0.6 the half width is 4 * 0.8.
    EXPECT_NEAR(*distanceBy({{0.0F, 0.6F, 0.0F}, {1.0F, 0.0F, 0.0F}}), 10.0 - 3.2, 1e-6);
    EXPECT_FALSE(distanceBy({{0.0F, 0.9F, 0.3F}, {1.0F, 0.0F, 0.0F}})) << "outside, within its box";
}

TEST_F(CollisionTest, ATurnedUnevenScaleTurnsTheEllipsoid)
{
    const Quaternion turn = Quaternion::fromAngleAxis(std::acos(-1.0F) / 4.0F, {0.0F, 0.0F, 1.0F});
    add(SPHERE, Matrix::constructTransformationMatrix(Vector3::ZERO, turn, {3.0F, 1.0F, 1.0F}));
    const float far = 10.0F * std::sqrt(0.5F);
    const auto along = distanceBy({{far, far, 0.0F}, {-far, -far, 0.0F}});
    const auto across = distanceBy({{-far, far, 0.0F}, {far, -far, 0.0F}});
    ASSERT_TRUE(along && across);
    EXPECT_NEAR(std::min(*along, *across), 0.7, 1e-6);
    EXPECT_NEAR(std::max(*along, *across), 0.9, 1e-6);
}

TEST_F(CollisionTest, ABoxIsTurnedWithItsTransform)
{
    const Quaternion turn = Quaternion::fromAngleAxis(std::acos(-1.0F) / 4.0F, {0.0F, 0.0F, 1.0F});
    add(BOX, Matrix::constructTransformationMatrix({10.0F, 0.0F, 0.0F}, turn, {1.0F, 1.0F, 1.0F}));
    EXPECT_NEAR(*distanceBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}), 10.0 - std::sqrt(2.0), 1e-6);
    EXPECT_TRUE(distanceBy({{0.0F, 1.41F, 0.0F}, {1.0F, 0.0F, 0.0F}}));
    EXPECT_FALSE(distanceBy({{0.0F, 1.42F, 0.0F}, {1.0F, 0.0F, 0.0F}}));
    EXPECT_FALSE(distanceBy({{9.1F, 0.95F, -5.0F}, {0.0F, 0.0F, 1.0F}})) << "a corner it had before the turn";
}

TEST_F(CollisionTest, ShearIsFollowed)
{
    Matrix sheared = Matrix::IDENTITY;
    sheared.m[1][0] = 2.0F; // x follows y twice
    add(BOX, sheared);
    EXPECT_TRUE(distanceBy({{2.9F, 0.99F, -5.0F}, {0.0F, 0.0F, 1.0F}}));
    EXPECT_FALSE(distanceBy({{-0.9F, 0.99F, -5.0F}, {0.0F, 0.0F, 1.0F}}));
    EXPECT_EQ(distanceBy({{-10.0F, 0.5F, 0.0F}, {1.0F, 0.0F, 0.0F}}), 10.0);
    scene = std::make_unique<CollisionScene>();
    add(SPHERE, sheared);
    EXPECT_NEAR(*distanceBy({{-10.0F, 0.6F, 0.0F}, {1.0F, 0.0F, 0.0F}}), 10.0 + 1.2 - 0.8, 1e-6);
}

TEST_F(CollisionTest, ABoxSeesRaysInItsFaces)
{
    add(BOX, placedAt({5.0F, 0.0F, 0.0F}, {1.0F, 0.3F, 7.1F}));
    EXPECT_NEAR(*distanceBy({{0.0F, 0.3F, 7.1F}, {1.0F, 0.0F, 0.0F}}), 4.0, 1e-12) << "along an edge";
    EXPECT_EQ(distanceBy({{5.0F, 0.3F, 0.0F}, {0.0F, 1.0F, 0.0F}}), 0.0) << "leaving through a face";
}

} // namespace
