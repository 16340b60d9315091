#include "tern_common/curve_view/curve_view_control_point.hpp"

#include "kodo/core/stack_tracker.hpp"
#include "kodo/render/camera.hpp"
#include "tern_common/curve_view/default_curve_drawer.hpp"
#include "tests/support/recording_curve.hpp"
#include "tests/support/recording_drawer.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using Kodo::Matrix;
using Kodo::Vector3;
using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;
using Point = Kodo::SmartPointer<CurveViewControlPoint>;

const char* const NO_COLLIDER = "ControlPointImpl :: cannot add control point to the collision scene";
const char* const NOT_REMOVED =
    "~CurveViewControlPoint :: cannot remove control point from the collision scene";
const char* const NOT_SCALED = "ControlPointImpl :: cannot adjust collider scale";

static_assert(CurveViewControlPoint::DEFAULT_SCALE == 5.0F);
static_assert(std::is_base_of_v<Kodo::EditorCustomChunkItem, CurveViewControlPoint>);
static_assert(std::is_base_of_v<tern::Object, CurveViewControlPoint>);

Matrix translation(const Vector3& offset)
{
    Matrix matrix;
    matrix.setTranslate(offset);
    return matrix;
}

class ControlPointTest : public testing::Test
{
protected:
    ControlPointTest()
    {
        Kodo::Render::RenderSystem::instance().sceneCamera().setWorldMatrix(Matrix::IDENTITY);
    }
    ~ControlPointTest() override
    {
        Kodo::Render::RenderSystem::instance().sceneCamera().setWorldMatrix(Matrix::IDENTITY);
    }

    Point make(const Vector3& place, std::function<void(CurveViewControlPoint*)> deleter = {})
    {
        return new CurveViewControlPoint(std::move(deleter), space.id, {}, translation(place));
    }
    std::size_t hits(const Vector3& origin, const Vector3& direction) const
    {
        struct Counter final : Kodo::Collisions::ICollisionCollector
        {
            Counter() : ICollisionCollector(RETURN_ALL) {}
            void onHit(const Kodo::Collisions::RayHit& hit) override
            {
                ++count;
                mask = hit.collisionMask;
            }
            std::size_t count = 0;
            int mask = 0;
        } counter;
        space.scene().collideRay({origin, direction}, counter, nullptr);
        EXPECT_TRUE(counter.count == 0 || counter.mask == 16);
        return counter.count;
    }

    TestSpace space;
    Kodo::DebugDrawer::Context context;
};

TEST_F(ControlPointTest, ANewPointStandsInItsChunkAndInTheCollisionScene)
{
    const Point point = make({1, 2, 3});
    EXPECT_EQ(point->edTransform(), translation({1, 2, 3}));
    EXPECT_EQ(point->edWorldTransform(), translation({1, 2, 3}));
    EXPECT_TRUE(space.chunkSpace().editorChunk().contains(point.get()));
    EXPECT_TRUE(space.scene().contains(point->sceneObject()));
    EXPECT_EQ(point->space(), &space.chunkSpace());
    EXPECT_EQ(point->wantFlags(), 1U);
    EXPECT_EQ(point->scale(), 5.0F);
    EXPECT_TRUE(point->autoScaleEnabled());
    EXPECT_TRUE(point->getRefObject().isEmpty());
    EXPECT_EQ(point->getColor(), ColourRGBAFloat(Colour32Bit(0xFF2CFFA6U)));
    EXPECT_EQ(point->getOverlapColor(), ColourRGBAFloat(Colour32Bit(0xFF006F9AU)));
    EXPECT_TRUE(point->customDeleter());
    EXPECT_EQ(point->edSelectItemType(), Kodo::SelectItemType::ChunkItem);
}

