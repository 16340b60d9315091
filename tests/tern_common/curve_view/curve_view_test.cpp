#include "tern_common/curve_view/curve_view.hpp"

#include "kodo/core/stack_tracker.hpp"
#include "tern/property_change_notifier.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tests/support/recording_curve.hpp"
#include "tests/support/recording_drawer.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using Kodo::Matrix;
using Kodo::Vector3;
using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;

constexpr std::size_t MAX = std::numeric_limits<std::size_t>::max();
const char* const NOT_FOUND = "CurveView::tryDeleteControlPoint :: control point cannot be found";

static_assert(std::has_virtual_destructor_v<CurveView>);
static_assert(!std::is_copy_constructible_v<CurveView> && std::is_move_constructible_v<CurveView>);
static_assert(!std::is_assignable_v<CurveView&, CurveView>);
static_assert(!std::has_virtual_destructor_v<ICurveDrawer> && !std::is_destructible_v<ICurveDrawer>);
static_assert(std::has_virtual_destructor_v<CurveView::IAbstractCurve>);

Matrix translation(const Vector3& offset)
{
    Matrix matrix;
    matrix.setTranslate(offset);
    return matrix;
}

class CurveViewTest : public testing::Test
{
protected:
    /// A view of a fresh curve of @p count keys.
    CurveView& show(std::size_t count)
    {
        auto made = std::make_unique<RecordingCurve>(count);
        curve = made.get();
        view = std::make_unique<CurveView>(std::move(made), space.id, std::make_unique<RecordingDrawer>(log));
        curve->calls.clear();
        return *view;
    }

    /// The samples, as the drawer sees them.
    std::vector<Vector3> samples()
    {
        log.drawn.clear();
        context.clear();
        view->render(context);
        return log.drawn.empty() ? std::vector<Vector3>() : log.drawn.back();
    }
    std::vector<float> sampleParameters()
    {
        std::vector<float> parameters;
        for (const Vector3& sample : samples())
        {
            parameters.push_back(sample.x);
        }
        return parameters;
    }
    std::vector<CurveViewControlPoint*> points() const
    {
        std::vector<CurveViewControlPoint*> result;
        for (const auto& point : view->getControlPoints())
        {
            result.push_back(point.get());
        }
        return result;
    }

    TestSpace space;
    DrawerLog log;
    Kodo::DebugDrawer::Context context;
    RecordingCurve* curve = nullptr;
    std::unique_ptr<CurveView> view;
};

// --- Construction, models ---------------------------------------------------------------------------------

TEST_F(CurveViewTest, ANewViewShowsItsCurve)
{
    show(3);
    EXPECT_EQ(view->getCurve(), curve);
    EXPECT_EQ(curve->m_view, view.get());
    EXPECT_EQ(view->getOrigin(), Matrix::IDENTITY);
    EXPECT_EQ(view->getControlPoints().size(), 3U);
    EXPECT_EQ(space.itemCount(), 3U);
    EXPECT_EQ(space.scene().objectCount(), 3U);
    EXPECT_EQ(log.colors, std::vector{0xFF2CFFA6U});
    EXPECT_EQ(log.downColors, std::vector{0xFF006F9AU});
}

TEST_F(CurveViewTest, WithoutADrawerArgumentThereIsADefaultOneInTheViewsColours)
{
    CurveView plain(std::make_unique<RecordingCurve>(1), space.id);
    EXPECT_EQ(plain.curveThickness(), 1.2F);
    plain.render(context);
    ASSERT_EQ(context.lines().size(), 2U);
    EXPECT_EQ(context.lines()[0].colour, ColourRGBAFloat(Colour32Bit(0xFF2CFFA6U)));
    EXPECT_EQ(context.lines()[1].colour, ColourRGBAFloat(Colour32Bit(0xFF006F9AU)));
}

TEST_F(CurveViewTest, AnOriginGivenAtConstructionIsTheViewsOrigin)
{
    const Matrix origin = translation({0.0F, 5.0F, 0.0F});
    CurveView moved(std::make_unique<RecordingCurve>(1), space.id, origin);
    EXPECT_EQ(moved.getOrigin(), origin);
    EXPECT_EQ(moved.getControlPoints()[0]->edTransform(), translation({0.0F, 5.0F, 0.0F}));
}

TEST_F(CurveViewTest, AViewWithoutModelOrDrawerIsEmptyAndHarmless)
{
    CurveView empty(nullptr, space.id, std::unique_ptr<ICurveDrawer>());
    EXPECT_EQ(empty.getCurve(), nullptr);
    EXPECT_EQ(empty.curveThickness(), 1.2F);
    empty.update();
    empty.updatePoint(0, 1);
    empty.updatePointAdded(0, 1);
    empty.updatePointMoved(0, 1);
    empty.updatePointRemoved(0, 1);
    empty.setOrigin(translation({1, 2, 3}));
    empty.setCurveColor(Colour32Bit(1));
    empty.setCurveColorDown(Colour32Bit(1));
    empty.setCurveThickness(2.0F);
    empty.render(context);
    EXPECT_TRUE(empty.getControlPoints().empty());
    EXPECT_TRUE(context.commands().empty());

    empty.setCurve(std::make_unique<RecordingCurve>(2));
    empty.render(context);
    EXPECT_EQ(context.lines().size(), 0U);
    EXPECT_EQ(context.spheres().size(), 4U);
}

