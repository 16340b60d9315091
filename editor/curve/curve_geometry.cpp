#include "editor/curve/curve_geometry.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace CurveGeometry
{

namespace
{

Position add(const Position& a, const Position& b) noexcept
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

Position subtract(const Position& a, const Position& b) noexcept
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

Position scale(const Position& a, double factor) noexcept
{
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

/// Exact at both ends, whatever the other one is, and wherever a and b agree.
Position interpolate(const Position& a, const Position& b, double u) noexcept
{
    Position result{};
    for (std::size_t i = 0; i < result.size(); ++i)
    {
        result[i] = u == 0 ? a[i] : u == 1 || a[i] == b[i] ? b[i] : a[i] + (b[i] - a[i]) * u;
    }
    return result;
}

double distance(const Position& a, const Position& b) noexcept
{
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

/// A point of the neighbourhood of a segment; the one beyond an open end is missing.
struct Neighbour
{
    Position position{};
    bool exists = false;
};

Neighbour neighbour(const Curve& curve, std::size_t segment, int offset) noexcept
{
    const auto count = static_cast<std::ptrdiff_t>(curve.points.size());
    std::ptrdiff_t index = static_cast<std::ptrdiff_t>(segment) + offset;
    if (curve.closed)
    {
        index = (index % count + count) % count;
    }
    if (index < 0 || index >= count)
    {
        return {};
    }
    return {curve.points[static_cast<std::size_t>(index)], true};
}

/// The way from @p at to its handle on the side of @p next: a third of the derivative at @p at, by the knots,
/// times the distance of the knots.
Position catmullRomHandle(const Neighbour& previous, const Position& at, const Position& next) noexcept
{
    const Position chord = subtract(next, at);
    const double knots = std::sqrt(distance(at, next));
    const double knotsBefore = previous.exists ? std::sqrt(distance(previous.position, at)) : 0.0;
    if (knots == 0 || knotsBefore == 0)
    {
        return scale(chord, 1.0 / 3);
    }
    const Position back = scale(subtract(at, previous.position), knots / knotsBefore);
    const Position across = scale(subtract(next, previous.position), knots / (knotsBefore + knots));
    return scale(add(subtract(back, across), chord), 1.0 / 3);
}

CurveHandles handlesAt(const Curve& curve, std::size_t point) noexcept
{
    return point < curve.handles.size() ? curve.handles[point] : CurveHandles{};
}

/// Adjusts the handles of a Bezier curve's points for a new one at @p index and yields the new one's, so that
/// the shape stays.
CurveHandles shareHandles(Curve& curve, std::size_t index, double parameter) noexcept
{
    if (curve.points.empty())
    {
        return {};
    }
    if (index == 0) // in front of an open curve, or of a single point
    {
        return {std::exchange(curve.handles.front().in, {}), {}};
    }
    if (index > segmentCount(curve)) // behind it
    {
        return {{}, std::exchange(curve.handles.back().out, {})};
    }
    const Place place = placeAt(curve, parameter);
    const std::size_t end = (place.segment + 1) % curve.points.size();
    const auto [before, behind] = split(segmentCubic(curve, place.segment), place.u);
    curve.handles[place.segment].out = subtract(before[1], before[0]);
    curve.handles[end].in = subtract(behind[2], behind[3]);
    return {subtract(before[2], before[3]), subtract(behind[1], behind[0])};
}

/// The nearest place on one segment.
Projection projectOnSegment(const Cubic& cubic, std::size_t steps, const Position& position) noexcept
{
    const auto distanceAt = [&](double u) { return distance(evaluate(cubic, u), position); };
    const double step = 1.0 / static_cast<double>(steps);
    Projection nearest{0, distanceAt(0)};
    for (std::size_t i = 1; i <= steps; ++i)
    {
        const double u = static_cast<double>(i) * step;
        if (const double there = distanceAt(u); there < nearest.distance)
        {
            nearest = {u, there};
        }
    }
    // Around the best sample the distance falls and rises again: close in on the place by thirds.
    double low = std::max(nearest.parameter - step, 0.0);
    double high = std::min(nearest.parameter + step, 1.0);
    for (int round = 0; round < 60; ++round)
    {
        const double third = (high - low) / 3;
        if (distanceAt(low + third) <= distanceAt(high - third))
        {
            high -= third;
        }
        else
        {
            low += third;
        }
    }
    const double refined = low + (high - low) / 2;
    const double there = distanceAt(refined);
    return there < nearest.distance ? Projection{refined, there} : nearest;
}

} // namespace

std::size_t segmentCount(const Curve& curve) noexcept
{
    const std::size_t points = curve.points.size();
    return points < 2 ? 0 : points - (curve.closed ? 0 : 1);
}

Cubic segmentCubic(const Curve& curve, std::size_t segment) noexcept
{
    const std::size_t end = (segment + 1) % curve.points.size();
    const Position& a = curve.points[segment];
    const Position& d = curve.points[end];
    switch (curve.kind)
    {
    case CurveKind::Bezier:
        return {a, add(a, handlesAt(curve, segment).out), add(d, handlesAt(curve, end).in), d};
    case CurveKind::CatmullRom:
        return {a, add(a, catmullRomHandle(neighbour(curve, segment, -1), a, d)),
                add(d, catmullRomHandle(neighbour(curve, segment, 2), d, a)), d};
    case CurveKind::Linear:
        break;
    }
    return {a, interpolate(a, d, 1.0 / 3), interpolate(a, d, 2.0 / 3), d};
}

Position evaluate(const Cubic& cubic, double u) noexcept
{
    const Position bc = interpolate(cubic[1], cubic[2], u);
    const Position abc = interpolate(interpolate(cubic[0], cubic[1], u), bc, u);
    const Position bcd = interpolate(bc, interpolate(cubic[2], cubic[3], u), u);
    return interpolate(abc, bcd, u);
}

std::array<Cubic, 2> split(const Cubic& cubic, double u) noexcept
{
    const Position ab = interpolate(cubic[0], cubic[1], u);
    const Position bc = interpolate(cubic[1], cubic[2], u);
    const Position cd = interpolate(cubic[2], cubic[3], u);
    const Position abc = interpolate(ab, bc, u);
    const Position bcd = interpolate(bc, cd, u);
    const Position middle = interpolate(abc, bcd, u);
    return {Cubic{cubic[0], ab, abc, middle}, Cubic{middle, bcd, cd, cubic[3]}};
}

Place placeAt(const Curve& curve, double parameter) noexcept
{
    const std::size_t segments = segmentCount(curve);
    if (!(parameter > 0))
    {
        return {};
    }
    if (parameter >= static_cast<double>(segments))
    {
        return {segments - 1, 1.0};
    }
    const double whole = std::floor(parameter);
    return {static_cast<std::size_t>(whole), parameter - whole};
}

Position positionAt(const Curve& curve, double parameter) noexcept
{
    if (segmentCount(curve) == 0)
    {
        return curve.points.empty() ? Position{} : curve.points.front();
    }
    const Place place = placeAt(curve, parameter);
    if (curve.kind == CurveKind::Linear)
    {
        const std::size_t end = (place.segment + 1) % curve.points.size();
        return interpolate(curve.points[place.segment], curve.points[end], place.u);
    }
    return evaluate(segmentCubic(curve, place.segment), place.u);
}

std::size_t insertionIndex(const Curve& curve, double parameter) noexcept
{
    const std::size_t points = curve.points.size();
    if (!(parameter >= 0))
    {
        return curve.closed && points != 0 ? 1 : 0; // a closed curve has no end to go in front of
    }
    return parameter >= static_cast<double>(points) ? points
                                                    : static_cast<std::size_t>(std::floor(parameter)) + 1;
}

std::size_t insertPoint(Curve& curve, double parameter)
{
    const std::size_t index = insertionIndex(curve, parameter);
    const Position position = positionAt(curve, parameter);
    if (curve.kind == CurveKind::Bezier)
    {
        curve.handles.resize(curve.points.size());
        const CurveHandles handles = shareHandles(curve, index, parameter);
        curve.handles.insert(curve.handles.begin() + static_cast<std::ptrdiff_t>(index), handles);
    }
    curve.points.insert(curve.points.begin() + static_cast<std::ptrdiff_t>(index), position);
    return index;
}

std::size_t samplingSteps(const Curve& curve, std::size_t segment) noexcept
{
    constexpr std::size_t FEWEST = 8;
    constexpr std::size_t MOST = 64;
    const Cubic cubic = segmentCubic(curve, segment);
    const double metres =
        distance(cubic[0], cubic[1]) + distance(cubic[1], cubic[2]) + distance(cubic[2], cubic[3]);
    std::size_t steps = FEWEST;
    while (steps < MOST && !(static_cast<double>(steps) >= metres)) // also where it is not a number
    {
        steps *= 2;
    }
    return steps;
}

Projection project(const Curve& curve, const Position& position) noexcept
{
    if (curve.points.empty())
    {
        return {0, std::numeric_limits<double>::infinity()};
    }
    Projection best{0, distance(curve.points.front(), position)};
    for (std::size_t segment = 0; segment < segmentCount(curve); ++segment)
    {
        const Projection there =
            projectOnSegment(segmentCubic(curve, segment), samplingSteps(curve, segment), position);
        if (there.distance < best.distance)
        {
            best = {static_cast<double>(segment) + there.parameter, there.distance};
        }
    }
    return best;
}

std::vector<CurveHandles> handlesOf(const Curve& curve)
{
    std::vector<CurveHandles> handles(curve.points.size());
    for (std::size_t segment = 0; segment < segmentCount(curve); ++segment)
    {
        const Cubic cubic = segmentCubic(curve, segment);
        handles[segment].out = subtract(cubic[1], cubic[0]);
        handles[(segment + 1) % handles.size()].in = subtract(cubic[2], cubic[3]);
    }
    return handles;
}

double length(const Curve& curve, std::size_t stepsPerSegment) noexcept
{
    double metres = 0;
    for (std::size_t segment = 0; segment < segmentCount(curve); ++segment)
    {
        const Cubic cubic = segmentCubic(curve, segment);
        for (std::size_t step = 0; step < stepsPerSegment; ++step)
        {
            const auto u = [stepsPerSegment](std::size_t at)
            { return static_cast<double>(at) / static_cast<double>(stepsPerSegment); };
            metres += distance(evaluate(cubic, u(step)), evaluate(cubic, u(step + 1)));
        }
    }
    return metres;
}

} // namespace CurveGeometry
