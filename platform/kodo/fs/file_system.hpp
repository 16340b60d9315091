#pragma once

namespace Kodo::FS
{

/// What all file systems have in common.
class FileSystem
{
public:
    enum FileType
    {
        FT_FILE = 0,
        FT_DIRECTORY = 1,
        FT_OTHER = 2,    ///< neither, such as a device
        FT_NOT_FOUND = 3 ///< nothing, or nothing that may be reached by that name
    };
};

} // namespace Kodo::FS