TEST_F(ControlPointTest, TheColliderIsABallOfFiveAcross)
{
    const Point point = make({0, 0, 50});
    EXPECT_EQ(hits({2.49F, 0, 0}, {0, 0, 1}), 1U);
    EXPECT_EQ(hits({2.51F, 0, 0}, {0, 0, 1}), 0U);
}

TEST_F(ControlPointTest, DestructionTakesTheColliderOut)
{
    Point point = make({0, 0, 50});
    space.chunkSpace().editorChunk().delDynamicItem(point);
    EXPECT_EQ(space.scene().objectCount(), 1U);
    point = nullptr;
    EXPECT_EQ(space.scene().objectCount(), 0U);
}

TEST_F(ControlPointTest, WithoutACollisionSceneThePointReportsAndStaysPut)
{
    Kodo::CollisionSceneManager::instance().removeScene(space.id);
    Point point;
    {
        const ExpectReports reports{NO_COLLIDER, NO_COLLIDER}; // placed, and given its collider
        point = make({1, 2, 3});
        EXPECT_EQ(reports.reports().at(0).priority, 5);
    }
    EXPECT_EQ(point->edTransform(), Matrix());
    {
        const ExpectReports reports{NO_COLLIDER};
        EXPECT_FALSE(point->edTransform(translation({4, 5, 6}), {}));
        EXPECT_EQ(point->edTransform(), Matrix());
    }
    {
        const ExpectReports reports{NOT_SCALED};
        point->render(context);
        EXPECT_EQ(context.spheres().size(), 2U);
    }
    const ExpectReports reports{NOT_REMOVED};
    space.chunkSpace().editorChunk().delDynamicItem(point);
    point = nullptr;
}

TEST_F(ControlPointTest, MovingTakesColliderAndFeatureAlong)
{
    const Point point = make({0, 0, 50});
    auto& feature = Kodo::SpaceManager::instance().space(space.id)->spatialFeature();
    EXPECT_TRUE(point->edTransform(translation({100, 0, 50}), tern::SetterFlag::Interactive));
    EXPECT_FALSE(feature.isPresent(point->sceneObject()));
    EXPECT_EQ(hits({0, 0, 0}, {0, 0, 1}), 0U);
    EXPECT_EQ(hits({100, 0, 0}, {0, 0, 1}), 1U);
    EXPECT_EQ(point->edWorldTransform(), translation({100, 0, 50}));

    feature.add(point->sceneObject(), Matrix());
    point->edWorldTransform(translation({7, 8, 9}), {});
    EXPECT_EQ(*feature.transformOf(point->sceneObject()), translation({7, 8, 9}));
    EXPECT_EQ(point->edTransform(), translation({7, 8, 9}));
}

TEST_F(ControlPointTest, MovingNeedsNoClientSpace)
{
    Kodo::SpaceManager::instance().removeSpace(space.id);
    const Point point = make({0, 0, 50});
    EXPECT_TRUE(point->edTransform(translation({1, 0, 0}), {}));
}

TEST_F(ControlPointTest, DeletionCallsTheDeleterWithThePoint)
{
    CurveViewControlPoint* deleted = nullptr;
    const Point point = make({}, [&](CurveViewControlPoint* p) { deleted = p; });
    point->edDelete();
    EXPECT_EQ(deleted, point.get());
    EXPECT_TRUE(space.chunkSpace().editorChunk().contains(point.get()));
    EXPECT_THROW(make({})->customDelete(), std::bad_function_call);
}

TEST_F(ControlPointTest, ADeleterMayDropThePointAndOutlivesItsCall)
{
    Point point;
    int calls = 0;
    point = make({},
                 [&, held = std::make_shared<int>(7)](CurveViewControlPoint* deleted)
                 {
                     space.chunkSpace().editorChunk().delDynamicItem(deleted);
                     point = nullptr;
                     EXPECT_TRUE(space.scene().contains(deleted->sceneObject()));
                     EXPECT_EQ(*held, 7);
                     ++calls;
                 });
    point->customDelete();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(space.itemCount(), 0U);
    EXPECT_EQ(space.scene().objectCount(), 0U);
}

