#pragma once

#include "editor/curve/curve_data.hpp"

#include <filesystem>
#include <string_view>
#include <vector>

/// What a track's positions are counted from.
enum class TrackOrigin
{
    FirstPoint, ///< the first point, its elevation as well
    Middle      ///< the middle between the extremes of latitude and longitude, and the sea's level
};

/// Whether a file's name ends in ".gpx", in capitals or not: devices write both.
bool isTrackFile(const std::filesystem::path& file);

/// The track points of a GPX file, all segments in order, as metres from the origin, on the sphere of the
/// Earth's mean radius R = 6371008.8 m by the equirectangular projection at the origin's latitude:
///
///     x = R cos(latitude of the origin) (longitude - longitude of the origin)    to the east
///     z = R (latitude - latitude of the origin)                                  to the north
///
/// with angles in radians, longitudes the short way round; y is the elevation, 0 where a point has none. Any
/// thread. Throws FileError, with line and column, for a file that cannot be read, is no GPX or has no point.
std::vector<Position> readGpxTrack(const std::filesystem::path& file,
                                   TrackOrigin origin = TrackOrigin::FirstPoint);
/// The same from a text; @p file is for messages.
std::vector<Position> parseGpxTrack(std::string_view text, const std::filesystem::path& file,
                                    TrackOrigin origin = TrackOrigin::FirstPoint);
