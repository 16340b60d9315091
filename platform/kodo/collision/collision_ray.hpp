#pragma once

#include "kodo/math/ray.hpp"

#include <limits>

namespace Kodo::Collisions
{

/// A ray of a query: Kodo::Ray with an end. The direction may have any length but zero.
struct Ray
{
    Vector3 origin;
    Vector3 direction;
    /// Where it ends, as a multiple of the direction.
    float length = std::numeric_limits<float>::max();
};

} // namespace Kodo::Collisions
