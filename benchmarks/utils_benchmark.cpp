// The utilities beside what they replace.
//
//     build/release/bin/utils_benchmark

#include "benchmarks/ratio_report.hpp"
#include "kodo/core/kodo_random.hpp"
#include "tern_common/utils/color_generator.hpp"
#include "tern_common/utils/finalizer.hpp"
#include "tests/support/plain_color_generator.hpp"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace
{

using Color = Kodo::Render::ColourRGBAFloat;
using Kodo::KodoRandom;

constexpr std::uint32_t SEED = 7;
constexpr std::size_t STORED_COLORS = 9;

/// The library's generator and the plain one in the same state: nine colours stored, most of them generated,
/// and no room for another until ten thousand candidates have been rejected.
class FullGenerators
{
public:
    FullGenerators() : plain(KodoRandom::instance())
    {
        std::size_t fitting = 0;
        KodoRandom random(SEED);
        PlainColorGenerator trial(random);
        while (trial(), trial.drawCount() < 20'000)
        {
            ++fitting;
        }
        std::vector<Color> colors;
        KodoRandom::instance().seed(SEED);
        for (std::size_t i = 0; i < fitting; ++i)
        {
            colors.push_back(plain());
        }
        KodoRandom::instance().seed(SEED);
        for (std::size_t i = 0; i < fitting; ++i)
        {
            generator();
        }
        for (std::size_t i = fitting; i < STORED_COLORS;
             ++i) // beside generated ones, so that they take no room
        {
            generator.banColor(colors[i % fitting]);
            plain.banColor(colors[i % fitting]);
        }
        storedColors = fitting < STORED_COLORS ? STORED_COLORS : fitting;
    }

    ColorGenerator generator;
    PlainColorGenerator plain;
    std::size_t storedColors = 0;
};

template <class Generator>
void runRejecting(benchmark::State& state, const Generator& full, std::size_t storedColors)
{
    Color color;
    for (auto _ : state)
    {
        state.PauseTiming();
        Generator copy(full);
        KodoRandom::instance().seed(SEED);
        state.ResumeTiming();
        color = copy();
        benchmark::DoNotOptimize(color);
    }
    state.counters["stored"] = static_cast<double>(storedColors);
    state.SetItemsProcessed(state.iterations() * 10'000);
}

void rejectTenThousandPlain(benchmark::State& state)
{
    const FullGenerators full;
    runRejecting(state, full.plain, full.storedColors);
}
BENCHMARK(rejectTenThousandPlain)->Unit(benchmark::kMicrosecond);

void rejectTenThousand(benchmark::State& state)
{
    const FullGenerators full;
    KodoRandom::instance().seed(SEED);
    ColorGenerator generator(full.generator);
    const Color color = generator();
    KodoRandom::instance().seed(SEED);
    PlainColorGenerator plain(full.plain);
    if (!(color == plain()))
    {
        state.SkipWithError("the generators disagree");
        return;
    }
    runRejecting(state, full.generator, full.storedColors);
}
BENCHMARK(rejectTenThousand)->Unit(benchmark::kMicrosecond);

constexpr int ACTIONS = 8;

void countRelease(void* pointer)
{
    ++*static_cast<int*>(pointer);
}

/// What a Finalizer replaces: a list of owners, filled and drained by hand.
void finalizeByHand(benchmark::State& state)
{
    int released = 0;
    for (auto _ : state)
    {
        std::vector<std::unique_ptr<void, void (*)(void*)>> actions;
        for (int i = 0; i < ACTIONS; ++i)
        {
            actions.emplace_back(&released, &countRelease);
        }
        benchmark::DoNotOptimize(actions.data());
        while (!actions.empty())
        {
            actions.back().reset();
            actions.pop_back();
        }
    }
    if (released != ACTIONS * static_cast<int>(state.iterations()))
    {
        state.SkipWithError("not every action ran once");
    }
}
BENCHMARK(finalizeByHand);

void finalizeByFinalizer(benchmark::State& state)
{
    int released = 0;
    for (auto _ : state)
    {
        Finalizer finalizer;
        for (int i = 0; i < ACTIONS; ++i)
        {
            finalizer.add(&released, &countRelease);
        }
        benchmark::DoNotOptimize(&finalizer);
        finalizer.finalize();
    }
    if (released != ACTIONS * static_cast<int>(state.iterations()))
    {
        state.SkipWithError("not every action ran once");
    }
}
BENCHMARK(finalizeByFinalizer);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv,
                         {{"rejectTenThousand", "rejectTenThousandPlain", 0.85},
                          {"finalizeByFinalizer", "finalizeByHand", 1.2}});
}
