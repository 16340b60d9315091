#include "editor/curve/curve_geometry.hpp"

#include "tests/editor/curve/any_curve.hpp"
#include "tests/support/property.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

using CurveGeometry::Cubic;

namespace
{

constexpr double NEARLY = 1e-9;

Position mix(const Position& a, double weightA, const Position& b, double weightB)
{
    return {a[0] * weightA + b[0] * weightB, a[1] * weightA + b[1] * weightB,
            a[2] * weightA + b[2] * weightB};
}

double distance(const Position& a, const Position& b)
{
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

bool isNear(const Position& a, const Position& b, double tolerance = NEARLY)
{
    return distance(a, b) <= tolerance * (1 + std::hypot(a[0], a[1], a[2]));
}

/// The point before or behind a segment; beyond an open end the mirror image of the segment's other point.
Position neighbourOf(const Curve& curve, std::size_t segment, bool before)
{
    const std::size_t count = curve.points.size();
    const Position& a = curve.points[segment];
    const Position& d = curve.points[(segment + 1) % count];
    if (before)
    {
        return segment > 0    ? curve.points[segment - 1]
               : curve.closed ? curve.points[count - 1]
                              : mix(a, 2, d, -1);
    }
    return curve.closed || segment + 2 < count ? curve.points[(segment + 2) % count] : mix(d, 2, a, -1);
}

/// The recursive evaluation over the knots, no derivative anywhere. All four points must differ from the
/// next.
Position catmullRomByPyramid(const Curve& curve, std::size_t segment, double u)
{
    const Position p[] = {neighbourOf(curve, segment, true), curve.points[segment],
                          curve.points[(segment + 1) % curve.points.size()],
                          neighbourOf(curve, segment, false)};
    double knot[4] = {};
    for (int i = 1; i < 4; ++i)
    {
        knot[i] = knot[i - 1] + std::sqrt(distance(p[i - 1], p[i]));
    }
    const double t = knot[1] + (knot[2] - knot[1]) * u;
    const auto between = [&](const Position& a, int i, const Position& b, int j)
    { return mix(a, (knot[j] - t) / (knot[j] - knot[i]), b, (t - knot[i]) / (knot[j] - knot[i])); };
    const Position a1 = between(p[0], 0, p[1], 1);
    const Position a2 = between(p[1], 1, p[2], 2);
    const Position a3 = between(p[2], 2, p[3], 3);
    return between(between(a1, 0, a2, 2), 1, between(a2, 1, a3, 3), 2);
}

Position bezierByPolynomial(const Curve& curve, std::size_t segment, double u)
{
    const std::size_t end = (segment + 1) % curve.points.size();
    const Position b = mix(curve.points[segment], 1, curve.handles[segment].out, 1);
    const Position c = mix(curve.points[end], 1, curve.handles[end].in, 1);
    const double v = 1 - u;
    return mix(mix(curve.points[segment], v * v * v, b, 3 * v * v * u), 1,
               mix(c, 3 * v * u * u, curve.points[end], u * u * u), 1);
}

double end(const Curve& curve)
{
    return static_cast<double>(CurveGeometry::segmentCount(curve));
}

RC_GTEST_PROP(CurveGeometryTest, ALinearCurveIsStraightFromPointToPoint, ())
{
    const Curve curve = anyCurve(CurveKind::Linear, 2);
    const double t = anyParameter(end(curve));
    const auto segment = std::min(static_cast<std::size_t>(t), CurveGeometry::segmentCount(curve) - 1);
    const double u = t - static_cast<double>(segment);
    const Position& next = curve.points[(segment + 1) % curve.points.size()];
    RC_ASSERT(isNear(CurveGeometry::positionAt(curve, t), mix(curve.points[segment], 1 - u, next, u)));
    RC_ASSERT(isNear(CurveGeometry::evaluate(CurveGeometry::segmentCubic(curve, segment), u),
                     CurveGeometry::positionAt(curve, t)));
}

RC_GTEST_PROP(CurveGeometryTest, ABezierCurveIsTheBernsteinPolynomialOfItsHandles, ())
{
    const Curve curve = anyCurve(CurveKind::Bezier, 2);
    const double t = anyParameter(end(curve));
    const auto segment = std::min(static_cast<std::size_t>(t), CurveGeometry::segmentCount(curve) - 1);
    RC_ASSERT(isNear(CurveGeometry::positionAt(curve, t),
                     bezierByPolynomial(curve, segment, t - static_cast<double>(segment))));
}

RC_GTEST_PROP(CurveGeometryTest, ACatmullRomCurveIsTheCentripetalPyramid, ())
{
    const Curve curve = anyCurve(CurveKind::CatmullRom, 2);
    for (std::size_t i = 0; i < curve.points.size(); ++i)
    {
        RC_PRE(curve.points[i] != curve.points[(i + 1) % curve.points.size()]);
    }
    const double t = anyParameter(end(curve));
    const auto segment = std::min(static_cast<std::size_t>(t), CurveGeometry::segmentCount(curve) - 1);
    RC_ASSERT(isNear(CurveGeometry::positionAt(curve, t),
                     catmullRomByPyramid(curve, segment, t - static_cast<double>(segment))));
}

RC_GTEST_PROP(CurveGeometryTest, ACurveGoesThroughItsPointsExactlyAlsoWhereTheyCoincide, ())
{
    Curve curve = anyCurve(anyKind(), 1);
    const auto copied = *rc::gen::inRange<std::size_t>(0, curve.points.size());
    curve.points.push_back(curve.points[copied]);
    curve.points.push_back(curve.points[copied]);
    for (std::size_t i = 0; i < curve.points.size(); ++i)
    {
        RC_ASSERT(CurveGeometry::positionAt(curve, static_cast<double>(i)) == curve.points[i]);
    }
    RC_ASSERT(CurveGeometry::positionAt(curve, end(curve)) ==
              (curve.closed ? curve.points.front() : curve.points.back()));
    RC_ASSERT(isFinite(CurveGeometry::positionAt(curve, anyParameter(end(curve)))));
}

RC_GTEST_PROP(CurveGeometryTest, ACatmullRomCurveHasNoCornerWhereItsPointsDiffer, ())
{
    Curve curve = anyCurve(CurveKind::CatmullRom, 3);
    curve.closed = true;
    for (std::size_t i = 0; i < curve.points.size(); ++i)
    {
        RC_PRE(curve.points[i] != curve.points[(i + 1) % curve.points.size()]);
    }
    for (const CurveHandles& handles : CurveGeometry::handlesOf(curve))
    {
        const double in = distance(handles.in, {});
        const double out = distance(handles.out, {});
        // On one line, to either side of the point.
        RC_ASSERT(isNear(mix(handles.in, out, handles.out, in), {}, 1e-9 * (1 + in * out)));
    }
}

TEST(CurveGeometryTest, EvenlySpacedPointsGiveAHandComputedCurve)
{
    // With even knots the derivative at a point is half the way from neighbour to neighbour.
    const Curve curve{"a", false, {{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}}, CurveKind::CatmullRom};
    const Cubic cubic = CurveGeometry::segmentCubic(curve, 1);
    EXPECT_TRUE(isNear(cubic[1], {1 + 0.5 / 3, 0, 0.5 / 3}));
    EXPECT_TRUE(isNear(cubic[2], {1 + 0.5 / 3, 0, 1 - 0.5 / 3}));
    EXPECT_TRUE(isNear(CurveGeometry::positionAt(curve, 1.5), {1.125, 0, 0.5}));
}

TEST(CurveGeometryTest, TwoPointsAreAStraightLineOfEvenPaceInEveryKind)
{
    for (const CurveKind kind : {CurveKind::Linear, CurveKind::CatmullRom})
    {
        const Curve curve{"a", false, {{0, 0, 0}, {8, 4, -2}}, kind};
        EXPECT_TRUE(isNear(CurveGeometry::positionAt(curve, 0.25), {2, 1, -0.5}));
    }
}

TEST(CurveGeometryTest, AParameterOutsideTheRangeIsTheNearerEnd)
{
    Curve curve{"a", false, {{1, 0, 0}, {2, 0, 0}, {3, 0, 5}}};
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    for (const double below : {-0.1, -INFINITE, std::numeric_limits<double>::quiet_NaN()})
    {
        EXPECT_EQ(CurveGeometry::positionAt(curve, below), (Position{1, 0, 0}));
    }
    EXPECT_EQ(CurveGeometry::positionAt(curve, 2.5), (Position{3, 0, 5}));
    EXPECT_EQ(CurveGeometry::positionAt(curve, INFINITE), (Position{3, 0, 5}));
    curve.closed = true;
    EXPECT_EQ(CurveGeometry::positionAt(curve, 2.5), (Position{2, 0, 2.5}));
    EXPECT_EQ(CurveGeometry::positionAt(curve, INFINITE), (Position{1, 0, 0}));
}

TEST(CurveGeometryTest, FewerThanTwoPointsHaveNoSegment)
{
    Curve curve{"a", true, {}};
    EXPECT_EQ(CurveGeometry::segmentCount(curve), 0U);
    EXPECT_EQ(CurveGeometry::positionAt(curve, 3), Position{});
    EXPECT_EQ(CurveGeometry::project(curve, {}).distance, std::numeric_limits<double>::infinity());
    curve.points = {{1, 2, 3}};
    EXPECT_EQ(CurveGeometry::segmentCount(curve), 0U);
    EXPECT_EQ(CurveGeometry::positionAt(curve, 3), (Position{1, 2, 3}));
    EXPECT_EQ(CurveGeometry::project(curve, {1, 2, 7}).distance, 4);
    curve.points.push_back({0, 0, 0});
    EXPECT_EQ(CurveGeometry::segmentCount(curve), 2U);
    curve.closed = false;
    EXPECT_EQ(CurveGeometry::segmentCount(curve), 1U);
}

RC_GTEST_PROP(CurveGeometryTest, TheTwoPartsOfASplitCubicAreTheCubic, ())
{
    const Curve curve = anyCurve(CurveKind::Bezier, 2);
    const Cubic cubic = CurveGeometry::segmentCubic(curve, 0);
    const double at = anyParameter(1);
    const double u = anyParameter(1);
    const auto [before, behind] = CurveGeometry::split(cubic, at);
    RC_ASSERT(isNear(CurveGeometry::evaluate(before, u), CurveGeometry::evaluate(cubic, at * u)));
    RC_ASSERT(isNear(CurveGeometry::evaluate(behind, u), CurveGeometry::evaluate(cubic, at + (1 - at) * u)));
    RC_ASSERT(before[3] == behind[0] && before[3] == CurveGeometry::evaluate(cubic, at));
}

/// Where a parameter goes when a point is inserted at another.
double parameterAfterInsertion(double t, double inserted, double segments)
{
    const double segment = std::min(std::floor(inserted), segments - 1);
    const double at = inserted - segment;
    const double u = t - segment;
    if (u <= 0 || u >= 1)
    {
        return u <= 0 ? t : t + 1;
    }
    return u <= at ? segment + u / at : segment + 1 + (u - at) / (1 - at);
}

RC_GTEST_PROP(CurveGeometryTest, InsertionKeepsTheShapeOfLinearAndBezierCurves, ())
{
    const CurveKind kind = *rc::gen::element(CurveKind::Linear, CurveKind::Bezier);
    const Curve before = anyCurve(kind, 2);
    const double segments = end(before);
    const double inserted = anyParameter(segments);
    Curve curve = before;
    const std::size_t index = CurveGeometry::insertPoint(curve, inserted);
    RC_ASSERT(curve.points.size() == before.points.size() + 1);
    RC_ASSERT(isNear(curve.points[index], CurveGeometry::positionAt(before, inserted)));
    for (int i = 0; i <= 64; ++i)
    {
        const double t = i / 64.0 * segments;
        const double then = parameterAfterInsertion(t, inserted, segments);
        RC_ASSERT(isNear(CurveGeometry::positionAt(curve, then), CurveGeometry::positionAt(before, t)));
    }
}

RC_GTEST_PROP(CurveGeometryTest, APointOnAnEndOrBeyondItAddsNoLength, ())
{
    Curve curve = anyCurve(anyKind(), 2);
    const double before = CurveGeometry::length(curve, 64);
    if (curve.kind != CurveKind::CatmullRom)
    {
        CurveGeometry::insertPoint(curve, *rc::gen::element(-1.0, 0.0, end(curve), end(curve) + 3));
        RC_ASSERT(std::abs(CurveGeometry::length(curve, 64) - before) <= 1e-9 * (1 + before));
    }
}

RC_GTEST_PROP(CurveGeometryTest, InsertionIntoACatmullRomCurveIsLocalAndOnTheCurve, ())
{
    Curve before = anyCurve(CurveKind::CatmullRom, 6);
    before.closed = false;
    const double inserted = anyParameter(end(before));
    Curve curve = before;
    const std::size_t index = CurveGeometry::insertPoint(curve, inserted);
    RC_ASSERT(curve.points[index] == CurveGeometry::positionAt(before, inserted));
    for (int i = 0; i <= 64; ++i)
    {
        const double t = i / 64.0 * end(before);
        const double then = t + (t >= static_cast<double>(index) ? 1 : 0);
        if (then + 2 < static_cast<double>(index) || then > static_cast<double>(index) + 2)
        {
            RC_ASSERT(CurveGeometry::positionAt(curve, then) == CurveGeometry::positionAt(before, t));
        }
    }
}

RC_GTEST_PROP(CurveGeometryTest, AnOpenCurveTakesAPointBehindAllThatHaveNoGreaterParameter, ())
{
    Curve curve = anyCurve(anyKind(), 0);
    curve.closed = false;
    const double parameter = *rc::gen::inRange(-8, 64) / 4.0;
    std::size_t index = 0;
    while (index < curve.points.size() && static_cast<double>(index) <= parameter)
    {
        ++index;
    }
    RC_ASSERT(CurveGeometry::insertionIndex(curve, parameter) == index);
    RC_ASSERT(CurveGeometry::insertPoint(curve, parameter) == index);
}

TEST(CurveGeometryTest, AClosedCurveTakesAPointBetweenTheLastAndTheFirst)
{
    Curve curve{"a", true, {{0, 0, 0}, {4, 0, 0}, {4, 0, 4}}};
    EXPECT_EQ(CurveGeometry::insertPoint(curve, 2.5), 3U);
    EXPECT_EQ(curve.points.back(), (Position{2, 0, 2}));
    EXPECT_EQ(CurveGeometry::insertionIndex(curve, -1), 1U);
    EXPECT_EQ(CurveGeometry::insertionIndex(curve, 100), 4U);
}

RC_GTEST_PROP(CurveGeometryTest, AViewThatAddsStepsMeetsEachSegmentsEndExactly, ())
{
    const Curve curve = anyCurve(anyKind(), 2);
    const std::size_t steps = CurveGeometry::samplingSteps(curve, 0);
    RC_ASSERT(steps >= 8 && steps <= 64 && (steps & (steps - 1)) == 0);
    const float step = 1.0F / static_cast<float>(steps);
    const auto start = static_cast<float>(*rc::gen::inRange(0, 1 << 17));
    std::size_t samples = 0;
    float t = 0;
    for (; t < 1.0F; t += step)
    {
        RC_ASSERT(static_cast<double>(start + t) == static_cast<double>(start) + static_cast<double>(t));
        ++samples;
    }
    RC_ASSERT(samples == steps && t == 1.0F);
}

TEST(CurveGeometryTest, StepsAreAtMostAMetreWhereThatTakesAtMost64)
{
    Curve curve{"a", false, {{0, 0, 0}, {8, 0, 0}, {17, 0, 0}, {117, 0, 0}}};
    EXPECT_EQ(CurveGeometry::samplingSteps(curve, 0), 8U);
    EXPECT_EQ(CurveGeometry::samplingSteps(curve, 1), 16U);
    EXPECT_EQ(CurveGeometry::samplingSteps(curve, 2), 64U);
}

RC_GTEST_PROP(CurveGeometryTest, NoSampleIsNearerThanTheProjection, ())
{
    const Curve curve = anyCurve(anyKind(), 1);
    const Position position = anyPosition();
    const CurveGeometry::Projection nearest = CurveGeometry::project(curve, position);
    RC_ASSERT(std::abs(distance(CurveGeometry::positionAt(curve, nearest.parameter), position) -
                       nearest.distance) < 1e-9);
    for (std::size_t segment = 0; segment < CurveGeometry::segmentCount(curve); ++segment)
    {
        const std::size_t steps = CurveGeometry::samplingSteps(curve, segment);
        for (std::size_t i = 0; i <= steps; ++i)
        {
            const double t =
                static_cast<double>(segment) + static_cast<double>(i) / static_cast<double>(steps);
            RC_ASSERT(nearest.distance <= distance(CurveGeometry::positionAt(curve, t), position) + 1e-9);
        }
    }
}

RC_GTEST_PROP(CurveGeometryTest, TheProjectionOnALinearCurveIsTheNearestFootOrPoint, ())
{
    const Curve curve = anyCurve(CurveKind::Linear, 2);
    const Position position = anyPosition();
    double nearest = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < CurveGeometry::segmentCount(curve); ++i)
    {
        const Position& a = curve.points[i];
        const Position d = mix(curve.points[(i + 1) % curve.points.size()], 1, a, -1);
        const Position p = mix(position, 1, a, -1);
        const double square = d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
        const double foot = square == 0 ? 0 : (p[0] * d[0] + p[1] * d[1] + p[2] * d[2]) / square;
        nearest = std::min(nearest, distance(position, mix(a, 1, d, std::clamp(foot, 0.0, 1.0))));
    }
    RC_ASSERT(std::abs(CurveGeometry::project(curve, position).distance - nearest) < 1e-6);
}

RC_GTEST_PROP(CurveGeometryTest, ABezierCurveCanTakeOverTheShapeOfAnyOther, ())
{
    const Curve curve = anyCurve(anyKind(), 2);
    Curve bezier = curve;
    bezier.kind = CurveKind::Bezier;
    bezier.handles = CurveGeometry::handlesOf(curve);
    const double t = anyParameter(end(curve));
    RC_ASSERT(isNear(CurveGeometry::positionAt(bezier, t), CurveGeometry::positionAt(curve, t)));
}

TEST(CurveGeometryTest, TheLengthOfALinearCurveIsThatOfItsChords)
{
    Curve curve{"a", false, {{0, 0, 0}, {3, 0, 4}, {3, 12, 4}}};
    EXPECT_NEAR(CurveGeometry::length(curve, 5), 17, 1e-12);
    curve.closed = true;
    EXPECT_NEAR(CurveGeometry::length(curve, 5), 30, 1e-12);
}

TEST(CurveGeometryTest, CoordinatesBeyondAllMeasureDoNoHarm)
{
    for (const CurveKind kind : {CurveKind::Linear, CurveKind::CatmullRom, CurveKind::Bezier})
    {
        const Curve curve{"a", true, {{1e308, -1e308, 0}, {-1e308, 1e308, 1}, {0, 0, 0}}, kind};
        EXPECT_EQ(CurveGeometry::positionAt(curve, 2), (Position{0, 0, 0}));
        EXPECT_EQ(CurveGeometry::samplingSteps(curve, 0), 64U);
        static_cast<void>(CurveGeometry::project(curve, {1, 2, 3}));
    }
}

} // namespace
