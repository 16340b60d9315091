// Whatever bits the numbers have, every kernel finds what the plain loop finds, to the bit.

#include "fuzz/check.hpp"
#include "tern_common/curve_view/nearest_sample.hpp"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// The input is the bound, the ray and then the points, all as the bits of floats. What is left over is the
/// number of times that the points are repeated, so that small inputs reach long arrays as well.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::array<float, 7> head{};
    if (size < sizeof(head))
    {
        return 0;
    }
    std::memcpy(head.data(), data, sizeof(head));
    data += sizeof(head);
    size -= sizeof(head);
    const float bound = head[0];
    const Kodo::Ray ray{{head[1], head[2], head[3]}, {head[4], head[5], head[6]}};

    const std::size_t count = size / sizeof(Kodo::Vector3);
    const std::size_t rest = size % sizeof(Kodo::Vector3);
    std::vector<Kodo::Vector3> points(count * (rest == 0 ? 1 : data[size - 1] % 16U + 1));
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        std::array<float, 3> point{};
        std::memcpy(point.data(), data + i % count * sizeof(point), sizeof(point));
        points[i] = {point[0], point[1], point[2]};
    }

    const auto kernels = nearestSampleKernels();
    const NearestSample expected = kernels.back().nearest(points.data(), points.size(), ray, bound);
    for (const NearestSampleKernel& kernel : kernels)
    {
        const NearestSample got = kernel.nearest(points.data(), points.size(), ray, bound);
        FUZZ_CHECK(got.index == expected.index);
        FUZZ_CHECK(std::bit_cast<std::uint32_t>(got.distance) ==
                   std::bit_cast<std::uint32_t>(expected.distance));
    }
    FUZZ_CHECK(nearestSample(points, ray, bound).index == expected.index);
    FUZZ_CHECK(expected.index == NearestSample::NONE || expected.index < points.size());
    return 0;
}
