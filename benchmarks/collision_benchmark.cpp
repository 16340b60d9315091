// The collision scene beside the bare work on its arrays.
//
//     build/release/bin/collision_benchmark

#include "benchmarks/ratio_report.hpp"
#include "kodo/collision/collision_scene.hpp"

#include <benchmark/benchmark.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

namespace
{

using Kodo::CollisionScene;
using Kodo::CollisionShape;
using Kodo::Matrix;
using Kodo::SceneObject;
using Kodo::Vector3;

constexpr float EXTENT = 5.0F;
constexpr float SIDE = 1000.0F;

/// Spheres at random in a cube, as the scene takes them in.
std::vector<Matrix> randomTransforms(std::size_t count)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(0.0F, SIDE);
    std::uniform_real_distribution<float> size(0.5F, 3.0F);
    std::vector<Matrix> transforms(count);
    for (Matrix& transform : transforms)
    {
        transform.setTranslate({place(random), place(random), place(random)});
        transform.m[0][0] = transform.m[1][1] = transform.m[2][2] = size(random);
    }
    return transforms;
}

/// The arrays alone.
struct Arrays
{
    explicit Arrays(std::size_t count) : x(count), y(count), z(count), squaredRadius(count) {}

    void write(const std::vector<Matrix>& transforms) noexcept
    {
        for (std::size_t i = 0; i < transforms.size(); ++i)
        {
            const Matrix& transform = transforms[i];
            x[i] = double{transform.m[3][0]};
            y[i] = double{transform.m[3][1]};
            z[i] = double{transform.m[3][2]};
            const double radius = 0.5 * double{EXTENT} * double{transform.m[0][0]};
            squaredRadius[i] = radius * radius;
        }
    }

    /// The vectorised test and nothing else; whether anything at all is hit.
    bool isAnyNear(const double (&origin)[3], const double (&direction)[3]) const noexcept
    {
        std::uint64_t misses = ~std::uint64_t{0};
        const double* const xs = x.data();
        const double* const ys = y.data();
        const double* const zs = z.data();
        const double* const squaredRadii = squaredRadius.data();
        const double ox = origin[0], oy = origin[1], oz = origin[2];
        const double dx = direction[0], dy = direction[1], dz = direction[2];
        for (std::size_t i = 0; i < x.size(); ++i)
        {
            const double tx = xs[i] - ox;
            const double ty = ys[i] - oy;
            const double tz = zs[i] - oz;
            const double along = tx * dx + ty * dy + tz * dz;
            const double px = tx - along * dx;
            const double py = ty - along * dy;
            const double pz = tz - along * dz;
            misses &= std::bit_cast<std::uint64_t>(squaredRadii[i] - (px * px + py * py + pz * pz));
        }
        return (misses >> 63U) == 0;
    }

    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> z;
    std::vector<double> squaredRadius;
};

struct Scene
{
    explicit Scene(const std::vector<Matrix>& transforms) : objects(transforms.size())
    {
        const auto shape = scene.createShape(CollisionShape::TEMPLATE_SPHERE, {EXTENT, EXTENT, EXTENT},
                                             Vector3::ZERO, false);
        for (std::size_t i = 0; i < transforms.size(); ++i)
        {
            scene.addUserObject(objects[i], shape, transforms[i], 0, 0, 16);
        }
    }

    CollisionScene scene;
    std::vector<SceneObject> objects;
};

class CountingCollector final : public Kodo::Collisions::ICollisionCollector
{
public:
    CountingCollector() : ICollisionCollector(RETURN_ALL) {}
    void onHit(const Kodo::Collisions::RayHit& /*hit*/) override { ++hits; }

    std::size_t hits = 0;
};

/// Rays through the middle of the cube, from outside it.
std::vector<Kodo::Collisions::Ray> randomRays()
{
    std::mt19937 random(8);
    std::uniform_real_distribution<float> place(0.0F, SIDE);
    std::vector<Kodo::Collisions::Ray> rays(64);
    for (auto& ray : rays)
    {
        ray.origin = {place(random), place(random), -SIDE};
        ray.direction = Vector3(place(random), place(random), SIDE) - ray.origin;
    }
    return rays;
}

