// Requests of many resources: their cost grows with their number, and the command line costs little more than
// its bytes.
//
//     build/release/bin/requests_benchmark

#include "benchmarks/ratio_report.hpp"
#include "tern_common/requests/open_resources_request.hpp"

#include "tests/support/recording_editor_manager.hpp"
#include "vell/asset_registry.hpp"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <vector>

namespace
{

class RequestWithQueryString : public vell::OpenResourcesRequest
{
public:
    using OpenResourcesRequest::queryString;
};

/// Names of which every other has a known type.
std::vector<std::string> resources(std::size_t count)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i)
    {
        names.push_back("levels/roads/road " + std::to_string(i) + (i % 2 == 0 ? ".curve" : ".txt"));
    }
    return names;
}

/// Takes every third resource and lets no process start.
class ThirdEditorManager final : public RecordingEditorManager
{
public:
    std::size_t offered = 0;

    IEditor* openResource(const char* path, const OpenFlags& flags) override
    {
        acceptsAll = ++offered % 3 == 0;
        offers.clear();
        return RecordingEditorManager::openResource(path, flags);
    }
};

void exec(benchmark::State& state)
{
    vell::AssetRegistry::instance().setType("curve", "Curve");
    const auto count = static_cast<std::size_t>(state.range(0));
    vell::OpenResourcesRequest request;
    request.setResources(resources(count));
    ThirdEditorManager manager;
    manager.newInstanceAllowed = false;
    for (auto _ : state)
    {
        request.exec(&manager, false);
    }
    if (manager.offered != (count + 1) / 2 * static_cast<std::size_t>(state.iterations()))
    {
        state.SkipWithError("not every typed resource was offered");
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(exec)->RangeMultiplier(10)->Range(100, 100'000)->Complexity(benchmark::oN);

void queryString(benchmark::State& state)
{
    const auto list = resources(static_cast<std::size_t>(state.range(0)));
    const RequestWithQueryString request;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(request.queryString(list));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(queryString)->RangeMultiplier(10)->Range(100, 100'000)->Complexity(benchmark::oN);

/// What any way of composing the line has to do: copy every name once into memory of the right size.
void copyNames(benchmark::State& state)
{
    const auto list = resources(static_cast<std::size_t>(state.range(0)));
    std::size_t size = 0;
    for (const std::string& name : list)
    {
        size += name.size();
    }
    for (auto _ : state)
    {
        std::string text;
        text.reserve(size);
        for (const std::string& name : list)
        {
            text += name;
        }
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(copyNames)->Arg(10'000);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv,
                         {{"exec/100000", "exec/10000", 13}, // ten times as many, and caches that they leave
                          {"queryString/10000", "copyNames/10000", 3}});
}
