#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace Kodo::FS
{

/// The bytes of a file, with a NUL behind them. Not zeroed before they are read.
struct FileContent
{
    std::unique_ptr<char[]> data;
    std::size_t size = 0;

    std::string_view view() const noexcept { return {data.get(), size}; }
    static FileContent ofSize(std::size_t size)
    {
        FileContent content{std::make_unique_for_overwrite<char[]>(size + 1), size};
        content.data[size] = '\0';
        return content;
    }
};

enum class FileReading : int
{
    Done,
    NoFile, ///< nothing of that name, or no ordinary file
    TooLarge,
    Failed
};

/// Reads a file of the shared file system as a whole, or nothing of one that is larger than @p limit.
FileReading readFile(FileContent& out, const std::string& name, std::size_t limit);

/// Why a file was not read, to go behind its name in a message.
std::string describe(FileReading failure, std::size_t limit);

} // namespace Kodo::FS
