#include "editor/render/scene_light.hpp"
#include "tests/editor/picture/picture_test_fixture.hpp"
#include "tests/editor/picture/software_view.hpp"
#include "tests/editor/picture/wave_scene.hpp"

#include <cmath>
#include <map>
#include <ostream>

using Software::Expected;
using Software::Rgb;
using Software::Vec;

namespace
{

constexpr std::size_t HOVERED = 1;
constexpr std::size_t SELECTED = 3;

constexpr Vec CURVE_COLOR{0x2C / 255.0, 0xFF / 255.0, 0xA6 / 255.0};
constexpr Vec DOWN_COLOR{0x00 / 255.0, 0x6F / 255.0, 0x9A / 255.0};
constexpr Vec SELECTED_COLOR{0xEB / 255.0, 0xA0 / 255.0, 0x4A / 255.0};
constexpr Vec POINT_COLOR{(1 + CURVE_COLOR.x) / 2, (1 + CURVE_COLOR.y) / 2, (1 + CURVE_COLOR.z) / 2};

constexpr Software::Box WALL{{0.35, 0.0, -4.0}, {9.0, 6.0, -3.0}};
constexpr double GROUND = 0.0;
constexpr Vec EYE{-2.0, 5.0, -20.0};
constexpr Vec AT{0.4, 2.2, 0.0};

struct Shot
{
    bool isPerspective;
    PictureSize size;
};

void PrintTo(const Shot& shot, std::ostream* out)
{
    *out << (shot.isPerspective ? "perspective" : "orthographic") << " " << shot.size.width << "x"
         << shot.size.height;
}

constexpr float ANGLE = 0.75F;
constexpr float HEIGHT = 14.0F;

Kodo::Vector3 toVector(const Vec& place)
{
    return {static_cast<float>(place.x), static_cast<float>(place.y), static_cast<float>(place.z)};
}

Vec toVec(const Kodo::Vector3& place)
{
    return {double{place.x}, double{place.y}, double{place.z}};
}

Kodo::Render::Camera cameraOf(const Shot& shot)
{
    Kodo::Render::Camera camera;
    camera.lookAt(toVector(EYE), toVector(AT), {0.0F, 1.0F, 0.0F});
    if (shot.isPerspective)
    {
        camera.setPerspective(ANGLE, 1.0F, 500.0F);
    }
    else
    {
        camera.setOrthographic(HEIGHT, 1.0F, 500.0F);
    }
    return camera;
}

Software::View viewOf(const Shot& shot)
{
    return shot.isPerspective ? Software::View::perspective(EYE, AT, double{ANGLE}, shot.size)
                              : Software::View::orthographic(EYE, AT, double{HEIGHT}, shot.size);
}

SolidScene solids(bool withWall)
{
    SolidScene scene;
    scene.ground = Ground{{0.0F, static_cast<float>(GROUND), 0.0F}};
    if (withWall)
    {
        scene.boxes.push_back(
            {toVector((WALL.low + WALL.high) * 0.5), toVector((WALL.high - WALL.low) * 0.5)});
    }
    return scene;
}

/// What each pixel should show of the curve and its points, by the rule of depths.
class Rule
{
public:
    Rule(const Shot& shot, bool withWall) : m_view(viewOf(shot)), m_withWall(withWall)
    {
        for (std::size_t i = 0; i <= (WaveCurve::POINTS - 1) * WaveCurve::STEPS; ++i)
        {
            m_samples.push_back(
                toVec(WaveCurve::at(static_cast<float>(i) / static_cast<float>(WaveCurve::STEPS))));
        }
    }

