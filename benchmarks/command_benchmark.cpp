// Command scripts: reading one, and what a tick adds to a command's own future.
//
//     build/release/bin/command_benchmark

#include "benchmarks/narrow_script_parser.hpp"
#include "benchmarks/ratio_report.hpp"
#include "tern_common/command_system.hpp"

#include <benchmark/benchmark.h>
#include <lua.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <string>

namespace
{

constexpr std::size_t LINES = 100000;

/// A script file of 100,000 equal commands, gone at the end of the program.
class ScriptFixture
{
public:
    static const ScriptFixture& instance()
    {
        static const ScriptFixture fixture;
        return fixture;
    }
    ScriptFixture(const ScriptFixture&) = delete;
    ScriptFixture& operator=(const ScriptFixture&) = delete;

    const std::filesystem::path& script() const { return m_script; }
    const std::filesystem::path& commands() const { return m_commands; }

private:
    ScriptFixture()
        : m_script(std::filesystem::temp_directory_path() / "tern_benchmark_script.txt"),
          m_commands(std::filesystem::temp_directory_path() / "tern_benchmark_commands.txt")
    {
        std::ofstream script(m_script, std::ios::binary);
        std::ofstream commands(m_commands, std::ios::binary);
        for (std::size_t i = 0; i < LINES; ++i)
        {
            script << "world.roads.addPoint(12, \"name\", true)\n";
            commands << "step()\n";
        }
    }
    ~ScriptFixture()
    {
        std::filesystem::remove(m_script);
        std::filesystem::remove(m_commands);
    }

    std::filesystem::path m_script;
    std::filesystem::path m_commands;
};

void parseScriptFile(benchmark::State& state)
{
    const std::wstring path = ScriptFixture::instance().script().wstring();
    for (auto _ : state)
    {
        auto system = std::make_unique<CommandSystem>();
        system->parseScriptFile(path);
        if (system->queuedCommandCount() != LINES)
        {
            state.SkipWithError("the script was not queued");
        }
        state.PauseTiming();
        system.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(parseScriptFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void parseNarrowByHand(benchmark::State& state)
{
    const std::string path = ScriptFixture::instance().script().string();
    for (auto _ : state)
    {
        std::deque<NarrowCommand> commands = parseNarrowScript(path.c_str());
        if (commands.size() != LINES)
        {
            state.SkipWithError("the script was not queued");
        }
        state.PauseTiming();
        commands.clear();
        commands.shrink_to_fit();
        state.ResumeTiming();
    }
}
BENCHMARK(parseNarrowByHand)->Unit(benchmark::kMillisecond)->UseRealTime();

void compileAsLuaChunk(benchmark::State& state)
{
    std::ifstream file(ScriptFixture::instance().script(), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    for (auto _ : state)
    {
        lua_State* const lua = luaL_newstate();
        if (luaL_loadbufferx(lua, text.data(), text.size(), "script", "t") != LUA_OK)
        {
            state.SkipWithError("the chunk does not compile");
        }
        state.PauseTiming();
        lua_close(lua);
        state.ResumeTiming();
    }
}
BENCHMARK(compileAsLuaChunk)->Unit(benchmark::kMillisecond)->UseRealTime();

std::future<void> immediately()
{
    std::promise<void> promise;
    promise.set_value();
    return promise.get_future();
}

void tickAnImmediateCommand(benchmark::State& state)
{
    const std::wstring path = ScriptFixture::instance().commands().wstring();
    std::size_t steps = 0;
    CommandSystem system;
    system.rootObject().addCommand("step",
                                   [&steps]
                                   {
                                       ++steps;
                                       return immediately();
                                   });
    std::size_t ticks = 0;
    for (auto _ : state)
    {
        if (system.queuedCommandCount() == 0)
        {
            state.PauseTiming();
            system.parseScriptFile(path);
            state.ResumeTiming();
        }
        system.tick();
        ++ticks;
    }
    if (steps != ticks)
    {
        state.SkipWithError("a tick started no command");
    }
}
BENCHMARK(tickAnImmediateCommand)->UseRealTime();

void promiseAndFuture(benchmark::State& state)
{
    for (auto _ : state)
    {
        std::future<void> future = immediately();
        future.get();
    }
}
BENCHMARK(promiseAndFuture)->UseRealTime();

void idleTick(benchmark::State& state)
{
    CommandSystem system;
    for (auto _ : state)
    {
        system.tick();
    }
}
BENCHMARK(idleTick)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv,
                         {{"parseScriptFile/real_time", "parseNarrowByHand/real_time", 1.25},
                          {"parseScriptFile/real_time", "compileAsLuaChunk/real_time", 0.5},
                          {"tickAnImmediateCommand/real_time", "promiseAndFuture/real_time", 1.4}});
}