TEST_F(ControlPointTest, APointIsNotInASceneThatWasMadeAfterIt)
{
    Point point = make({0, 0, 50});
    Kodo::CollisionSceneManager::instance().removeScene(space.id);
    Kodo::CollisionSceneManager::instance().createScene(space.id);
    EXPECT_TRUE(point->edTransform(translation({1, 0, 50}), {}));
    EXPECT_EQ(point->edTransform(), translation({1, 0, 50}));
    point->render(context);
    EXPECT_EQ(context.spheres().size(), 2U);
    space.chunkSpace().editorChunk().delDynamicItem(point);
    point = nullptr;
    EXPECT_EQ(space.scene().objectCount(), 0U);
}

TEST_F(ControlPointTest, AnIdlePointIsDrawnWhereVisibleAndWhereHidden)
{
    const Point point = make({1, 2, 40});
    point->setColor({0.1F, 0.2F, 0.3F, 0.4F}, {0.5F, 0.6F, 0.7F, 0.8F});
    point->render(context);
    ASSERT_EQ(context.spheres().size(), 2U);
    const auto& visible = context.spheres()[0];
    const auto& hidden = context.spheres()[1];
    EXPECT_EQ(visible.colour, ColourRGBAFloat(0.1F, 0.2F, 0.3F, 0.4F));
    EXPECT_EQ(hidden.colour, ColourRGBAFloat(0.5F, 0.6F, 0.7F, 0.8F));
    EXPECT_TRUE(visible.zTest);
    EXPECT_FALSE(hidden.zTest);
    for (const auto& sphere : context.spheres())
    {
        EXPECT_FALSE(sphere.zWrite);
        EXPECT_EQ(sphere.position, Vector3(1, 2, 40));
        EXPECT_EQ(sphere.rotation, Kodo::Quaternion::IDENTITY);
        EXPECT_EQ(sphere.scale, Vector3(1, 1, 1)) << "depth 40 by 0.025";
    }
}

TEST_F(ControlPointTest, APointIsDrawnTurnedAsItStandsAndAtItsOwnScale)
{
    const Point point = make({0, 0, 0});
    const auto turn = Kodo::Quaternion::fromAngleAxis(1.0F, {0, 1, 0});
    point->edTransform(Matrix::constructTransformationMatrix({0, 5, 40}, turn, {3, 3, 3}), {});
    point->render(context);
    for (const auto& sphere : context.spheres())
    {
        EXPECT_EQ(sphere.position, Vector3(0, 5, 40));
        EXPECT_NEAR(sphere.rotation.y, turn.y, 1e-6F);
        EXPECT_NEAR(sphere.rotation.w, turn.w, 1e-6F);
        EXPECT_EQ(sphere.scale, Vector3(1, 1, 1)) << "not the transform's";
    }
}

TEST_F(ControlPointTest, AHoveredPointIsDrawnOnceAndLarger)
{
    const Point point = make({0, 0, 40});
    point->edHovered(true);
    point->render(context);
    ASSERT_EQ(context.spheres().size(), 1U);
    EXPECT_EQ(context.spheres()[0].colour, point->getColor());
    EXPECT_EQ(context.spheres()[0].scale, Vector3(1.3F, 1.3F, 1.3F));
    EXPECT_FALSE(context.spheres()[0].zTest);
}

TEST_F(ControlPointTest, ASelectedPointIsDrawnTwiceWhetherHoveredOrNot)
{
    const Point point = make({0, 0, 40});
    point->edHovered(true);
    point->edSelected();
    point->render(context);
    ASSERT_EQ(context.spheres().size(), 2U);
    EXPECT_EQ(context.spheres()[0].colour, ColourRGBAFloat(Colour32Bit(0xFFEBA04AU)));
    EXPECT_EQ(context.spheres()[1].colour, ColourRGBAFloat(Colour32Bit(0xFFFFFFFFU)));
    EXPECT_EQ(context.spheres()[0].scale.x, 1.3F);
    EXPECT_EQ(context.spheres()[1].scale.x, 1.0F * 1.3F * 1.3F);
    EXPECT_FALSE(context.spheres()[0].zTest || context.spheres()[1].zTest);
}

