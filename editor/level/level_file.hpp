#pragma once

#include "editor/level/level.hpp"

#include <filesystem>
#include <string>
#include <string_view>

/// Level files: JSON of the form
///
///     {"format": "tern-level", "version": 1,
///      "curves": [{"name": "road", "closed": false, "points": [[0, 0, 0], …]}, …],
///      "items": [{"name": "…", "type": "…", "position": [0, 0, 0], "properties": {"key": "text", …}}, …]}
///
/// "closed", "points", "items", "position" and "properties" may be left out. A member of another name, or
/// a second one of the same, is refused: it would be lost at the next save.
constexpr int LEVEL_FILE_VERSION = 1;

/// Throws FileError, with line and column, for a file that cannot be read, is not JSON, is of a newer version
/// or is no level.
LevelData readLevelFile(const std::filesystem::path& file);
/// The same from a text; @p file is for messages.
LevelData parseLevel(std::string_view text, const std::filesystem::path& file);

/// A level file's text, a point or an item a line.
std::string formatLevel(const LevelData& level);
/// Replaces the file as a whole (see replaceFile()). Throws FileError.
void writeLevelFile(const std::filesystem::path& file, const LevelData& level);
