#include "kodo/collision/collision_scene.hpp"
#include "kodo/collision/collision_scene_manager.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using Kodo::CollisionScene;
using Kodo::CollisionSceneManager;
using Kodo::CollisionShape;
using Kodo::Matrix;
using Kodo::Quaternion;
using Kodo::SceneObject;
using Kodo::SmartPointer;
using Kodo::Vector3;
using Kodo::Collisions::ICollisionCollector;
using Kodo::Collisions::ICollisionFilter;
using Kodo::Collisions::Ray;
using Kodo::Collisions::RayHit;

constexpr int SPHERE = CollisionShape::TEMPLATE_SPHERE;
constexpr int BOX = CollisionShape::TEMPLATE_BOX;
constexpr int MASK = 16;
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
constexpr float INFINITE = std::numeric_limits<float>::infinity();

static_assert(!std::is_copy_constructible_v<CollisionScene>);
static_assert(std::is_trivially_copyable_v<SceneObject>);

struct Hit
{
    std::uint64_t id;
    double distance;
    int mask;
};

class Collector final : public ICollisionCollector
{
public:
    explicit Collector(int queryReturnType = RETURN_ALL) : ICollisionCollector(queryReturnType) {}

    void onHit(const RayHit& hit) override
    {
        const std::uint64_t id = hit.sceneObject.id();
        hits.push_back({id, hit.distance, hit.collisionMask});
        if (then)
        {
            then(hit);
            EXPECT_EQ(hit.sceneObject.id(), id) << "valid for the whole call";
        }
    }

    std::vector<std::uint64_t> ids() const
    {
        std::vector<std::uint64_t> ids;
        for (const Hit& hit : hits)
        {
            ids.push_back(hit.id);
        }
        return ids;
    }

    std::vector<Hit> hits;
    std::function<void(const RayHit&)> then;
};

Matrix placedAt(const Vector3& position, const Vector3& scale = {1.0F, 1.0F, 1.0F})
{
    return Matrix::constructTransformationMatrix(position, Quaternion::IDENTITY, scale);
}

class CollisionTest : public testing::Test
{
protected:
    SmartPointer<CollisionShape> shape(int shapeTemplate, const Vector3& extent = {2.0F, 2.0F, 2.0F},
                                       const Vector3& offset = Vector3::ZERO)
    {
        return scene->createShape(shapeTemplate, extent, offset, false);
    }

    SceneObject add(int shapeTemplate, const Matrix& transform, int mask = MASK)
    {
        const SceneObject object;
        EXPECT_TRUE(scene->addUserObject(object, shape(shapeTemplate), transform, 0, 0, mask));
        return object;
    }

    std::vector<std::uint64_t> hitBy(const Ray& ray) const
    {
        Collector collector;
        scene->collideRay(ray, collector, nullptr);
        return collector.ids();
    }

    /// The distance of the only hit; nothing when there is none.
    std::optional<double> distanceBy(const Ray& ray) const
    {
        Collector collector;
        scene->collideRay(ray, collector, nullptr);
        EXPECT_LE(collector.hits.size(), 1U);
        return collector.hits.empty() ? std::nullopt : std::optional(collector.hits[0].distance);
    }

    std::unique_ptr<CollisionScene> scene = std::make_unique<CollisionScene>();
};

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

TEST_F(CollisionTest, HitsComeInTheOrderOfRegistrationWhateverTheirShapeAndPlace)
{
    std::vector<std::uint64_t> expected;
    for (int i = 0; i < 300; ++i)
    {
        const Vector3 scale = i % 3 == 0 ? Vector3{1.0F, 1.0F, 1.0F} : Vector3{1.0F, 2.0F, 1.0F};
        const float x = static_cast<float>(400 - i);
        const SceneObject object = add(i % 2 == 0 ? SPHERE : BOX, placedAt({x, 0.0F, 0.0F}, scale));
        expected.push_back(object.id());
        add(SPHERE, placedAt({x, 50.0F, 0.0F})); // beside the ray
    }
    EXPECT_EQ(hitBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}), expected);
    Collector first(ICollisionCollector::RETURN_ANY);
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, first, nullptr);
    EXPECT_EQ(first.ids(), std::vector{expected[0]});
}

