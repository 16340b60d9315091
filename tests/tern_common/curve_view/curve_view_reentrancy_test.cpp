#include "tern_common/curve_view/curve_view.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "tern/property_change_notifier.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tests/support/recording_curve.hpp"
#include "tests/support/recording_drawer.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

/// A view, what can be done to it, and from within which call of the model something else is done.
class CurveViewReentrancyTest : public testing::Test
{
protected:
    void show(std::size_t count)
    {
        view.reset();
        auto made = std::make_unique<RecordingCurve>(count);
        curve = made.get();
        view = std::make_unique<CurveView>(std::move(made), space.id, std::make_unique<RecordingDrawer>(log));
        ASSERT_EQ(space.itemCount(), count);
    }

    /// What a model does and signals.
    struct Act
    {
        std::string name;
        std::function<void()> run;
    };
    std::vector<Act> acts()
    {
        return {{"update", [this] { view->update(); }},
                {"changed", [this] { curve->changed(); }},
                {"updated", [this] { curve->pointUpdated(1, 2); }},
                {"added",
                 [this]
                 {
                     curve->insert(1, {RecordingCurve::key(0.5F), RecordingCurve::key(0.75F)});
                     curve->pointAdded(1, 2);
                 }},
                {"moved",
                 [this]
                 {
                     std::swap(curve->keys[0], curve->keys[1]);
                     curve->pointMoved(0, 1);
                 }},
                {"removed",
                 [this]
                 {
                     curve->erase(1, 2);
                     curve->pointRemoved(1, 2);
                 }},
                {"removed none", [this] { curve->pointRemoved(0, 0); }},
                {"origin", [this]
                 {
                     Kodo::Matrix origin = view->getOrigin();
                     origin.m[3][1] += 1.0F;
                     view->setOrigin(origin);
                 }}};
    }

    /// Every point of the curve has its control point, with its object, and all of them are in the scene.
    void expectPointsInStep(const std::string& where)
    {
        const auto& points = view->getControlPoints();
        ASSERT_EQ(points.size(), curve->keys.size()) << where;
        EXPECT_EQ(space.itemCount(), points.size()) << where;
        for (std::size_t i = 0; i < points.size(); ++i)
        {
            EXPECT_EQ(points[i]->getRefObject().object(), curve->keys[i].object.get()) << where << ' ' << i;
        }
    }

    /// The same of the points, and the samples are those of the curve.
    void expectInStep(const std::string& where)
    {
        expectPointsInStep(where);
        Kodo::DebugDrawer::Context context;
        log.drawn.clear();
        view->render(context);
        ASSERT_EQ(log.drawn.size(), 1U) << where;
        std::vector<float> expected;
        for (std::size_t i = 0; i + 1 < curve->keys.size(); ++i)
        {
            const float d = curve->keys[i + 1].parameter - curve->keys[i].parameter;
            for (float t = 0; t < d; t += d / curve->keys[i].resolution)
            {
                expected.push_back(curve->keys[i].parameter + t);
            }
        }
        expected.push_back(curve->keys.back().position.x);
        std::vector<float> sampled;
        for (const auto& sample : log.drawn[0])
        {
            sampled.push_back(sample.x);
        }
        EXPECT_EQ(sampled, expected) << where;
    }

    static std::vector<std::string> operations()
    {
        return {"isValid",    "pointCount",    "pointParameter", "segmentResolution",
                "positionAt", "pointPosition", "pointObject"};
    }

    /// Calls @p test with each act, on a view of five points shown anew, and each of the first calls that the
    /// model gets of each operation.
    void forEveryCall(
        const std::function<void(const Act& act, const std::string& operation, std::size_t nth)>& test)
    {
        for (const Act& act : acts())
        {
            for (const std::string& operation : operations())
            {
                for (std::size_t nth = 1; nth <= 6; ++nth)
                {
                    show(5);
                    test(act, operation, nth);
                    if (HasFatalFailure())
                    {
                        return;
                    }
                }
            }
        }
    }

    TestSpace space;
    DrawerLog log;
    RecordingCurve* curve = nullptr;
    std::unique_ptr<CurveView> view;
};

TEST_F(CurveViewReentrancyTest, AModelMayEditItselfFromWithinAnyCall)
{
    int nested = 0;
    for (const Act& inner : acts())
    {
        forEveryCall(
            [&](const Act& outer, const std::string& operation, std::size_t nth)
            {
                const std::string where = inner.name + " from within " + operation + " number " +
                                          std::to_string(nth) + " of " + outer.name;
                actWithin(*curve, operation, nth,
                          [&]
                          {
                              ++nested;
                              inner.run();
                          });
                // A curve that shrinks while it is asked has no answer: it throws, and is shown anew.
                bool thrown = false;
                const CollectReports reports; // what is removed from within may have been the outer's
                try
                {
                    outer.run();
                }
                catch (const std::out_of_range&)
                {
                    thrown = true;
                    EXPECT_EQ(inner.name, "removed") << where;
                }
                curve->onCall = nullptr;
                if (thrown)
                {
                    view->update();
                }
                expectInStep(where);
            });
    }
    EXPECT_GT(nested, 1000);
}

