#pragma once

#include "editor/level/level.hpp"

#include <filesystem>
#include <string_view>
#include <vector>

/// The track points of a GPX file, all segments in order, as metres from the first point: x to the east, z to
/// the north, on the sphere of the Earth's mean radius (6371008.8 m) by the equirectangular projection at the
/// first point's latitude; y is the elevation (0 where a point has none) less the first point's. Any thread.
/// Throws FileError, with line and column, for a file that cannot be read, is no GPX or has no point.
std::vector<Position> readGpxTrack(const std::filesystem::path& file);
/// The same from a text; @p file is for messages.
std::vector<Position> parseGpxTrack(std::string_view text, const std::filesystem::path& file);