    /// Nothing for a pixel that shows the scene. The curve covers the selected point, and that the others.
    std::optional<Expected> at(std::size_t x, std::size_t y) const
    {
        const Software::Line ray = m_view.rayThrough(x, y);
        const double scene = sceneDepth(ray);
        if (const auto depth = Software::strip(m_view, m_samples, double{WaveScene::THICKNESS}, x, y))
        {
            return *depth <= scene ? Expected{"visible curve", Software::bytesOf(CURVE_COLOR)}
                                   : Expected{"hidden curve", Software::bytesOf(DOWN_COLOR)};
        }
        if (auto found = ball("selected point", ray, SELECTED, 1.3, SELECTED_COLOR))
        {
            return found;
        }
        if (auto found = ball("rim of the selected point", ray, SELECTED, 1.3 * 1.3, {1, 1, 1}))
        {
            return found;
        }
        for (std::size_t i = 0; i < WaveCurve::POINTS; ++i)
        {
            auto found = i == SELECTED  ? std::nullopt
                         : i == HOVERED ? ball("hovered point", ray, i, 1.3, POINT_COLOR)
                                        : idleBall(ray, i, scene);
            if (found)
            {
                return found;
            }
        }
        return std::nullopt;
    }

private:
    double sceneDepth(const Software::Line& ray) const
    {
        double depth = Software::meetPlane(ray, GROUND).value_or(1e9);
        if (m_withWall)
        {
            depth = std::min(depth, Software::meet(ray, WALL).value_or(1e9));
        }
        return depth;
    }

    static Vec centreOf(std::size_t point) { return toVec(WaveCurve::at(static_cast<float>(point))); }
    double sizeOf(std::size_t point) const
    {
        return 0.025 * dot(centreOf(point) - m_view.eye(), m_view.forward());
    }

    std::optional<Expected> ball(const char* what, const Software::Line& ray, std::size_t point,
                                 double factor, const Vec& color) const
    {
        const double radius = sizeOf(point) * factor;
        const auto depth = Software::meetBall(ray, centreOf(point), radius);
        if (!depth)
        {
            return std::nullopt;
        }
        const Vec normal = unit(ray.origin + ray.direction * *depth - centreOf(point));
        const auto darkest = double{SceneLight::DARKEST};
        const double light = darkest + (1 - darkest) * (1 + dot(normal, toVec(SceneLight::TO_SUN))) / 2;
        constexpr int ROUGHNESS = 3; // of a ball made of triangles, in steps of 255
        return Expected{what, Software::bytesOf(color * light), ROUGHNESS};
    }

    std::optional<Expected> idleBall(const Software::Line& ray, std::size_t point, double scene) const
    {
        const auto depth = Software::meetBall(ray, centreOf(point), sizeOf(point));
        return depth && *depth <= scene ? ball("visible idle point", ray, point, 1.0, POINT_COLOR)
                                        : ball("hidden idle point", ray, point, 1.0, DOWN_COLOR);
    }

