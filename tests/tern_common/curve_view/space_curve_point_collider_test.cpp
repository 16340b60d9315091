#include "tern_common/curve_view/space_curve_point_collider.hpp"

#include "tests/support/reports.hpp"
#include "tests/tern_common/curve_view/curve_picking_fixture.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using Kodo::Matrix;
using Kodo::Vector3;

static_assert(std::is_copy_assignable_v<SpaceCurvePointCollider>);
static_assert(std::is_move_assignable_v<SpaceCurvePointCollider>);

class SpaceCurvePointColliderTest : public CurvePickingTest
{
};

/// Something else that stands in the space and can be hit.
class Lamp : public Kodo::EditorCustomChunkItem
{
public:
    explicit Lamp(const TestSpace& space) : EditorCustomChunkItem(&space.chunkSpace(), WANTS_DRAW)
    {
        const auto shape =
            space.scene().createShape(Kodo::CollisionShape::TEMPLATE_SPHERE, {5, 5, 5}, {}, false);
        space.scene().addUserObject(sceneObject(), shape, Matrix::IDENTITY, 0, 0, 16);
    }
};

TEST_F(SpaceCurvePointColliderTest, HitsAreTheControlPointsAloneInTheScenesOrder)
{
    show(0);
    for (const float z : {30.0F, 10.0F, 20.0F})
    {
        curves[0]->keys.push_back(RecordingCurve::key(0));
        curves[0]->keys.back().position = {0, 0, z};
    }
    const Kodo::SmartPointer<Lamp> lamp = new Lamp(space);
    views[0]->update();
    SpaceCurvePointCollider collider(Kodo::SpaceManager::instance().space(space.id));
    Kodo::Collisions::Ray ray{{0, 0, -100}, {0, 0, 1}};
    const auto hits = collider.collide(ray);
    ASSERT_EQ(hits.size(), 3U);
    for (std::size_t i = 0; i < hits.size(); ++i)
    {
        EXPECT_EQ(hits[i], views[0]->getControlPoints()[i].get());
    }
    EXPECT_EQ(hits[0]->refCount(), 2) << "of the view and the chunk: hits hold nothing";

    ray.origin = {50, 0, -100};
    EXPECT_TRUE(collider.collide(ray).empty());
    space.scene().deleteObstacle(lamp->sceneObject());
}

TEST_F(SpaceCurvePointColliderTest, PositionsThatAreNoneAreStoredAndNeverHit)
{
    constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
    constexpr float INFINITE = std::numeric_limits<float>::infinity();
    show(0);
    for (const Vector3& lie :
         {Vector3(NOT_A_NUMBER, 0, 0), Vector3(0, 0, INFINITE), Vector3(0, -INFINITE, 0), Vector3(0, 0, 50)})
    {
        curves[0]->keys.push_back(RecordingCurve::key(0));
        curves[0]->keys.back().position = lie;
    }
    SpaceCurvePointCollider collider(Kodo::SpaceManager::instance().space(space.id));
    Kodo::Collisions::Ray ray{{0, 0, -100}, {0, 0, 1}};
    const auto expectOneHit = [&](const char* when)
    {
        const auto hits = collider.collide(ray);
        ASSERT_EQ(hits.size(), 1U) << when;
        EXPECT_EQ(hits[0], views[0]->getControlPoints()[3].get()) << when;
    };
    views[0]->update();
    expectOneHit("made");
    views[0]->render(context);
    expectOneHit("drawn, and as large as that");
    curves[0]->pointUpdated(0, 4);
    expectOneHit("moved");
    EXPECT_TRUE(std::isnan(views[0]->getControlPoints()[0]->edTransform().m[3][0]));
    EXPECT_EQ(views[0]->getControlPoints()[2]->edTransform().m[3][1], -INFINITE);
}

TEST_F(SpaceCurvePointColliderTest, WithoutSpaceOrSceneNothingIsHit)
{
    Kodo::Collisions::Ray ray{{0, 0, -100}, {0, 0, 1}};
    EXPECT_TRUE(SpaceCurvePointCollider({}).collide(ray).empty());
    const auto other = Kodo::SpaceManager::instance().createSpace(4712);
    EXPECT_TRUE(SpaceCurvePointCollider(other).collide(ray).empty());
    Kodo::SpaceManager::instance().removeSpace(4712);

    show(2);
    SpaceCurvePointCollider collider(Kodo::SpaceManager::instance().space(space.id));
    const SpaceCurvePointCollider copy = collider;
    EXPECT_EQ(collider.collide(ray).size(), 2U);
    EXPECT_EQ(SpaceCurvePointCollider(copy).collide(ray).size(), 2U);
}

TEST_F(SpaceCurvePointColliderTest, PointsThatHaveLostTheirSpaceAreNotFound)
{
    show(2);
    SpaceCurvePointCollider collider(Kodo::SpaceManager::instance().space(space.id));
    Kodo::Collisions::Ray ray{{0, 0, -100}, {0, 0, 1}};
    Kodo::ChunkManager::instance().removeSpace(space.id);
    EXPECT_EQ(space.scene().objectCount(), 2U);
    EXPECT_TRUE(collider.collide(ray).empty());
    EXPECT_EQ(Kodo::ChunkManager::instance().spaceCount(), 0U) << "asking makes no space";
    views[0]->update();
    EXPECT_EQ(collider.collide(ray).size(), 2U);
}

TEST_F(SpaceCurvePointColliderTest, ACollisionSceneThatComesLateKnowsThePointsOnceTheyAreMadeAnew)
{
    Kodo::CollisionSceneManager::instance().removeScene(space.id);
    {
        const std::string noCollider = "ControlPointImpl :: cannot add control point to the collision scene";
        const ExpectReports reports(std::vector<std::string>(4, noCollider)); // two for each point
        show(2);
    }
    Kodo::CollisionSceneManager::instance().createScene(space.id);
    SpaceCurvePointCollider collider(Kodo::SpaceManager::instance().space(space.id));
    Kodo::Collisions::Ray ray{{0, 0, -100}, {0, 0, 1}};
    views[0]->render(context);
    EXPECT_TRUE(collider.collide(ray).empty());
    views[0]->update();
    EXPECT_EQ(collider.collide(ray).size(), 2U);
}

} // namespace