TEST_F(CurveViewTest, ConnectsToEachSignalOnceAndLetsGo)
{
    show(2);
    EXPECT_EQ(curve->changed.slotCount(), 1U);
    EXPECT_EQ(curve->pointUpdated.slotCount(), 1U);
    EXPECT_EQ(curve->pointMoved.slotCount(), 1U);
    EXPECT_EQ(curve->pointAdded.slotCount(), 1U);
    EXPECT_EQ(curve->pointRemoved.slotCount(), 1U);

    std::size_t slotsAtTheEnd = MAX;
    curve->onDestroyed = [this, old = curve, &slotsAtTheEnd] { slotsAtTheEnd = old->slotCount(); };
    view->setCurve(std::make_unique<RecordingCurve>(1));
    EXPECT_EQ(slotsAtTheEnd, 0U);
    EXPECT_EQ(view->getControlPoints().size(), 1U);
    EXPECT_EQ(space.itemCount(), 1U);
    EXPECT_EQ(view->getCurve()->m_view, view.get());
}

TEST_F(CurveViewTest, WithoutModelTheViewIsCleared)
{
    show(2);
    view->setCurve(nullptr);
    EXPECT_TRUE(view->getControlPoints().empty());
    EXPECT_EQ(space.itemCount(), 0U);
    EXPECT_TRUE(samples().empty());
}

TEST_F(CurveViewTest, DestructionLeavesNothingBehind)
{
    show(3);
    bool gone = false;
    curve->onDestroyed = [&gone] { gone = true; };
    view.reset();
    EXPECT_TRUE(gone);
    EXPECT_EQ(space.itemCount(), 0U);
    EXPECT_EQ(space.scene().objectCount(), 0U);
}

TEST_F(CurveViewTest, AModelThatThrowsOutOfAConstructorLeavesNothingBehind)
{
    auto throwing = std::make_unique<RecordingCurve>(3);
    actWithin(*throwing, "pointObject", 2, [] { throw std::runtime_error("no object"); });
    EXPECT_THROW(CurveView(std::move(throwing), space.id), std::runtime_error);
    EXPECT_EQ(space.itemCount(), 0U);

    auto late = std::make_unique<RecordingCurve>(3);
    actWithin(*late, "positionAt", 2, [] { throw std::runtime_error("no position"); });
    EXPECT_THROW(CurveView(std::move(late), space.id), std::runtime_error);
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewTest, MovingTakesWhatIsShownAndLeavesSignalsWithTheSource)
{
    show(2);
    view->setOrigin(translation({0, 1, 0}));
    view->setCurveColor(Colour32Bit(0xFF102030U));
    const auto before = points();
    CurveView moved(std::move(*view));

    EXPECT_EQ(moved.getCurve(), curve);
    EXPECT_EQ(curve->m_view, view.get());
    EXPECT_EQ(view->getCurve(), nullptr);
    EXPECT_TRUE(view->getControlPoints().empty());
    EXPECT_EQ(moved.getControlPoints().size(), 2U);
    EXPECT_EQ(moved.getControlPoints()[1].get(), before[1]);
    EXPECT_EQ(moved.getOrigin(), translation({0, 1, 0}));
    EXPECT_EQ(moved.curveThickness(), RecordingDrawer::THICKNESS);
    moved.render(context);
    EXPECT_EQ(log.drawn.back().size(), 5U);

    curve->keys.push_back(RecordingCurve::key(2));
    curve->pointAdded(2, 1); // reaches the source, which has no curve
    EXPECT_EQ(moved.getControlPoints().size(), 2U);
    {
        const ExpectReports reports{"m_curve", NOT_FOUND};
        before[0]->customDelete();
    }

    moved.setCurve(std::make_unique<RecordingCurve>(4));
    view.reset();
    moved.getCurve()->pointRemoved(0, 0);
    EXPECT_EQ(moved.getControlPoints().size(), 4U);
    EXPECT_EQ(space.itemCount(), 4U);
}

TEST_F(CurveViewTest, AMovedViewWhoseSourceIsGoneIsSafe)
{
    show(2);
    CurveView moved(std::move(*view));
    view.reset();
    const auto point = moved.getControlPoints()[0];
    curve->changed();
    point->customDelete();
    EXPECT_EQ(moved.getControlPoints().size(), 2U);
}