    Software::View m_view;
    bool m_withWall;
    std::vector<Vec> m_samples;
};

/// How well a picture keeps the rule.
struct Verdict
{
    std::map<std::string, int> right; ///< pixels by what they show
    int painted = 0;                  ///< pixels that show anything but the scene
    int atEdges = 0;                  ///< wrong, but right for a pixel beside
    int wrong = 0;
    std::string firstWrong;
};

bool isRight(const std::optional<Expected>& expected, const Rgb& actual, const Rgb& scene, int allowance)
{
    return expected ? Software::isNear(actual, expected->color,
                                       expected->tolerance + (expected->tolerance > 0 ? allowance : 0))
                    : actual == scene;
}

Verdict compare(const RgbPicture& picture, const RgbPicture& empty, const Rule& rule)
{
    constexpr int CHANGE_OF_LIGHT = 30; // of a small ball, from a pixel to the next
    std::vector<std::optional<Expected>> expected(picture.width * picture.height);
    for (std::size_t i = 0; i < expected.size(); ++i)
    {
        expected[i] = rule.at(i % picture.width, i / picture.width);
    }
    Verdict verdict;
    for (std::size_t i = 0; i < expected.size(); ++i)
    {
        const std::size_t x = i % picture.width;
        const std::size_t y = i / picture.width;
        const Rgb actual = Software::pixelOf(picture, x, y);
        const Rgb scene = Software::pixelOf(empty, x, y);
        verdict.painted += expected[i] ? 1 : 0;
        if (isRight(expected[i], actual, scene, 0))
        {
            ++verdict.right[expected[i] ? expected[i]->what : "scene"];
            continue;
        }
        bool isAtEdge = false;
        for (std::size_t beside = 0; beside < 9; ++beside)
        {
            const std::size_t besideX = x + beside % 3;
            const std::size_t besideY = y + beside / 3;
            isAtEdge = isAtEdge || (besideX > 0 && besideY > 0 && besideX <= picture.width &&
                                    besideY <= picture.height && beside != 4 &&
                                    isRight(expected[(besideY - 1) * picture.width + besideX - 1], actual,
                                            scene, CHANGE_OF_LIGHT));
        }
        ++(isAtEdge ? verdict.atEdges : verdict.wrong);
        if (!isAtEdge && verdict.firstWrong.empty())
        {
            verdict.firstWrong = "at " + std::to_string(x) + "," + std::to_string(y) + " shows " +
                                 testing::PrintToString(actual) + " for " +
                                 (expected[i] ? expected[i]->what + testing::PrintToString(expected[i]->color)
                                              : "scene" + testing::PrintToString(scene));
        }
    }
    return verdict;
}

class CurvePictureTest : public PictureTest, public testing::WithParamInterface<Shot>
{
protected:
    /// The picture of a curve with a hovered and a selected point, behind a wall where there is one.
    RgbPicture paintWave(const Shot& shot, bool withWall)
    {
        WaveScene scene;
        scene.point(HOVERED).edHovered(true);
        scene.point(SELECTED).edSelected();
        const Kodo::Render::Camera camera = cameraOf(shot);
        Kodo::Render::RenderSystem::instance().sceneCamera() = camera;
        Kodo::DebugDrawer::Context drawn;
        scene.view().render(drawn);
        RgbPicture picture = paint(solids(withWall), drawn, camera, shot.size);
        keep(picture);
        return picture;
    }

    RgbPicture paintSolids(const Shot& shot, bool withWall)
    {
        return paint(solids(withWall), {}, cameraOf(shot), shot.size);
    }

private:
    /// For people: TERN_TEST_PICTURES names a folder.
    static void keep(const RgbPicture& picture)
    {
        if (const char* const folder = std::getenv("TERN_TEST_PICTURES"))
        {
            const auto* const info = testing::UnitTest::GetInstance()->current_test_info();
            std::string name = info->name();
            std::replace(name.begin(), name.end(), '/', '_');
            EXPECT_TRUE(writePng(std::string(folder) + "/" + name + ".png", picture));
        }
    }
};

TEST_P(CurvePictureTest, ShowsEachPixelOfCurveAndPointsInTheColourOfItsDepth)
{
    const Verdict verdict =
        compare(paintWave(GetParam(), true), paintSolids(GetParam(), true), Rule(GetParam(), true));
    EXPECT_EQ(verdict.wrong, 0) << verdict.firstWrong;
    // Edges fall on other sides of pixels' middles for numbers of other precision, and the balls have
    // corners.
    EXPECT_LE(verdict.atEdges, verdict.painted / 100) << "of " << verdict.painted;
    RecordProperty("painted", verdict.painted);
    RecordProperty("atEdges", verdict.atEdges);
    for (const char* const what : {"visible curve", "hidden curve", "visible idle point", "hidden idle point",
                                   "hovered point", "selected point", "rim of the selected point"})
    {
        EXPECT_GE(verdict.right.count(what) == 0 ? 0 : verdict.right.at(what), 20) << what;
    }
}

TEST_P(CurvePictureTest, TheRuleTellsAWallThatIsThereFromOneThatIsNot)
{
    const Verdict verdict =
        compare(paintWave(GetParam(), true), paintSolids(GetParam(), true), Rule(GetParam(), false));
    EXPECT_GE(verdict.wrong, verdict.painted / 10);
}

INSTANTIATE_TEST_SUITE_P(Shots, CurvePictureTest,
                         testing::Values(Shot{true, {320, 180}}, Shot{true, {257, 193}},
                                         Shot{true, {800, 450}}, Shot{false, {320, 180}},
                                         Shot{false, {257, 193}}, Shot{false, {800, 450}}));

} // namespace
