#pragma once

#include "editor/curve/curve_data.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Names a point of a curve; unique within the curve, for as long as that lives.
enum class CurvePointId : std::uint64_t
{
};

/// A curve and which point is which: one identifier a point, in the points' order.
struct CurveState
{
    Curve curve;
    std::vector<CurvePointId> ids;
};

/// The difference between two states of a curve, name apart: the run of points that differs, before and
/// after, and what holds for the curve as a whole. A plain value.
class CurveChange
{
public:
    enum class Direction : std::uint8_t
    {
        Back,
        Forth
    };

    CurveChange(const CurveState& before, const CurveState& after);

    /// Whether both states are the same.
    bool isNothing() const;
    /// Makes one state of the other. False, with nothing changed, where the points of the other are not
    /// there.
    bool apply(CurveState& state, Direction direction) const;
    /// Takes in @p next, which came directly behind it. False, with nothing changed, unless both give other
    /// values to the same points and do nothing else.
    bool absorb(const CurveChange& next);

private:
    /// A point with all that belongs to it.
    struct Key
    {
        CurvePointId id{};
        Position position{};
        CurveHandles handles;

        bool operator==(const Key&) const = default;
    };

    /// One of the two states, as far as they differ.
    struct Side
    {
        std::vector<Key> keys;
        CurveKind kind = CurveKind::Linear;
        bool closed = false;
        std::optional<Kodo::Render::Colour32Bit> color;

        bool operator==(const Side&) const = default;
        bool hasSameShape(const Side& other) const;
        bool hasSamePoints(const Side& other) const;
    };

    static Key keyAt(const CurveState& state, std::size_t index);
    static Side sideOf(const CurveState& state, std::size_t begin, std::size_t end);
    bool holdsPoints(const CurveState& state, const Side& side) const;

    std::size_t m_index = 0;     ///< where the run begins
    std::array<Side, 2> m_sides; ///< before and after
};