TEST_F(CollisionTest, AMoveKeepsAnObjectsTurn)
{
    const SceneObject a = add(SPHERE, placedAt({5.0F, 0.0F, 0.0F}));
    const SceneObject b = add(BOX, placedAt({7.0F, 0.0F, 0.0F}));
    const Ray ray{Vector3::ZERO, {1.0F, 0.0F, 0.0F}};
    scene->updateTransform(a, placedAt({9.0F, 0.0F, 0.0F}, {1.0F, 3.0F, 1.0F})); // an ellipsoid now
    EXPECT_EQ(hitBy(ray), (std::vector{a.id(), b.id()}));
    scene->updateTransform(a, placedAt({9.0F, 10.0F, 0.0F}));
    EXPECT_EQ(hitBy(ray), std::vector{b.id()});
    scene->updateTransform(a, placedAt({3.0F, 0.0F, 0.0F}));
    EXPECT_EQ(hitBy(ray), (std::vector{a.id(), b.id()}));
}

TEST_F(CollisionTest, AnObjectIsTakenInOnceAndOutOnce)
{
    EXPECT_FALSE(scene->createShape(2, {2.0F, 2.0F, 2.0F}, Vector3::ZERO, false));
    EXPECT_FALSE(scene->createShape(-1, {2.0F, 2.0F, 2.0F}, Vector3::ZERO, true));
    const SceneObject object;
    EXPECT_FALSE(scene->addUserObject(object, nullptr, Matrix::IDENTITY, 0, 0, MASK));
    EXPECT_FALSE(scene->contains(object));
    const auto box = shape(BOX);
    EXPECT_EQ(box->shapeTemplate(), BOX);
    EXPECT_EQ(box->extent(), Vector3(2.0F, 2.0F, 2.0F));
    EXPECT_EQ(box->offset(), Vector3::ZERO);
    EXPECT_TRUE(scene->addUserObject(object, box, Matrix::IDENTITY, 0, 0, MASK));
    EXPECT_EQ(box->refCount(), 2);
    EXPECT_FALSE(scene->addUserObject(object, box, placedAt({50.0F, 0.0F, 0.0F}), 0, 0, 1));
    EXPECT_EQ(distanceBy({{-5.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}), 4.0) << "as it was";
    EXPECT_EQ(scene->objectCount(), 1U);
    scene->deleteObstacle(object);
    EXPECT_EQ(box->refCount(), 1);
    EXPECT_FALSE(scene->contains(object));
    scene->deleteObstacle(object);
    EXPECT_EQ(scene->objectCount(), 0U);
    EXPECT_TRUE(scene->addUserObject(object, box, Matrix::IDENTITY, 0, 0, MASK));
    EXPECT_EQ(scene->objectCount(), 1U);
}

TEST_F(CollisionTest, UnknownHandlesAreIgnored)
{
    const SceneObject object = add(SPHERE, Matrix::IDENTITY);
    const SceneObject unknown;
    scene->updateTransform(unknown, placedAt({9.0F, 0.0F, 0.0F}));
    scene->deleteObstacle(unknown);
    EXPECT_EQ(hitBy({{-5.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}), std::vector{object.id()});
    EXPECT_FALSE(scene->contains(unknown));
}

TEST_F(CollisionTest, CopiesOfAHandleNameTheSameObject)
{
    const SceneObject object;
    const SceneObject earlier = object;
    EXPECT_EQ(earlier, object);
    EXPECT_FALSE(SceneObject() == object);
    add(SPHERE, placedAt({50.0F, 0.0F, 0.0F}));
    scene->addUserObject(object, shape(SPHERE), Matrix::IDENTITY, 0, 0, MASK);
    EXPECT_TRUE(scene->contains(earlier));
    EXPECT_FALSE(scene->addUserObject(earlier, shape(SPHERE), Matrix::IDENTITY, 0, 0, MASK));
    scene->updateTransform(earlier, placedAt({0.0F, 5.0F, 0.0F}));
    EXPECT_EQ(hitBy({{-5.0F, 5.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}), std::vector{object.id()});
    scene->deleteObstacle(earlier);
    EXPECT_FALSE(scene->contains(object));
}

TEST_F(CollisionTest, AnObjectMayStandInSeveralScenes)
{
    CollisionScene other;
    add(SPHERE, placedAt({50.0F, 0.0F, 0.0F}));
    const SceneObject object = add(SPHERE, Matrix::IDENTITY);
    other.addUserObject(object, shape(BOX), placedAt({0.0F, 5.0F, 0.0F}), 0, 0, 3);
    scene->updateTransform(object, placedAt({0.0F, 9.0F, 0.0F}));
    EXPECT_EQ(hitBy({{-5.0F, 9.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}), std::vector{object.id()});
    Collector collector;
    other.collideRay({{-5.0F, 5.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}, collector, nullptr);
    EXPECT_EQ(collector.ids(), std::vector{object.id()});
    other.deleteObstacle(object);
    EXPECT_TRUE(scene->contains(object));
    EXPECT_FALSE(other.contains(object));
}

TEST_F(CollisionTest, AFilterSaysWhatIsLookedAt)
{
    class ByMask final : public ICollisionFilter
    {
    public:
        bool accepts(const SceneObject& object, int collisionMask) const override
        {
            asked.push_back(object.id());
            return (collisionMask & 2) != 0;
        }
        mutable std::vector<std::uint64_t> asked;
    };
    add(SPHERE, placedAt({3.0F, 0.0F, 0.0F}), 1);
    const SceneObject b = add(SPHERE, placedAt({6.0F, 0.0F, 0.0F}), 2);
    add(SPHERE, placedAt({9.0F, 0.0F, 0.0F}), 4);
    const SceneObject d = add(SPHERE, placedAt({12.0F, 0.0F, 0.0F}), 6);
    const ByMask filter;
    Collector collector;
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, collector, &filter);
    EXPECT_EQ(collector.ids(), (std::vector{b.id(), d.id()}));
    Collector first(ICollisionCollector::RETURN_ANY);
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, first, &filter);
    EXPECT_EQ(first.ids(), std::vector{b.id()}) << "what the filter refuses is not the one";
}

TEST_F(CollisionTest, TheOrderSurvivesManyRemovalsAndAdditions)
{
    std::vector<SceneObject> objects;
    for (int i = 0; i < 1000; ++i)
    {
        objects.push_back(add(i % 2 == 0 ? SPHERE : BOX, placedAt({static_cast<float>(i), 0.0F, 0.0F})));
    }
    std::vector<std::uint64_t> expected;
    for (std::size_t i = 0; i < objects.size(); ++i)
    {
        if (i % 10 == 7)
        {
            expected.push_back(objects[i].id());
        }
        else
        {
            scene->deleteObstacle(objects[i]);
        }
    }
    const Ray ray{{-5.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}};
    EXPECT_EQ(hitBy(ray), expected);
    expected.push_back(add(SPHERE, placedAt(Vector3::ZERO)).id()); // in a slot of one that is gone
    EXPECT_EQ(hitBy(ray), expected);
    EXPECT_FALSE(scene->contains(objects[0]));
    scene->updateTransform(objects[17], placedAt({0.0F, 90.0F, 0.0F})); // found after all has moved up
    std::erase(expected, objects[17].id());
    EXPECT_EQ(hitBy(ray), expected);
    EXPECT_EQ(scene->objectCount(), 101U);
}

TEST_F(CollisionTest, ACollectorMayTakeOutMoveAndTakeIn)
{
    std::vector<SceneObject> objects;
    for (int i = 0; i < 200; ++i)
    {
        objects.push_back(add(SPHERE, placedAt({static_cast<float>(i), 0.0F, 0.0F})));
    }
    Collector collector;
    collector.then = [&](const RayHit&)
    {
        const std::size_t turn = collector.hits.size() - 1;
        if (turn == 0)
        {
            for (std::size_t i = 3; i < 197; ++i)
            {
                scene->deleteObstacle(objects[i]);
            }
            scene->updateTransform(objects[1], placedAt({0.0F, 90.0F, 0.0F}));
            scene->updateTransform(objects[198], placedAt({0.0F, 90.0F, 0.0F}));
        }
        for (int i = 0; i < 100; ++i) // the arrays grow beneath the query
        {
            add(BOX, placedAt(Vector3::ZERO));
        }
    };
    const Ray ray{{-5.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}};
    scene->collideRay(ray, collector, nullptr);
    EXPECT_EQ(collector.ids(),
              (std::vector{objects[0].id(), objects[2].id(), objects[197].id(), objects[199].id()}));
    EXPECT_EQ(scene->objectCount(), 6U + 400U);
    EXPECT_EQ(hitBy(ray).size(), 4U + 400U);
}

TEST_F(CollisionTest, ACollectorMayTakeOutEverything)
{
    std::vector<SceneObject> objects;
    for (int i = 0; i < 200; ++i)
    {
        objects.push_back(add(SPHERE, Matrix::IDENTITY));
    }
    Collector collector;
    collector.then = [&](const RayHit& hit)
    {
        for (const SceneObject& object : objects)
        {
            scene->deleteObstacle(object);
        }
        EXPECT_FALSE(scene->contains(hit.sceneObject));
    };
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, collector, nullptr);
    EXPECT_EQ(collector.hits.size(), 1U);
    EXPECT_EQ(scene->objectCount(), 0U);
    EXPECT_EQ(hitBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}).size(), 0U);
}