std::size_t countOf(const benchmark::State& state)
{
    return static_cast<std::size_t>(state.range(0));
}

void rayBare(benchmark::State& state)
{
    const std::vector<Matrix> transforms = randomTransforms(countOf(state));
    Arrays arrays(transforms.size());
    arrays.write(transforms);
    const auto rays = randomRays();
    std::size_t next = 0;
    for (auto _ : state)
    {
        const auto& ray = rays[next++ % rays.size()];
        const double length = double{ray.direction.length()};
        const double origin[3] = {ray.origin.x, ray.origin.y, ray.origin.z};
        const double direction[3] = {ray.direction.x / length, ray.direction.y / length,
                                     ray.direction.z / length};
        bool any = arrays.isAnyNear(origin, direction);
        benchmark::DoNotOptimize(any);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(rayBare)->Arg(1'000)->Arg(10'000)->Arg(100'000);

void rayThroughScene(benchmark::State& state)
{
    const Scene scene(randomTransforms(countOf(state)));
    const auto rays = randomRays();
    CountingCollector collector;
    std::size_t next = 0;
    for (auto _ : state)
    {
        scene.scene.collideRay(rays[next++ % rays.size()], collector, nullptr);
    }
    if (state.range(0) >= 100'000 && collector.hits == 0)
    {
        state.SkipWithError("the rays hit nothing");
    }
    state.counters["hits"] =
        benchmark::Counter(static_cast<double>(collector.hits), benchmark::Counter::kAvgIterations);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(rayThroughScene)->Arg(1'000)->Arg(10'000)->Arg(100'000);

void moveBare(benchmark::State& state)
{
    const std::vector<Matrix> transforms = randomTransforms(countOf(state));
    Arrays arrays(transforms.size());
    for (auto _ : state)
    {
        arrays.write(transforms);
        benchmark::DoNotOptimize(arrays.x.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(moveBare)->Arg(1'000)->Arg(10'000)->Arg(100'000);

void moveThroughScene(benchmark::State& state)
{
    const std::vector<Matrix> transforms = randomTransforms(countOf(state));
    Scene scene(transforms);
    for (auto _ : state)
    {
        for (std::size_t i = 0; i < transforms.size(); ++i)
        {
            scene.scene.updateTransform(scene.objects[i], transforms[i]);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(moveThroughScene)->Arg(1'000)->Arg(10'000)->Arg(100'000);

void removeFromMap(benchmark::State& state)
{
    const std::vector<SceneObject> objects(countOf(state));
    for (auto _ : state)
    {
        state.PauseTiming();
        std::unordered_map<std::uint64_t, Matrix> map;
        for (const SceneObject& object : objects)
        {
            map.emplace(object.id(), Matrix::IDENTITY);
        }
        state.ResumeTiming();
        for (const SceneObject& object : objects)
        {
            map.erase(object.id());
        }
    }
}
BENCHMARK(removeFromMap)->Arg(10'000)->Arg(100'000);

void removeFromScene(benchmark::State& state)
{
    const std::vector<Matrix> transforms = randomTransforms(countOf(state));
    for (auto _ : state)
    {
        state.PauseTiming();
        Scene scene(transforms);
        state.ResumeTiming();
        for (const SceneObject& object : scene.objects)
        {
            scene.scene.deleteObstacle(object);
        }
        if (scene.scene.objectCount() != 0)
        {
            state.SkipWithError("objects are left");
        }
    }
}
BENCHMARK(removeFromScene)->Arg(10'000)->Arg(100'000);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv,
                         {{"rayThroughScene/1000", "rayBare/1000", 1.5},
                          {"rayThroughScene/10000", "rayBare/10000", 1.5},
                          {"rayThroughScene/100000", "rayBare/100000", 1.5},
                          // Within the caches the writing is next to nothing, and the call itself shows.
                          {"moveThroughScene/1000", "moveBare/1000", 4.0},
                          {"moveThroughScene/10000", "moveBare/10000", 4.0},
                          {"moveThroughScene/100000", "moveBare/100000", 3.0},
                          {"removeFromScene/10000", "removeFromMap/10000", 3.0},
                          {"removeFromScene/100000", "removeFromMap/100000", 3.0}});
}
