#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/stack_tracker.hpp"
#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_point_inserter.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tern_common/curve_view/space_curve_point_collider.hpp"
#include "tests/support/recording_curve.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using InsertType = CurveViewPointInserter::InsertType;
using Kodo::Matrix;
using Kodo::Vector3;

static_assert(static_cast<int>(InsertType::Insert) == 0 && static_cast<int>(InsertType::Ghost) == 1);
static_assert(std::is_copy_assignable_v<CurveViewPointInserter>);
static_assert(std::is_nothrow_move_constructible_v<CurveViewPointInserter>);
static_assert(std::is_copy_assignable_v<SpaceCurvePointCollider>);
static_assert(std::is_move_assignable_v<SpaceCurvePointCollider>);

Matrix translation(const Vector3& offset)
{
    Matrix matrix;
    matrix.setTranslate(offset);
    return matrix;
}

/// Rays down the z axis at x and y.
Kodo::Ray at(float x, float y = RecordingCurve::WAY_Y)
{
    return {{x, y, -50}, {0, 0, 1}};
}

class CurvePickingTest : public testing::Test
{
protected:
    CurveView& show(std::size_t count, const Matrix& origin = Matrix::IDENTITY)
    {
        auto made = std::make_unique<RecordingCurve>(count);
        curves.push_back(made.get());
        views.push_back(std::make_unique<CurveView>(std::move(made), space.id, origin));
        return *views.back();
    }
    CurveViewSpaceCache& cache() { return CurveViewSpaceCache::instance(space.chunkSpace()); }

    /// Visits the views in the order made.
    CurveViewPointInserter inserter()
    {
        return CurveViewPointInserter(
            [this](const std::function<void(CurveView&)>& visit)
            {
                for (const auto& view : views)
                {
                    visit(*view);
                }
            });
    }
    std::size_t insertionCount() const
    {
        std::size_t count = 0;
        for (const RecordingCurve* curve : curves)
        {
            count += curve->insertions.size();
        }
        return count;
    }

    TestSpace space;
    std::vector<RecordingCurve*> curves;
    std::vector<std::unique_ptr<CurveView>> views;
    Kodo::DebugDrawer::Context context;
};

// --- Insertion -------------------------------------------------------------------------------------------

TEST_F(CurvePickingTest, InsertsTheNearestSampleInTheSpaceOfItsCurve)
{
    show(3, Matrix::constructTransformationMatrix({10, 0, 0}, Kodo::Quaternion(), {2, 1, 1}));
    inserter().insert(at(10 + 2 * 1.3F), InsertType::Insert);
    ASSERT_EQ(curves[0]->insertions.size(), 1U);
    EXPECT_EQ(curves[0]->insertions[0].first, Vector3(1.25F, 100, 0));
    EXPECT_EQ(curves[0]->insertions[0].second, 1.25F);
    EXPECT_EQ(views[0]->getControlPoints().size(), 3U) << "the view waits for the model";
}

TEST_F(CurvePickingTest, TheFirstSampleOfASegmentHasTheParameterOfItsPoint)
{
    show(3);
    inserter().insert(at(1), InsertType::Insert);
    EXPECT_EQ(curves[0]->insertions.at(0).second, 1.0F);
}

TEST_F(CurvePickingTest, PointsBehindTheRayCountAsWell)
{
    show(3);
    Kodo::Ray ray = at(0.5F);
    ray.direction = {0, 0, -1};
    inserter().insert(ray, InsertType::Insert);
    EXPECT_EQ(curves[0]->insertions.at(0).second, 0.5F);
}

TEST_F(CurvePickingTest, OnEqualDistancesTheViewVisitedFirstIsTaken)
{
    show(2);
    show(2);
    inserter().insert(at(0.25F), InsertType::Insert);
    EXPECT_EQ(curves[0]->insertions.size(), 1U);
    EXPECT_EQ(curves[1]->insertions.size(), 0U);
    std::swap(views[0], views[1]);
    inserter().insert(at(0.25F), InsertType::Insert);
    EXPECT_EQ(curves[1]->insertions.size(), 1U);
}

TEST_F(CurvePickingTest, AnyOtherTypeInserts)
{
    show(2);
    inserter().insert(at(0.25F), static_cast<InsertType>(7));
    EXPECT_EQ(insertionCount(), 1U);
}

