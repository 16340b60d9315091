#include "kodo/fs/utils.hpp"

#include "kodo/fs/multi_file_system.hpp"
#include "kodo/fs/native_path.hpp"

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
    std::error_code error;
    return fromNative(std::filesystem::read_symlink("/proc/self/exe", error));
#endif
}

} // namespace Kodo::FS::Utils
