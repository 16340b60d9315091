#include "tern_common/curve_view/nearest_sample.hpp"

#include "tests/support/random_seed.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Points = std::vector<Kodo::Vector3>;

constexpr float INFINITE = std::numeric_limits<float>::infinity();
constexpr float NO_NUMBER = std::numeric_limits<float>::quiet_NaN();
constexpr float LARGEST = std::numeric_limits<float>::max();
constexpr float TINIEST = std::numeric_limits<float>::denorm_min();

float squaredDistance(const Kodo::Vector3& p, const Kodo::Ray& ray)
{
    const Kodo::Vector3& o = ray.origin;
    const Kodo::Vector3& d = ray.direction;
    const float s = ((p.x - o.x) * d.x + (p.y - o.y) * d.y) + (p.z - o.z) * d.z;
    const float x = p.x - (o.x + d.x * s);
    const float y = p.y - (o.y + d.y * s);
    const float z = p.z - (o.z + d.z * s);
    return (x * x + y * y) + z * z;
}

/// The rule, written out once more.
NearestSample nearestByRule(std::span<const Kodo::Vector3> points, const Kodo::Ray& ray, float minDistance)
{
    NearestSample nearest{minDistance, NearestSample::NONE};
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        if (squaredDistance(points[i], ray) < nearest.distance)
        {
            nearest = {squaredDistance(points[i], ray), i};
        }
    }
    return nearest;
}

bool sameBits(const NearestSample& a, const NearestSample& b)
{
    return a.index == b.index &&
           std::bit_cast<std::uint32_t>(a.distance) == std::bit_cast<std::uint32_t>(b.distance);
}

/// Whether every kernel yields what the rule does, to the bit.
testing::AssertionResult followTheRule(std::span<const Kodo::Vector3> points, const Kodo::Ray& ray,
                                       float minDistance)
{
    const NearestSample expected = nearestByRule(points, ray, minDistance);
    const auto wrong = [&](const std::string& who, const NearestSample& got)
    {
        return testing::AssertionFailure()
               << who << " among " << points.size() << " points below " << minDistance << ": " << got.index
               << " at " << got.distance << " instead of " << expected.index << " at " << expected.distance;
    };
    for (const NearestSampleKernel& kernel : nearestSampleKernels())
    {
        const NearestSample got = kernel.nearest(points.data(), points.size(), ray, minDistance);
        if (!sameBits(got, expected))
        {
            return wrong(kernel.name, got);
        }
    }
    const NearestSample got = nearestSample(points, ray, minDistance);
    return sameBits(got, expected) ? testing::AssertionSuccess() : wrong("the choice of kernels", got);
}

using Random = std::mt19937;
using Number = std::function<float(Random&)>;

float within(Random& random, float limit)
{
    return std::uniform_real_distribution<float>(-limit, limit)(random);
}

/// A number from @p usual, but one of @p rare once in @p period.
Number sprinkled(Number usual, std::vector<float> rare, std::uint32_t period)
{
    return [usual = std::move(usual), rare = std::move(rare), period](Random& random)
    { return random() % period == 0 ? rare[random() % rare.size()] : usual(random); };
}

struct Flavour
{
    const char* name;
    Number coordinate;
    Number direction;
};

