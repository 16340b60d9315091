#include "editor/picture/level_picture.hpp"

#include "editor/app/editor_options.hpp"
#include "editor/app/headless_session.hpp"
#include "editor/level/level_file.hpp"
#include "editor/picture/level_scene.hpp"
#include "editor/picture/level_solids.hpp"
#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"
#include "tern_common/utils/color_hue.hpp"
#include "tests/editor/picture/picture_test_fixture.hpp"
#include "tests/editor/picture/software_view.hpp"
#include "tests/support/temporary_directory.hpp"

#include <fstream>
#include <sstream>

using Kodo::Vector3;
using Kodo::Render::ColourRGBAFloat;

namespace
{

constexpr int SPACE = 72;

const char* const LEVEL = R"({"format": "tern-level", "version": 1,
    "curves": [{"name": "lane", "kind": "catmullRom", "points": [[-20, 1, 0], [0, 1, 6], [20, 1, 0]]},
               {"name": "ring", "closed": true, "color": "FF00FF", "points": [[-4, 3, -8], [4, 3, -8], [0, 3, -2]]},
               {"name": "none", "points": []}],
    "items": [{"name": "barn", "type": "house", "position": [0, 1, 3], "properties": {"size": "8 4 2"}},
              {"name": "shed", "type": "shed", "position": [12, 1, 3]}]})";

Item itemOfSize(const char* size)
{
    return {"barn", "house", {1.0, 2.0, 3.0}, {{"size", size}}};
}

TEST(LevelSolidsTest, AnItemIsABoxFromTheGroundToItsHeightAboveItsPlace)
{
    const SolidScene scene = solidsOf({itemOfSize(" 8 4 2 "), {"shed", "shed", {10.0, 1.0, 0.0}, {}}}, {});
    ASSERT_TRUE(scene.ground.has_value());
    ASSERT_EQ(scene.boxes.size(), 2U);
    EXPECT_LT(scene.ground->centre.y, 1.0F);
    const SolidBox& box = scene.boxes[0];
    EXPECT_EQ(box.centre.x, 1.0F);
    EXPECT_EQ(box.centre.z, 3.0F);
    EXPECT_EQ(box.halfSize.x, 4.0F);
    EXPECT_EQ(box.halfSize.z, 1.0F);
    EXPECT_FLOAT_EQ(box.centre.y + box.halfSize.y, 6.0F);
    EXPECT_FLOAT_EQ(box.centre.y - box.halfSize.y, scene.ground->centre.y);
    EXPECT_EQ(scene.boxes[1].halfSize.x, 1.5F);
    EXPECT_FALSE(scene.boxes[0].color == scene.boxes[1].color) << "different types";
}

TEST(LevelSolidsTest, ReportsASizeThatIsNone)
{
    for (const char* const size :
         {"", "1 2", "1 2 3 4", "1 2 x", "0 1 1", "-1 1 1", "nan 1 1", "1,2,3", "1 2 1e9"})
    {
        const ExpectReports reports{std::string("The size of item 'barn' is '") + size +
                                    "', not three positive numbers: it is drawn without"};
        EXPECT_EQ(solidsOf({itemOfSize(size)}, {}).boxes.at(0).halfSize.x, 1.5F);
    }
}

TEST(LevelSceneTest, GivesCurvesColoursOfTheirOwn)
{
    Level level;
    level.replace(parseLevel(LEVEL, "sample.level"));
    const LevelScene scene(level, SPACE);
    ASSERT_EQ(scene.views().size(), 3U);
    Kodo::DebugDrawer::Context drawn;
    scene.render(drawn);
    // Two passes a curve that has points.
    ASSERT_EQ(drawn.lines().size(), 4U);
    EXPECT_EQ(drawn.lines()[2].colour, ColourRGBAFloat(1.0F, 0.0F, 1.0F, 1.0F));
    EXPECT_TRUE(drawn.lines()[3].colour.r() < 0.6F && drawn.lines()[3].colour.g() == 0.0F);
    for (const ColourRGBAFloat banned : sceneColors())
    {
        const float distance =
            ColorHue::distance(ColorHue::hueOf(banned), ColorHue::hueOf(drawn.lines()[0].colour));
        EXPECT_GE(distance, ColorHue::PI / 6.0F - 0.02F);
    }
    EXPECT_FALSE(scene.bounds().isEmpty());
}

TEST(LevelSceneTest, IsAsLargeAsItsCurvesBendAndTheGroundLiesBelowAllOfThem)
{
    Level level;
    level.addCurve(Curve{
        "loop", false, {{0, 0, 0}, {10, 0, 0}}, CurveKind::Bezier, {{{}, {0, 60, 0}}, {{0, -60, 0}, {}}}});
    const LevelScene scene(level, SPACE);
    EXPECT_NEAR(scene.bounds().high().y, 17.3F, 0.1F); // 180 u (1-u) (1-2u) at its highest
    EXPECT_NEAR(scene.bounds().low().y, -17.3F, 0.1F);
    EXPECT_LT(scene.solids().ground->centre.y, scene.bounds().low().y);
}

TEST(LevelSceneTest, ReportsWhatIsTooFarToBeDrawnAndDrawsTheRest)
{
    Level level;
    level.replace(parseLevel(R"({"format": "tern-level", "version": 1,
        "curves": [{"name": "beyond", "points": [[1e39, 0, 0], [0, 0, 0]]}, {"name": "near", "points": [[1, 2, 3]]},
                   {"name": "far", "points": [[0, 0, 0], [0, 0, -2e12]]}],
        "items": [{"name": "lost", "type": "a", "position": [0, 1e300, 0]}, {"name": "hut", "type": "b"}]})",
                             "far.level"));
    const ExpectReports reports{"The curve 'beyond' reaches farther than a picture does: it is not drawn",
                                "The curve 'far' reaches farther than a picture does: it is not drawn",
                                "The item 'lost' stands farther than a picture reaches: it is not drawn"};
    const LevelScene scene(level, SPACE);
    EXPECT_EQ(scene.views().size(), 1U);
    EXPECT_EQ(scene.solids().boxes.size(), 1U);
    EXPECT_LT(scene.bounds().radius(), 10.0F);
}

