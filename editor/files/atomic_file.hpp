#pragma once

#include <filesystem>
#include <string_view>

/// Replaces the contents of @p file with @p bytes as a whole: written beside it, brought to the disk, renamed
/// over it. Whatever goes wrong, the file keeps its old contents. A symbolic link stays and its target is
/// replaced; an existing file keeps its permissions, and is left alone where they forbid writing. Throws
/// FileError.
void replaceFile(const std::filesystem::path& file, std::string_view bytes);
