#include "tern/property_change_notifier.hpp"
#include "tests/support/curve_view_fixture.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Kodo::Vector3;
using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;

constexpr std::size_t MAX = std::numeric_limits<std::size_t>::max();

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
    EXPECT_EQ(curve->calls["pointCount"], 2U) << "by the sampling, and for the range";
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

TEST_F(CurveViewTest, PointsAreAddedAllAtOnce)
{
    constexpr std::size_t ADDED = 3000;
    show(5000);
    std::vector<RecordingCurve::Key> keys;
    for (std::size_t i = 0; i < ADDED; ++i)
    {
        keys.push_back(RecordingCurve::key(1000.0F));
    }
    curve->insert(1000, keys);
    std::size_t earlier = 0;
    curve->onCall = [&](const std::string& operation)
    { earlier += operation == "pointObject" && view->getControlPoints().size() != 5000 ? 1U : 0U; };
    curve->pointAdded(1000, ADDED);
    curve->onCall = nullptr;
    EXPECT_EQ(earlier, 0U) << "those behind them make way once, not for each";
    EXPECT_EQ(points().size(), 5000 + ADDED);
    EXPECT_EQ(curve->calls["pointObject"], ADDED);
    EXPECT_EQ(curve->calls["pointPosition"], ADDED + 1) << "and the last sample";
    EXPECT_LE(curve->calls["pointCount"], 2U);
    EXPECT_EQ(curve->calls["isValid"], 2U) << "by the handler and by its sampling";
}

TEST_F(CurveViewTest, RemovedPointsLeaveTheScene)
{
    show(5);
    const auto before = points();
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

TEST_F(CurveViewTest, PointsAreRemovedAllAtOnce)
{
    constexpr std::size_t REMOVED = 3000;
    show(0);
    std::size_t gone = 0;
    std::size_t earlier = 0;
    for (std::size_t i = 0; i < 8000; ++i)
    {
        curve->keys.push_back(RecordingCurve::key(static_cast<float>(i)));
        curve->keys.back().object = std::make_shared<MortalObject>(
            [&]
            {
                ++gone;
                earlier += view && view->getControlPoints().size() != 8000 - REMOVED ? 1U : 0U;
            });
    }
    view->update();
    curve->calls.clear();
    curve->erase(1000, REMOVED);
    curve->pointRemoved(1000, REMOVED);
    EXPECT_EQ(gone, REMOVED);
    EXPECT_EQ(earlier, 0U) << "those behind them close up once, not for each";
    EXPECT_EQ(curve->calls["pointObject"], 0U);
    EXPECT_EQ(curve->calls["pointPosition"], 1U) << "the last sample";
    EXPECT_EQ(space.scene().objectCount(), 8000 - REMOVED);
    view.reset();
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
        refuse([&] { view->updatePoint(r.first, r.second); },
               "isWithin(index, count) && index + count <= pointCount");
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
    for (const std::size_t index : {std::size_t{77}, MAX / sizeof(void*) / 2 + 1, MAX})
    {
        view->updatePoint(index, 0);
        view->updatePointRemoved(index, 0);
    }
    view->updatePointAdded(77, 0);
}

TEST_F(CurveViewTest, AModelIsNotAskedForPointsBeyondThoseItCounts)
{
    show(5);
    const auto before = points();
    curve->keys.resize(3); // and does not say so
    curve->calls.clear();
    for (const auto& [index, count] : {std::pair<std::size_t, std::size_t>{3, 1}, {4, 1}, {1, 3}, {0, 5}})
    {
        const ExpectReports reports{"isWithin(index, count) && index + count <= pointCount"};
        curve->pointUpdated(index, count);
    }
    {
        const ExpectReports reports{
            "index <= m_controlPoints.size() && index <= pointCount && count <= pointCount - index"};
        curve->pointAdded(3, 1);
    }
    EXPECT_EQ(curve->calls["pointPosition"], 5U) << "the last sample of each sampling";
    EXPECT_EQ(points(), before);
    curve->pointUpdated(0, 3);
    curve->pointMoved(3, 4); // of the view alone
    EXPECT_EQ(points()[3], before[4]);
    curve->pointRemoved(3, 2);
    EXPECT_EQ(points().size(), 3U);
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

} // namespace
