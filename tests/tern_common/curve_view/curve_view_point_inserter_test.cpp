#include "tern_common/curve_view/curve_view_point_inserter.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/stack_tracker.hpp"
#include "tern_common/curve_view/space_curve_point_collider.hpp"
#include "tests/support/reports.hpp"
#include "tests/tern_common/curve_view/curve_picking_fixture.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <type_traits>
#include <utility>

namespace
{

using InsertType = CurveViewPointInserter::InsertType;
using Kodo::Matrix;
using Kodo::Vector3;

static_assert(static_cast<int>(InsertType::Insert) == 0 && static_cast<int>(InsertType::Ghost) == 1);
static_assert(std::is_copy_assignable_v<CurveViewPointInserter>);
static_assert(std::is_nothrow_move_constructible_v<CurveViewPointInserter>);

Matrix translation(const Vector3& offset)
{
    Matrix matrix;
    matrix.setTranslate(offset);
    return matrix;
}

class CurveViewPointInserterTest : public CurvePickingTest
{
protected:
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
};

TEST_F(CurveViewPointInserterTest, InsertsTheNearestSampleInTheSpaceOfItsCurve)
{
    show(3, Matrix::constructTransformationMatrix({10, 0, 0}, Kodo::Quaternion(), {2, 1, 1}));
    inserter().insert(rayAt(10 + 2 * 1.3F), InsertType::Insert);
    ASSERT_EQ(curves[0]->insertions.size(), 1U);
    EXPECT_EQ(curves[0]->insertions[0].first, Vector3(1.25F, 100, 0));
    EXPECT_EQ(curves[0]->insertions[0].second, 1.25F);
    EXPECT_EQ(views[0]->getControlPoints().size(), 3U) << "the view waits for the model";
}

TEST_F(CurveViewPointInserterTest, TheFirstSampleOfASegmentHasTheParameterOfItsPoint)
{
    show(3);
    inserter().insert(rayAt(1), InsertType::Insert);
    EXPECT_EQ(curves[0]->insertions.at(0).second, 1.0F);
}

TEST_F(CurveViewPointInserterTest, PointsBehindTheRayCountAsWell)
{
    show(3);
    Kodo::Ray ray = rayAt(0.5F);
    ray.direction = {0, 0, -1};
    inserter().insert(ray, InsertType::Insert);
    EXPECT_EQ(curves[0]->insertions.at(0).second, 0.5F);
}

TEST_F(CurveViewPointInserterTest, OnEqualDistancesTheViewVisitedFirstIsTaken)
{
    show(2);
    show(2);
    inserter().insert(rayAt(0.25F), InsertType::Insert);
    EXPECT_EQ(curves[0]->insertions.size(), 1U);
    EXPECT_EQ(curves[1]->insertions.size(), 0U);
    std::swap(views[0], views[1]);
    inserter().insert(rayAt(0.25F), InsertType::Insert);
    EXPECT_EQ(curves[1]->insertions.size(), 1U);
}

TEST_F(CurveViewPointInserterTest, AnyOtherTypeInserts)
{
    show(2);
    inserter().insert(rayAt(0.25F), static_cast<InsertType>(7));
    EXPECT_EQ(insertionCount(), 1U);
}

TEST_F(CurveViewPointInserterTest, WithoutSamplesNothingHappens)
{
    inserter().insert(rayAt(0), InsertType::Insert);
    show(0);
    inserter().insert(rayAt(0), InsertType::Insert);
    inserter().insert(rayAt(0), InsertType::Ghost);
    EXPECT_EQ(insertionCount(), 0U);
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewPointInserterTest, PositionsThatAreNoneAreNeverTaken)
{
    constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
    show(1);
    curves[0]->keys[0].position = {NOT_A_NUMBER, 0, 0};
    views[0]->update();
    inserter().insert(rayAt(0), InsertType::Insert);
    curves[0]->keys[0].position = {std::numeric_limits<float>::infinity(), 0, 0};
    views[0]->update();
    inserter().insert(rayAt(0), InsertType::Insert);
    inserter().insert({{NOT_A_NUMBER, 0, 0}, {0, 0, 1}}, InsertType::Insert);
    EXPECT_EQ(insertionCount(), 0U);
}

TEST_F(CurveViewPointInserterTest, WithoutAFunctionToVisitTheCallFails)
{
    Kodo::StackTracker::startRecording();
    EXPECT_THROW(CurveViewPointInserter({}).insert(rayAt(0), InsertType::Insert), std::bad_function_call);
    CurveViewPointInserter([](const std::function<void(CurveView&)>&) {}).insert(rayAt(0), InsertType::Ghost);
    const auto record = Kodo::StackTracker::stopRecording();
    ASSERT_EQ(record.size(), 2U);
    EXPECT_EQ(record[0].name, "CurveViewPointInserter::insert");
    EXPECT_EQ(record[1].depth, 0);
}

TEST_F(CurveViewPointInserterTest, CopiesVisitTheSameViews)
{
    show(2);
    const CurveViewPointInserter original = inserter();
    CurveViewPointInserter copy = original;
    copy.insert(rayAt(0), InsertType::Insert);
    CurveViewPointInserter moved = std::move(copy);
    moved.insert(rayAt(0), InsertType::Insert);
    EXPECT_EQ(insertionCount(), 2U);
}

TEST_F(CurveViewPointInserterTest, AnOriginThatCantBeInvertedIsReportedAndTheModelStillAsked)
{
    show(2, Matrix::constructTransformationMatrix({}, Kodo::Quaternion(), {1, 0, 1}));
    const ExpectReports reports{"toCurve.invert()"};
    inserter().insert(rayAt(0.25F), InsertType::Insert);
    ASSERT_EQ(insertionCount(), 1U);
    EXPECT_EQ(curves[0]->insertions[0].first, Vector3(0.25F, 0, 0));
    EXPECT_EQ(curves[0]->insertions[0].second, 0.25F);
    EXPECT_EQ(reports.reports().at(0).path, "curve_view/curve_view_point_inserter.cpp");
}

TEST_F(CurveViewPointInserterTest, TheViewMayEndFromWithinThatReport)
{
    show(2, Matrix());
    const CollectReports collect;
    const Kodo::DebugMessageSink sink([this](const Kodo::DebugMessage&) { views[0].reset(); });
    inserter().insert(rayAt(0), InsertType::Insert);
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewPointInserterTest, AViewThatEndsOrShrinksWhileOthersAreVisitedIsNotTouched)
{
    show(2);
    CurveViewPointInserter ending(
        [this](const std::function<void(CurveView&)>& visit)
        {
            visit(*views[0]);
            views[0].reset();
        });
    ending.insert(rayAt(0), InsertType::Insert);
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
    shrinking.insert(rayAt(0), InsertType::Ghost);
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewPointInserterTest, TheModelsNewPointReachesTheView)
{
    show(3);
    actWithin(*curves[0], "insertPoint", 1,
              [this]
              {
                  curves[0]->insert(1, {RecordingCurve::key(curves[0]->insertions.back().second)});
                  curves[0]->pointAdded(1, 1);
              });
    cache().collide(rayAt(0.5F), true);
    ASSERT_EQ(views[0]->getControlPoints().size(), 4U);
    EXPECT_EQ(views[0]->getControlPoints()[1]->edTransform().m[3][0], 0.5F);
}

// --- The preview -----------------------------------------------------------------------------------------

TEST_F(CurveViewPointInserterTest, AGhostIsShownForOneFrame)
{
    show(2, translation({0, 0, 10}));
    cache().collide(rayAt(0.25F), false);
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

TEST_F(CurveViewPointInserterTest, AnotherGhostTakesThePlaceOfTheFirst)
{
    show(2);
    cache().collide(rayAt(0), false);
    cache().collide(rayAt(0.75F), false);
    EXPECT_EQ(space.itemCount(), 3U);
    views[0]->render(context);
    EXPECT_EQ(context.spheres()[4].position.x, 0.75F);
}

TEST_F(CurveViewPointInserterTest, AGhostGoesWithItsView)
{
    show(2);
    cache().collide(rayAt(0), false);
    views.clear();
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewPointInserterTest, AGhostStaysThroughUpdatesAndCantBeDeleted)
{
    show(2);
    cache().collide(rayAt(0), false);
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

} // namespace