TEST_F(CurvePickingTest, WithoutSamplesNothingHappens)
{
    inserter().insert(at(0), InsertType::Insert);
    show(0);
    inserter().insert(at(0), InsertType::Insert);
    inserter().insert(at(0), InsertType::Ghost);
    EXPECT_EQ(insertionCount(), 0U);
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurvePickingTest, PositionsThatAreNoneAreNeverTaken)
{
    constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
    show(1);
    curves[0]->keys[0].position = {NOT_A_NUMBER, 0, 0};
    views[0]->update();
    inserter().insert(at(0), InsertType::Insert);
    curves[0]->keys[0].position = {std::numeric_limits<float>::infinity(), 0, 0};
    views[0]->update();
    inserter().insert(at(0), InsertType::Insert);
    inserter().insert({{NOT_A_NUMBER, 0, 0}, {0, 0, 1}}, InsertType::Insert);
    EXPECT_EQ(insertionCount(), 0U);
}

TEST_F(CurvePickingTest, WithoutAFunctionToVisitTheCallFails)
{
    Kodo::StackTracker::startRecording();
    EXPECT_THROW(CurveViewPointInserter({}).insert(at(0), InsertType::Insert), std::bad_function_call);
    CurveViewPointInserter([](const std::function<void(CurveView&)>&) {}).insert(at(0), InsertType::Ghost);
    const auto record = Kodo::StackTracker::stopRecording();
    ASSERT_EQ(record.size(), 2U);
    EXPECT_EQ(record[0].name, "CurveViewPointInserter::insert");
    EXPECT_EQ(record[1].depth, 0);
}

TEST_F(CurvePickingTest, CopiesVisitTheSameViews)
{
    show(2);
    const CurveViewPointInserter original = inserter();
    CurveViewPointInserter copy = original;
    copy.insert(at(0), InsertType::Insert);
    CurveViewPointInserter moved = std::move(copy);
    moved.insert(at(0), InsertType::Insert);
    EXPECT_EQ(insertionCount(), 2U);
}

TEST_F(CurvePickingTest, AnOriginThatCantBeInvertedIsReportedAndTheModelStillAsked)
{
    show(2, Matrix::constructTransformationMatrix({}, Kodo::Quaternion(), {1, 0, 1}));
    const ExpectReports reports{"toCurve.invert()"};
    inserter().insert(at(0.25F), InsertType::Insert);
    ASSERT_EQ(insertionCount(), 1U);
    EXPECT_EQ(curves[0]->insertions[0].first, Vector3(0.25F, 0, 0));
    EXPECT_EQ(curves[0]->insertions[0].second, 0.25F);
    EXPECT_EQ(reports.reports().at(0).path, "curve_view/curve_view_point_inserter.cpp");
}

TEST_F(CurvePickingTest, TheViewMayEndFromWithinThatReport)
{
    show(2, Matrix());
    const CollectReports collect;
    const Kodo::DebugMessageSink sink([this](const Kodo::DebugMessage&) { views[0].reset(); });
    inserter().insert(at(0), InsertType::Insert);
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurvePickingTest, AViewThatEndsOrShrinksWhileOthersAreVisitedIsNotTouched)
{
    show(2);
    CurveViewPointInserter ending(
        [this](const std::function<void(CurveView&)>& visit)
        {
            visit(*views[0]);
            views[0].reset();
        });
    ending.insert(at(0), InsertType::Insert);
    views.clear();
    curves.clear();
    show(2);
    CurveViewPointInserter shrinking(
        [this](const std::function<void(CurveView&)>& visit)
        {
            visit(*views[0]);
            curves[0]->keys.clear();
            views[0]->update();
        });
    shrinking.insert(at(0), InsertType::Ghost);
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurvePickingTest, TheModelsNewPointReachesTheView)
{
    show(3);
    actWithin(*curves[0], "insertPoint", 1,
              [this]
              {
                  curves[0]->insert(1, {RecordingCurve::key(curves[0]->insertions.back().second)});
                  curves[0]->pointAdded(1, 1);
              });
    cache().collide(at(0.5F), true);
    ASSERT_EQ(views[0]->getControlPoints().size(), 4U);
    EXPECT_EQ(views[0]->getControlPoints()[1]->edTransform().m[3][0], 0.5F);
}

// --- The preview -----------------------------------------------------------------------------------------

TEST_F(CurvePickingTest, AGhostIsShownForOneFrame)
{
    show(2, translation({0, 0, 10}));
    cache().collide(at(0.25F), false);
    EXPECT_EQ(insertionCount(), 0U);
    EXPECT_EQ(space.itemCount(), 3U);
    views[0]->render(context);
    ASSERT_EQ(context.spheres().size(), 6U);
    EXPECT_EQ(context.spheres()[4].position, Vector3(0.25F, 100, 10));
    EXPECT_EQ(context.spheres()[4].colour,
              Kodo::Render::ColourRGBAFloat(Kodo::Render::Colour32Bit(0xFF2CFFA6U)));
    EXPECT_EQ(space.itemCount(), 2U);
    context.clear();
    views[0]->render(context);
    EXPECT_EQ(context.spheres().size(), 4U);
}