TEST_F(CurveViewTest, AMovedViewIsNotEnabledByThat)
{
    show(2);
    auto& cache = CurveViewSpaceCache::instance(space.chunkSpace());
    CurveView moved(std::move(*view));
    cache.collide({{0, 0, 0}, {0, 1, 0}}, true);
    EXPECT_TRUE(curve->insertions.empty());
    moved.enableCurveView();
    cache.collide({{0, 0, 0}, {0, 1, 0}}, true);
    EXPECT_EQ(curve->insertions.size(), 1U);
}

// --- Sampling ---------------------------------------------------------------------------------------------

TEST_F(CurveViewTest, SamplesEachSegmentFromItsFirstPointAndEndsWithTheLast)
{
    show(3);
    curve->keys[1].resolution = 2;
    curve->keys[2].position = {7, 8, 9};
    view->update();
    EXPECT_EQ(samples(), (std::vector<Vector3>{{0, 100, 0},
                                               {0.25F, 100, 0},
                                               {0.5F, 100, 0},
                                               {0.75F, 100, 0},
                                               {1, 100, 0},
                                               {1.5F, 100, 0},
                                               {7, 8, 9}}));
}

TEST_F(CurveViewTest, OnePointIsOneSampleAndNoneIsNone)
{
    show(1);
    EXPECT_EQ(samples(), std::vector<Vector3>{Vector3()});
    EXPECT_EQ(view->getControlPoints().size(), 1U);
    show(0);
    EXPECT_TRUE(samples().empty());
    EXPECT_TRUE(view->getControlPoints().empty());
}

TEST_F(CurveViewTest, AShortSegmentHasOneSampleAndABackwardOneNone)
{
    show(0);
    curve->keys = {RecordingCurve::key(0),     RecordingCurve::key(0.09F), RecordingCurve::key(0.05F),
                   RecordingCurve::key(0.05F), RecordingCurve::key(-1),    RecordingCurve::key(0)};
    view->update();
    EXPECT_EQ(sampleParameters(), (std::vector<float>{0, 0.09F, 0.05F, -1, -0.75F, -0.5F, -0.25F, 0}));
}

TEST_F(CurveViewTest, ASegmentOfExactlyATenthIsDivided)
{
    show(0);
    curve->keys = {RecordingCurve::key(0, 2), RecordingCurve::key(0.1F)};
    view->update();
    EXPECT_EQ(sampleParameters(), (std::vector<float>{0, 0.05F, 0.1F}));
    curve->keys[1] = RecordingCurve::key(std::nextafter(0.1F, 0.0F));
    view->update();
    EXPECT_EQ(sampleParameters().size(), 2U);
}

TEST_F(CurveViewTest, TheOriginTakesSamplesAndPointsToTheWorld)
{
    show(2);
    Matrix origin = Matrix::constructTransformationMatrix({10, 20, 30}, Kodo::Quaternion(), {2, 3, 4});
    view->setOrigin(origin);
    EXPECT_EQ(samples().front(), Vector3(10, 320, 30));
    EXPECT_EQ(samples().back(), Vector3(12, 20, 30));
    EXPECT_EQ(points()[1]->edTransform(), translation({12, 20, 30}));
}

TEST_F(CurveViewTest, AnOriginThatHardlyDiffersRebuildsNothing)
{
    show(2);
    const auto before = points();
    Matrix origin = Matrix::IDENTITY;
    origin.m[3][0] = 0.0003F;
    view->setOrigin(origin);
    EXPECT_TRUE(curve->calls.empty());
    EXPECT_EQ(points(), before);
    EXPECT_EQ(view->getOrigin(), Matrix::IDENTITY);
    origin.m[3][0] = 0.0005F;
    view->setOrigin(origin);
    EXPECT_NE(points(), before);
    EXPECT_EQ(view->getOrigin(), origin);
}

TEST_F(CurveViewTest, AnInvalidCurveHasNoSamplesYetKeepsPoints)
{
    show(0);
    curve->keys = {RecordingCurve::key(0), RecordingCurve::key(1)};
    curve->valid = false;
    view->update();
    EXPECT_EQ(view->getControlPoints().size(), 2U);
    EXPECT_TRUE(samples().empty());
    EXPECT_TRUE(context.commands().empty()) << "without samples nothing is drawn";
}

// The loop of the steps, as it stands in the contract, for those that end.
std::vector<float> plainSteps(float start, float length, float resolution)
{
    std::vector<float> result;
    const float step = length / resolution;
    for (float t = 0; t < length; t += step)
    {
        result.push_back(start + t);
    }
    return result;
}

