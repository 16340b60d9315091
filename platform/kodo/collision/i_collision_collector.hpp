#pragma once

#include "kodo/collision/scene_object.hpp"
#include "kodo/export.hpp"

namespace Kodo::Collisions
{

/// Where a ray enters an object.
struct RayHit
{
    const SceneObject& sceneObject;
    double distance; ///< as a multiple of the ray's direction; 0 when the ray begins inside
    int collisionMask;
};

/// Receives what a query hits.
class KODO_API ICollisionCollector
{
public:
    enum QueryReturnType : int
    {
        RETURN_ANY = 0, ///< one hit, the first found
        RETURN_ALL = 1
    };

    virtual ~ICollisionCollector();

    int queryReturnType() const noexcept { return m_queryReturnType; }
    virtual void onHit(const RayHit& hit) = 0;

protected:
    explicit ICollisionCollector(int queryReturnType) noexcept : m_queryReturnType(queryReturnType) {}
    ICollisionCollector(const ICollisionCollector&) = default;
    ICollisionCollector& operator=(const ICollisionCollector&) = default;

private:
    int m_queryReturnType;
};

/// Says which objects a query looks at.
class KODO_API ICollisionFilter
{
public:
    virtual ~ICollisionFilter();
    virtual bool accepts(const SceneObject& object, int collisionMask) const = 0;

protected:
    ICollisionFilter() = default;
    ICollisionFilter(const ICollisionFilter&) = default;
    ICollisionFilter& operator=(const ICollisionFilter&) = default;
};

} // namespace Kodo::Collisions
