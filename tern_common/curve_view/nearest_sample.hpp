#pragma once

#include "kodo/math/ray.hpp"
#include "kodo/math/vector3.hpp"

#include <cstddef>
#include <limits>
#include <span>

/// The sample nearest to a ray's line, and its squared distance from it.
struct NearestSample
{
    static constexpr std::size_t NONE = std::numeric_limits<std::size_t>::max();

    float distance;
    std::size_t index;
};

/// Walks @p points in order and yields the first of the least distance below @p minDistance, or NONE with
/// @p minDistance itself when there is no such point. For each point p, in single precision, each operation
/// rounded:
///
///     s = dot(p - origin, direction)
///     q = origin + direction * s
///     distance = lengthSquared(p - q)
///
/// The direction counts as given, and the points behind the origin count as well. A distance that is not a
/// number is never below another. The result is that of the plain loop to the bit, whatever the processor
/// offers to get there. Any thread.
NearestSample nearestSample(std::span<const Kodo::Vector3> points, const Kodo::Ray& ray, float minDistance);

/// One way to the same result.
struct NearestSampleKernel
{
    using Function = NearestSample(const Kodo::Vector3* points, std::size_t count, const Kodo::Ray& ray,
                                   float minDistance);

    const char* name;
    Function* nearest;
};

/// The kernels that run on this processor, the fastest first and the plain loop last: each is to be tested.
std::span<const NearestSampleKernel> nearestSampleKernels();
