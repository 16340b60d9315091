#pragma once

#include <cmath>

namespace TernCommonDetail
{

/// Whether `for (float t = 0; t < length; t += step)` ends, in the arithmetic of floats: whether it isn't
/// entered, or t gets to @p length, or becomes something that is not a number.
inline bool stepsEnd(float length, float step) noexcept
{
    if (!(length > 0.0F) || std::isnan(step))
    {
        return true;
    }
    if (step > length * 0x1p-24F) // more than half the distance between floats just below the end
    {
        return true;
    }
    if (!(step > 0.0F) || std::isinf(length))
    {
        return false;
    }
    // Adding the step changes the floats below the end least from the last power of two on. From below, t
    // can't jump over that one with a step that is too small to leave it.
    const float last = std::ldexp(1.0F, std::ilogb(std::nextafter(length, 0.0F)));
    return last + step > last;
}

} // namespace TernCommonDetail
