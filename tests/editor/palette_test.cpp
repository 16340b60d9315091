#include "editor/palette/palette.hpp"

#include "editor/palette/color_difference.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>

#include <png.h>

namespace
{

using Color = Kodo::Render::ColourRGBAFloat;
using Packed = Kodo::Render::Colour32Bit;

struct Pair
{
    LabColor first;
    LabColor second;
    double distance;
};

/// The test data published with the formula.
constexpr std::array<Pair, 34> PUBLISHED{{
    {{50.0, 2.6772, -79.7751}, {50.0, 0.0, -82.7485}, 2.0425},
    {{50.0, 3.1571, -77.2803}, {50.0, 0.0, -82.7485}, 2.8615},
    {{50.0, 2.8361, -74.0200}, {50.0, 0.0, -82.7485}, 3.4412},
    {{50.0, -1.3802, -84.2814}, {50.0, 0.0, -82.7485}, 1.0000},
    {{50.0, -1.1848, -84.8006}, {50.0, 0.0, -82.7485}, 1.0000},
    {{50.0, -0.9009, -85.5211}, {50.0, 0.0, -82.7485}, 1.0000},
    {{50.0, 0.0, 0.0}, {50.0, -1.0, 2.0}, 2.3669},
    {{50.0, -1.0, 2.0}, {50.0, 0.0, 0.0}, 2.3669},
    {{50.0, 2.4900, -0.0010}, {50.0, -2.4900, 0.0009}, 7.1792},
    {{50.0, 2.4900, -0.0010}, {50.0, -2.4900, 0.0010}, 7.1792},
    {{50.0, 2.4900, -0.0010}, {50.0, -2.4900, 0.0011}, 7.2195},
    {{50.0, 2.4900, -0.0010}, {50.0, -2.4900, 0.0012}, 7.2195},
    {{50.0, -0.0010, 2.4900}, {50.0, 0.0009, -2.4900}, 4.8045},
    {{50.0, -0.0010, 2.4900}, {50.0, 0.0010, -2.4900}, 4.8045},
    {{50.0, -0.0010, 2.4900}, {50.0, 0.0011, -2.4900}, 4.7461},
    {{50.0, 2.5, 0.0}, {50.0, 0.0, -2.5}, 4.3065},
    {{50.0, 2.5, 0.0}, {73.0, 25.0, -18.0}, 27.1492},
    {{50.0, 2.5, 0.0}, {61.0, -5.0, 29.0}, 22.8977},
    {{50.0, 2.5, 0.0}, {56.0, -27.0, -3.0}, 31.9030},
    {{50.0, 2.5, 0.0}, {58.0, 24.0, 15.0}, 19.4535},
    {{50.0, 2.5, 0.0}, {50.0, 3.1736, 0.5854}, 1.0000},
    {{50.0, 2.5, 0.0}, {50.0, 3.2972, 0.0}, 1.0000},
    {{50.0, 2.5, 0.0}, {50.0, 1.8634, 0.5757}, 1.0000},
    {{50.0, 2.5, 0.0}, {50.0, 3.2592, 0.3350}, 1.0000},
    {{60.2574, -34.0099, 36.2677}, {60.4626, -34.1751, 39.4387}, 1.2644},
    {{63.0109, -31.0961, -5.8663}, {62.8187, -29.7946, -4.0864}, 1.2630},
    {{61.2901, 3.7196, -5.3901}, {61.4292, 2.2480, -4.9620}, 1.8731},
    {{35.0831, -44.1164, 3.7933}, {35.0232, -40.0716, 1.5901}, 1.8645},
    {{22.7233, 20.0904, -46.6940}, {23.0331, 14.9730, -42.5619}, 2.0373},
    {{36.4612, 47.8580, 18.3852}, {36.2715, 50.5065, 21.2231}, 1.4146},
    {{90.8027, -2.0831, 1.4410}, {91.1528, -1.6435, 0.0447}, 1.4441},
    {{90.9257, -0.5406, -0.9208}, {88.6381, -0.8985, -0.7239}, 1.5381},
    {{6.7747, -0.2908, -2.4247}, {5.8714, -0.0985, -2.2286}, 0.6377},
    {{2.0776, 0.0795, -1.1350}, {0.9033, -0.0636, -0.5514}, 0.9082},
}};

RgbPicture readPng(const std::string& file)
{
    RgbPicture picture;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_file(&image, file.c_str()), 0) << image.message;
    image.format = PNG_FORMAT_RGB;
    picture.width = image.width;
    picture.height = image.height;
    picture.bytes.resize(PNG_IMAGE_SIZE(image));
    EXPECT_NE(png_image_finish_read(&image, nullptr, picture.bytes.data(), 0, nullptr), 0) << image.message;
    return picture;
}

