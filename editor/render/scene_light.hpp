#pragma once

#include "kodo/math/vector3.hpp"

/// How lit surfaces are lit, for every painter: a surface with the unit normal n shows its colour times
///
///     DARKEST + (1 - DARKEST) * (1 + dot(n, TO_SUN)) / 2
///
/// so that its hue stays and the side towards the sun shows the very colour.
namespace SceneLight
{

constexpr float DARKEST = 0.42F;
constexpr Kodo::Vector3 TO_SUN{-0.48F, 0.8F, -0.36F}; ///< length 1
/// The part of the ground's colour that is left in the shadow of a box.
constexpr float SHADOW = 0.66F;

} // namespace SceneLight
