// The curve view beside what it can't do without: reading the samples, asking the model, recording the frame.
//
//     build/release/bin/curve_benchmark

#include "benchmarks/ratio_report.hpp"
#include "benchmarks/streaming_sum.hpp"
#include "tern_common/curve_view/nearest_sample.hpp"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace
{

using Points = std::vector<Kodo::Vector3>;

constexpr float LARGEST = std::numeric_limits<float>::max();
constexpr std::int64_t SAMPLE_COUNTS[] = {1'000, 100'000, 10'000'000};
constexpr Kodo::Ray RAY{{1, 2, 3}, {0.6F, 0, 0.8F}};

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "wrong result: %s\n", what);
    std::exit(1);
}

const Points& samples(std::size_t count)
{
    static std::map<std::size_t, Points> all;
    Points& points = all[count];
    if (points.empty())
    {
        std::mt19937 random(static_cast<std::uint32_t>(count));
        std::uniform_real_distribution<float> coordinate(-1000.0F, 1000.0F);
        points.reserve(count);
        while (points.size() < count)
        {
            const float x = coordinate(random);
            const float y = coordinate(random);
            points.emplace_back(x, y, coordinate(random));
        }
    }
    return points;
}

/// The kernels' reference is the plain one: the rule as it is written.
const NearestSampleKernel& plainKernel()
{
    return nearestSampleKernels().back();
}

void runKernel(benchmark::State& state, const NearestSampleKernel& kernel)
{
    const Points& points = samples(static_cast<std::size_t>(state.range(0)));
    NearestSample nearest{};
    for (auto _ : state)
    {
        nearest = kernel.nearest(points.data(), points.size(), RAY, LARGEST);
        benchmark::DoNotOptimize(nearest);
    }
    if (nearest.index != plainKernel().nearest(points.data(), points.size(), RAY, LARGEST).index)
    {
        fail(kernel.name);
    }
}

void nearestByPlainRule(benchmark::State& state)
{
    runKernel(state, plainKernel());
}

void nearestOfSamples(benchmark::State& state)
{
    const Points& points = samples(static_cast<std::size_t>(state.range(0)));
    NearestSample nearest{};
    for (auto _ : state)
    {
        nearest = nearestSample(points, RAY, LARGEST);
        benchmark::DoNotOptimize(nearest);
    }
    if (nearest.index != plainKernel().nearest(points.data(), points.size(), RAY, LARGEST).index)
    {
        fail("the nearest sample");
    }
}

void streamingRead(benchmark::State& state)
{
    const Points& points = samples(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(streamingSum(&points.front().x, 3 * points.size()));
    }
}

/// A hundred views of a thousand samples, each in memory of its own.
const std::vector<Points>& views()
{
    static const std::vector<Points> all = []
    {
        std::vector<Points> parts;
        const Points& points = samples(100'000);
        for (auto from = points.begin(); from != points.end(); from += 1'000)
        {
            parts.emplace_back(from, from + 1'000);
        }
        return parts;
    }();
    return all;
}

void nearestSampleOfViews(benchmark::State& state)
{
    float distance = LARGEST;
    for (auto _ : state)
    {
        distance = LARGEST;
        for (const Points& points : views())
        {
            distance = nearestSample(points, RAY, distance).distance;
        }
        benchmark::DoNotOptimize(distance);
    }
    if (distance != nearestSample(samples(100'000), RAY, LARGEST).distance)
    {
        fail("the nearest sample of all views");
    }
}

void streamingReadOfViews(benchmark::State& state)
{
    for (auto _ : state)
    {
        for (const Points& points : views())
        {
            benchmark::DoNotOptimize(streamingSum(&points.front().x, 3 * points.size()));
        }
    }
}

void registerNearestSample(std::vector<Ratio>& ratios)
{
    constexpr double AGAINST_READ[] = {5, 3.6, 1.6};
    for (std::size_t i = 0; i < std::size(SAMPLE_COUNTS); ++i)
    {
        const std::string suffix = "/" + std::to_string(SAMPLE_COUNTS[i]);
        benchmark::RegisterBenchmark("nearestSample", nearestOfSamples)->Arg(SAMPLE_COUNTS[i]);
        benchmark::RegisterBenchmark("streamingRead", streamingRead)->Arg(SAMPLE_COUNTS[i]);
        benchmark::RegisterBenchmark("plainRule", nearestByPlainRule)->Arg(SAMPLE_COUNTS[i]);
        ratios.push_back({"nearestSample" + suffix, "streamingRead" + suffix, AGAINST_READ[i]});
        if (SAMPLE_COUNTS[i] < 10'000'000) // beyond the caches the memory sets the pace
        {
            ratios.push_back({"nearestSample" + suffix, "plainRule" + suffix, 0.2});
        }
    }
    benchmark::RegisterBenchmark("nearestSampleOfViews", nearestSampleOfViews);
    benchmark::RegisterBenchmark("streamingReadOfViews", streamingReadOfViews);
    ratios.push_back({"nearestSampleOfViews", "streamingReadOfViews", 4.2});
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<Ratio> ratios;
    registerNearestSample(ratios);
    return runBenchmarks(argc, argv, ratios);
}
