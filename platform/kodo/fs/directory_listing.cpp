#include "kodo/fs/directory_listing.hpp"

#include "kodo/fs/native_path.hpp"

#include <system_error>

#if !defined(_WIN32)
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#endif

namespace Kodo::FS
{

#if defined(_WIN32)

std::vector<DirectoryEntry> listDirectory(const std::filesystem::path& directory)
{
    std::vector<DirectoryEntry> entries;
    std::error_code error;
    for (std::filesystem::directory_iterator at(directory, error), end; !error && at != end;
         at.increment(error))
    {
        std::error_code ignored;
        entries.push_back({fromNative(at->path().filename()), at->is_symlink(ignored)});
    }
    return entries;
}

#else

namespace
{

bool isLink(DIR* directory, const dirent& entry)
{
    if (entry.d_type != DT_UNKNOWN)
    {
        return entry.d_type == DT_LNK;
    }
    struct stat status = {}; // not every file system tells at once
    return ::fstatat(::dirfd(directory), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISLNK(status.st_mode);
}

} // namespace

std::vector<DirectoryEntry> listDirectory(const std::filesystem::path& directory)
{
    struct Close
    {
        void operator()(DIR* opened) const { ::closedir(opened); }
    };
    std::vector<DirectoryEntry> entries;
    const std::unique_ptr<DIR, Close> opened(::opendir(directory.c_str()));
    while (opened)
    {
        const dirent* const entry = ::readdir(opened.get()); // this stream is nobody else's
        if (entry == nullptr)
        {
            break;
        }
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
        {
            entries.push_back({std::string(name), isLink(opened.get(), *entry)});
        }
    }
    return entries;
}

#endif

} // namespace Kodo::FS