std::array<int, 3> pixel(const RgbPicture& picture, std::size_t x, std::size_t y)
{
    const std::size_t at = (y * picture.width + x) * 3;
    return {picture.bytes.at(at), picture.bytes.at(at + 1), picture.bytes.at(at + 2)};
}

} // namespace

TEST(ColorDifferenceTest, DistancesAreThePublishedOnesBothWays)
{
    for (const Pair& pair : PUBLISHED)
    {
        EXPECT_NEAR(perceptualDistance(pair.first, pair.second), pair.distance, 0.00005) << pair.distance;
        EXPECT_NEAR(perceptualDistance(pair.second, pair.first), pair.distance, 0.00005) << pair.distance;
    }
}

TEST(ColorDifferenceTest, ScreenColoursHaveTheirKnownLabValues)
{
    const LabColor white = toLab({1, 1, 1, 1});
    EXPECT_NEAR(white.l, 100.0, 0.001);
    EXPECT_NEAR(white.a, 0.0, 0.01);
    EXPECT_NEAR(white.b, 0.0, 0.02);
    const LabColor red = toLab({1, 0, 0, 0});
    EXPECT_NEAR(red.l, 53.24, 0.01);
    EXPECT_NEAR(red.a, 80.09, 0.01);
    EXPECT_NEAR(red.b, 67.20, 0.01);
    const LabColor black = toLab({-1, 0, 0, 1});
    EXPECT_NEAR(black.l, 0.0, 1e-9);
}

TEST(PaletteTest, ASeedGivesThePaletteAgain)
{
    PaletteOptions options;
    options.seed = 7;
    options.colors = 4;
    const auto first = makePalette(options);
    const auto again = makePalette(options);
    ASSERT_EQ(first.size(), 4U);
    for (std::size_t i = 0; i < first.size(); ++i)
    {
        EXPECT_EQ(first[i].color, again[i].color);
        EXPECT_GE(first[i].smallestHueDistance, 29.9999);
        EXPECT_GT(first[i].smallestPerceptualDistance, 0.0);
    }
    options.seed = 8;
    EXPECT_NE(makePalette(options)[0].color, first[0].color);
}

TEST(PaletteTest, BannedColoursCountAmongTheNearest)
{
    PaletteOptions options;
    options.colors = 1;
    EXPECT_TRUE(std::isinf(makePalette(options)[0].smallestHueDistance));
    options.banned = {Packed(0xFF00FF00)};
    const PaletteEntry entry = makePalette(options)[0];
    EXPECT_GE(entry.smallestHueDistance, 29.9999);
    EXPECT_LE(entry.smallestHueDistance, 180.0);
    EXPECT_DOUBLE_EQ(entry.smallestPerceptualDistance,
                     perceptualDistance(toLab(entry.color), toLab(Packed(0xFF00FF00))));
}

