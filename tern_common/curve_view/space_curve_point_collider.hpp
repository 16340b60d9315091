#pragma once

#include "kodo/chunk/client_space.hpp"
#include "kodo/collision/collision_ray.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "tern_common/export.hpp"

#include <vector>

class CurveViewControlPoint;

/// Finds the control points that a ray hits in one client space, which it holds. A value. Main thread only.
class TERN_COMMON_API SpaceCurvePointCollider
{
public:
    explicit SpaceCurvePointCollider(Kodo::SmartPointer<Kodo::ClientSpace> space) noexcept;

    /// The control points hit, in the order in which the collision scene reports them: neither sorted nor
    /// rid of doubles. The pointers hold nothing. Empty where there is no space or no collision scene.
    std::vector<CurveViewControlPoint*> collide(Kodo::Collisions::Ray& ray);

private:
    Kodo::SmartPointer<Kodo::ClientSpace> m_space;
};