TEST_F(CurveViewReentrancyTest, TheViewMayEndFromWithinAnyCallOfTheModel)
{
    int ended = 0;
    forEveryCall(
        [&](const Act& act, const std::string& operation, std::size_t nth)
        {
            // The model lives on, as its call is running: the view gives it up by moving.
            std::unique_ptr<CurveView> keeper;
            actWithin(*curve, operation, nth,
                      [&]
                      {
                          keeper = std::make_unique<CurveView>(std::move(*view));
                          view.reset();
                          ++ended;
                      });
            act.run();
            if (keeper)
            {
                keeper->setCurve(nullptr);
            }
            view.reset();
            EXPECT_EQ(space.itemCount(), 0U) << operation << ' ' << nth << " of " << act.name;
        });
    EXPECT_GT(ended, 150);
}

TEST_F(CurveViewReentrancyTest, TheModelMayBeReplacedFromWithinAnyOfItsCalls)
{
    int replaced = 0;
    forEveryCall(
        [&](const Act& act, const std::string& operation, std::size_t nth)
        {
            std::unique_ptr<CurveView> keeper; // of the old model, whose call is running
            actWithin(*curve, operation, nth,
                      [&]
                      {
                          keeper = std::make_unique<CurveView>(std::move(*view));
                          auto next = std::make_unique<RecordingCurve>(3);
                          curve = next.get();
                          view->setCurve(std::move(next));
                          ++replaced;
                      });
            act.run();
            if (keeper)
            {
                keeper.reset();
                EXPECT_EQ(curve->m_view, view.get());
                expectPointsInStep(operation + ' ' + std::to_string(nth) + " of " + act.name);
            }
        });
    EXPECT_GT(replaced, 150);
}

TEST_F(CurveViewReentrancyTest, AModelThatRemovesWheneverItIsAskedKeepsTheViewFromNothing)
{
    for (const bool removes : {true, false}) // or says so alone
    {
        show(5);
        curve->onCall = [&](const std::string& operation)
        {
            if (operation == "pointObject" && (!removes || curve->keys.size() > 1))
            {
                if (removes)
                {
                    curve->keys.pop_back();
                }
                curve->pointRemoved(curve->keys.size(), 1);
            }
        };
        {
            const CollectReports collect;
            view->update();
            EXPECT_EQ(collect.texts().empty(), removes);
        }
        EXPECT_EQ(view->getControlPoints().size(), removes ? 1U : 0U);
        curve->onCall = nullptr;
        view->update();
        expectInStep("settled");
    }
}

TEST_F(CurveViewReentrancyTest, TheModelMayBeReplacedFromWithinItsOwnSignal)
{
    show(3);
    bool gone = false;
    curve->onDestroyed = [&gone] { gone = true; };
    const auto replace = curve->changed.connect(
        [this]
        {
            auto next = std::make_unique<RecordingCurve>(2);
            curve = next.get();
            view->setCurve(std::move(next));
        });
    curve->changed();
    EXPECT_TRUE(gone);
    expectInStep("replaced");
}

TEST_F(CurveViewReentrancyTest, TheViewMayEndFromWithinAHandlerOfTheSignal)
{
    show(3);
    const auto end = curve->pointUpdated.connect([this](std::size_t, std::size_t) { view.reset(); });
    curve->pointUpdated(0, 1);
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewReentrancyTest, AnOldModelMaySetYetAnotherOneAsItGoes)
{
    show(3);
    curve->onDestroyed = [this]
    {
        auto other = std::make_unique<RecordingCurve>(4);
        curve = other.get();
        view->setCurve(std::move(other));
    };
    view->setCurve(std::make_unique<RecordingCurve>(1));
    EXPECT_EQ(view->getCurve(), curve);
    EXPECT_EQ(curve->changed.slotCount(), 1U);
    expectInStep("set from within");

    curve->onDestroyed = [this] { view.reset(); };
    view->setCurve(std::make_unique<RecordingCurve>(1));
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewReentrancyTest, TheViewMayEndFromWithinItsDrawer)
{
    for (int operation = 0; operation < 3; ++operation)
    {
        show(3);
        log.onCall = [this]
        {
            log.onCall = nullptr;
            view.reset();
        };
        Kodo::DebugDrawer::Context context;
        if (operation == 0)
        {
            view->render(context);
        }
        else if (operation == 1)
        {
            view->setCurveColor(Kodo::Render::Colour32Bit(1));
        }
        else
        {
            view->setCurveColorDown(Kodo::Render::Colour32Bit(1));
        }
        EXPECT_EQ(view, nullptr);
        EXPECT_EQ(space.itemCount(), 0U);
        EXPECT_TRUE(context.commands().empty());
    }
}