std::vector<Flavour> flavours()
{
    const Number wide = [](Random& random) { return within(random, 1000.0F); };
    const Number unit = [](Random& random) { return within(random, 1.0F); };
    const Number step = [](Random& random) { return static_cast<float>(random() % 3) - 1.0F; };
    const Number tiny = [](Random& random) { return TINIEST * static_cast<float>(random() % 64); };
    const Number small = [](Random& random) { return within(random, 1e-19F); };
    const Number huge = [](Random& random) { return within(random, 1e19F); };
    const Number bits = [](Random& random)
    { return std::bit_cast<float>(static_cast<std::uint32_t>(random())); };
    return {
        {"scattered", wide, unit},
        {"full of ties", step, step},
        {"with no numbers", sprinkled(wide, {NO_NUMBER, -NO_NUMBER}, 8), sprinkled(unit, {NO_NUMBER}, 64)},
        {"with infinities", sprinkled(wide, {INFINITE, -INFINITE}, 8), sprinkled(unit, {INFINITE}, 64)},
        {"denormal", tiny, sprinkled(step, {TINIEST, 1e30F}, 4)},
        {"of denormal squares", small, unit},
        {"overflowing", sprinkled(huge, {0.0F, -0.0F, LARGEST, -LARGEST}, 8), unit},
        {"of any bits", bits, bits},
    };
}

Kodo::Vector3 vectorOf(const Number& number, Random& random)
{
    const float x = number(random);
    const float y = number(random);
    return {x, y, number(random)};
}

/// Bounds that matter for these points: those of the inserter and of later views, and what is no bound at
/// all.
float boundFor(std::span<const Kodo::Vector3> points, const Kodo::Ray& ray, Random& random)
{
    const float least = nearestByRule(points, ray, INFINITE).distance;
    const std::array bounds = {LARGEST, LARGEST,   INFINITE, least, std::nextafter(least, INFINITE),
                               0.0F,    NO_NUMBER, -1.0F,    2.0F,  least * 2};
    return bounds[random() % bounds.size()];
}

} // namespace

TEST(NearestSampleTest, AllKernelsThatTheProcessorRunsAreListed)
{
    std::vector<std::string> names;
    for (const NearestSampleKernel& kernel : nearestSampleKernels())
    {
        names.emplace_back(kernel.name);
    }
    std::vector<std::string> expected{"plain"};
#if defined(__x86_64__) || defined(_M_X64)
    expected.insert(expected.begin(), "SSE2");
#endif
#if defined(__x86_64__) && !defined(_WIN32)
    if (__builtin_cpu_supports("avx2"))
    {
        expected.insert(expected.begin(), "AVX2");
    }
#endif
    EXPECT_EQ(names, expected);
}

