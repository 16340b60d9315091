#include "editor/render/debug_painter.hpp"

#include "editor/render/scene_light.hpp"
#include "tests/editor/picture/picture_test_fixture.hpp"
#include "tests/editor/picture/software_view.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <set>

using Kodo::Vector3;
using Kodo::DebugDrawer::Context;
using Kodo::Render::Camera;
using Kodo::Render::ColourRGBAFloat;
using Software::Rgb;
using Software::Vec;

namespace
{

constexpr PictureSize SIZE{160, 120};
constexpr ColourRGBAFloat RED{1.0F, 0.0F, 0.0F, 1.0F};
constexpr ColourRGBAFloat GREEN{0.0F, 1.0F, 0.0F, 1.0F};
constexpr Rgb RED_PIXEL{255, 0, 0};
constexpr Rgb GREEN_PIXEL{0, 255, 0};

/// Looks to the north from 10 metres south of the origin, 12 by 16 metres wide.
Camera flatCamera()
{
    Camera camera;
    camera.lookAt({0.0F, 0.0F, -10.0F}, {0.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F});
    camera.setOrthographic(12.0F, 0.5F, 100.0F);
    return camera;
}

Camera deepCamera()
{
    Camera camera = flatCamera();
    camera.setPerspective(1.0F, 0.5F, 1000.0F);
    return camera;
}

class DebugPainterTest : public PictureTest
{
protected:
    RgbPicture paintFlat(const Context& drawn) { return paint({}, drawn, flatCamera(), SIZE); }

    std::set<std::pair<std::size_t, std::size_t>> pixelsOf(const RgbPicture& picture, const Rgb& color) const
    {
        std::set<std::pair<std::size_t, std::size_t>> pixels;
        for (std::size_t y = 0; y < picture.height; ++y)
        {
            for (std::size_t x = 0; x < picture.width; ++x)
            {
                if (Software::pixelOf(picture, x, y) == color)
                {
                    pixels.emplace(x, y);
                }
            }
        }
        return pixels;
    }

