#pragma once

#include "kodo/render/colour.hpp"

#include <algorithm>
#include <cmath>

/// Hues as the colour generator measures them, for hosts that show or check its distances. Single precision,
/// the same to the bit everywhere.
namespace ColorHue
{

inline constexpr float PI = 3.14159265F;
inline constexpr float TWO_PI = 6.2831855F;
inline constexpr float THIRD_OF_PI = 1.0471976F;

/// Brings an angle in radians into (-pi, pi].
inline float wrapAngle(float angle) noexcept
{
    constexpr float THREE_PI = 3.0F * PI;
    if (angle > PI && angle <= THREE_PI)
    {
        return angle - TWO_PI;
    }
    if (angle > -THREE_PI && angle <= -PI)
    {
        return angle + TWO_PI;
    }
    if (angle > THREE_PI || angle <= -THREE_PI)
    {
        return angle - TWO_PI * std::floor(angle / TWO_PI + 0.5F);
    }
    return angle;
}

/// The hue in radians, in (-pi, pi]; 0 for greys. Two branches, not the usual three: red tops are judged by
/// the formula for blue, and the spacing of the generated colours rests on it.
inline float hueOf(const Kodo::Render::ColourRGBAFloat& color) noexcept
{
    const float r = color.r();
    const float g = color.g();
    const float b = color.b();
    const float max = std::max(std::max(r, g), b);
    const float min = std::min(std::min(r, g), b);
    if (std::fabs(min - max) < 0.0004F)
    {
        return 0.0F;
    }
    if (max == g)
    {
        return wrapAngle(((b - r) / (max - min) + 2.0F) * THIRD_OF_PI);
    }
    return wrapAngle(((r - g) / (max - min) + 4.0F) * THIRD_OF_PI);
}

/// How far two hues are apart the shorter way round, in [0, pi].
inline float distance(float first, float second) noexcept
{
    float difference = first - second;
    if (!(difference >= 0.0F))
    {
        difference += TWO_PI;
    }
    return difference > PI ? TWO_PI - difference : difference;
}

} // namespace ColorHue
