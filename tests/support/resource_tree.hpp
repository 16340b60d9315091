#pragma once

#include "tests/support/temporary_directory.hpp"

#include <map>
#include <string>
#include <string_view>

/// A resource tree on the disk, which the process's file system shows for as long as this object lives: there
/// is one such object at a time.
class ResourceTree
{
public:
    using Messages = std::map<std::string, std::string>;

    ResourceTree();
    ResourceTree(const ResourceTree&) = delete;
    ResourceTree& operator=(const ResourceTree&) = delete;
    ~ResourceTree();

    const std::filesystem::path& path() const noexcept { return m_directory.path(); }
    void write(std::string_view name, std::string_view bytes) const { m_directory.write(name, bytes); }
    void makeDirectory(std::string_view name) const;

    /// A group's list: "scripts/item_defs/vehicles/<group>/list.xml" with these children of its root.
    void writeVehicles(const std::string& group, const std::string& children) const;
    /// "scripts/arena_defs/<file>" with these children of its root.
    void writeArena(const std::string& file, const std::string& children) const;
    /// The resource map, with a single language that has this one domain.
    void writeCatalogue(const std::string& domain, const Messages& messages) const;

private:
    TemporaryDirectory m_directory;
};

/// The bytes of a compiled catalogue, as msgfmt writes them, in UTF-8.
std::string makeCatalogue(const ResourceTree::Messages& messages);
