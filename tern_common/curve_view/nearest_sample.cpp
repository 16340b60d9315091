#include "tern_common/curve_view/nearest_sample.hpp"

#include "tern_common/curve_view/nearest_sample_kernels.hpp"

#include <array>

namespace
{

constexpr std::array KERNELS = {
#if defined(TERN_COMMON_NEAREST_AVX2)
    NearestSampleKernel{"AVX2", avx2NearestSample},
#endif
#if defined(TERN_COMMON_NEAREST_SSE2)
    NearestSampleKernel{"SSE2", sse2NearestSample},
#endif
    NearestSampleKernel{"plain", plainNearestSample},
};

/// How many of the kernels, from the fastest on, this processor lacks.
std::size_t missingKernels()
{
#if defined(TERN_COMMON_NEAREST_AVX2)
    return __builtin_cpu_supports("avx2") ? 0 : 1;
#else
    return 0;
#endif
}

} // namespace

NearestSample plainNearestSample(const Kodo::Vector3* points, std::size_t count, const Kodo::Ray& ray,
                                 float minDistance)
{
    NearestSample nearest{minDistance, NearestSample::NONE};
    for (std::size_t index = 0; index < count; ++index)
    {
        const Kodo::Vector3& point = points[index];
        const float along = (point - ray.origin).dotProduct(ray.direction);
        const Kodo::Vector3 foot = ray.origin + ray.direction * along;
        const float distance = (point - foot).lengthSquared();
        if (distance < nearest.distance)
        {
            nearest = {distance, index};
        }
    }
    return nearest;
}

std::span<const NearestSampleKernel> nearestSampleKernels()
{
    return std::span(KERNELS).subspan(missingKernels());
}

NearestSample nearestSample(std::span<const Kodo::Vector3> points, const Kodo::Ray& ray, float minDistance)
{
    return KERNELS[missingKernels()].nearest(points.data(), points.size(), ray, minDistance);
}
