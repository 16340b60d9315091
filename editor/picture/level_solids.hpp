#pragma once

#include "editor/level/level.hpp"
#include "editor/picture/scene_bounds.hpp"
#include "editor/render/solid_scene.hpp"

#include <vector>

/// A level's items as boxes on a ground.
///
/// A box stands around its item's position, as wide and deep as the item's property "size" says ("x y z", in
/// metres; 3 each way without it), from the ground up to that height above the position. One that is not
/// three positive numbers is reported and does not count. Items of one type have one colour. An item that no
/// picture can show is reported and left out.
///
/// @p curves holds what else is to be seen. The ground lies just below everything.
SolidScene solidsOf(const std::vector<Item>& items, const SceneBounds& curves);

/// What is to be seen of all that.
SceneBounds boundsOf(const SolidScene& solids, const SceneBounds& curves);

/// The colours of boxes and of selected control points: no curve should be mistaken for them.
std::vector<Kodo::Render::Colour32Bit> sceneColors();
