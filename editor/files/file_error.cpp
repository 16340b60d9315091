#include "editor/files/file_error.hpp"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

namespace fs = std::filesystem;

TextPosition positionAt(std::string_view text, std::size_t offset) noexcept
{
    const std::string_view before = text.substr(0, std::min(offset, text.size()));
    const std::size_t lineStart = before.rfind('\n') + 1; // 0 where there is none
    return {static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')) + 1,
            before.size() - lineStart + 1};
}

FileError::FileError(const fs::path& file, const std::string& text)
    : std::runtime_error(displayName(file) + ": " + text)
{
}

FileError::FileError(const fs::path& file, TextPosition position, const std::string& text)
    : std::runtime_error(displayName(file) + ":" + std::to_string(position.line) + ":" +
                         std::to_string(position.column) + ": " + text)
{
}

std::string displayName(const fs::path& file)
{
    const std::u8string name = file.u8string();
    return {name.begin(), name.end()};
}

std::string readWholeFile(const fs::path& file)
{
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (fs::is_directory(status))
    {
        throw FileError(file, "is a directory");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) // a pipe may wait, a device may never end
    {
        throw FileError(file, "is no regular file");
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
    {
        throw FileError(file, "cannot be opened: " + std::generic_category().message(errno));
    }
    std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (stream.bad())
    {
        throw FileError(file, "cannot be read");
    }
    return text;
}
