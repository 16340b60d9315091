#pragma once

#include "kodo/collision/collision_scene.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

using Kodo::CollisionScene;
using Kodo::CollisionShape;
using Kodo::Matrix;
using Kodo::Quaternion;
using Kodo::SceneObject;
using Kodo::SmartPointer;
using Kodo::Vector3;
using Kodo::Collisions::ICollisionCollector;
using Kodo::Collisions::Ray;
using Kodo::Collisions::RayHit;

inline constexpr int SPHERE = CollisionShape::TEMPLATE_SPHERE;
inline constexpr int BOX = CollisionShape::TEMPLATE_BOX;
inline constexpr int MASK = 16;

/// Keeps what a ray hits, and does what the test says meanwhile.
class Collector final : public ICollisionCollector
{
public:
    struct Hit
    {
        std::uint64_t id;
        double distance;
        int mask;
    };

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

inline Matrix placedAt(const Vector3& position, const Vector3& scale = {1.0F, 1.0F, 1.0F})
{
    return Matrix::constructTransformationMatrix(position, Quaternion::IDENTITY, scale);
}

/// A scene with shapes of size 2, so that the radius of a sphere is 1.
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