TEST_F(CurveViewTest, StepsThatEndByThemselvesRunAsTheyAre)
{
    constexpr float INF = std::numeric_limits<float>::infinity();
    constexpr float NAN_ = std::numeric_limits<float>::quiet_NaN();
    struct Case
    {
        float start;
        float end;
        float resolution;
    };
    for (const Case& c : {Case{0, 1, 3}, Case{0, 1, 0}, Case{0, 1, 0.3F}, Case{0, 1, 7.5F}, Case{0, 1, NAN_},
                          Case{0, INF, 4}, Case{0, INF, INF}, Case{0, INF, 0}, Case{5, 6, 1e5F},
                          Case{0, 1, 4194304}, Case{1e9F, 2e9F, 10}, Case{0, 1, 1e-42F}})
    {
        show(0);
        curve->keys = {RecordingCurve::key(c.start, c.resolution), RecordingCurve::key(c.end)};
        curve->counts = false;
        view->update();
        std::vector<float> expected = plainSteps(c.start, c.end - c.start, c.resolution);
        expected.push_back(c.end);
        EXPECT_EQ(sampleParameters(), expected) << c.start << " to " << c.end << " in " << c.resolution;
    }
}

TEST_F(CurveViewTest, NumbersThatAreNoneEndTheWayAtOnce)
{
    constexpr float INF = std::numeric_limits<float>::infinity();
    constexpr float NAN_ = std::numeric_limits<float>::quiet_NaN();
    show(0);
    curve->keys = {RecordingCurve::key(0), RecordingCurve::key(NAN_), RecordingCurve::key(-INF),
                   RecordingCurve::key(-INF), RecordingCurve::key(3)};
    view->update();
    EXPECT_EQ(samples().size(), 5U); // each pair's difference is no number, or infinite with one step
    for (const float lie : {-1.0F, -0.0F, 0.0F, 1e30F})
    {
        curve->keys = {RecordingCurve::key(1, lie), RecordingCurve::key(-1)};
        view->update();
        EXPECT_EQ(samples().size(), 1U) << "a way back has no samples, whatever the resolution is";
    }
}

TEST_F(CurveViewTest, StepsThatNeverGetThereAreReportedAndTheSegmentHasItsFirstSample)
{
    constexpr float INF = std::numeric_limits<float>::infinity();
    for (const float lie : {-1.0F, -0.0F, -INF, INF, 1e30F, -1e-42F, 33554432.0F, 4e7F})
    {
        show(0);
        curve->keys = {RecordingCurve::key(0, lie), RecordingCurve::key(1, 2), RecordingCurve::key(2)};
        const ExpectReports reports{"sampling of the segment ends"};
        view->update();
        EXPECT_EQ(sampleParameters(), (std::vector<float>{0, 1, 1.5F, 2})) << lie;
        EXPECT_EQ(reports.reports().at(0).path, "curve_view/curve_view.cpp");
    }
    show(0);
    curve->keys = {RecordingCurve::key(0, -2), RecordingCurve::key(INF)};
    const ExpectReports reports{"sampling of the segment ends"};
    view->update();
    EXPECT_EQ(samples().size(), 2U);
}

// --- The model's signals ----------------------------------------------------------------------------------

TEST_F(CurveViewTest, AChangeAsAWholeRebuildsAllPoints)
{
    show(2);
    const auto old = view->getControlPoints();
    curve->keys.push_back(RecordingCurve::key(2));
    curve->changed();
    ASSERT_EQ(view->getControlPoints().size(), 3U);
    EXPECT_NE(view->getControlPoints()[0], old[0]);
    EXPECT_EQ(space.itemCount(), 3U);
}

TEST_F(CurveViewTest, APointCarriesTheModelsObjectTransformAndLighterColour)
{
    show(2);
    const CurveViewControlPoint& point = *view->getControlPoints()[1];
    EXPECT_EQ(point.getRefObject().object(), curve->keys[1].object.get());
    EXPECT_EQ(view->getControlPoints()[1]->edTransform(), translation({1, 0, 0}));
    const ColourRGBAFloat base{Colour32Bit(0xFF2CFFA6U)};
    EXPECT_EQ(point.getColor(), ColourRGBAFloat(base.r() + (1.0F - base.r()) * 0.5F, 1.0F,
                                                base.b() + (1.0F - base.b()) * 0.5F, 1.0F));
    EXPECT_EQ(point.getOverlapColor(), ColourRGBAFloat(Colour32Bit(0xFF006F9AU)));
}

