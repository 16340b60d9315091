#include "tests/support/resource_tree.hpp"

#include "kodo/fs/multi_file_system.hpp"
#include "tests/support/mo_file.hpp"

#include <stdexcept>

namespace fs = std::filesystem;

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
    MoFile::Entries entries{MoFile::header("UTF-8")};
    entries.insert(entries.end(), messages.begin(), messages.end()); // sorted, as gettext needs them
    return MoFile(entries).bytes();
}
