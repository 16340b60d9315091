#pragma once

#include "editor/curve/curve_data.hpp"
#include "editor/level/level.hpp"

#include <filesystem>

/// A GPX track as a curve: linear, open, around the track's middle (TrackOrigin::Middle), named like the file
/// without its ending; a character that no curve's name has becomes "_". Throws FileError.
Curve readTrackCurve(const std::filesystem::path& file);

/// A level file; or a track, as a level with its curve and nothing else. Throws FileError.
LevelData readDocument(const std::filesystem::path& file);
