#include "editor/curve/curve_data.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace
{

constexpr std::array<std::string_view, 3> KIND_NAMES{"linear", "catmullRom", "bezier"};

} // namespace

std::string_view curveKindName(CurveKind kind) noexcept
{
    return KIND_NAMES[static_cast<std::size_t>(kind)];
}

std::optional<CurveKind> curveKindOf(std::string_view name) noexcept
{
    const auto found = std::find(KIND_NAMES.begin(), KIND_NAMES.end(), name);
    if (found == KIND_NAMES.end())
    {
        return std::nullopt;
    }
    return static_cast<CurveKind>(found - KIND_NAMES.begin());
}

bool isFinite(const Position& position) noexcept
{
    return std::all_of(position.begin(), position.end(),
                       [](double coordinate) { return std::isfinite(coordinate); });
}

bool isShowable(const Position& position) noexcept
{
    constexpr auto LARGEST = static_cast<double>(std::numeric_limits<float>::max());
    return std::all_of(position.begin(), position.end(),
                       [](double coordinate) { return std::abs(coordinate) <= LARGEST; });
}

bool isShowable(const Curve& curve) noexcept
{
    return std::all_of(curve.points.begin(), curve.points.end(),
                       [](const Position& point) { return isShowable(point); }) &&
           std::all_of(curve.handles.begin(), curve.handles.end(),
                       [](const CurveHandles& handles)
                       { return isShowable(handles.in) && isShowable(handles.out); });
}
