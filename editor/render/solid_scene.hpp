#pragma once

#include "kodo/math/vector3.hpp"
#include "kodo/render/colour.hpp"

#include <optional>
#include <vector>

/// A lit box along the world's axes.
struct SolidBox
{
    Kodo::Vector3 centre;
    Kodo::Vector3 halfSize; ///< positive
    Kodo::Render::ColourRGBAFloat color{0.7F, 0.7F, 0.7F, 1.0F};
};

/// A level plane with a grid, which fades into the haze of the sky towards its edge. Hides what is below it.
struct Ground
{
    Kodo::Vector3 centre;
    float reach = 1000.0F; ///< from the centre to its edge
    float cell = 1.0F;     ///< of the grid; every tenth line is stronger
    Kodo::Render::ColourRGBAFloat color{0.5F, 0.53F, 0.49F, 1.0F};
    Kodo::Render::ColourRGBAFloat gridColor{0.63F, 0.66F, 0.62F, 1.0F};
};

/// What stands in a picture and hides other things, and the sky behind.
struct SolidScene
{
    std::optional<Ground> ground;
    std::vector<SolidBox> boxes;
    Kodo::Render::ColourRGBAFloat haze{0.8F, 0.84F, 0.87F, 1.0F};
    Kodo::Render::ColourRGBAFloat zenith{0.42F, 0.56F, 0.72F, 1.0F};
};