TEST_F(CurveViewTest, AnUpdateMovesThePointsNamedAndAnnouncesEach)
{
    show(4);
    const auto before = points();
    std::vector<std::string> heard;
    const auto connect = [&](const char* what)
    {
        return
            [&heard, what, this](const tern::ReflectedObject& object, const std::vector<std::string>& names)
        {
            for (std::size_t i = 0; i < curve->keys.size(); ++i)
            {
                if (curve->keys[i].object.get() == object.object())
                {
                    heard.push_back(what + std::to_string(i) + names.at(0) + std::to_string(names.size()) +
                                    "@" +
                                    std::to_string(static_cast<int>(points()[i]->edTransform().m[3][1])));
                }
            }
        };
    };
    const auto changing = tern::PropertyChangeNotifier::connectChanging(connect("changing "));
    const auto changed = tern::PropertyChangeNotifier::connectChanged(connect("changed "));
    for (auto& key : curve->keys)
    {
        key.position.y = 5;
    }
    curve->pointUpdated(1, 2);

    EXPECT_EQ(points(), before);
    EXPECT_EQ(heard, (std::vector<std::string>{"changing 1*1@0", "changed 1*1@5", "changing 2*1@0",
                                               "changed 2*1@5"}));
    EXPECT_EQ(points()[0]->edTransform().m[3][1], 0.0F);
    EXPECT_EQ(points()[3]->edTransform().m[3][1], 0.0F);
    EXPECT_EQ(samples().back().y, 5.0F);
}

TEST_F(CurveViewTest, OneUpdateTouchesOnePointOfTenThousand)
{
    show(10000);
    curve->pointUpdated(4567, 1);
    EXPECT_EQ(curve->calls["pointPosition"], 2U) << "the point moved, and the last sample";
    EXPECT_EQ(curve->calls["pointObject"], 0U);
    EXPECT_EQ(curve->calls["pointCount"], 1U);
    EXPECT_EQ(curve->calls["positionAt"], 9999U * 4U);
}

TEST_F(CurveViewTest, AddedPointsEnterAtTheirPlaceInOrder)
{
    show(2);
    const auto before = points();
    std::vector<std::size_t> made;
    curve->insert(1, {RecordingCurve::key(0.25F), RecordingCurve::key(0.5F)});
    curve->pointAdded(1, 2);
    const auto after = points();
    ASSERT_EQ(after.size(), 4U);
    EXPECT_EQ(after[0], before[0]);
    EXPECT_EQ(after[3], before[1]);
    EXPECT_EQ(after[1]->edTransform(), translation({0.25F, 0, 0}));
    EXPECT_EQ(after[2]->getRefObject().object(), curve->keys[2].object.get());
    EXPECT_LT(after[1]->sceneObject().id(), after[2]->sceneObject().id()) << "made in increasing order";
    EXPECT_EQ(space.itemCount(), 4U);

    curve->keys.push_back(RecordingCurve::key(9));
    curve->pointAdded(4, 1);
    EXPECT_EQ(points().size(), 5U);
    curve->pointAdded(0, 0);
    EXPECT_EQ(points().size(), 5U);
}

TEST_F(CurveViewTest, MovedPointsExchangePlacesAndKeepTheirTransforms)
{
    show(3);
    const auto before = points();
    std::swap(curve->keys[0], curve->keys[2]);
    curve->pointMoved(0, 2);
    EXPECT_EQ(points(), (std::vector{before[2], before[1], before[0]}));
    EXPECT_EQ(points()[0]->edTransform(), translation({2, 0, 0}));
    curve->pointMoved(1, 1);
    EXPECT_EQ(points(), (std::vector{before[2], before[1], before[0]}));
}

TEST_F(CurveViewTest, RemovedPointsLeaveTheSceneLastFirst)
{
    show(5);
    const auto before = points();
    std::vector<std::string> order;
    for (auto& key : curve->keys)
    {
        key.object.reset();
    }
    curve->erase(1, 3);
    curve->pointRemoved(1, 3);
    EXPECT_EQ(points(), (std::vector{before[0], before[4]}));
    EXPECT_EQ(space.itemCount(), 2U);
    EXPECT_EQ(space.scene().objectCount(), 2U);
}

/// Says when it goes: as a key's object it goes with the control point that holds it.
class MortalObject : public CurveKeyObject
{
public:
    explicit MortalObject(std::function<void()> onGone) : m_onGone(std::move(onGone)) {}
    ~MortalObject() override { m_onGone(); }

private:
    std::function<void()> m_onGone;
};

TEST_F(CurveViewTest, PointsAreDestroyedLastFirstOnRemovalAndFirstFirstOnDestruction)
{
    for (const bool removal : {true, false})
    {
        show(0);
        std::vector<int> order;
        for (int i = 0; i < 4; ++i)
        {
            curve->keys.push_back(RecordingCurve::key(static_cast<float>(i)));
            curve->keys.back().object = std::make_shared<MortalObject>([&order, i] { order.push_back(i); });
        }
        view->update();
        curve->keys.clear();
        removal ? curve->pointRemoved(0, 4) : curve->changed();
        EXPECT_EQ(order, removal ? (std::vector{3, 2, 1, 0}) : (std::vector{0, 1, 2, 3}));
    }
}

