#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Kodo::FS
{

struct DirectoryEntry
{
    std::string name; ///< as fromNative() gives it
    bool isLink = false;
};

/// What stands in a directory of the disk, in no order; nothing of one that cannot be read. Throws only for
/// want of memory, which ends the process within the standard library's own iterator.
std::vector<DirectoryEntry> listDirectory(const std::filesystem::path& directory);

} // namespace Kodo::FS
