#include "kodo/render/camera.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tern_common/curve_view/space_curve_point_collider.hpp"
#include "tests/editor/picture/picture_test_fixture.hpp"
#include "tests/editor/picture/software_view.hpp"
#include "tests/editor/picture/wave_scene.hpp"

using Kodo::Vector3;
using Kodo::Render::Camera;

namespace
{

constexpr PictureSize SIZE{320, 180};

struct Pixel
{
    std::size_t x = 0;
    std::size_t y = 0; ///< from the bottom
};

/// A person before a picture of the wave: sees pixels and points at them.
class CurvePickingTest : public PictureTest
{
protected:
    void SetUp() override
    {
        PictureTest::SetUp();
        camera().lookAt({-2.0F, 5.0F, -20.0F}, {0.4F, 2.2F, 0.0F}, {0.0F, 1.0F, 0.0F});
        camera().setPerspective(0.75F, 1.0F, 500.0F);
    }
    void TearDown() override { camera() = Camera(); }

    static Camera& camera() { return Kodo::Render::RenderSystem::instance().sceneCamera(); }

    RgbPicture paintScene()
    {
        Kodo::DebugDrawer::Context drawn;
        m_scene.view().render(drawn);
        return paint({}, drawn, camera(), SIZE);
    }

    static Kodo::Ray rayThrough(const Pixel& pixel)
    {
        const float x = (static_cast<float>(pixel.x) + 0.5F) / static_cast<float>(SIZE.width) * 2.0F - 1.0F;
        const float y = (static_cast<float>(pixel.y) + 0.5F) / static_cast<float>(SIZE.height) * 2.0F - 1.0F;
        return camera().pickRay(x, y, SIZE.aspect());
    }

    /// The control points under a pixel.
    static std::vector<CurveViewControlPoint*> pointsAt(const Pixel& pixel)
    {
        const Kodo::Ray ray = rayThrough(pixel);
        Kodo::Collisions::Ray pick{ray.origin, ray.direction};
        return SpaceCurvePointCollider(Kodo::SpaceManager::instance().space(WaveScene::SPACE)).collide(pick);
    }

    /// The middle of the pixels in which two pictures differ.
    static Pixel middleOfChange(const RgbPicture& before, const RgbPicture& after)
    {
        std::size_t sumX = 0;
        std::size_t sumY = 0;
        std::size_t count = 0;
        for (std::size_t i = 0; i < SIZE.width * SIZE.height; ++i)
        {
            const Pixel pixel{i % SIZE.width, i / SIZE.width};
            if (Software::pixelOf(before, pixel.x, pixel.y) != Software::pixelOf(after, pixel.x, pixel.y))
            {
                sumX += pixel.x;
                sumY += pixel.y;
                ++count;
            }
        }
        return count == 0 ? Pixel() : Pixel{sumX / count, sumY / count};
    }

    WaveScene& scene() { return m_scene; }

private:
    WaveScene m_scene;
};

TEST_F(CurvePickingTest, TheRayThroughASeenPointSelectsThatPoint)
{
    const RgbPicture before = paintScene(); // rendering also fits the colliders to what is seen
    for (std::size_t i = 0; i < WaveCurve::POINTS; ++i)
    {
        scene().point(i).edHovered(true);
        const Pixel seen = middleOfChange(before, paintScene());
        scene().point(i).edHovered(false);

        const std::vector<CurveViewControlPoint*> hit = pointsAt(seen);
        ASSERT_EQ(hit.size(), 1U) << "point " << i << " at " << seen.x << "," << seen.y;
        EXPECT_EQ(hit.front(), &scene().point(i));
        hit.front()->edSelected();
        EXPECT_TRUE(scene().point(i).edIsSelected());
        EXPECT_NE(paintScene().bytes, before.bytes);
        hit.front()->edDeselected();
        EXPECT_EQ(paintScene().bytes, before.bytes);
    }
}

TEST_F(CurvePickingTest, TheRayThroughTheSkySelectsNothing)
{
    paintScene();
    EXPECT_TRUE(pointsAt({10, 10}).empty());
    EXPECT_TRUE(pointsAt({160, 170}).empty());
}

TEST_F(CurvePickingTest, APointerNearTheCurveShowsAGhostForOnePicture)
{
    const RgbPicture before = paintScene();
    const auto space = Kodo::ChunkManager::instance().space(WaveScene::SPACE, true);
    const Vector3 between = WaveCurve::at(1.5F);
    const Software::View view = Software::View::perspective({-2.0, 5.0, -20.0}, {0.4, 2.2, 0.0}, 0.75, SIZE);
    const Software::Spot spot = view.project({double{between.x}, double{between.y}, double{between.z}});
    const Pixel pointed{static_cast<std::size_t>(spot.x), static_cast<std::size_t>(spot.y)};

    CurveViewSpaceCache::instance(*space).collide(rayThrough(pointed), false);
    const RgbPicture withGhost = paintScene();
    const Pixel ghost = middleOfChange(before, withGhost);
    EXPECT_NEAR(static_cast<double>(ghost.x), spot.x, 2.0);
    EXPECT_NEAR(static_cast<double>(ghost.y), spot.y, 2.0);
    EXPECT_EQ(scene().curve().insertions, 0);
    EXPECT_EQ(paintScene().bytes, before.bytes);

    CurveViewSpaceCache::instance(*space).collide(rayThrough(pointed), true);
    EXPECT_EQ(scene().curve().insertions, 1);
    EXPECT_EQ(scene().curve().insertedParameter, 1.5F);
    EXPECT_EQ(scene().curve().insertedPosition, between);
}

} // namespace
