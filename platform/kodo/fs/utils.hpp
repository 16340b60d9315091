#pragma once

#include "kodo/export.hpp"

#include <string>

namespace Kodo::FS::Utils
{

/// Whether the shared file system's roots hold a file or directory of that name or absolute path.
KODO_API bool fileExists(const std::string& path);

/// The full path of this process's executable; empty when the system doesn't tell. Where the file has been
/// replaced since, by an update or a build, it is the path of the new one.
KODO_API std::string appPath();

} // namespace Kodo::FS::Utils
