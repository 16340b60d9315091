#include "tests/support/resource_tree.hpp"

#include "kodo/fs/multi_file_system.hpp"

#include <cstdint>
#include <stdexcept>

namespace fs = std::filesystem;

namespace
{

void appendNumber(std::string& bytes, std::size_t number)
{
    for (unsigned shift = 0; shift < 32; shift += 8)
    {
        bytes.push_back(static_cast<char>(number >> shift & 0xFFU));
    }
}

} // namespace

ResourceTree::ResourceTree()
{
    if (!Kodo::FS::fileSystem().addRoot(m_directory.path().string()))
    {
        throw std::runtime_error("the directory is no root");
    }
}

ResourceTree::~ResourceTree()
{
    Kodo::FS::fileSystem().clearRoots();
}

void ResourceTree::makeDirectory(std::string_view name) const
{
    fs::create_directories(m_directory / name);
}

void ResourceTree::writeVehicles(const std::string& group, const std::string& children) const
{
    write("scripts/item_defs/vehicles/" + group + "/list.xml", "<root>" + children + "</root>");
}

void ResourceTree::writeArena(const std::string& file, const std::string& children) const
{
    write("scripts/arena_defs/" + file, "<root>" + children + "</root>");
}

void ResourceTree::writeCatalogue(const std::string& domain, const Messages& messages) const
{
    write("gui/canopy/res_map.json",
          R"({"language": "en", "catalogues": {")" + domain + R"(": {"en": "po/en.mo"}}})");
    write("po/en.mo", makeCatalogue(messages));
}

std::string makeCatalogue(const ResourceTree::Messages& messages)
{
    ResourceTree::Messages all = messages;
    all.emplace("", "Content-Type: text/plain; charset=UTF-8\n");
    constexpr std::size_t HEADER = 28;
    constexpr std::size_t ENTRY = 8;
    const std::size_t tables = HEADER + 2 * ENTRY * all.size();

    std::string texts; // each with a NUL behind it
    std::string originals;
    std::string translations;
    for (const auto& [original, translation] : all)
    {
        appendNumber(originals, original.size());
        appendNumber(originals, tables + texts.size());
        texts.append(original).push_back('\0');
        appendNumber(translations, translation.size());
        appendNumber(translations, tables + texts.size());
        texts.append(translation).push_back('\0');
    }
    std::string bytes;
    for (const std::size_t number : {std::size_t{0x950412DE}, std::size_t{0}, all.size(), HEADER,
                                     HEADER + ENTRY * all.size(), std::size_t{0}, tables})
    {
        appendNumber(bytes, number);
    }
    return bytes + originals + translations + texts;
}
