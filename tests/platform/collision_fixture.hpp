#pragma once

#include "kodo/collision/collision_scene.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

inline constexpr int SPHERE = Kodo::CollisionShape::TEMPLATE_SPHERE;
inline constexpr int BOX = Kodo::CollisionShape::TEMPLATE_BOX;
inline constexpr int MASK = 16;

/// Keeps what a ray hits, and does what the test says meanwhile.
class Collector final : public Kodo::Collisions::ICollisionCollector
{
public:
    struct Hit
    {
        std::uint64_t id;
        double distance;
        int mask;
    };

    explicit Collector(int queryReturnType = RETURN_ALL)
        : Kodo::Collisions::ICollisionCollector(queryReturnType)
    {
    }

    void onHit(const Kodo::Collisions::RayHit& hit) override
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
    std::function<void(const Kodo::Collisions::RayHit&)> then;
};

inline Kodo::Matrix placedAt(const Kodo::Vector3& position, const Kodo::Vector3& scale = {1.0F, 1.0F, 1.0F})
{
    return Kodo::Matrix::constructTransformationMatrix(position, Kodo::Quaternion::IDENTITY, scale);
}

/// A scene with shapes of size 2, so that the radius of a sphere is 1.
class CollisionTest : public testing::Test
{
protected:
    Kodo::SmartPointer<Kodo::CollisionShape> shape(int shapeTemplate,
                                                   const Kodo::Vector3& extent = {2.0F, 2.0F, 2.0F},
                                                   const Kodo::Vector3& offset = Kodo::Vector3::ZERO)
    {
        return scene->createShape(shapeTemplate, extent, offset, false);
    }

    Kodo::SceneObject add(int shapeTemplate, const Kodo::Matrix& transform, int mask = MASK)
    {
        const Kodo::SceneObject object;
        EXPECT_TRUE(scene->addUserObject(object, shape(shapeTemplate), transform, 0, 0, mask));
        return object;
    }

    std::vector<std::uint64_t> hitBy(const Kodo::Collisions::Ray& ray) const
    {
        Collector collector;
        scene->collideRay(ray, collector, nullptr);
        return collector.ids();
    }

    /// The distance of the only hit; nothing when there is none.
    std::optional<double> distanceBy(const Kodo::Collisions::Ray& ray) const
    {
        Collector collector;
        scene->collideRay(ray, collector, nullptr);
        EXPECT_LE(collector.hits.size(), 1U);
        return collector.hits.empty() ? std::nullopt : std::optional(collector.hits[0].distance);
    }

    std::unique_ptr<Kodo::CollisionScene> scene = std::make_unique<Kodo::CollisionScene>();
};