TEST_F(ControlPointTest, TheFixedScaleCountsOnlyWithoutAutoScale)
{
    const Point point = make({0, 0, 40});
    point->setScale(7);
    point->render(context);
    EXPECT_EQ(context.spheres()[0].scale, Vector3(1, 1, 1));
    point->enableAutoScale(false);
    context.clear();
    point->render(context);
    EXPECT_EQ(context.spheres()[0].scale, Vector3(7, 7, 7));
    EXPECT_EQ(point->scale(), 7.0F);
    EXPECT_FALSE(point->autoScaleEnabled());
}

TEST_F(ControlPointTest, DepthIsMeasuredAlongTheCamerasAxis)
{
    Kodo::Render::RenderSystem::instance().sceneCamera().lookAt({10, 0, 0}, {0, 0, 0}, {0, 1, 0});
    const Point point = make({-30, 500, 0});
    point->render(context);
    EXPECT_NEAR(context.spheres()[0].scale.x, 1.0F, 1e-5F);
    const Point behind = make({50, 0, 0});
    context.clear();
    behind->render(context);
    EXPECT_NEAR(context.spheres()[0].scale.x, -1.0F, 1e-5F) << "negative behind the camera";
    EXPECT_EQ(hits({50, 0, -50}, {0, 0, 1}), 1U) << "and a ball all the same";
    EXPECT_EQ(hits({52.6F, 0, -50}, {0, 0, 1}), 0U);
}

TEST_F(ControlPointTest, TheColliderFollowsTheSizeDrawn)
{
    const Point point = make({0, 0, 40});
    point->enableAutoScale(false);
    point->setScale(4);
    point->render(context);
    EXPECT_EQ(hits({9.9F, 0, 0}, {0, 0, 1}), 1U) << "five across, times four";
    EXPECT_EQ(hits({10.1F, 0, 0}, {0, 0, 1}), 0U);
}

TEST_F(ControlPointTest, AMatrixThatIsNotFiniteIsKeptAndNeverHit)
{
    const Point point = make({0, 0, 50});
    Matrix broken = translation({0, 0, 50});
    broken.m[3][0] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(point->edTransform(broken, {}));
    EXPECT_TRUE(std::isnan(point->edTransform().m[3][0]));
    EXPECT_EQ(hits({0, 0, 0}, {0, 0, 1}), 0U);
    point->render(context);
    EXPECT_EQ(hits({0, 0, 0}, {0, 0, 1}), 0U);
}

TEST_F(ControlPointTest, OperationsHaveScopesOfTheirNames)
{
    Kodo::StackTracker::startRecording();
    Point point = make({0, 0, 50}, [](CurveViewControlPoint*) {});
    point->render(context);
    point->edHovered(true);
    point->render(context);
    point->edSelected();
    point->render(context);
    point->customDelete();
    EXPECT_THROW(make({})->customDelete(), std::bad_function_call);
    space.chunkSpace().editorChunk().delDynamicItem(point);
    point = nullptr;
    std::vector<std::string> names;
    for (const auto& scope : Kodo::StackTracker::stopRecording())
    {
        names.push_back(std::string(static_cast<std::size_t>(scope.depth), ' ') + scope.name);
        EXPECT_EQ(scope.name.rfind("CurveViewControlPoint::", 0), 0U);
    }
    const std::string c = "CurveViewControlPoint::";
    EXPECT_EQ(names, (std::vector<std::string>{c + "CurveViewControlPoint", " " + c + "edTransform",
                                               c + "render", " " + c + "drawKey", " " + c + "drawKey",
                                               c + "render", " " + c + "drawKeyHovered", c + "render",
                                               " " + c + "drawKeySelected", c + "customDelete",
                                               c + "CurveViewControlPoint", " " + c + "edTransform",
                                               c + "customDelete", c + "~CurveViewControlPoint"}));
}