TEST(NearestSampleTest, EveryKernelFollowsTheRuleToTheBitAtEveryLength)
{
    constexpr std::size_t LONGEST = 300;
    constexpr int ROUNDS = 18;
    Random random(static_cast<std::uint32_t>(randomSeed()));
    int inputs = 0;
    for (const Flavour& flavour : flavours())
    {
        SCOPED_TRACE(flavour.name);
        for (std::size_t length = 0; length <= LONGEST; ++length)
        {
            for (int round = 0; round < ROUNDS; ++round)
            {
                // Ends with its allocation, so that a read past the end is seen by the sanitizer.
                const std::size_t offset = random() % 8;
                Points storage(offset + length);
                std::generate(storage.begin(), storage.end(),
                              [&] { return vectorOf(flavour.coordinate, random); });
                const auto points = std::span(storage).subspan(offset);
                const Kodo::Ray ray{vectorOf(flavour.coordinate, random),
                                    vectorOf(flavour.direction, random)};
                ASSERT_TRUE(followTheRule(points, ray, boundFor(points, ray, random)));
                ++inputs;
            }
        }
    }
    EXPECT_GE(inputs, 40'000);
}

TEST(NearestSampleTest, EveryKernelFollowsTheRuleInLongArrays)
{
    Random random(static_cast<std::uint32_t>(randomSeed()));
    for (const Flavour& flavour : flavours())
    {
        SCOPED_TRACE(flavour.name);
        for (const std::size_t length : {1'599U, 1'600U, 1'601U, 1'664U, 4'097U, 50'003U})
        {
            Points points(length);
            std::generate(points.begin(), points.end(), [&] { return vectorOf(flavour.coordinate, random); });
            const Kodo::Ray ray{vectorOf(flavour.coordinate, random), vectorOf(flavour.direction, random)};
            ASSERT_TRUE(followTheRule(points, ray, LARGEST)) << length;
        }
    }
}

TEST(NearestSampleTest, TheNearestIsFoundAtEveryPlace)
{
    const Kodo::Ray ray{{0, 0, 0}, {0, 0, 1}};
    Points points(2'000, Kodo::Vector3(3, 4, 7));
    for (std::size_t place = 0; place < points.size(); ++place)
    {
        points[place].x = 1;
        for (const NearestSampleKernel& kernel : nearestSampleKernels())
        {
            const NearestSample got = kernel.nearest(points.data(), points.size(), ray, LARGEST);
            ASSERT_TRUE(sameBits(got, {17.0F, place})) << kernel.name << " found " << got.index;
        }
        points[place].x = 3;
    }
}

TEST(NearestSampleTest, OfTwoAtTheSameDistanceTheFirstIsTaken)
{
    const Kodo::Ray ray{{0, 0, 0}, {0, 0, 1}};
    for (std::size_t first = 0; first < 300; ++first)
    {
        for (std::size_t second = first + 1; second < 300; second += 7)
        {
            Points points(300, Kodo::Vector3(3, 4, 0));
            points[first] = {0, 2, 5};
            points[second] = {-2, 0, -90};
            for (const NearestSampleKernel& kernel : nearestSampleKernels())
            {
                const NearestSample got = kernel.nearest(points.data(), points.size(), ray, LARGEST);
                ASSERT_TRUE(sameBits(got, {4.0F, first})) << kernel.name << " found " << got.index;
            }
        }
    }
}

TEST(NearestSampleTest, PointsThatComeEverCloserReplaceOneAnother)
{
    Points points;
    for (int i = 5'000; i > 0; --i)
    {
        points.emplace_back(static_cast<float>(i), 0.0F, static_cast<float>(i % 3));
    }
    EXPECT_TRUE(followTheRule(points, {{0, 0, 0}, {0, 0, 1}}, LARGEST));
    EXPECT_EQ(nearestSample(points, {{0, 0, 0}, {0, 0, 1}}, LARGEST).index, 4'999U);
}

TEST(NearestSampleTest, ThereIsNoneWhereNothingIsStrictlyBelowTheBound)
{
    const Points points(40, Kodo::Vector3(3, 4, 0));
    const Kodo::Ray ray{{0, 0, 0}, {0, 0, 1}};
    EXPECT_TRUE(sameBits(nearestSample(points, ray, 25.0F), {25.0F, NearestSample::NONE}));
    EXPECT_TRUE(sameBits(nearestSample(points, ray, NO_NUMBER), {NO_NUMBER, NearestSample::NONE}));
    EXPECT_TRUE(sameBits(nearestSample({}, ray, LARGEST), {LARGEST, NearestSample::NONE}));
    EXPECT_TRUE(sameBits(nearestSample(points, ray, std::nextafter(25.0F, INFINITE)), {25.0F, 0}));
}

TEST(NearestSampleTest, PointsBehindTheOriginCountAndTheDirectionIsTakenAsGiven)
{
    const Points points{{1, 0, -50}, {0.5F, 0, 1}, {3, 0, 0}};
    EXPECT_EQ(nearestSample(points, {{0, 0, 0}, {0, 0, -1}}, LARGEST).index, 1U);
    EXPECT_EQ(nearestSample(std::span(points).first(1), {{0, 0, 0}, {0, 0, 1}}, LARGEST).index, 0U);
    // Twice as long a direction goes four times as far along, three times past the point's own foot.
    EXPECT_TRUE(sameBits(nearestSample(points, {{0, 0, 0}, {0, 0, 2}}, LARGEST), {9.0F, 2}));
    EXPECT_TRUE(sameBits(nearestSample(points, {{0, 0, 0}, {0, 0, 0}}, LARGEST), {1.25F, 1}));
}
