#include "tern_common/curve_view/curve_view.hpp"

#include "kodo/core/stack_tracker.hpp"
#include "tests/support/curve_view_fixture.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Kodo::Matrix;
using Kodo::Vector3;
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
