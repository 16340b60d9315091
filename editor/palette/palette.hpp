#pragma once

#include "editor/files/png_file.hpp"
#include "kodo/render/colour.hpp"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

struct PaletteOptions
{
    std::size_t colors = 9;
    std::uint32_t seed = 0; ///< of the shared random generator
    std::vector<Kodo::Render::Colour32Bit> banned;
    std::string pictureFile; ///< PNG; empty for none
};

/// A generated colour and how close the nearest other one comes, generated or banned; infinity when there is
/// no other.
struct PaletteEntry
{
    Kodo::Render::ColourRGBAFloat color;
    double smallestHueDistance = 0;        ///< in degrees, as the generator measures it
    double smallestPerceptualDistance = 0; ///< by CIEDE2000
};

/// Whether generated colours can keep away from these: the generator looks for ever where they leave no hue.
/// A gap of less than a tenth of a degree counts as none.
bool leavesFreeHue(const std::vector<Kodo::Render::Colour32Bit>& banned);

/// Draws the colours; the banned ones leave a hue free. Seeds the shared random generator.
std::vector<PaletteEntry> makePalette(const PaletteOptions& options);

/// The generated colours in a row of squares, the banned ones in a row below.
RgbPicture drawPalette(const std::vector<PaletteEntry>& palette,
                       const std::vector<Kodo::Render::Colour32Bit>& banned);

/// One line a colour: its components, and both smallest distances.
void writePaletteTable(std::ostream& out, const std::vector<PaletteEntry>& palette);

/// Makes the palette, writes its table to @p out and its picture to the file; false, with a message of
/// priority 5 in the log, when the bans leave no hue or the picture cannot be written.
bool runPalette(const PaletteOptions& options, std::ostream& out);