TEST_F(CurveViewReentrancyTest, ADrawerMayHaveTheViewRebuilt)
{
    show(3);
    log.onCall = [this]
    {
        log.onCall = nullptr;
        curve->keys.push_back(RecordingCurve::key(3));
        curve->changed();
    };
    Kodo::DebugDrawer::Context context;
    view->render(context);
    EXPECT_EQ(context.spheres().size(), 8U);
}

TEST_F(CurveViewReentrancyTest, TheViewMayEndFromWithinAListenerToChanges)
{
    for (const bool before : {true, false})
    {
        show(4);
        int heard = 0;
        const auto end = [&](const tern::ReflectedObject&, const std::vector<std::string>&)
        {
            ++heard;
            view.reset();
        };
        const auto connection = before ? tern::PropertyChangeNotifier::connectChanging(end)
                                       : tern::PropertyChangeNotifier::connectChanged(end);
        curve->pointUpdated(0, 4);
        EXPECT_EQ(heard, 1);
        EXPECT_EQ(space.itemCount(), 0U);
    }
}

TEST_F(CurveViewReentrancyTest, AListenerToChangesMayHavePointsRemoved)
{
    show(4);
    const auto connection = tern::PropertyChangeNotifier::connectChanging(
        [this](const tern::ReflectedObject&, const std::vector<std::string>&)
        {
            if (curve->keys.size() > 1)
            {
                curve->removePoint(curve->keys.size() - 1);
            }
        });
    curve->pointUpdated(0, 4);
    expectInStep("removed by a listener");
}

TEST_F(CurveViewReentrancyTest, TheViewMayEndFromWithinTheRemovalOfAPoint)
{
    show(3);
    const auto end = curve->pointRemoved.connect([this](std::size_t, std::size_t) { view.reset(); });
    const auto point = view->getControlPoints()[1];
    point->customDelete();
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewReentrancyTest, APointMayGoFromWithinItsOwnDeletion)
{
    show(2);
    CurveViewControlPoint* const point = view->getControlPoints()[0].get();
    point->customDelete(); // the view held it last
    expectInStep("deleted");
}

TEST_F(CurveViewReentrancyTest, TheViewMayEndFromWithinAnInsertion)
{
    show(3);
    auto& cache = CurveViewSpaceCache::instance(space.chunkSpace());
    actWithin(*curve, "insertPoint", 1, [this] { view.reset(); });
    cache.collide({{0, 100, 0}, {0, 1, 0}}, true);
    EXPECT_EQ(view, nullptr);
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewReentrancyTest, TheViewMayEndFromWithinWhatItsPointsReport)
{
    // Without a collision scene points report when they are made, moved, drawn and destroyed.
    using Operation = std::function<void(CurveView&)>;
    Kodo::DebugDrawer::Context context;
    const std::vector<Operation> operations = {[](CurveView& v) { v.update(); },
                                               [](CurveView& v) { v.updatePoint(0, 3); },
                                               [](CurveView& v) { v.updatePointAdded(1, 1); },
                                               [](CurveView& v) { v.updatePointRemoved(0, 2); },
                                               [&](CurveView& v) { v.render(context); },
                                               [](CurveView& v) { v.setCurve(nullptr); },
                                               [](CurveView& v)
                                               {
                                                   CurveViewSpaceCache::instance(
                                                       *Kodo::ChunkManager::instance().space(4711, true))
                                                       .collide({{0, 0, 0}, {0, 1, 0}}, false);
                                                   static_cast<void>(v);
                                               }};
    const CollectReports collect;
    for (std::size_t i = 0; i < operations.size(); ++i)
    {
        for (int nth = 1; nth <= 8; ++nth)
        {
            Kodo::CollisionSceneManager::instance().createScene(space.id);
            show(3);
            Kodo::CollisionSceneManager::instance().removeScene(space.id);
            int left = nth;
            const Kodo::DebugMessageSink sink(
                [&](const Kodo::DebugMessage&)
                {
                    if (--left == 0)
                    {
                        view.reset();
                    }
                });
            operations[i](*view);
            left = 0;
            view.reset();
            EXPECT_EQ(space.itemCount(), 0U) << i << ' ' << nth;
        }
    }
    Kodo::CollisionSceneManager::instance().createScene(space.id);
}

} // namespace
