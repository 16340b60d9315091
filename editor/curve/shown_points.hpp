#pragma once

#include "editor/curve/curve_document.hpp"

#include <cstddef>
#include <optional>
#include <vector>

/// What the points of a curve look like to a view, and how one such look becomes another. A plain value.
class ShownPoints
{
public:
    /// A signal of a curve model, with its arguments.
    struct Change
    {
        enum class Kind
        {
            Whole,   ///< changed()
            Updated, ///< pointUpdated(index, count)
            Moved,   ///< pointMoved(first, second)
            Added,   ///< pointAdded(index, count)
            Removed  ///< pointRemoved(index, count)
        };

        Kind kind = Kind::Whole;
        std::size_t first = 0;
        std::size_t second = 0;

        bool operator==(const Change&) const = default;
    };

    explicit ShownPoints(const CurveDocument& document);

    /// The points, and behind those of a closed curve the first one again.
    static std::size_t count(const Curve& curve) noexcept;

    /// Makes one change on the way to @p next and says which; nothing when this is @p next.
    std::optional<Change> approach(const ShownPoints& next);

private:
    /// No point's: of the one that closes the curve.
    static constexpr CurveDocument::PointId CLOSING{};

    struct Point
    {
        CurveDocument::PointId id = CLOSING;
        Position position{};
        CurveHandles handles;

        bool operator==(const Point&) const = default;
    };

    bool hasSameShape(const ShownPoints& other) const noexcept;
    std::optional<Change> approachOrder(const ShownPoints& next);
    std::optional<Change> approachValues(const ShownPoints& next);

    std::vector<Point> m_points;
    CurveKind m_kind;
    bool m_closed;
    std::optional<Kodo::Render::Colour32Bit> m_color;
    bool m_isValid;
};
