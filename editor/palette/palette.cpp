#include "editor/palette/palette.hpp"

#include "editor/palette/color_difference.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/kodo_random.hpp"
#include "tern_common/utils/color_generator.hpp"
#include "tern_common/utils/color_hue.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <ostream>

namespace
{

using Color = Kodo::Render::ColourRGBAFloat;

constexpr std::size_t SQUARE = 64;
constexpr std::size_t GAP = 8;
constexpr std::uint8_t BACKGROUND = 32;

void takeNearer(PaletteEntry& entry, const Color& other)
{
    const float hue = ColorHue::distance(ColorHue::hueOf(entry.color), ColorHue::hueOf(other));
    const double perceptual = perceptualDistance(toLab(entry.color), toLab(other));
    entry.smallestHueDistance =
        std::min(entry.smallestHueDistance, static_cast<double>(hue) * 180.0 / std::numbers::pi);
    entry.smallestPerceptualDistance = std::min(entry.smallestPerceptualDistance, perceptual);
}

std::uint8_t toByte(float component)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(component, 0.0F, 1.0F) * 255.0F));
}

void fillSquare(RgbPicture& picture, std::size_t column, std::size_t row, const Color& color)
{
    const std::array<std::uint8_t, 3> pixel{toByte(color.r()), toByte(color.g()), toByte(color.b())};
    const std::size_t left = GAP + column * (SQUARE + GAP);
    const std::size_t top = GAP + row * (SQUARE + GAP);
    for (std::size_t y = top; y < top + SQUARE; ++y)
    {
        for (std::size_t x = left; x < left + SQUARE; ++x)
        {
            std::copy(pixel.begin(), pixel.end(),
                      picture.bytes.begin() + static_cast<std::ptrdiff_t>((y * picture.width + x) * 3));
        }
    }
}

} // namespace

bool leavesFreeHue(const std::vector<Kodo::Render::Colour32Bit>& banned)
{
    const auto areAwayFrom = [&banned](float hue, float distance)
    {
        return std::all_of(banned.begin(), banned.end(),
                           [hue, distance](const Color& color)
                           { return ColorHue::distance(ColorHue::hueOf(color), hue) >= distance; });
    };
    constexpr float MIN_DISTANCE = ColorHue::PI / 6.0F;
    if (areAwayFrom(ColorHue::hueOf({1.0F, 0.0F, 0.0F, 1.0F}), MIN_DISTANCE))
    {
        return true; // the last one: all reds without green have it, and so has every sixth candidate
    }
    constexpr int STEPS = 2400; // of a tenth of a degree each, between the hues of generated colours
    constexpr float STEP = 4.0F * ColorHue::THIRD_OF_PI / static_cast<float>(STEPS);
    for (int i = 0; i < STEPS; ++i)
    {
        const float hue = ColorHue::wrapAngle(ColorHue::THIRD_OF_PI + STEP * static_cast<float>(i));
        if (areAwayFrom(hue, MIN_DISTANCE + STEP / 2.0F)) // a gap as wide as a step
        {
            return true;
        }
    }
    return false;
}

std::vector<PaletteEntry> makePalette(const PaletteOptions& options)
{
    Kodo::KodoRandom::instance().seed(options.seed);
    ColorGenerator generator;
    for (const Color banned : options.banned)
    {
        generator.banColor(banned);
    }
    constexpr double NONE = std::numeric_limits<double>::infinity();
    std::vector<PaletteEntry> palette;
    for (std::size_t i = 0; i < options.colors; ++i)
    {
        palette.push_back({generator(), NONE, NONE});
    }
    for (PaletteEntry& entry : palette)
    {
        for (const PaletteEntry& other : palette)
        {
            if (&other != &entry)
            {
                takeNearer(entry, other.color);
            }
        }
        for (const Color banned : options.banned)
        {
            takeNearer(entry, banned);
        }
    }
    return palette;
}

RgbPicture drawPalette(const std::vector<PaletteEntry>& palette,
                       const std::vector<Kodo::Render::Colour32Bit>& banned)
{
    RgbPicture picture;
    picture.width = GAP + std::max(palette.size(), banned.size()) * (SQUARE + GAP);
    picture.height = GAP + (banned.empty() ? 1 : 2) * (SQUARE + GAP);
    picture.bytes.assign(picture.width * picture.height * 3, BACKGROUND);
    for (std::size_t i = 0; i < palette.size(); ++i)
    {
        fillSquare(picture, i, 0, palette[i].color);
    }
    for (std::size_t i = 0; i < banned.size(); ++i)
    {
        fillSquare(picture, i, 1, banned[i]);
    }
    return picture;
}

void writePaletteTable(std::ostream& out, const std::vector<PaletteEntry>& palette)
{
    out << "colour  red    green  blue   nearest hue  nearest CIEDE2000\n";
    std::size_t number = 0;
    for (const PaletteEntry& entry : palette)
    {
        std::array<char, 96> line{};
        const Color& color = entry.color;
        static_cast<void>(std::snprintf(
            line.data(), line.size(), "%6zu  %.3f  %.3f  %.3f  %7.2f deg  %17.2f\n", ++number,
            static_cast<double>(color.r()), static_cast<double>(color.g()), static_cast<double>(color.b()),
            entry.smallestHueDistance, entry.smallestPerceptualDistance));
        out << line.data();
    }
}

bool runPalette(const PaletteOptions& options, std::ostream& out)
{
    if (options.colors > 0 && !leavesFreeHue(options.banned))
    {
        Kodo::DebugMessageHelper(0, 5).message("The banned colours leave no hue for others");
        return false;
    }
    const std::vector<PaletteEntry> palette = makePalette(options);
    writePaletteTable(out, palette);
    if (options.pictureFile.empty() || writePng(options.pictureFile, drawPalette(palette, options.banned)))
    {
        return true;
    }
    Kodo::DebugMessageHelper(0, 5).message("The picture '" + options.pictureFile + "' could not be written");
    return false;
}
