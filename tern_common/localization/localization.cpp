#include "tern_common/localization/localization.hpp"

#include "kodo/fs/data_section.hpp"
#include "kodo/fs/multi_file_system.hpp"
#include "kodo/fs/utils.hpp"
#include "kodo/loom/ui_resource_utils.hpp"
#include "tern_common/localization/definition_directories.hpp"

#include <utility>
#include <vector>

namespace
{

using Kodo::FS::FileSystem;

/// Null for a file that holds no definitions.
Kodo::SmartPointer<Kodo::DataSection> openDefinitions(const std::string& path)
{
    return Kodo::FS::Utils::openSection(path, false, nullptr);
}

} // namespace

const char* Localization::ResourceManager::resourceMapPath()
{
    return "gui/canopy/res_map.json";
}

Localization::Localization() : m_resourceManager(std::make_unique<ResourceManager>())
{
    initCache();
}

Localization::~Localization() = default;

std::string Localization::translate(const std::string& key)
{
    std::string text = translateByCache(key);
    if (text.empty())
    {
        text = loomTranslate(key);
    }
    return text;
}

std::string Localization::translateByCache(const std::string& key) const
{
    const auto found = m_cache.find(key);
    return found == m_cache.end() ? std::string() : found->second;
}

std::string Localization::loomTranslate(const std::string& key) const
{
    return Kodo::Loom::UiResourceUtils::getTranslatedText(key, *m_resourceManager);
}

void Localization::initCache()
{
    cacheVehicles();
    cacheArenas();
}

void Localization::cacheVehicles()
{
    std::vector<std::string> groups;
    if (!Kodo::FS::fileSystem().readDirectory(groups, DefinitionDirectories::VEHICLES))
    {
        return;
    }
    for (const std::string& group : groups)
    {
        const std::string path = DefinitionDirectories::VEHICLES + group;
        if (Kodo::FS::fileSystem().fileType(path) != FileSystem::FT_DIRECTORY)
        {
            continue;
        }
        const auto list = openDefinitions(path + "/list.xml");
        if (!list)
        {
            continue;
        }
        for (auto vehicle = list->begin(); vehicle != list->end(); ++vehicle)
        {
            cacheName((*vehicle)->sectionName(), (*vehicle)->readString("userString", "", 0));
        }
    }
}

void Localization::cacheArenas()
{
    std::vector<std::string> files;
    if (!Kodo::FS::fileSystem().readDirectory(files, DefinitionDirectories::ARENAS))
    {
        return;
    }
    for (const std::string& file : files)
    {
        const std::string path = DefinitionDirectories::ARENAS + file;
        // Not "anything but a directory": what is no ordinary file is left alone.
        if (Kodo::FS::fileSystem().fileType(path) != FileSystem::FT_FILE)
        {
            continue;
        }
        if (const auto arena = openDefinitions(path))
        {
            cacheName(Kodo::FS::Utils::removeExtension(file).toString(), arena->readString("name", "", 0));
        }
    }
}

void Localization::cacheName(std::string key, const std::string& name)
{
    if (name.find('#') != std::string::npos)
    {
        m_cache.insert_or_assign(std::move(key), loomTranslate(name));
    }
}
