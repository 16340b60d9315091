#pragma once

#include "kodo/render/colour.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// World coordinates in metres: x to the east, y up, z to the north.
using Position = std::array<double, 3>;

/// How a curve goes from point to point.
enum class CurveKind : std::uint8_t
{
    Linear,     ///< straight
    CatmullRom, ///< smooth through every point, with nothing more to set
    Bezier      ///< cubic, led by two handles at each point
};

/// The name of a kind in files and scripts: "linear", "catmullRom", "bezier".
std::string_view curveKindName(CurveKind kind) noexcept;
/// Nothing for a text that is no kind's name.
std::optional<CurveKind> curveKindOf(std::string_view name) noexcept;

/// Where the handles of a point stand, seen from the point: the one that leads into it and the one that leads
/// out of it. They move with the point.
struct CurveHandles
{
    Position in{};
    Position out{};

    bool operator==(const CurveHandles&) const = default;
};

/// A curve as a level keeps it.
struct Curve
{
    std::string name;
    bool closed = false; ///< goes on from the last point to the first
    std::vector<Position> points;
    CurveKind kind = CurveKind::Linear;
    std::vector<CurveHandles> handles{}; ///< of a Bezier curve: one a point; empty for the other kinds
    std::optional<Kodo::Render::Colour32Bit> color{}; ///< opaque; the host's choice where there is none

    bool operator==(const Curve&) const = default;
};

/// Whether every coordinate is a finite number.
bool isFinite(const Position& position) noexcept;
/// Whether the scene, which counts in floats, can hold it.
bool isShowable(const Position& position) noexcept;
/// Whether it can hold all points and handles.
bool isShowable(const Curve& curve) noexcept;
