// Localization beside the same work done plainly, and the platform's translation beside GNU gettext's.
//
//     build/release/bin/localization_benchmark

#include "benchmarks/ratio_report.hpp"
#include "kodo/fs/multi_file_system.hpp"
#include "kodo/loom/ui_resource_utils.hpp"
#include "tern_common/localization/localization.hpp"
#include "tests/support/resource_tree.hpp"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <libintl.h>

namespace
{

using Texts = std::unordered_map<std::string, std::string>;

constexpr std::size_t GROUPS = 20;
constexpr std::size_t VEHICLES = 500; ///< in a group
constexpr std::size_t ARENAS = 500;
constexpr std::size_t FIELDS = 11; ///< of a vehicle or an arena, its name among them
constexpr const char* DOMAIN = "names";

std::string field(std::size_t index)
{
    return "        <field_" + std::to_string(index) + ">some value of the data</field_" +
           std::to_string(index) + ">\n";
}

/// Twenty groups of vehicles and some hundred arenas on the disk, with a catalogue that has all their names.
class World
{
public:
    World()
    {
        for (std::size_t group = 0; group < GROUPS; ++group)
        {
            std::string list = "\n";
            for (std::size_t vehicle = 0; vehicle < VEHICLES; ++vehicle)
            {
                const std::string tag = "vehicle_" + std::to_string(group) + "_" + std::to_string(vehicle);
                list += "    <" + tag + ">\n" + fields("userString", tag) + "    </" + tag + ">\n";
            }
            const std::string name = "group_" + std::to_string(group);
            m_tree.writeVehicles(name, list);
            lists.push_back(m_tree.path().string() + "/scripts/item_defs/vehicles/" + name + "/list.xml");
        }
        for (std::size_t arena = 0; arena < ARENAS; ++arena)
        {
            const std::string name = "arena_" + std::to_string(arena);
            m_tree.writeArena(name + ".xml", "\n" + fields("name", name));
            arenas.emplace_back(name, m_tree.path().string() + "/scripts/arena_defs/" + name + ".xml");
        }
        m_tree.writeCatalogue(DOMAIN, {m_messages.begin(), m_messages.end()});
        m_tree.write("gettext/xx/LC_MESSAGES/names.mo",
                     makeCatalogue({m_messages.begin(), m_messages.end()}));
        useGettext();
        std::shuffle(messages.begin(), messages.end(), std::mt19937(7)); // no order of a table's
    }

    std::vector<std::string> lists;
    std::vector<std::pair<std::string, std::string>> arenas; ///< base name and path
    Texts translations;                                      ///< of whole keys
    std::vector<std::string> messages;

private:
    std::string fields(const std::string& tag, const std::string& message)
    {
        const std::string text = "Translation of the name " + message;
        messages.push_back(message);
        m_messages.emplace(message, text);
        translations.emplace("#" + std::string(DOMAIN) + ":" + message, text);
        std::string all = "        <" + tag + ">#" + DOMAIN + ":" + message + "</" + tag + ">\n";
        for (std::size_t index = 1; index < FIELDS; ++index)
        {
            all += field(index);
        }
        return all;
    }

    void useGettext() const
    {
        std::setlocale(LC_ALL, "C.UTF-8"); // in the plain locale nothing is translated
        ::setenv("LANGUAGE", "xx", 1);
        bindtextdomain(DOMAIN, (m_tree.path() / "gettext").c_str());
        bind_textdomain_codeset(DOMAIN, "UTF-8");
    }

