#pragma once

#include "editor/files/png_file.hpp"
#include "editor/level/level.hpp"
#include "editor/picture/picture_options.hpp"

/// A picture of the level, smooth to look at. Sets the scene camera of the render system. What cannot be
/// drawn of the level is reported and left out. Throws GlError where there is no OpenGL without a window.
/// Main thread only.
RgbPicture drawLevel(const Level& level, const CameraOption& camera, const PictureSize& size);
