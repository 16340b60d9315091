#pragma once

#include "tern_common/curve_view/nearest_sample_kernels.hpp"

// What the vectorised kernels have in common. Each of them is a file of its own, compiled for its processors,
// that instantiates these templates with lanes of an unnamed namespace and calls no inline function of
// another header: an instance that other files could share would be kept by the linker for all of them, the
// processors without those instructions included. Inlining is forced, for GCC leaves the upper halves of the
// registers dirty behind some calls between such functions, and then whatever runs next runs at a quarter of
// its speed.
#if defined(_MSC_VER)
#include <intrin.h>
#define TERN_COMMON_LANES_INLINE __forceinline
#else
#define TERN_COMMON_LANES_INLINE __attribute__((always_inline)) inline
#endif

/// How many points are compared with the nearest so far at a time, and how many such blocks ahead memory is
/// asked for: 18 KB, so that an array that fits into the first cache is read without it.
constexpr std::size_t NEAREST_SAMPLE_BLOCK = 64;
constexpr std::size_t NEAREST_SAMPLE_BLOCKS_AHEAD = 24;

/// The line of a ray, each number in all lanes.
template <class Lanes>
struct RayLanes
{
    typename Lanes::Floats originX, originY, originZ;
    typename Lanes::Floats directionX, directionY, directionZ;
};

template <class Lanes>
TERN_COMMON_LANES_INLINE RayLanes<Lanes> spread(const Kodo::Ray& ray)
{
    return {Lanes::all(ray.origin.x),    Lanes::all(ray.origin.y),    Lanes::all(ray.origin.z),
            Lanes::all(ray.direction.x), Lanes::all(ray.direction.y), Lanes::all(ray.direction.z)};
}

/// (x*x' + y*y') + z*z', in the order in which Vector3 does it.
template <class Lanes, class Floats = typename Lanes::Floats>
TERN_COMMON_LANES_INLINE Floats dot(Floats ax, Floats ay, Floats az, Floats bx, Floats by, Floats bz)
{
    return Lanes::add(Lanes::add(Lanes::multiply(ax, bx), Lanes::multiply(ay, by)), Lanes::multiply(az, bz));
}

/// The squared distances of the points that start at @p points, one for each lane.
template <class Lanes>
TERN_COMMON_LANES_INLINE typename Lanes::Floats distances(const Kodo::Vector3* points,
                                                          const RayLanes<Lanes>& ray)
{
    typename Lanes::Floats x, y, z;
    Lanes::load(&points->x, x, y, z);
    const auto along =
        dot<Lanes>(Lanes::subtract(x, ray.originX), Lanes::subtract(y, ray.originY),
                   Lanes::subtract(z, ray.originZ), ray.directionX, ray.directionY, ray.directionZ);
    const auto offsetX = Lanes::subtract(x, Lanes::add(ray.originX, Lanes::multiply(ray.directionX, along)));
    const auto offsetY = Lanes::subtract(y, Lanes::add(ray.originY, Lanes::multiply(ray.directionY, along)));
    const auto offsetZ = Lanes::subtract(z, Lanes::add(ray.originZ, Lanes::multiply(ray.directionZ, along)));
    return dot<Lanes>(offsetX, offsetY, offsetZ, offsetX, offsetY, offsetZ);
}

/// The least of the distances of points[begin] to points[end - 1] in each lane, or @p least where that is
/// less. The last points are read together with ones before them: a point that counts twice changes no
/// minimum.
template <class Lanes>
TERN_COMMON_LANES_INLINE typename Lanes::Floats leastInBlock(const Kodo::Vector3* points, std::size_t begin,
                                                             std::size_t end, const RayLanes<Lanes>& ray,
                                                             typename Lanes::Floats least)
{
    // Two minima, so that one need not wait for the other.
    auto other = least;
    std::size_t index = begin;
    for (; index + 2 * Lanes::WIDTH <= end; index += 2 * Lanes::WIDTH)
    {
        least = Lanes::minimum(distances<Lanes>(points + index, ray), least);
        other = Lanes::minimum(distances<Lanes>(points + index + Lanes::WIDTH, ray), other);
    }
    if (index + Lanes::WIDTH < end)
    {
        least = Lanes::minimum(distances<Lanes>(points + index, ray), least);
    }
    if (index < end)
    {
        other = Lanes::minimum(distances<Lanes>(points + end - Lanes::WIDTH, ray), other);
    }
    return Lanes::minimum(least, other);
}

