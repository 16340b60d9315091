#pragma once

#include "editor/curve/curve_data.hpp"

#include <rapidcheck.h>

#include <cstddef>
#include <vector>

/// Random curves for properties. Coordinates are quarters of a metre, so that points coincide and line up now
/// and then.
inline Position anyPosition()
{
    const auto coordinate = [] { return *rc::gen::inRange(-200, 201) / 4.0; };
    const double x = coordinate();
    const double y = coordinate();
    return {x, y, coordinate()};
}

inline CurveKind anyKind()
{
    return *rc::gen::element(CurveKind::Linear, CurveKind::CatmullRom, CurveKind::Bezier);
}

inline Curve anyCurve(CurveKind kind, std::size_t fewestPoints)
{
    Curve curve{"any", *rc::gen::arbitrary<bool>(), {}, kind};
    const auto count = *rc::gen::inRange<std::size_t>(fewestPoints, fewestPoints + 7);
    for (std::size_t i = 0; i < count; ++i)
    {
        curve.points.push_back(anyPosition());
        if (kind == CurveKind::Bezier)
        {
            curve.handles.push_back({anyPosition(), anyPosition()});
        }
    }
    return curve;
}

/// A parameter within 0 to @p end, a whole number now and then.
inline double anyParameter(double end)
{
    return *rc::gen::inRange(0, 65) / 64.0 * end;
}
