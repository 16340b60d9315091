#pragma once

#include "editor/curve/curve_data.hpp"

#include <array>
#include <cstddef>

/// The shape of a curve: free functions over plain data. Any thread.
///
/// Segment i goes from point i to point i + 1; a closed curve with two points or more has one segment more,
/// from the last point to the first. The parameter runs from 0 to the number of segments, and 1 is a segment:
/// whole numbers are the points, whatever their distance. So segments never get short in the parameter, and
/// the floats of a view tell places apart along a hundred thousand points.
///
/// Every segment is a cubic of Bernstein form, (1-u)^3 a + 3(1-u)^2 u b + 3(1-u) u^2 c + u^3 d with u from 0
/// to 1 between the points a and d:
///
/// - linear: b and c on the chord, at a third and at two thirds;
/// - Bezier: b = a + a's outward handle, c = d + d's inward handle;
/// - Catmull-Rom, the centripetal form: neighbours p, a, d, q with knot distances k = sqrt(distance), after
///   P. J. Barry and R. N. Goldman, "A recursive evaluation algorithm for a class of Catmull-Rom splines"
///   (1988), written as derivatives. With kp, k, kq the distances p-a, a-d, d-q, the derivative at a by the
///   knots is (a-p)/kp - (d-p)/(kp+k) + (d-a)/k, at d (d-a)/k - (q-a)/(k+kq) + (q-d)/kq, and
///   b = a + k/3 times the one, c = d - k/3 times the other. The square root keeps it from looping or
///   kinking between points of uneven distance, as the uniform form does. At an end of an open curve, and
///   where two points coincide, the missing neighbour leaves the direction of the chord.
namespace CurveGeometry
{

/// The four control points of a segment.
using Cubic = std::array<Position, 4>;

std::size_t segmentCount(const Curve& curve) noexcept;
/// The cubic of segment @p segment, which must exist. A Bezier curve's missing handles count as zero.
Cubic segmentCubic(const Curve& curve, std::size_t segment) noexcept;

/// The place on a cubic; its first and last control point exactly at 0 and 1.
Position evaluate(const Cubic& cubic, double u) noexcept;
/// The two parts of a cubic before and behind @p u, by de Casteljau's construction: together they are the
/// same curve.
std::array<Cubic, 2> split(const Cubic& cubic, double u) noexcept;

/// The place at a parameter; at one outside the range, or not a number, the nearer end. Zero for a curve
/// without points.
Position positionAt(const Curve& curve, double parameter) noexcept;

/// Which segment a parameter lies on, and where: u from 0 to 1.
struct Place
{
    std::size_t segment = 0;
    double u = 0;
};
/// A parameter that is a point's lies at the start of the segment behind it. The curve must have a segment.
Place placeAt(const Curve& curve, double parameter) noexcept;

/// Where a new point with this parameter stands in the order of points: behind every point whose parameter
/// is not greater. On a closed curve never in front of the first.
std::size_t insertionIndex(const Curve& curve, double parameter) noexcept;
/// Adds a point where the curve is at @p parameter and yields its index. A linear and a Bezier curve keep
/// their shape (to the rounding of doubles): a Bezier segment is split, and where a point comes to stand on
/// an end, the end's free handle goes over to it. A Catmull-Rom curve keeps its shape but for the two
/// segments to either side of the point.
std::size_t insertPoint(Curve& curve, double parameter);

/// The steps in which to sample a segment: a power of two from 8 to 64, the least with steps of at most a
/// metre by the length of the cubic's control polygon. A power of two divides the parameter without rounding.
std::size_t samplingSteps(const Curve& curve, std::size_t segment) noexcept;

/// The nearest place on the curve.
struct Projection
{
    double parameter = 0;
    double distance = 0; ///< metres; infinite for a curve without points
};
/// Where the curve comes nearest to @p position: the best of the samples of each segment, then refined
/// between its neighbours. Of places equally near, the first.
Projection project(const Curve& curve, const Position& position) noexcept;

/// Handles with which a Bezier curve has the shape that @p curve has now, one a point.
std::vector<CurveHandles> handlesOf(const Curve& curve);

/// The length of the curve in metres, along @p stepsPerSegment chords a segment.
double length(const Curve& curve, std::size_t stepsPerSegment) noexcept;

} // namespace CurveGeometry
