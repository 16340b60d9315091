#include "tern_common/curve_view/curve_view.hpp"

#include "kodo/core/stack_tracker.hpp"
#include "tests/support/curve_view_fixture.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Kodo::Matrix;
using Kodo::Render::Colour32Bit;

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

TEST_F(CurveViewProfileTest, ScopesSayWhereTheyStand)
{
    show(1);
    Kodo::StackTracker::startRecording();
    view->update();
    for (const auto& scope : Kodo::StackTracker::stopRecording())
    {
        EXPECT_NE(scope.file.find("curve_view/curve_view"), std::string::npos) << scope.file;
        EXPECT_GT(scope.line, 0) << scope.name;
    }
}

TEST_F(CurveViewProfileTest, AnExceptionClosesTheScopes)
{
    using Act = std::function<void()>;
    const auto fail = [] { throw std::runtime_error("no"); };
    Kodo::Matrix origin;
    const std::vector<Act> acts = {[&] { view->update(); },
                                   [&] { curve->changed(); },
                                   [&] { curve->pointUpdated(0, 2); },
                                   [&] { curve->pointAdded(0, 1); },
                                   [&] { curve->pointMoved(0, 1); },
                                   [&] { curve->pointRemoved(0, 1); },
                                   [&]
                                   {
                                       origin.m[3][1] += 1;
                                       view->setOrigin(origin);
                                   },
                                   [&] { points().at(0)->customDelete(); }};
    std::size_t thrown = 0;
    for (const Act& act : acts)
    {
        for (const char* const operation : {"isValid", "pointCount", "pointParameter", "segmentResolution",
                                            "positionAt", "pointPosition", "pointObject", "removePoint"})
        {
            show(3);
            actWithin(*curve, operation, 1, fail);
            scopesOf(
                [&]
                {
                    try
                    {
                        act();
                    }
                    catch (const std::runtime_error&)
                    {
                        ++thrown;
                    }
                });
        }
    }
    EXPECT_GT(thrown, 40U);

    show(3);
    log.onCall = fail;
    EXPECT_EQ(scopesOf([&] { EXPECT_THROW(view->render(context), std::runtime_error); }), Names{"render"});
    log.onCall = nullptr;
    auto throwing = std::make_unique<RecordingCurve>(3);
    actWithin(*throwing, "pointObject", 2, fail);
    EXPECT_EQ(scopesOf([&] { EXPECT_THROW(view->setCurve(std::move(throwing)), std::runtime_error); }),
              (Names{"setCurve", "update", "destroyControlPoints", "createControlPoints"}));
}

} // namespace
