#pragma once

#include "editor/curve/curve_document.hpp"
#include "editor/curve/curve_geometry.hpp"
#include "tests/editor/curve/any_curve.hpp"

#include <rapidcheck.h>

#include <cstddef>
#include <memory>

/// A document with a random curve, now and then one of those that only a file brings: not valid until edits
/// mend it, and again when they are undone.
inline std::shared_ptr<CurveDocument> anyDocument()
{
    constexpr double TOO_FAR = 1e39;
    Curve curve = anyCurve(anyKind(), 0);
    if (!curve.points.empty() && *rc::gen::inRange(0, 3) == 0)
    {
        const auto index = *rc::gen::inRange<std::size_t>(0, curve.points.size());
        const bool isHandle = curve.kind == CurveKind::Bezier && *rc::gen::arbitrary<bool>();
        (isHandle ? curve.handles[index].in : curve.points[index])[1] = TOO_FAR;
    }
    return CurveDocument::make(curve);
}

/// Makes a random edit of a document, one of those that change no history but by being remembered.
inline void makeAnyEdit(CurveDocument& document)
{
    const Curve& curve = document.curve();
    const std::size_t points = curve.points.size();
    const auto anyIndex = [points] { return *rc::gen::inRange<std::size_t>(0, points); };
    const int choice = *rc::gen::inRange(0, 12);
    if (choice < 3 || points == 0)
    {
        document.insertPoint(anyPosition(), *rc::gen::inRange(-4, 4 * static_cast<int>(points) + 5) / 4.0);
    }
    else if (choice == 3)
    {
        const double parameter = anyParameter(static_cast<double>(points));
        if (isShowable(CurveGeometry::positionAt(curve, parameter))) // else it is refused, and that reported
        {
            document.splitAt(parameter);
        }
    }
    else if (choice == 4)
    {
        document.appendPoints({anyPosition(), anyPosition()});
    }
    else if (choice < 7)
    {
        document.removePoint(anyIndex());
    }
    else if (choice < 9)
    {
        document.movePoint(anyIndex(), anyPosition());
    }
    else if (choice == 9)
    {
        const std::size_t first = anyIndex();
        document.swapPoints(first, anyIndex());
    }
    else if (choice == 10)
    {
        document.setHandles(anyIndex(), {anyPosition(), anyPosition()});
    }
    else if (*rc::gen::arbitrary<bool>())
    {
        document.setClosed(!curve.closed);
    }
    else
    {
        document.setKind(anyKind());
    }
}