TEST(LevelSceneTest, PointsOfAFixedSizeAreAsLargeFarAwayAsNearby)
{
    Level level;
    level.addCurve(Curve{"road", false, {{0, 0, 10}, {0, 0, 1000}}});
    LevelScene scene(level, SPACE);
    scene.fixPointSize(2.5F);
    Kodo::DebugDrawer::Context drawn;
    scene.render(drawn);
    ASSERT_EQ(drawn.spheres().size(), 4U);
    for (const auto& sphere : drawn.spheres())
    {
        EXPECT_EQ(sphere.scale, Vector3(2.5F, 2.5F, 2.5F));
    }
}

TEST(LevelSceneTest, LeavesNothingBehind)
{
    Level level;
    level.replace(parseLevel(LEVEL, "sample.level"));
    const std::size_t spaces = Kodo::ChunkManager::instance().spaceCount();
    {
        const LevelScene scene(level, SPACE);
        EXPECT_EQ(Kodo::ChunkManager::instance().spaceCount(), spaces + 1);
        EXPECT_NE(Kodo::CollisionSceneManager::instance().scene(SPACE), nullptr);
    }
    EXPECT_EQ(Kodo::ChunkManager::instance().spaceCount(), spaces);
    EXPECT_EQ(Kodo::CollisionSceneManager::instance().scene(SPACE), nullptr);
}

/// Runs the editor without a window, in a folder of its own.
class LevelPictureTest : public PictureTest
{
protected:
    struct Result
    {
        int code = 0;
        std::string out;
        std::string errors;
    };

    Result run(std::vector<std::string> more)
    {
        const std::string level = (m_folder.path() / "sample.level").string();
        std::ofstream(level) << LEVEL;
        std::vector<std::string> words{"tern_editor", "--headless", "--level", level};
        words.insert(words.end(), more.begin(), more.end());
        std::vector<const char*> arguments;
        for (const std::string& word : words)
        {
            arguments.push_back(word.c_str());
        }
        const EditorOptions options = parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
        std::ostringstream out;
        std::ostringstream errors;
        const int code = HeadlessSession(options, out, errors).run();
        return {code, out.str(), errors.str()};
    }

    std::string file(const char* name) const { return (m_folder.path() / name).string(); }
    static std::string bytesOf(const std::string& name)
    {
        std::ifstream stream(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    TemporaryDirectory m_folder;
};

TEST_F(LevelPictureTest, DrawsTheLevelAsAPngOfTheSizeAskedFor)
{
    const Result result = run({"--picture", file("a.png"), "--size", "200x120"});
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_NE(result.out.find("a.png: drawn, 200x120 pixels\n"), std::string::npos) << result.out;
    const std::string png = bytesOf(file("a.png"));
    ASSERT_GT(png.size(), 24U);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    EXPECT_EQ(png.substr(16, 8), std::string("\0\0\0\xC8\0\0\0\x78", 8));
}

TEST_F(LevelPictureTest, DrawsTheSameLevelTheSameEveryTime)
{
    EXPECT_EQ(run({"--picture", file("a.png"), "--size", "200x120"}).code, 0);
    EXPECT_EQ(run({"--picture", file("b.png"), "--size", "200x120"}).code, 0);
    EXPECT_EQ(run({"--picture", file("c.png"), "--size", "200x120", "--camera", "ortho=fit"}).code, 0);
    EXPECT_EQ(bytesOf(file("a.png")), bytesOf(file("b.png")));
    EXPECT_NE(bytesOf(file("a.png")), bytesOf(file("c.png")));
}

TEST_F(LevelPictureTest, SaysWhenThePictureCannotBeWritten)
{
    const Result result = run({"--picture", file("missing/a.png"), "--size", "20x12"});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.errors.find("a.png"), std::string::npos) << result.errors;
}

TEST_F(LevelPictureTest, WhatIsReportedWhileDrawingIsNoScriptsFault)
{
    std::ofstream(file("s.txt")) << "level.addCurve(\"far\")\ncurves.far.addPoint(\"1e20 0 0\")\n";
    const CollectReports seenByTheSession;
    const Result result = run({"--picture", file("a.png"), "--size", "20x12", "--script", file("s.txt")});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.errors, "error: The curve 'far' reaches farther than a picture does: it is not drawn\n");
    EXPECT_FALSE(bytesOf(file("a.png")).empty());
}

TEST_F(LevelPictureTest, ShowsACurveInTheColourThatTheLevelGivesIt)
{
    Level level;
    level.replace(parseLevel(LEVEL, "sample.level"));
    CameraOption camera;
    camera.place = CameraOption::Place{{0.0F, 12.0F, -30.0F}, {0.0F, 2.0F, 0.0F}};
    constexpr PictureSize SIZE{640, 360};
    const RgbPicture picture = drawLevel(level, camera, SIZE);
    Kodo::Render::RenderSystem::instance().sceneCamera() = Kodo::Render::Camera();
    std::size_t pure = 0;
    for (std::size_t i = 0; i < SIZE.width * SIZE.height; ++i)
    {
        pure += Software::pixelOf(picture, i % SIZE.width, i / SIZE.width) == Software::Rgb{255, 0, 255} ? 1U
                                                                                                         : 0U;
    }
    EXPECT_GT(pure, 50U); // the middle of the ring's line
}

} // namespace