    /// Pixels that differ from a picture with nothing recorded.
    std::size_t paintedPixels(const RgbPicture& picture, const Camera& camera)
    {
        const RgbPicture empty = paint({}, {}, camera, {picture.width, picture.height});
        std::size_t count = 0;
        for (std::size_t i = 0; i < picture.bytes.size(); i += 3)
        {
            const auto at = static_cast<std::ptrdiff_t>(i);
            count += std::equal(picture.bytes.begin() + at, picture.bytes.begin() + at + 3,
                                empty.bytes.begin() + at)
                         ? 0U
                         : 1U;
        }
        return count;
    }
};

TEST_F(DebugPainterTest, DrawsALineAsWideAsItSays)
{
    Context drawn;
    drawn.line().colour(RED).point({-4, 0, 0}).point({4, 0, 0}).width(1.0F); // 10 pixels to the metre
    const auto pixels = pixelsOf(paintFlat(drawn), RED_PIXEL);
    for (std::size_t x = 45; x < 115; ++x)
    {
        for (std::size_t y = 40; y < 80; ++y)
        {
            EXPECT_EQ(pixels.contains({x, y}), y >= 55 && y < 65) << x << "," << y;
        }
    }
}

TEST_F(DebugPainterTest, RoundsEndsAndJoints)
{
    Context drawn;
    drawn.line().colour(RED).point({-4, -3, 0}).point({0, 3, 0}).point({4, -3, 0}).width(2.0F);
    const RgbPicture picture = paintFlat(drawn);
    const Software::View view = Software::View::orthographic({0, 0, -10}, {0, 0, 0}, 12, SIZE);
    int wrong = 0;
    int right = 0;
    for (std::size_t y = 0; y < SIZE.height; ++y)
    {
        for (std::size_t x = 0; x < SIZE.width; ++x)
        {
            const bool wanted =
                Software::strip(view, {{-4, -3, 0}, {0, 3, 0}, {4, -3, 0}}, 2.0, x, y).has_value();
            const bool painted = Software::pixelOf(picture, x, y) == RED_PIXEL;
            wrong += wanted != painted ? 1 : 0;
            right += wanted && painted ? 1 : 0;
        }
    }
    EXPECT_LE(wrong, 4); // middles that lie on the very edge
    EXPECT_GT(right, 2500);
}

TEST_F(DebugPainterTest, KeepsAFarThinLineWhole)
{
    for (const float height : {0.0F, 1.3F, 37.0F, 200.0F})
    {
        Context drawn;
        drawn.line().colour(RED).point({-300, -height, 800}).point({300, height, 800}).width(1e-6F);
        const auto pixels = pixelsOf(paint({}, drawn, deepCamera(), SIZE), RED_PIXEL);
        std::set<std::size_t> columns;
        for (const auto& [x, y] : pixels)
        {
            columns.insert(x);
        }
        ASSERT_GT(columns.size(), 80U);
        EXPECT_EQ(columns.size(), *columns.rbegin() - *columns.begin() + 1)
            << "a gap at a rise of " << height;
    }
}

TEST_F(DebugPainterTest, CutsALineOffThatComesFromBehindTheEye)
{
    Context drawn;
    drawn.line().colour(RED).point({0, -0.5F, -500}).point({0, -0.5F, 20}).width(0.01F);
    const auto pixels = pixelsOf(paint({}, drawn, deepCamera(), SIZE), RED_PIXEL);
    // From below the picture straight up to a place just below the middle.
    EXPECT_TRUE(pixels.contains({80, 0}) || pixels.contains({79, 0}));
    for (const auto& [x, y] : pixels)
    {
        EXPECT_TRUE(x == 79 || x == 80) << x;
        EXPECT_LT(y, 60U);
    }
    EXPECT_GE(pixels.size(), 55U);
}

TEST_F(DebugPainterTest, LeavesOutWhatLiesBehindTheEye)
{
    Context drawn;
    drawn.line().colour(RED).point({0, 0, -20}).point({1, 1, -11}).width(1.0F);
    drawn.sphere().position({0, 0, -15}).scale({-1, -1, -1}).zTestEnable(false);
    EXPECT_EQ(paintedPixels(paint({}, drawn, deepCamera(), SIZE), deepCamera()), 0U);
}

TEST_F(DebugPainterTest, LeavesOutWhatHasNoPlace)
{
    constexpr float NOTHING = std::numeric_limits<float>::quiet_NaN();
    constexpr float FAR = std::numeric_limits<float>::infinity();
    Context drawn;
    drawn.line().colour(RED).point({NOTHING, 0, 0}).point({1, 0, 0}).point({FAR, 0, 0}).width(1.0F);
    drawn.line().colour(RED).width(1.0F);
    drawn.sphere().position({NOTHING, 0, 0});
    drawn.sphere().position({0, FAR, 0});
    drawn.sphere().scale({0, 1, 1});
    drawn.sphere().scale({NOTHING, 1, 1});
    drawn.sphere().scale({FAR, 1, 1});
    for (const float number : {NOTHING, FAR})
    {
        drawn.line().colour(RED).point({0, 0, 0}).point({1, 0, 0}).width(number);
        drawn.line().colour({1, number, 0, 1}).point({0, 0, 0}).point({1, 0, 0}).width(1.0F);
        drawn.sphere().colour({1, number, 0, 1});
        drawn.sphere().rotation({number, 0, 0, 1});
    }
    EXPECT_EQ(paintedPixels(paintFlat(drawn), flatCamera()), 0U);
}

TEST_F(DebugPainterTest, DrawsADotForASinglePoint)
{
    Context drawn;
    drawn.line().colour(RED).point({0, 0, 0}).width(2.0F);
    const auto count = static_cast<double>(pixelsOf(paintFlat(drawn), RED_PIXEL).size());
    EXPECT_NEAR(count, std::numbers::pi * 100, 12);
}

TEST_F(DebugPainterTest, WhatIsRecordedFirstStaysOnTop)
{
    for (const bool tested : {true, false})
    {
        Context drawn;
        drawn.line()
            .colour(RED)
            .point({-4, 0, 0})
            .point({4, 0, 0})
            .width(1.0F)
            .zTestEnable(tested)
            .zWriteEnable(false);
        drawn.line()
            .colour(GREEN)
            .point({0, -4, 0})
            .point({0, 4, 0})
            .width(1.0F)
            .zTestEnable(tested)
            .zWriteEnable(false);
        const RgbPicture picture = paintFlat(drawn);
        EXPECT_EQ(Software::pixelOf(picture, 80, 60), RED_PIXEL);
        EXPECT_EQ(Software::pixelOf(picture, 80, 80), GREEN_PIXEL);
    }
}

TEST_F(DebugPainterTest, WritesDepthsWhereItIsAskedTo)
{
    for (const bool writes : {true, false})
    {
        Context drawn;
        drawn.line().colour(RED).point({-4, 0, 5}).point({4, 0, 5}).width(1.0F);
        // Painted before the other, and nearer.
        drawn.line().colour(GREEN).point({0, -4, 0}).point({0, 4, 0}).width(1.0F).zWriteEnable(writes);
        EXPECT_EQ(Software::pixelOf(paintFlat(drawn), 80, 60), writes ? GREEN_PIXEL : RED_PIXEL);
    }
}

TEST_F(DebugPainterTest, WithoutTheTestItWritesNoDepths)
{
    Context drawn;
    drawn.line().colour(RED).point({-4, 0, 5}).point({4, 0, 5}).width(1.0F);
    drawn.line()
        .colour(GREEN)
        .point({0, -4, 0})
        .point({0, 4, 0})
        .width(1.0F)
        .zTestEnable(false)
        .zWriteEnable(true);
    EXPECT_EQ(Software::pixelOf(paintFlat(drawn), 80, 60), RED_PIXEL);
}

TEST_F(DebugPainterTest, ANegativeScaleLooksLikeAPositiveOne)
{
    Context plain;
    plain.sphere().scale({1, 2, 3}).position({0.3F, 0.2F, 0.1F});
    Context mirrored;
    mirrored.sphere().scale({-1, -2, -3}).position({0.3F, 0.2F, 0.1F});
    Context half;
    half.sphere().scale({-1, 2, 3}).position({0.3F, 0.2F, 0.1F});
    const RgbPicture picture = paintFlat(plain);
    EXPECT_GT(paintedPixels(picture, flatCamera()), 500U);
    EXPECT_EQ(paintFlat(mirrored).bytes, picture.bytes);
    EXPECT_EQ(paintFlat(half).bytes, picture.bytes);
}

TEST_F(DebugPainterTest, AMirroredCameraSeesTheSameSideOfABall)
{
    Context drawn;
    drawn.sphere().scale({3, 3, 3});
    Camera mirrored = flatCamera();
    Kodo::Matrix world = mirrored.worldMatrix();
    world.m[0][0] = -world.m[0][0];
    mirrored.setWorldMatrix(world);
    const RgbPicture straight = paintFlat(drawn);
    const RgbPicture reversed = paint({}, drawn, mirrored, SIZE);
    int wrong = 0;
    for (std::size_t i = 0; i < SIZE.width * SIZE.height; ++i)
    {
        const std::size_t x = i % SIZE.width;
        const std::size_t y = i / SIZE.width;
        wrong += Software::isNear(Software::pixelOf(straight, x, y),
                                  Software::pixelOf(reversed, SIZE.width - 1 - x, y), 3)
                     ? 0
                     : 1;
    }
    EXPECT_LE(wrong, 12); // at the edge
}

TEST_F(DebugPainterTest, LightsATurnedAndStretchedBallByItsTrueNormals)
{
    constexpr float ANGLE = 0.6F; // about the line of sight
    Context drawn;
    drawn.sphere()
        .scale({4.0F, 1.5F, 2.0F})
        .rotation(Kodo::Quaternion::fromAngleAxis(ANGLE, {0, 0, 1}))
        .colour({0.2F, 0.9F, 0.5F, 1.0F});
    const RgbPicture picture = paintFlat(drawn);
    const Vec longAxis{std::cos(double{ANGLE}), std::sin(double{ANGLE}), 0};
    const Vec shortAxis{-std::sin(double{ANGLE}), std::cos(double{ANGLE}), 0};
    int wrong = 0;
    int right = 0;
    for (std::size_t i = 0; i < SIZE.width * SIZE.height; ++i)
    {
        const Vec place{(static_cast<double>(i % SIZE.width) + 0.5 - 80) / 10,
                        (static_cast<double>(i / SIZE.width) + 0.5 - 60) / 10, 0};
        const double along = dot(place, longAxis) / 4.0;
        const double across = dot(place, shortAxis) / 1.5;
        const double rest = 1 - along * along - across * across;
        if (rest < 0.08) // the outermost pixels, where the light changes fast
        {
            continue;
        }
        const Vec normal =
            unit(longAxis * (along / 4.0) + shortAxis * (across / 1.5) + Vec{0, 0, -std::sqrt(rest) / 2.0});
        const double toSun = dot(normal, {double{SceneLight::TO_SUN.x}, double{SceneLight::TO_SUN.y},
                                          double{SceneLight::TO_SUN.z}});
        const auto darkest = double{SceneLight::DARKEST};
        const Rgb wanted =
            Software::bytesOf(Vec{0.2, 0.9, 0.5} * (darkest + (1 - darkest) * (1 + toSun) / 2));
        const bool isRight =
            Software::isNear(Software::pixelOf(picture, i % SIZE.width, i / SIZE.width), wanted, 4);
        ++(isRight ? right : wrong);
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(right, 1500);
}

TEST_F(DebugPainterTest, DrawsFrameAfterFrameTheSame)
{
    Context drawn;
    drawn.line().colour(RED).point({-4, 0, 5}).point({4, 0, 5}).width(1.0F).zWriteEnable(false);
    drawn.sphere().scale({2, 2, 2}).zWriteEnable(false);
    const RgbPicture first = paintFlat(drawn);
    EXPECT_EQ(paintFlat(drawn).bytes, first.bytes);
    EXPECT_EQ(paintedPixels(paintFlat({}), flatCamera()), 0U);
    EXPECT_EQ(paintFlat(drawn).bytes, first.bytes);
}

TEST_F(DebugPainterTest, RefusesPicturesOfNoSizeOrTooLarge)
{
    EXPECT_THROW(paint({}, {}, flatCamera(), {0, 10}), GlError);
    EXPECT_THROW(paint({}, {}, flatCamera(), {10, 10000000}), GlError);
    EXPECT_EQ(paint({}, {}, flatCamera(), {1, 1}).bytes.size(), 3U);
}

TEST_F(DebugPainterTest, SaysWhatIsWrongWithAShader)
{
    const auto messageOf = [](const std::string& vertex, const std::string& fragment)
    {
        try
        {
            GlProgram("sample", vertex, fragment).uniform("missing");
        }
        catch (const GlError& error)
        {
            return std::string(error.what());
        }
        return std::string();
    };
    const std::string vertex = "void main() { gl_Position = vec4(0.0); }";
    const std::string fragment = "out vec4 pixel; void main() { pixel = vec4(1.0); }";
    EXPECT_EQ(messageOf(vertex, fragment), "the shaders \"sample\" use no uniform \"missing\"");
    EXPECT_EQ(messageOf("void main() { nonsense }", fragment)
                  .find("the vertex shader of \"sample\" does not compile: "),
              0U);
    EXPECT_EQ(messageOf(vertex, "nonsense").find("the fragment shader of \"sample\" does not compile: "), 0U);
    EXPECT_EQ(messageOf("out vec3 other; void main() { other = vec3(0.0); gl_Position = vec4(0.0); }",
                        "in vec4 other; out vec4 pixel; void main() { pixel = other; }")
                  .find("the shaders \"sample\" do not link: "),
              0U);
}

} // namespace
