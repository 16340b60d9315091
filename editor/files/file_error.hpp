#pragma once

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

/// A place in a text: line and column (in bytes), both counted from 1.
struct TextPosition
{
    std::size_t line = 1;
    std::size_t column = 1;
};

/// The place of the byte at @p offset; of the text's end for an offset beyond it.
TextPosition positionAt(std::string_view text, std::size_t offset) noexcept;

/// A file that could not be read, understood or written. The text names the file and, where there is one, the
/// place: "road.level:3:14: …".
class FileError : public std::runtime_error
{
public:
    FileError(const std::filesystem::path& file, const std::string& text);
    FileError(const std::filesystem::path& file, TextPosition position, const std::string& text);
};

/// A path as people read it, in UTF-8.
std::string displayName(const std::filesystem::path& file);

/// The bytes of a regular file. Throws FileError.
std::string readWholeFile(const std::filesystem::path& file);
