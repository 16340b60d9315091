#include "tests/support/curve_view_fixture.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace
{

using Kodo::Matrix;
using Kodo::Vector3;

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

// The loop of the steps, written plainly, for those that end.
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

} // namespace
