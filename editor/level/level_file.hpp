#pragma once

#include "editor/level/level.hpp"

#include <filesystem>
#include <string>
#include <string_view>

/// Level files: JSON of the form
///
///     {"format": "tern-level", "version": 1,
///      "curves": [{"name": "road", "closed": false, "kind": "linear", "color": "2CFFA6",
///                  "points": [[0, 0, 0], …]}, …],
///      "items": [{"name": "…", "type": "…", "position": [0, 0, 0], "properties": {"key": "text", …}}, …]}
///
/// "curves" and "items" may be left out, and so may all of a curve but its name, and an item's "position" and
/// "properties". "kind" is "linear", "catmullRom" or "bezier", the first where it is left out; "color" is
/// RRGGBB in hexadecimal digits. A point of a Bezier curve may have handles, given from the point on:
///
///     {"position": [0, 0, 0], "in": [-1, 0, 0], "out": [1, 0, 0]}
///
/// where "in" and "out" may be left out. A member of another name, or a second one of the same, is refused:
/// it would be lost at the next save.
constexpr int LEVEL_FILE_VERSION = 1;

/// Throws FileError, with line and column, for a file that cannot be read, is not JSON, is of a newer version
/// or is no level.
LevelData readLevelFile(const std::filesystem::path& file);
/// The same from a text; @p file is for messages.
LevelData parseLevel(std::string_view text, const std::filesystem::path& file);

/// A level file's text, a point or an item a line.
std::string formatLevel(const LevelData& level);
/// Replaces the file as a whole (see replaceFile()). Throws FileError, also where the name is a track's.
void writeLevelFile(const std::filesystem::path& file, const LevelData& level);
