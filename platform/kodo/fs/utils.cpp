#include "kodo/fs/utils.hpp"

#include "kodo/fs/multi_file_system.hpp"
#include "kodo/fs/native_path.hpp"

#include <filesystem>
#include <string_view>
#include <system_error>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace Kodo::FS::Utils
{

bool fileExists(const std::string& path)
{
    return fileSystem().exists(path);
}

std::string appPath()
{
#if defined(_WIN32)
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    const std::u8string text = std::filesystem::path(path).u8string();
    return std::string(text.begin(), text.end());
#else
    constexpr const char* SELF = "/proc/self/exe";
    constexpr std::string_view DELETED = " (deleted)"; // what the system writes behind a file that is gone
    std::error_code error;
    std::string path = fromNative(std::filesystem::read_symlink(SELF, error));
    if (path.ends_with(DELETED) && !std::filesystem::equivalent(path, SELF, error))
    {
        path.resize(path.size() - DELETED.size());
    }
    return path;
#endif
}

} // namespace Kodo::FS::Utils