TEST_F(CurveViewTest, RemovingNoneOnlySamplesAnew)
{
    show(2);
    const auto before = points();
    curve->keys[1].position = {3, 3, 3};
    curve->pointRemoved(0, 0);
    EXPECT_EQ(points(), before);
    EXPECT_EQ(points()[1]->edTransform(), translation({1, 0, 0}));
    EXPECT_EQ(samples().back(), Vector3(3, 3, 3));
}

TEST_F(CurveViewTest, WhileTheModelIsInvalidOnlyRemovalDoesAnything)
{
    show(2);
    const auto before = points();
    const auto sampled = samples();
    curve->valid = false;
    curve->keys[0].position = {4, 4, 4};
    curve->pointUpdated(0, 1);
    curve->pointAdded(0, 1);
    curve->pointMoved(0, 1);
    EXPECT_EQ(points(), before);
    EXPECT_EQ(samples(), sampled);
    curve->pointRemoved(0, 0);
    EXPECT_TRUE(points().empty());
    EXPECT_EQ(space.itemCount(), 0U);
    EXPECT_EQ(samples(), sampled) << "the polyline stays as it was";
}

TEST_F(CurveViewTest, FromNoPointsAllAreMadeButByRemoval)
{
    using Handler = void (CurveView::*)(std::size_t, std::size_t);
    for (const Handler handler :
         {&CurveView::updatePoint, &CurveView::updatePointAdded, &CurveView::updatePointMoved})
    {
        show(3);
        curve->valid = false;
        curve->pointRemoved(0, 1);
        ASSERT_TRUE(points().empty());
        curve->valid = true;
        curve->pointRemoved(0, 1); // there is none to remove
        EXPECT_TRUE(points().empty());
        ((*view).*handler)(77, 99); // all are made, whichever were named
        EXPECT_EQ(points().size(), 3U);
        EXPECT_EQ(space.itemCount(), 3U);
    }
}

TEST_F(CurveViewTest, RangesBeyondThePointsAreReportedAndIgnored)
{
    show(3);
    const auto before = points();
    struct Range
    {
        std::size_t first;
        std::size_t second;
    };
    const auto refuse = [&](auto act, const std::string& expression)
    {
        const ExpectReports reports{expression};
        act();
        EXPECT_EQ(points(), before);
        EXPECT_EQ(reports.reports().at(0).path, "curve_view/curve_view.cpp");
    };
    for (const Range r : {Range{3, 1}, Range{0, 4}, Range{2, 2}, Range{1, MAX}, Range{MAX, 1},
                          Range{MAX, MAX}, Range{2, MAX - 1}})
    {
        refuse([&] { view->updatePoint(r.first, r.second); }, "isWithin(index, count)");
        refuse([&] { view->updatePointRemoved(r.first, r.second); }, "isWithin(index, count)");
    }
    for (const Range r : {Range{3, 0}, Range{0, 3}, Range{MAX, 0}, Range{0, MAX}, Range{MAX, MAX}})
    {
        refuse([&] { view->updatePointMoved(r.first, r.second); },
               "isWithin(first, 1) && isWithin(second, 1)");
    }
    for (const Range r : {Range{4, 1}, Range{3, 1}, Range{0, 4}, Range{1, MAX}, Range{MAX - 1, MAX}})
    {
        refuse([&] { view->updatePointAdded(r.first, r.second); },
               "index <= m_controlPoints.size() && index <= pointCount && count <= pointCount - index");
    }
    refuse([&] { view->updatePointAdded(MAX, 1); }, "index != -1");
    refuse([&] { view->updatePointAdded(MAX, MAX); }, "index != -1");
    EXPECT_EQ(space.itemCount(), 3U);
    // Nothing is no range beyond anything.
    view->updatePoint(77, 0);
    view->updatePointRemoved(77, 0);
    view->updatePointAdded(77, 0);
}

TEST_F(CurveViewTest, AnIndexOfMinusOneIsReportedEvenWhereTheRestIsNotDone)
{
    show(2);
    curve->valid = false;
    curve->pointRemoved(0, 1);
    const ExpectReports reports{"index != -1", "index != -1"};
    curve->pointAdded(MAX, 1);
    EXPECT_TRUE(points().empty());
    curve->valid = true;
    curve->pointAdded(MAX, 1);
    EXPECT_EQ(points().size(), 2U) << "the points are made before the range matters";
}

TEST_F(CurveViewTest, AnExceptionOutOfTheModelLeavesTheViewWhole)
{
    show(3);
    curve->insert(1, {RecordingCurve::key(0.3F), RecordingCurve::key(0.6F)});
    const auto before = points();
    actWithin(*curve, "pointObject", 2, [] { throw std::runtime_error("no object"); });
    EXPECT_THROW(curve->pointAdded(1, 2), std::runtime_error);
    EXPECT_EQ(points(), before);
    EXPECT_EQ(space.itemCount(), 3U) << "those made already have left the scene";

    actWithin(*curve, "positionAt", 3, [] { throw std::runtime_error("no position"); });
    EXPECT_THROW(curve->pointUpdated(0, 1), std::runtime_error);
    EXPECT_TRUE(samples().empty());
    view->update();
    EXPECT_EQ(points().size(), 5U);
    EXPECT_EQ(samples().size(), 17U);
}

