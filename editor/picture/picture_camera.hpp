#pragma once

#include "editor/picture/picture_options.hpp"
#include "editor/picture/scene_bounds.hpp"
#include "kodo/render/camera.hpp"

/// The camera that the option asks for. Without a place it looks north-eastwards and down on @p bounds, from
/// where all of them are just seen; those of an empty level count as 20 metres around the origin.
Kodo::Render::Camera placeCamera(const CameraOption& option, const SceneBounds& bounds, float aspect);
