#include "tern_common/curve_view/curve_view.hpp"

#include "kodo/core/stack_tracker.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tests/support/curve_view_fixture.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace
{

using Kodo::Matrix;
using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;

constexpr std::size_t MAX = std::numeric_limits<std::size_t>::max();
const char* const NOT_FOUND = "CurveView::tryDeleteControlPoint :: control point cannot be found";

static_assert(std::has_virtual_destructor_v<CurveView>);
static_assert(!std::is_copy_constructible_v<CurveView> && std::is_move_constructible_v<CurveView>);
static_assert(!std::is_assignable_v<CurveView&, CurveView>);
static_assert(!std::has_virtual_destructor_v<ICurveDrawer> && !std::is_destructible_v<ICurveDrawer>);
static_assert(std::has_virtual_destructor_v<CurveView::IAbstractCurve>);

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
    CurveView empty(nullptr, space.id, nullptr);
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
    curve->onDestroyed = [old = curve, &slotsAtTheEnd] { slotsAtTheEnd = old->slotCount(); };
    view->setCurve(std::make_unique<RecordingCurve>(1));
    EXPECT_EQ(slotsAtTheEnd, 0U);
    EXPECT_EQ(view->getControlPoints().size(), 1U);
    EXPECT_EQ(space.itemCount(), 1U);
    EXPECT_EQ(view->getCurve()->m_view, view.get());
}

TEST_F(CurveViewTest, TheModelItHasMayBeGivenAgain)
{
    show(2);
    view->setCurve(std::unique_ptr<CurveView::IAbstractCurve>(view->getCurve()));
    EXPECT_EQ(view->getCurve(), curve);
    EXPECT_EQ(curve->slotCount(), 5U);
    EXPECT_EQ(points().size(), 2U);

    // A moved-to view becomes whole by that.
    CurveView moved(std::move(*view));
    moved.setCurve(std::unique_ptr<CurveView::IAbstractCurve>(moved.getCurve()));
    view.reset();
    EXPECT_EQ(curve->m_view, &moved);
    EXPECT_EQ(curve->slotCount(), 5U);
    curve->keys.push_back(RecordingCurve::key(2));
    curve->pointAdded(2, 1);
    EXPECT_EQ(moved.getControlPoints().size(), 3U);
    const auto last = moved.getControlPoints()[2];
    last->customDelete();
    EXPECT_EQ(curve->removals, std::vector<std::size_t>{2});
    EXPECT_EQ(moved.getControlPoints().size(), 2U);
    EXPECT_EQ(space.itemCount(), 2U);
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
    view->setCurveColorDown(Colour32Bit(0xFF405060U));
    const auto before = points();
    const ColourRGBAFloat colour = before[0]->getColor();
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
    EXPECT_EQ(moved.getControlPoints()[3]->getColor(), colour);
    EXPECT_EQ(moved.getControlPoints()[3]->getOverlapColor(), ColourRGBAFloat(Colour32Bit(0xFF405060U)));
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

TEST_F(CurveViewTest, AModelMayEmitWhileAViewIsBeingMade)
{
    const auto emitWithin = [this](const std::string& operation, std::size_t nth)
    {
        auto made = std::make_unique<RecordingCurve>(3);
        RecordingCurve& model = *made;
        actWithin(model, operation, nth,
                  [&model]
                  {
                      ASSERT_NE(model.m_view, nullptr);
                      model.insert(1, {RecordingCurve::key(0.5F)});
                      model.pointAdded(1, 1);
                  });
        CurveView fresh(std::move(made), space.id);
        const std::size_t count = model.keys.size();
        ASSERT_EQ(fresh.getControlPoints().size(), count);
        for (std::size_t i = 0; i < count; ++i)
        {
            EXPECT_EQ(fresh.getControlPoints()[i]->getRefObject().object(), model.keys[i].object.get()) << i;
        }
        EXPECT_EQ(space.itemCount(), count);
        context.clear();
        fresh.render(context);
        EXPECT_EQ(context.points().size(), 2 * ((count - 1) * 4 + 1));
    };
    for (const char* const operation : {"pointCount", "pointObject", "isValid", "pointParameter",
                                        "segmentResolution", "positionAt", "pointPosition"})
    {
        for (std::size_t nth = 1; nth <= 8; ++nth)
        {
            SCOPED_TRACE(operation + std::to_string(nth));
            emitWithin(operation, nth);
        }
    }
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

TEST_F(CurveViewTest, DrawsTheLineThenThePointsThenThePreview)
{
    using Kind = Kodo::DebugDrawer::Context::Kind;
    CurveView plain(std::make_unique<RecordingCurve>(1), space.id);
    CurveViewSpaceCache::instance(space.chunkSpace()).collide({{0, 0, -1}, {0, 0, 1}}, false);
    plain.setCurveColor(Colour32Bit(0xFF102030U)); // of the points, not of the preview
    plain.render(context);
    std::vector<Kind> kinds;
    for (const auto& command : context.commands())
    {
        kinds.push_back(command.kind);
    }
    EXPECT_EQ(kinds,
              (std::vector{Kind::Line, Kind::Line, Kind::Sphere, Kind::Sphere, Kind::Sphere, Kind::Sphere}));
    EXPECT_EQ(context.spheres()[0].colour, plain.getControlPoints()[0]->getColor());
    EXPECT_EQ(context.spheres()[2].colour, ColourRGBAFloat(Colour32Bit(0xFF2CFFA6U)));
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

} // namespace