/// The lowest bit of @p bits, which are not all clear. std::countr_zero would be shared with other files.
TERN_COMMON_LANES_INLINE std::size_t lowestBit(unsigned bits)
{
#if defined(_MSC_VER)
    unsigned long bit = 0;
    _BitScanForward(&bit, bits);
    return bit;
#else
    return static_cast<std::size_t>(__builtin_ctz(bits));
#endif
}

/// The first of points[begin] to points[end - 1] at @p distance, which one of them has and none before them.
template <class Lanes>
TERN_COMMON_LANES_INLINE std::size_t firstAt(const Kodo::Vector3* points, std::size_t begin, std::size_t end,
                                             const RayLanes<Lanes>& ray, float distance)
{
    const auto wanted = Lanes::all(distance);
    for (std::size_t index = begin; index + Lanes::WIDTH <= end; index += Lanes::WIDTH)
    {
        const unsigned found = Lanes::equal(distances<Lanes>(points + index, ray), wanted);
        if (found != 0)
        {
            return index + lowestBit(found);
        }
    }
    const std::size_t last = end - Lanes::WIDTH;
    return last + lowestBit(Lanes::equal(distances<Lanes>(points + last, ray), wanted));
}

/// Asks for the memory of the block that starts at @p points: the processor itself looks ahead too little
/// while it is busy with the points at hand.
template <class Lanes>
TERN_COMMON_LANES_INLINE void fetchBlock(const Kodo::Vector3* points)
{
    constexpr std::size_t CACHE_LINE = 64;
    const char* const bytes = reinterpret_cast<const char*>(points);
    for (std::size_t offset = 0; offset < NEAREST_SAMPLE_BLOCK * sizeof(Kodo::Vector3); offset += CACHE_LINE)
    {
        Lanes::fetch(bytes + offset);
    }
}

/// Looks for the least distance alone, a block at a time, and for its place in the winning block in the end.
template <class Lanes>
TERN_COMMON_LANES_INLINE NearestSample nearestInBlocks(const Kodo::Vector3* points, std::size_t count,
                                                       const Kodo::Ray& ray, float minDistance)
{
    if (count < Lanes::WIDTH)
    {
        return plainNearestSample(points, count, ray, minDistance);
    }
    const auto lanes = spread<Lanes>(ray);
    float nearest = minDistance;
    std::size_t winner = count;
    for (std::size_t begin = 0; begin < count; begin += NEAREST_SAMPLE_BLOCK)
    {
        const std::size_t end = count - begin < NEAREST_SAMPLE_BLOCK ? count : begin + NEAREST_SAMPLE_BLOCK;
        if (count - begin >= (NEAREST_SAMPLE_BLOCKS_AHEAD + 1) * NEAREST_SAMPLE_BLOCK)
        {
            fetchBlock<Lanes>(points + begin + NEAREST_SAMPLE_BLOCKS_AHEAD * NEAREST_SAMPLE_BLOCK);
        }
        const auto bound = Lanes::all(nearest);
        const auto least = leastInBlock<Lanes>(points, begin, end, lanes, bound);
        if (Lanes::less(least, bound) != 0)
        {
            nearest = Lanes::leastLane(least);
            winner = begin;
        }
    }
    if (winner == count)
    {
        return {minDistance, NearestSample::NONE};
    }
    const std::size_t end = count - winner < NEAREST_SAMPLE_BLOCK ? count : winner + NEAREST_SAMPLE_BLOCK;
    return {nearest, firstAt<Lanes>(points, winner, end, lanes, nearest)};
}