TEST_F(CurvePickingTest, AnotherGhostTakesThePlaceOfTheFirst)
{
    show(2);
    cache().collide(at(0), false);
    cache().collide(at(0.75F), false);
    EXPECT_EQ(space.itemCount(), 3U);
    views[0]->render(context);
    EXPECT_EQ(context.spheres()[4].position.x, 0.75F);
}

TEST_F(CurvePickingTest, AGhostGoesWithItsView)
{
    show(2);
    cache().collide(at(0), false);
    views.clear();
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurvePickingTest, AGhostStaysThroughUpdatesAndCantBeDeleted)
{
    show(2);
    cache().collide(at(0), false);
    views[0]->update();
    EXPECT_EQ(space.itemCount(), 3U);
    SpaceCurvePointCollider collider(Kodo::SpaceManager::instance().space(space.id));
    Kodo::Collisions::Ray ray{{0, 100, -50}, {0, 0, 1}};
    const auto hits = collider.collide(ray);
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_TRUE(hits[0]->getRefObject().isEmpty());
    hits[0]->edDelete();
    EXPECT_EQ(space.itemCount(), 3U);
    EXPECT_TRUE(curves[0]->removals.empty());
}

// --- The cache -------------------------------------------------------------------------------------------

TEST_F(CurvePickingTest, ACacheWithoutViewsDoesNothing)
{
    cache().collide(at(0), true);
    cache().collide(at(0), false);
    show(2);
    views[0]->disableCurveView();
    cache().collide(at(0), true);
    EXPECT_EQ(insertionCount(), 0U);
}

TEST_F(CurvePickingTest, RegisteringTwiceIsOnceAndUnknownViewsAreIgnored)
{
    show(2);
    cache().registerView(views[0].get());
    cache().registerView(nullptr);
    cache().collide(at(0), true);
    EXPECT_EQ(insertionCount(), 1U);
    views[0]->disableCurveView();
    views[0]->disableCurveView();
    cache().unregisterView(nullptr);
    cache().collide(at(0), true);
    EXPECT_EQ(insertionCount(), 1U);
    views[0]->enableCurveView();
    cache().collide(at(0), true);
    EXPECT_EQ(insertionCount(), 2U);
}

TEST_F(CurvePickingTest, EachSpaceHasACacheOfItsOwn)
{
    const TestSpace other(4712);
    show(2);
    auto& otherCache = CurveViewSpaceCache::instance(other.chunkSpace());
    EXPECT_NE(&otherCache, &cache());
    EXPECT_EQ(&otherCache, &CurveViewSpaceCache::instance(other.chunkSpace()));
    otherCache.collide(at(0), true);
    EXPECT_EQ(insertionCount(), 0U);
}

TEST_F(CurvePickingTest, ViewsAndSpacesGoInAnyOrder)
{
    show(2);
    show(3);
    cache().collide(at(0), false);
    Kodo::ChunkManager::instance().removeSpace(space.id);
    views[0].reset();
    views.erase(views.begin());
    views[0]->update();
    views[0]->render(context);
    EXPECT_EQ(space.itemCount(), 3U) << "in the space that stands in its place";
}

TEST_F(CurvePickingTest, CacheOperationsHaveScopesOfTheirNames)
{
    show(1);
    auto& known = cache();
    Kodo::StackTracker::startRecording();
    known.registerView(views[0].get());
    known.unregisterView(views[0].get());
    known.collide(at(0), true);
    std::vector<std::string> names;
    for (const auto& scope : Kodo::StackTracker::stopRecording())
    {
        names.push_back(scope.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{
                         "CurveViewSpaceCache::registerView", "CurveViewSpaceCache::unregisterView",
                         "CurveViewSpaceCache::collide", "CurveViewPointInserter::insert"}));
}

// --- Picking control points ------------------------------------------------------------------------------

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

TEST_F(CurvePickingTest, HitsAreTheControlPointsAloneInTheScenesOrder)
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

TEST_F(CurvePickingTest, PositionsThatAreNoneAreStoredAndNeverHit)
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

TEST_F(CurvePickingTest, WithoutSpaceOrSceneNothingIsHit)
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

TEST_F(CurvePickingTest, PointsThatHaveLostTheirSpaceAreNotFound)
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

TEST_F(CurvePickingTest, ACollisionSceneThatComesLateKnowsThePointsOnceTheyAreMadeAnew)
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