// --- Deletion ---------------------------------------------------------------------------------------------

TEST_F(CurveViewTest, DeletingAPointAsksTheModelAndFollowsItsSignal)
{
    show(3);
    const auto before = points();
    before[1]->edDelete();
    EXPECT_EQ(curve->removals, std::vector<std::size_t>{1});
    EXPECT_EQ(points(), (std::vector{before[0], before[2]}));

    curve->removes = false;
    before[0]->customDelete();
    EXPECT_EQ(curve->removals, (std::vector<std::size_t>{1, 0}));
    EXPECT_EQ(points().size(), 2U) << "the view waits for the model";
}

TEST_F(CurveViewTest, DeletingAPointThatIsNoLongerTheViewsReports)
{
    show(2);
    const auto held = view->getControlPoints();
    view->update();
    const ExpectReports reports{NOT_FOUND};
    held[0]->customDelete();
    EXPECT_TRUE(curve->removals.empty());
    EXPECT_EQ(reports.reports().at(0).priority, 5);
}

TEST_F(CurveViewTest, DeletingAPointWithoutModelReportsBoth)
{
    show(2);
    const auto held = view->getControlPoints();
    view->setCurve(nullptr);
    const ExpectReports reports{"m_curve", NOT_FOUND};
    held[0]->customDelete();
    EXPECT_EQ(reports.reports().at(0).path, "curve_view/curve_view.cpp");
}

TEST_F(CurveViewTest, DeletingAPointThatOutlivesItsViewDoesNothing)
{
    show(2);
    const auto held = view->getControlPoints();
    view.reset();
    held[0]->customDelete();
}

// --- Drawing ----------------------------------------------------------------------------------------------

TEST_F(CurveViewTest, DrawsSelectedPointsFirst)
{
    show(4);
    view->setOrigin(translation({0, 0, 10}));
    points()[1]->edSelected();
    points()[3]->edSelected();
    samples();
    std::vector<float> places;
    for (const auto& sphere : context.spheres())
    {
        places.push_back(sphere.position.x);
    }
    EXPECT_EQ(places, (std::vector<float>{1, 1, 3, 3, 0, 0, 2, 2}));
}

TEST_F(CurveViewTest, ColoursReachDrawerAndPoints)
{
    show(2);
    const Colour32Bit colour(0x80204060U);
    const ColourRGBAFloat base(colour);
    const ColourRGBAFloat overlap = points()[0]->getOverlapColor();
    view->setCurveColor(colour);
    EXPECT_EQ(log.colors.back(), 0x80204060U);
    const ColourRGBAFloat light(base.r() + (1 - base.r()) * 0.5F, base.g() + (1 - base.g()) * 0.5F,
                                base.b() + (1 - base.b()) * 0.5F, base.a());
    EXPECT_EQ(points()[1]->getColor(), light);
    EXPECT_EQ(points()[1]->getOverlapColor(), overlap);

    view->setCurveColorDown(Colour32Bit(0xFF010203U));
    EXPECT_EQ(log.downColors.back(), 0xFF010203U);
    EXPECT_EQ(points()[1]->getColor(), light);
    EXPECT_EQ(points()[1]->getOverlapColor(), ColourRGBAFloat(Colour32Bit(0xFF010203U)));

    view->update();
    EXPECT_EQ(points()[0]->getColor(), light);
    EXPECT_EQ(points()[0]->getOverlapColor(), ColourRGBAFloat(Colour32Bit(0xFF010203U)));
}

TEST_F(CurveViewTest, KeyColoursAreKeptAndChangeNothing)
{
    show(2);
    samples();
    const std::vector<Kodo::DebugDrawer::SphereRecord> before(context.spheres().begin(),
                                                              context.spheres().end());
    view->setCurveKeyColor(Colour32Bit(1));
    view->setCurveKeyHoverColor(Colour32Bit(2));
    view->setCurveKeySelectedColor(Colour32Bit(3));
    samples();
    ASSERT_EQ(context.spheres().size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i)
    {
        EXPECT_EQ(context.spheres()[i].colour, before[i].colour);
    }
}

TEST_F(CurveViewTest, ThicknessIsTheDrawers)
{
    show(1);
    view->setCurveThickness(0.7F);
    EXPECT_EQ(log.thicknesses, std::vector{0.7F});
    EXPECT_EQ(view->curveThickness(), RecordingDrawer::THICKNESS);
}

// --- Other threads ----------------------------------------------------------------------------------------