    ResourceTree m_tree;
    Texts m_messages;
};

const World& world()
{
    static const World made;
    return made;
}

/// What takes the place of the library where the files are known and nothing is checked.
class PlainBuilder
{
public:
    Texts build()
    {
        Texts cache;
        for (const std::string& list : world().lists)
        {
            parse(list);
            for (const pugi::xml_node vehicle : m_document.document_element().children())
            {
                add(cache, vehicle.name(), vehicle.child_value("userString"));
            }
        }
        for (const auto& [name, path] : world().arenas)
        {
            parse(path);
            add(cache, name, m_document.document_element().child_value("name"));
        }
        return cache;
    }

private:
    void parse(const std::string& path)
    {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                                   &std::fclose);
        std::setvbuf(file.get(), nullptr, _IONBF, 0);
        const std::size_t size = std::fread(m_buffer.data(), 1, m_buffer.size(), file.get());
        m_document.load_buffer_inplace(m_buffer.data(), size, pugi::parse_default, pugi::encoding_utf8);
    }

    static void add(Texts& cache, const char* key, const char* name)
    {
        if (std::string_view(name).find('#') != std::string_view::npos)
        {
            cache.insert_or_assign(key, world().translations.at(name));
        }
    }
    static void add(Texts& cache, const std::string& key, const char* name) { add(cache, key.c_str(), name); }

    pugi::xml_document m_document;
    std::vector<char> m_buffer = std::vector<char>(std::size_t{1} << 20U);
};

void buildPlainly(benchmark::State& state)
{
    PlainBuilder builder;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(builder.build());
    }
}
BENCHMARK(buildPlainly)->Unit(benchmark::kMillisecond);

void buildLocalization(benchmark::State& state)
{
    const Texts expected = PlainBuilder().build();
    const Localization built;
    for (const auto& [key, text] : expected)
    {
        if (built.translateByCache(key) != text)
        {
            state.SkipWithError("the caches differ");
            return;
        }
    }
    for (auto _ : state)
    {
        Localization localization;
        benchmark::DoNotOptimize(localization);
    }
}
BENCHMARK(buildLocalization)->Unit(benchmark::kMillisecond);

void findInPlainMap(benchmark::State& state)
{
    const Texts cache = PlainBuilder().build();
    const std::vector<std::string>& keys = world().messages;
    std::size_t next = 0;
    for (auto _ : state)
    {
        const auto found = cache.find(keys[next]);
        benchmark::DoNotOptimize(found == cache.end() ? std::string() : found->second);
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
}
BENCHMARK(findInPlainMap);

void translateByCache(benchmark::State& state)
{
    const Localization localization;
    const std::vector<std::string>& keys = world().messages;
    std::size_t next = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(localization.translateByCache(keys[next]));
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
}
BENCHMARK(translateByCache);

void translateByGettext(benchmark::State& state)
{
    const std::vector<std::string>& messages = world().messages;
    for (const std::string& message : messages)
    {
        if (dgettext(DOMAIN, message.c_str()) == message)
        {
            state.SkipWithError("gettext does not translate");
            return;
        }
    }
    std::size_t next = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(std::string(dgettext(DOMAIN, messages[next].c_str())));
        next = next + 1 == messages.size() ? 0 : next + 1;
    }
}
BENCHMARK(translateByGettext);

void getTranslatedText(benchmark::State& state)
{
    const Localization::ResourceManager manager;
    std::vector<std::string> keys;
    for (const std::string& message : world().messages)
    {
        keys.push_back("#" + std::string(DOMAIN) + ":" + message);
        if (Kodo::Loom::UiResourceUtils::getTranslatedText(keys.back(), manager) !=
            dgettext(DOMAIN, message.c_str()))
        {
            state.SkipWithError("the translations differ");
            return;
        }
    }
    std::size_t next = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(Kodo::Loom::UiResourceUtils::getTranslatedText(keys[next], manager));
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
}
BENCHMARK(getTranslatedText);

} // namespace

int main(int argc, char** argv)
{
    world();
    return runBenchmarks(argc, argv,
                         {{"buildLocalization", "buildPlainly", 1.5},
                          {"translateByCache", "findInPlainMap", 1.1},
                          {"getTranslatedText", "translateByGettext", 0.5}});
}
