#pragma once

#include "kodo/render/colour.hpp"

namespace TernCommonDetail
{

/// The colour half-way to white, of the same alpha.
constexpr Kodo::Render::ColourRGBAFloat lightenedColour(Kodo::Render::Colour32Bit packed) noexcept
{
    const Kodo::Render::ColourRGBAFloat colour(packed);
    const auto halfWay = [](float c) { return c + (1.0F - c) * 0.5F; };
    return {halfWay(colour.r()), halfWay(colour.g()), halfWay(colour.b()), colour.a()};
}

} // namespace TernCommonDetail