TEST_F(CurveViewTest, OffTheMainThreadPointsAreMadeByTheMainThreadsNextJobs)
{
    show(2);
    std::thread([this] { view->update(); }).join();
    EXPECT_TRUE(points().empty());
    EXPECT_EQ(samples().size(), 5U);
    std::thread([this] { view->update(); }).join();
    EXPECT_EQ(Kodo::AsyncManager::pendingCount(), 1U) << "the new request takes the place of the old";
    Kodo::AsyncManager::runMainThreadJobs();
    EXPECT_EQ(points().size(), 2U);
}

TEST_F(CurveViewTest, ADeferredCreationThatFindsPointsAddsNone)
{
    show(2);
    std::thread([this] { view->update(); }).join();
    view->update();
    const auto before = points();
    Kodo::AsyncManager::runMainThreadJobs();
    EXPECT_EQ(points(), before);
}

TEST_F(CurveViewTest, ADeferredCreationGoesWithItsViewOrItsModel)
{
    show(2);
    std::thread([this] { view->update(); }).join();
    view.reset();
    EXPECT_EQ(Kodo::AsyncManager::pendingCount(), 0U);

    show(2);
    std::thread([this] { view->update(); }).join();
    view->setCurve(nullptr);
    Kodo::AsyncManager::runMainThreadJobs();
    EXPECT_TRUE(points().empty());

    show(2);
    std::thread([this] { view->update(); }).join();
    CurveView moved(std::move(*view));
    view.reset();
    Kodo::AsyncManager::runMainThreadJobs();
    EXPECT_TRUE(moved.getControlPoints().empty());
}

// --- Profiling --------------------------------------------------------------------------------------------

class CurveViewProfileTest : public CurveViewTest
{
protected:
    template <class Act>
    std::vector<std::string> scopesOf(Act act)
    {
        Kodo::StackTracker::startRecording();
        act();
        Kodo::StackTracker::push("after", "", 0); // open scopes would be around this one
        Kodo::StackTracker::pop();
        std::vector<std::string> names;
        auto record = Kodo::StackTracker::stopRecording();
        EXPECT_EQ(record.back().depth, 0);
        record.pop_back();
        for (const auto& scope : record)
        {
            if (scope.name.find("CurveView::") == 0)
            {
                names.push_back(scope.name.substr(11));
            }
        }
        return names;
    }
};

using Names = std::vector<std::string>;

TEST_F(CurveViewProfileTest, OperationsHaveScopesOfTheirNames)
{
    show(2);
    EXPECT_EQ(scopesOf([&] { view->update(); }),
              (Names{"update", "destroyControlPoints", "createControlPoints", "updateCurve"}));
    EXPECT_EQ(scopesOf([&] { view->setOrigin(view->getOrigin()); }), Names{"setOrigin"});
    EXPECT_EQ(scopesOf([&] { view->updatePoint(0, 1); }), (Names{"updatePoint", "updateCurve"}));
    EXPECT_EQ(scopesOf([&] { view->updatePointAdded(0, 0); }), Names{"updateCurve"});
    EXPECT_EQ(scopesOf([&] { view->updatePointMoved(0, 0); }), Names{"updateCurve"});
    EXPECT_EQ(scopesOf([&] { view->updatePointRemoved(0, 0); }), Names{"updateCurve"});
    EXPECT_EQ(scopesOf([&] { view->render(context); }), (Names{"render", "drawControlPoints"}));
    EXPECT_EQ(scopesOf([&] { points()[1]->customDelete(); }),
              (Names{"tryDeleteControlPoint", "updateCurve"}));
    EXPECT_EQ(scopesOf([&] { view->setCurve(nullptr); }),
              (Names{"setCurve", "update", "destroyControlPoints"}));
    EXPECT_EQ(scopesOf([&] { view->render(context); }), Names{"render"});
    EXPECT_EQ(scopesOf([&] { view.reset(); }),
              (Names{"~CurveView", "destroyControlPoints", "destroyGhostPoint"}));
}

TEST_F(CurveViewProfileTest, SettersAndAccessorsHaveNone)
{
    show(1);
    EXPECT_EQ(scopesOf(
                  [&]
                  {
                      view->setCurveColor(Colour32Bit(1));
                      view->setCurveColorDown(Colour32Bit(1));
                      view->setCurveKeyColor(Colour32Bit(1));
                      view->setCurveThickness(1);
                      view->curveThickness();
                      view->enableCurveView();
                      view->disableCurveView();
                  }),
              Names{});
}

TEST_F(CurveViewProfileTest, AnExceptionClosesTheScopes)
{
    show(2);
    curve->onCall = [](const std::string& operation)
    {
        if (operation == "positionAt" || operation == "pointObject")
        {
            throw std::runtime_error("no");
        }
    };
    scopesOf([&] { EXPECT_THROW(view->update(), std::runtime_error); });
    scopesOf([&] { EXPECT_THROW(view->updatePoint(0, 1), std::runtime_error); });
    curve->onCall = nullptr;
}

} // namespace
