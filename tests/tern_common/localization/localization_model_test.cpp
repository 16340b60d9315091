// Random resource trees against a model that never looks at a disk.

#include "tern_common/localization/localization.hpp"

#include "tests/support/property.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/resource_tree.hpp"
#include "tests/tern_common/localization/scripted_framework.hpp"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Text = std::optional<std::string>;

/// What stands in a directory of definitions.
struct Entry
{
    enum class Kind
    {
        File,
        Directory,     ///< of a group: with its list
        BareDirectory, ///< without one
        ListDirectory, ///< in the place of the list: something that can't be read is there
        Broken         ///< XML that is not well-formed: the list's, or the arena's
    };

    Kind kind = Kind::File;
    std::vector<std::pair<std::string, Text>> vehicles; ///< tag and user string, of a group
    Text name;                                          ///< of an arena
};

using Directory = std::optional<std::map<std::string, Entry>>; // sorted as the file system lists it

/// Two texts of the framework are empty.
std::string frameworkText(const std::string& key)
{
    return key == "#" || key == "ab" ? std::string() : "<" + key + ">";
}

/// What is cached, what the framework is asked on the way, and how many files are reported.
class Model
{
public:
    Model(const Directory& vehicles, const Directory& arenas)
    {
        for (const auto& [name, group] : vehicles ? *vehicles : std::map<std::string, Entry>())
        {
            const bool isThere =
                group.kind == Entry::Kind::Broken || group.kind == Entry::Kind::ListDirectory;
            m_broken += isThere ? 1 : 0;
            if (group.kind == Entry::Kind::Directory)
            {
                for (const auto& [tag, userString] : group.vehicles)
                {
                    add(tag, userString);
                }
            }
        }
        for (const auto& [file, arena] : arenas ? *arenas : std::map<std::string, Entry>())
        {
            m_broken += arena.kind == Entry::Kind::Broken ? 1 : 0;
            if (arena.kind == Entry::Kind::File)
            {
                const std::size_t dot = file.rfind('.');
                add(dot == std::string::npos || dot == 0 ? file : file.substr(0, dot), arena.name);
            }
        }
    }

    const std::map<std::string, std::string>& cache() const { return m_cache; }
    const std::vector<std::string>& asked() const { return m_asked; }
    std::size_t broken() const { return m_broken; }

private:
    void add(const std::string& key, const Text& text)
    {
        if (text && text->find('#') != std::string::npos)
        {
            m_asked.push_back(*text);
            m_cache[key] = frameworkText(*text);
        }
    }

    std::map<std::string, std::string> m_cache;
    std::vector<std::string> m_asked;
    std::size_t m_broken = 0;
};

std::string element(const std::string& tag, const Text& text)
{
    return text ? "<" + tag + ">" + *text + "</" + tag + ">" : "<" + tag + "2>#x</" + tag + "2>";
}

void write(const ResourceTree& tree, const Directory& vehicles, const Directory& arenas)
{
    if (vehicles)
    {
        tree.makeDirectory("scripts/item_defs/vehicles");
        for (const auto& [name, group] : *vehicles)
        {
            const std::string path = "scripts/item_defs/vehicles/" + name;
            std::string children;
            for (const auto& [tag, userString] : group.vehicles)
            {
                children +=
                    "<" + tag + "><tier>1</tier>" + element("userString", userString) + "</" + tag + ">";
            }
            switch (group.kind)
            {
            case Entry::Kind::File:
                tree.write(path, "<root>" + children + "</root>");
                break;
            case Entry::Kind::Directory:
                tree.writeVehicles(name, children);
                break;
            case Entry::Kind::BareDirectory:
                tree.makeDirectory(path);
                break;
            case Entry::Kind::ListDirectory:
                tree.makeDirectory(path + "/list.xml");
                break;
            case Entry::Kind::Broken:
                tree.writeVehicles(name, children + "<a></b>");
                break;
            }
        }
    }
    if (arenas)
    {
        tree.makeDirectory("scripts/arena_defs");
        for (const auto& [file, arena] : *arenas)
        {
            const std::string path = "scripts/arena_defs/" + file;
            if (arena.kind == Entry::Kind::File)
            {
                tree.writeArena(file, "<size>1</size>" + element("name", arena.name));
            }
            else if (arena.kind == Entry::Kind::Broken)
            {
                tree.write(path, "<root>" + element("name", arena.name));
            }
            else
            {
                tree.write(path + "/list.xml", "<root>" + element("name", "#x") + "</root>");
            }
        }
    }
}

const std::vector<std::string> TAGS{"a", "b", "ab", "a.b", "c-1"};
const std::vector<std::string> FILES{"a",       "a.xml",   "a.yaml",  "ab.xml",
                                     "a.b.xml", ".hidden", "c-1.xml", "B.XML"};
const std::vector<Text> TEXTS{std::nullopt, "", "plain", "#", "#v:a", "a#b", "ab#", "##", "#v:\xCE\xB1"};

rc::Gen<Entry> entries()
{
    using Kind = Entry::Kind;
    // Most are as they should be, so that much is cached.
    const auto kinds = rc::gen::weightedElement<Kind>({{6, Kind::Directory},
                                                       {6, Kind::File},
                                                       {1, Kind::BareDirectory},
                                                       {1, Kind::ListDirectory},
                                                       {1, Kind::Broken}});
    const auto vehicles = rc::gen::container<std::vector<std::pair<std::string, Text>>>(
        rc::gen::pair(rc::gen::elementOf(TAGS), rc::gen::elementOf(TEXTS)));
    return rc::gen::build<Entry>(rc::gen::set(&Entry::kind, kinds), rc::gen::set(&Entry::vehicles, vehicles),
                                 rc::gen::set(&Entry::name, rc::gen::elementOf(TEXTS)));
}

Directory anyDirectory()
{
    if (*rc::gen::inRange(0, 10) == 0)
    {
        return std::nullopt;
    }
    std::map<std::string, Entry> directory;
    for (auto& [name, entry] : *rc::gen::container<std::vector<std::pair<std::string, Entry>>>(
             rc::gen::pair(rc::gen::elementOf(FILES), entries())))
    {
        directory[name] = std::move(entry);
        if (directory.size() == FILES.size())
        {
            break;
        }
    }
    return directory;
}

RC_GTEST_PROP(LocalizationModelTest, CachesWhatThePlainModelDoesAndAsksForNoMore, ())
{
    const ResourceTree tree;
    const Directory vehicles = anyDirectory();
    const Directory arenas = anyDirectory();
    write(tree, vehicles, arenas);
    const Model model(vehicles, arenas);
    ScriptedFramework framework(&frameworkText);

    const CollectReports reports;
    Localization localization;
    RC_ASSERT(framework.takeKeys() == model.asked());
    RC_ASSERT(reports.texts().size() == model.broken());

    std::vector<std::string> keys(TAGS);
    keys.insert(keys.end(), FILES.begin(), FILES.end());
    keys.insert(keys.end(), {"", "B", "A", "root", "userString", "x"});
    for (const std::string& key : keys)
    {
        const auto cached = model.cache().find(key);
        const std::string text = cached == model.cache().end() ? std::string() : cached->second;
        RC_ASSERT(localization.translateByCache(key) == text);
        RC_ASSERT(localization.translate(key) == (text.empty() ? frameworkText(key) : text));
        RC_ASSERT(framework.takeKeys() ==
                  (text.empty() ? std::vector<std::string>{key} : std::vector<std::string>()));
    }
}

} // namespace