TEST_F(CollisionTest, ACollectorMayDoAwayWithTheScene)
{
    for (int i = 0; i < 200; ++i)
    {
        add(i % 2 == 0 ? SPHERE : BOX, Matrix::IDENTITY);
    }
    Collector collector;
    collector.then = [&](const RayHit&) { scene.reset(); };
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, collector, nullptr);
    EXPECT_EQ(collector.hits.size(), 1U);
}

TEST_F(CollisionTest, AFilterMayDoAwayWithTheSceneToo)
{
    class Careless final : public ICollisionFilter
    {
    public:
        explicit Careless(std::unique_ptr<CollisionScene>& scene) : m_scene(scene) {}
        bool accepts(const SceneObject& /*object*/, int /*collisionMask*/) const override
        {
            m_scene.reset();
            return true;
        }

    private:
        std::unique_ptr<CollisionScene>& m_scene;
    };
    const SceneObject object = add(SPHERE, Matrix::IDENTITY);
    add(SPHERE, Matrix::IDENTITY);
    const Careless filter(scene);
    Collector collector;
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, collector, &filter);
    EXPECT_EQ(collector.ids(), std::vector{object.id()}) << "it was accepted";
}

TEST_F(CollisionTest, QueriesNestAndMayThrow)
{
    std::vector<SceneObject> objects;
    for (int i = 0; i < 200; ++i)
    {
        objects.push_back(add(SPHERE, Matrix::IDENTITY));
    }
    const Ray ray{Vector3::ZERO, {1.0F, 0.0F, 0.0F}};
    Collector outer;
    outer.then = [&](const RayHit& hit)
    {
        if (outer.hits.size() == 1)
        {
            for (std::size_t i = 1; i < 190; ++i)
            {
                scene->deleteObstacle(objects[i]);
            }
            Collector inner;
            scene->collideRay(ray, inner, nullptr); // must not close the gaps under the outer one
            EXPECT_EQ(inner.hits.size(), 11U);
            EXPECT_EQ(inner.hits[0].id, hit.sceneObject.id());
        }
        if (outer.hits.size() == 5)
        {
            throw std::runtime_error("enough");
        }
    };
    EXPECT_THROW(scene->collideRay(ray, outer, nullptr), std::runtime_error);
    EXPECT_EQ(outer.ids(), (std::vector{objects[0].id(), objects[190].id(), objects[191].id(),
                                        objects[192].id(), objects[193].id()}));
    EXPECT_EQ(hitBy(ray).size(), 11U) << "usable as before";
}

TEST(CollisionSceneManagerTest, ARemovedSceneTakesItsObjectsWithIt)
{
    CollisionSceneManager& manager = CollisionSceneManager::instance();
    EXPECT_EQ(manager.scene(9), nullptr);
    CollisionScene& scene = manager.createScene(9);
    const SceneObject object;
    const auto shape = scene.createShape(SPHERE, {1.0F, 1.0F, 1.0F}, Vector3::ZERO, false);
    scene.addUserObject(object, shape, Matrix::IDENTITY, 0, 0, MASK);
    EXPECT_EQ(manager.scene(9), &scene);
    manager.removeScene(9);
    manager.removeScene(9);
    EXPECT_EQ(manager.scene(9), nullptr);
    EXPECT_EQ(shape->refCount(), 1);
    CollisionScene& anew = manager.createScene(9);
    EXPECT_FALSE(anew.contains(object));
    anew.updateTransform(object, Matrix::IDENTITY);
    anew.deleteObstacle(object);
    EXPECT_TRUE(anew.addUserObject(object, shape, Matrix::IDENTITY, 0, 0, MASK));
    manager.removeScene(9);
}

} // namespace
