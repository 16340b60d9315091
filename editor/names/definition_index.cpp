#include "editor/names/definition_index.hpp"

#include "editor/files/file_error.hpp"
#include "kodo/fs/multi_file_system.hpp"
#include "kodo/fs/utils.hpp"

#include <pugixml.hpp>

#include <string_view>
#include <utility>
#include <vector>

namespace
{

using Kodo::FS::FileSystem;
using Index = std::map<std::string, Definition>;

constexpr const char* VEHICLES = "scripts/item_defs/vehicles/";
constexpr const char* ARENAS = "scripts/arena_defs/";

/// One file of definitions, with the places of its elements.
class DefinitionFile
{
public:
    explicit DefinitionFile(std::string name) : m_name(std::move(name))
    {
        // What gives no section has been reported to whoever opened it as one.
        if (Kodo::FS::Utils::readSectionText(m_text, m_name))
        {
            m_document.load_buffer(m_text.data(), m_text.size(), pugi::parse_default, pugi::encoding_utf8);
        }
    }

    pugi::xml_node root() const { return m_document.document_element(); }

    /// The definition that begins at @p element and has the name in @p name.
    Definition read(const pugi::xml_node& element, const pugi::xml_node& name) const
    {
        const std::ptrdiff_t offset = element.offset_debug();
        return {trimmed(textOf(name)), m_name,
                positionAt(m_text, static_cast<std::size_t>(offset < 0 ? 0 : offset)).line};
    }

private:
    static std::string textOf(const pugi::xml_node& element)
    {
        std::string text;
        for (const pugi::xml_node part : element.children())
        {
            if (part.type() == pugi::node_pcdata || part.type() == pugi::node_cdata)
            {
                text += part.value();
            }
        }
        return text;
    }

    static std::string trimmed(std::string_view text)
    {
        constexpr std::string_view BLANKS = " \t\r\n";
        const std::size_t first = text.find_first_not_of(BLANKS);
        return first == std::string_view::npos
                   ? std::string()
                   : std::string(text.substr(first, text.find_last_not_of(BLANKS) - first + 1));
    }

    std::string m_name;
    std::string m_text;
    pugi::xml_document m_document;
};

void add(Index& index, const std::string& key, Definition definition)
{
    const bool translated = definition.name.find('#') != std::string::npos;
    Definition& held = index.try_emplace(key).first->second;
    if (translated || held.name.find('#') == std::string::npos)
    {
        held = std::move(definition);
    }
}

std::vector<std::string> entriesOf(const char* directory, FileSystem::FileType type)
{
    std::vector<std::string> entries;
    Kodo::FS::fileSystem().readDirectory(entries, directory);
    std::erase_if(entries, [directory, type](const std::string& entry)
                  { return Kodo::FS::fileSystem().fileType(directory + entry) != type; });
    return entries;
}

} // namespace

Index readDefinitions()
{
    Index index;
    for (const std::string& group : entriesOf(VEHICLES, FileSystem::FT_DIRECTORY))
    {
        const DefinitionFile list(VEHICLES + group + "/list.xml");
        for (const pugi::xml_node vehicle : list.root().children())
        {
            if (vehicle.type() == pugi::node_element)
            {
                add(index, vehicle.name(), list.read(vehicle, vehicle.child("userString")));
            }
        }
    }
    for (const std::string& file : entriesOf(ARENAS, FileSystem::FT_FILE))
    {
        const DefinitionFile arena(ARENAS + file);
        if (const pugi::xml_node name = arena.root().child("name"))
        {
            add(index, Kodo::FS::Utils::removeExtension(file).toString(), arena.read(name, name));
        }
    }
    return index;
}
