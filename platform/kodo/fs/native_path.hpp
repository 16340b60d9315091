#pragma once

#include <filesystem>
#include <string>

namespace Kodo::FS
{

/// Paths between this code base's texts and the disk: UTF-8 on Windows, plain bytes elsewhere.
inline std::filesystem::path toNative(const std::string& text)
{
#if defined(_WIN32)
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
#else
    return text;
#endif
}

/// With '/' between the parts on every system.
inline std::string fromNative(const std::filesystem::path& path)
{
#if defined(_WIN32)
    const std::u8string text = path.generic_u8string();
    return std::string(text.begin(), text.end());
#else
    return path.native();
#endif
}

} // namespace Kodo::FS
