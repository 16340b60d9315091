#pragma once

#include "kodo/render/colour.hpp"
#include "tern_common/export.hpp"

#include <vector>

/// Hands out random, saturated, bright colours whose hues stay 30 degrees away from every colour handed out
/// before and from every banned one. A plain value, for one user at a time. It draws from the shared
/// Kodo::KodoRandom: seeding that one repeats a sequence of colours.
class TERN_COMMON_API ColorGenerator
{
public:
    ColorGenerator();
    ColorGenerator(const ColorGenerator& other);
    /// The source is left as a new generator.
    ColorGenerator(ColorGenerator&& other) noexcept;
    ColorGenerator& operator=(const ColorGenerator& other);
    ColorGenerator& operator=(ColorGenerator&& other) noexcept;
    ~ColorGenerator();

    /// A new colour, opaque, with a smallest component of 0 and a largest of 0.9 to 1. Each attempt draws a
    /// value and then a hue. When 10,000 attempts came too close to earlier colours, those are forgotten and
    /// only bans count from there on.
    ///
    /// Ban few colours: bans that leave no hue free make this call endless. Memory that runs out is passed on
    /// as std::bad_alloc.
    Kodo::Render::ColourRGBAFloat operator()();

    /// Keeps later colours away from @p colour, for good. Hues are measured by ColorHue, which puts a grey at
    /// 0, where no generated colour comes near.
    void banColor(const Kodo::Render::ColourRGBAFloat& colour);

private:
    std::vector<Kodo::Render::ColourRGBAFloat> m_generatedColors;
    std::vector<Kodo::Render::ColourRGBAFloat> m_bannedColors;
};