TEST_F(ControlPointTest, TheClassIsReflected)
{
    const auto& manager = tern::MetaObjectManager::instance();
    const tern::MetaObject* const meta = manager.find("CurveViewControlPoint");
    ASSERT_NE(meta, nullptr);
    EXPECT_EQ(meta, manager.find(typeid(CurveViewControlPoint)));
    ASSERT_EQ(meta->bases().size(), 1U);
    EXPECT_EQ(meta->bases()[0], manager.find("EditorCustomChunkItem"));
    ASSERT_EQ(meta->annotations().size(), 1U);
    EXPECT_EQ(meta->annotations()[0].cast<std::string>(), "Curve View Control Point");
    EXPECT_TRUE(meta->properties().empty());
    EXPECT_NE(meta->findProperty("selected"), nullptr);
}

// --- The drawer ------------------------------------------------------------------------------------------

TEST(DefaultCurveDrawerTest, DrawsTheStripVisibleThenHidden)
{
    DefaultCurveDrawer drawer;
    Kodo::DebugDrawer::Context context;
    const std::vector<Vector3> points = {{0, 0, 0}, {1, 2, 3}, {4, 5, 6}};
    drawer.setColor(Colour32Bit(0xFF112233U));
    drawer.setColorDown(Colour32Bit(0xFF445566U));
    drawer.setThickness(0.1F);
    drawer.draw(context, points);

    ASSERT_EQ(context.lines().size(), 2U);
    for (const auto& line : context.lines())
    {
        EXPECT_EQ(std::vector(context.pointsOf(line).begin(), context.pointsOf(line).end()), points);
        EXPECT_EQ(line.width, 0.1F);
        EXPECT_FALSE(line.zWrite);
    }
    EXPECT_TRUE(context.lines()[0].zTest);
    EXPECT_FALSE(context.lines()[1].zTest);
    EXPECT_EQ(context.lines()[0].colour, ColourRGBAFloat(Colour32Bit(0xFF112233U)));
    EXPECT_EQ(context.lines()[1].colour, ColourRGBAFloat(Colour32Bit(0xFF445566U)));
    EXPECT_EQ(drawer.thickness(), 1.2F) << "whatever width is drawn";
}

TEST(DefaultCurveDrawerTest, AloneItIsRedAndThinAndTakesNoPointsAsTheyAre)
{
    DefaultCurveDrawer drawer;
    Kodo::DebugDrawer::Context context;
    Kodo::StackTracker::startRecording();
    drawer.draw(context, {});
    const auto record = Kodo::StackTracker::stopRecording();
    ASSERT_EQ(record.size(), 1U);
    EXPECT_EQ(record[0].name, "DefaultCurveDrawer::draw");
    ASSERT_EQ(context.lines().size(), 2U);
    EXPECT_EQ(context.lines()[0].pointCount, 0U);
    EXPECT_EQ(context.lines()[1].colour, ColourRGBAFloat(Colour32Bit(0xFFFF0000U)));
    EXPECT_EQ(context.lines()[1].width, 0.04F);
}

TEST(DefaultCurveDrawerTest, ADrawerIsReleasedWhereverTheInterfaceStandsInIt)
{
    DrawerLog log;
    std::unique_ptr<ICurveDrawer> drawer = std::make_unique<RecordingDrawer>(log);
    ASSERT_NE(dynamic_cast<void*>(drawer.get()), static_cast<void*>(drawer.get()));
    drawer.reset(); // a sanitizer would tell
    EXPECT_EQ(drawer, nullptr);
}

} // namespace