TEST(PaletteTest, ThePictureHasTheGeneratedColoursAboveTheBannedOnes)
{
    const std::vector<PaletteEntry> palette{{Color(1, 0, 0, 1), 0, 0}, {Color(0, 1, 0, 1), 0, 0}};
    const std::vector<Packed> banned{Packed(0xFF0000FF)};
    const TemporaryDirectory disk;
    const std::string file = (disk / "palette.png").string();
    ASSERT_TRUE(writePng(file, drawPalette(palette, banned)));
    const RgbPicture picture = readPng(file);
    EXPECT_EQ(picture.width, 8U + 2 * 72);
    EXPECT_EQ(picture.height, 8U + 2 * 72);
    const std::array<int, 3> background{32, 32, 32};
    EXPECT_EQ(pixel(picture, 0, 0), background);
    EXPECT_EQ(pixel(picture, 8, 8), (std::array<int, 3>{255, 0, 0}));
    EXPECT_EQ(pixel(picture, 71, 71), (std::array<int, 3>{255, 0, 0}));
    EXPECT_EQ(pixel(picture, 72, 40), background);
    EXPECT_EQ(pixel(picture, 80, 40), (std::array<int, 3>{0, 255, 0}));
    EXPECT_EQ(pixel(picture, 40, 80), (std::array<int, 3>{0, 0, 255}));
    EXPECT_EQ(pixel(picture, 100, 100), background);
}

TEST(PaletteTest, RunningWritesTheTableAndThePicture)
{
    const TemporaryDirectory disk;
    PaletteOptions options;
    options.seed = 7;
    options.banned = {Packed(0xFF2CFFA6)};
    options.pictureFile = (disk / "nine.png").string();
    std::ostringstream out;
    EXPECT_TRUE(runPalette(options, out));
    const std::string table = out.str();
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 10);
    EXPECT_EQ(readPng(options.pictureFile).width, 8U + 9 * 72);
}

TEST(PaletteTest, APictureThatCannotBeWrittenIsReported)
{
    const TemporaryDirectory disk;
    PaletteOptions options;
    options.pictureFile = (disk / "none/p.png").string();
    const ExpectReports reports{"The picture '" + options.pictureFile + "' could not be written"};
    std::ostringstream out;
    EXPECT_FALSE(runPalette(options, out));
    EXPECT_FALSE(writePng((disk / "empty.png").string(), RgbPicture{}));
    EXPECT_FALSE(writePng((disk / "wrong.png").string(), RgbPicture{2, 2, {1, 2, 3}}));
}

TEST(PaletteTest, BansThatLeaveNoHueAreRefusedInsteadOfSearchedForEver)
{
    // Yellow to red, every 30 degrees of the generator's hue.
    const std::vector<Packed> every{Packed(0xFFFFFF00), Packed(0xFF80FF00), Packed(0xFF00FF00),
                                    Packed(0xFF00FF80), Packed(0xFF00FFFF), Packed(0xFF0080FF),
                                    Packed(0xFF0000FF), Packed(0xFF8000FF), Packed(0xFFFF0000)};
    EXPECT_FALSE(leavesFreeHue(every));
    EXPECT_TRUE(leavesFreeHue({}));
    EXPECT_TRUE(leavesFreeHue({every.begin() + 2, every.end()})) << "free at the lower end";
    EXPECT_TRUE(leavesFreeHue({every[0], every[2], every[6], every[8]})) << "free in the middle";

    std::vector<Packed> upToRed(every.begin(), every.end() - 1);
    EXPECT_FALSE(leavesFreeHue(upToRed));
    upToRed.back() = Packed(0xFF7F00FF);
    EXPECT_TRUE(leavesFreeHue(upToRed)) << "red alone is free";

    PaletteOptions options;
    options.banned = every;
    std::ostringstream out;
    {
        const ExpectReports reports{"The banned colours leave no hue for others"};
        EXPECT_FALSE(runPalette(options, out));
    }
    EXPECT_EQ(out.str(), "");
    options.colors = 0;
    EXPECT_TRUE(runPalette(options, out));
}
