#include "benchmarks/curve_view_measures.hpp"

#include "benchmarks/wave_curve.hpp"
#include "kodo/chunk/space_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"
#include "kodo/render/debug_drawer.hpp"
#include "tern_common/curve_view/curve_view.hpp"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace
{

constexpr std::size_t SAMPLED_POINTS = 100'000;
constexpr std::size_t CONTROL_POINTS = 10'000;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "wrong result: %s\n", what);
    std::exit(1);
}

/// A space with what control points need.
int spaceOfViews()
{
    constexpr int ID = 5;
    static const bool created = []
    {
        Kodo::SpaceManager::instance().createSpace(ID);
        Kodo::CollisionSceneManager::instance().createScene(ID);
        return true;
    }();
    (void)created;
    return ID;
}

/// A view and its model.
struct Scene
{
    explicit Scene(std::size_t count) : Scene(std::make_unique<WaveCurve>(count)) {}

    WaveCurve* curve;
    CurveView view;

private:
    explicit Scene(std::unique_ptr<WaveCurve> made) : curve(made.get()), view(std::move(made), spaceOfViews())
    {
    }
};

std::size_t drawnPoints(CurveView& view)
{
    Kodo::DebugDrawer::Context frame;
    view.render(frame);
    return frame.lines().empty() ? 0 : frame.lines().front().pointCount;
}

/// Samples and nothing else: nothing has been removed.
void sample(CurveView& view)
{
    view.updatePointRemoved(0, 0);
}

void sampling(benchmark::State& state)
{
    Scene scene(0); // without control points
    scene.curve->count = SAMPLED_POINTS;
    sample(scene.view); // finds out how much memory it takes: the arrays by hand have theirs as well
    for (auto _ : state)
    {
        sample(scene.view);
    }
    if (drawnPoints(scene.view) != (SAMPLED_POINTS - 1) * WaveCurve::STEPS + 1)
    {
        fail("the number of samples");
    }
}

/// The calls of the model and the transforms that sampling can't do without, into arrays of the right size.
void samplingByHand(benchmark::State& state)
{
    const Scene scene(0);
    scene.curve->count = SAMPLED_POINTS;
    const CurveView::IAbstractCurve* curve = scene.curve;
    const Kodo::Matrix origin = scene.view.getOrigin();
    const std::size_t sampleCount = (SAMPLED_POINTS - 1) * WaveCurve::STEPS + 1;
    std::vector<Kodo::Vector3> points(sampleCount);
    std::vector<float> parameters(sampleCount);
    for (auto _ : state)
    {
        std::size_t index = 0;
        const std::size_t count = curve->isValid() ? curve->pointCount() : 0;
        for (std::size_t i = 0; i + 1 < count; ++i)
        {
            const float start = curve->pointParameter(i);
            const float length = curve->pointParameter(i + 1) - start;
            const float step = length / curve->segmentResolution(i);
            for (float t = 0; t < length; t += step)
            {
                points[index] = origin.applyPoint(curve->positionAt(start + t));
                parameters[index] = start + t;
                ++index;
            }
        }
        points[index] = origin.applyPoint(curve->pointPosition(count - 1));
        parameters[index] = curve->pointParameter(count - 1);
        benchmark::DoNotOptimize(points.data());
        benchmark::DoNotOptimize(parameters.data());
        benchmark::ClobberMemory();
    }
}

void updateOfOnePoint(benchmark::State& state)
{
    Scene scene(CONTROL_POINTS);
    for (auto _ : state)
    {
        scene.curve->pointUpdated(CONTROL_POINTS / 2, 1);
    }
}

void updateOfAllPoints(benchmark::State& state)
{
    Scene scene(CONTROL_POINTS);
    for (auto _ : state)
    {
        scene.curve->pointUpdated(0, CONTROL_POINTS);
    }
}

void samplingAlone(benchmark::State& state)
{
    Scene scene(CONTROL_POINTS);
    for (auto _ : state)
    {
        sample(scene.view);
    }
}

/// Half as many points as there are come into the middle and go again.
void addAndRemove(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Scene scene(count);
    for (auto _ : state)
    {
        scene.curve->count = count + count / 2;
        scene.curve->pointAdded(count / 2, count / 2);
        scene.curve->count = count;
        scene.curve->pointRemoved(count / 2, count / 2);
    }
    if (scene.view.getControlPoints().size() != count)
    {
        fail("the number of control points");
    }
}

void rendering(benchmark::State& state)
{
    Scene scene(CONTROL_POINTS);
    Kodo::DebugDrawer::Context frame;
    for (auto _ : state)
    {
        frame.clear();
        scene.view.render(frame);
        benchmark::ClobberMemory();
    }
}

/// Records what a view has recorded.
void renderingByHand(benchmark::State& state)
{
    Scene scene(CONTROL_POINTS);
    Kodo::DebugDrawer::Context recorded;
    scene.view.render(recorded);
    std::vector<std::vector<Kodo::Vector3>> strips;
    for (const Kodo::DebugDrawer::LineRecord& line : recorded.lines())
    {
        const auto points = recorded.pointsOf(line);
        strips.emplace_back(points.begin(), points.end());
    }
    Kodo::DebugDrawer::Context frame;
    for (auto _ : state)
    {
        frame.clear();
        for (const Kodo::DebugDrawer::Context::Command& command : recorded.commands())
        {
            if (command.kind == Kodo::DebugDrawer::Context::Kind::Line)
            {
                const Kodo::DebugDrawer::LineRecord& line = recorded.lines()[command.index];
                frame.line()
                    .colour(line.colour)
                    .point(strips[command.index])
                    .zTestEnable(line.zTest)
                    .zWriteEnable(line.zWrite)
                    .width(line.width);
            }
            else
            {
                const Kodo::DebugDrawer::SphereRecord& sphere = recorded.spheres()[command.index];
                frame.sphere()
                    .colour(sphere.colour)
                    .position(sphere.position)
                    .rotation(sphere.rotation)
                    .scale(sphere.scale)
                    .zTestEnable(sphere.zTest)
                    .zWriteEnable(sphere.zWrite);
            }
        }
        benchmark::ClobberMemory();
    }
    if (frame.spheres().size() != 2 * CONTROL_POINTS || frame.commands().size() != recorded.commands().size())
    {
        fail("the record");
    }
}

} // namespace

void registerCurveView(std::vector<Ratio>& ratios)
{
    benchmark::RegisterBenchmark("sampling", sampling);
    benchmark::RegisterBenchmark("samplingByHand", samplingByHand);
    ratios.push_back({"sampling", "samplingByHand", 1.1});

    benchmark::RegisterBenchmark("samplingAlone", samplingAlone);
    benchmark::RegisterBenchmark("updateOfOnePoint", updateOfOnePoint);
    benchmark::RegisterBenchmark("updateOfAllPoints", updateOfAllPoints);
    ratios.push_back({"updateOfOnePoint", "samplingAlone", 1.1});
    ratios.push_back({"updateOfAllPoints", "samplingAlone", 3});

    for (const std::int64_t count : {5'000, 10'000, 20'000, 40'000})
    {
        benchmark::RegisterBenchmark("addAndRemove", addAndRemove)->Arg(count);
        if (count != 5'000) // twice the points in twice the time, and some for the caches
        {
            ratios.push_back(
                {"addAndRemove/" + std::to_string(count), "addAndRemove/" + std::to_string(count / 2), 2.6});
        }
    }

    benchmark::RegisterBenchmark("rendering", rendering);
    benchmark::RegisterBenchmark("renderingByHand", renderingByHand);
    ratios.push_back({"rendering", "renderingByHand", 3});
}
