#include "kodo/collision/placed_shape.hpp"

#include <algorithm>
#include <cstddef>

namespace Kodo::Collisions
{
namespace
{

/// Beyond what rounding can do to a shape's bounds, and far too little to matter.
constexpr double BOUNDS_SLACK = 1.0 + 1e-9;
/// Half axes that span less than this part of a box of their lengths lie in one plane, but for rounding.
constexpr double LEAST_VOLUME = 1e-15;

constexpr Real3 cross(const Real3& a, const Real3& b) noexcept
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

constexpr Real3 scaled(const Real3& a, double factor) noexcept
{
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

/// Pairwise products of the half axes.
struct Gram
{
    explicit Gram(const HalfAxes& axes) noexcept
        : squares{dot(axes[0], axes[0]), dot(axes[1], axes[1]), dot(axes[2], axes[2])},
          mixed{dot(axes[1], axes[2]), dot(axes[0], axes[2]), dot(axes[0], axes[1])}
    {
    }

    bool isSphere() const noexcept
    {
        return squares[0] == squares[1] && squares[1] == squares[2] && mixed[0] == 0.0 && mixed[1] == 0.0 &&
               mixed[2] == 0.0;
    }

    /// At least the square of the longest half axis of the ellipsoid, and exactly that when the axes stand at
    /// right angles.
    double squaredReachOfEllipsoid() const noexcept
    {
        const double yz = std::fabs(mixed[0]);
        const double xz = std::fabs(mixed[1]);
        const double xy = std::fabs(mixed[2]);
        return std::max({squares[0] + xy + xz, squares[1] + xy + yz, squares[2] + xz + yz});
    }

    /// The square of the longest of the box's half diagonals, or a little more.
    double squaredReachOfBox() const noexcept
    {
        return squares[0] + squares[1] + squares[2] +
               2.0 * (std::fabs(mixed[0]) + std::fabs(mixed[1]) + std::fabs(mixed[2]));
    }

    Real3 squares;
    Real3 mixed;
};

bool hasVolume(const HalfAxes& axes, const Gram& gram) noexcept
{
    const double volume = std::fabs(dot(axes[0], cross(axes[1], axes[2])));
    const double box = std::sqrt(gram.squares[0]) * std::sqrt(gram.squares[1]) * std::sqrt(gram.squares[2]);
    return volume > LEAST_VOLUME * box;
}

/// A line seen from a shape's own axes, times the volume that these span: no division is made, so that what
/// lies exactly on a face stays there.
struct LocalLine
{
    LocalLine(const Line& line, const Real3& to, const HalfAxes& axes) noexcept
    {
        const HalfAxes normals{cross(axes[1], axes[2]), cross(axes[2], axes[0]), cross(axes[0], axes[1])};
        volume = dot(axes[0], normals[0]);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            centre[axis] = dot(to, normals[axis]);
            direction[axis] = dot(line.direction, normals[axis]);
        }
    }

    double volume = 0.0;
    Real3 centre{}; ///< of the shape, from the line's origin
    Real3 direction{};
};

/// Where a line enters the sphere about @p to, with a direction of any length, as a multiple of it.
std::optional<double> enterRound(const Real3& to, const Real3& direction, double squaredRadius,
                                 double squaredDistance, double squaredLength) noexcept
{
    if (dot(to, to) <= squaredRadius)
    {
        return 0.0;
    }
    const double along = dot(to, direction);
    if (along < 0.0 || !(squaredDistance <= squaredRadius))
    {
        return std::nullopt;
    }
    const double half = std::sqrt((squaredRadius - squaredDistance) * squaredLength);
    return std::max((along - half) / squaredLength, 0.0);
}

std::optional<double> withinLength(std::optional<double> entry, double length) noexcept
{
    return entry && *entry <= length ? entry : std::nullopt;
}

} // namespace

PlacedShape placeShape(bool isBox, const Vector3& extent, const Vector3& offset,
                       const Matrix& transform) noexcept
{
    const Real3 half{0.5 * double{extent.x}, 0.5 * double{extent.y}, 0.5 * double{extent.z}};
    const Real3 from{offset.x, offset.y, offset.z};
    PlacedShape placed;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const Real3 row{transform.m[axis][0], transform.m[axis][1], transform.m[axis][2]};
        placed.axes[axis] = scaled(row, half[axis]);
        for (std::size_t i = 0; i < 3; ++i)
        {
            placed.centre[i] += from[axis] * row[i];
        }
    }
    for (std::size_t i = 0; i < 3; ++i)
    {
        placed.centre[i] += double{transform.m[3][i]};
    }
    const Gram gram(placed.axes);
    // What is not finite in the input is not finite here: nothing overflows, and zero times it is no number.
    const double sum = placed.centre[0] + placed.centre[1] + placed.centre[2] + gram.squares[0] +
                       gram.squares[1] + gram.squares[2];
    if (!std::isfinite(sum))
    {
        return {};
    }
    if (!isBox && gram.isSphere())
    {
        if (gram.squares[0] > 0.0)
        {
            placed.kind = ShapeKind::Sphere;
            placed.squaredRadius = gram.squares[0];
        }
        return placed;
    }
    if (hasVolume(placed.axes, gram))
    {
        placed.kind = isBox ? ShapeKind::Box : ShapeKind::Ellipsoid;
        placed.squaredRadius =
            BOUNDS_SLACK * (isBox ? gram.squaredReachOfBox() : gram.squaredReachOfEllipsoid());
    }
    return placed;
}

std::optional<double> enterSphere(const Line& line, const Real3& to, double squaredRadius) noexcept
{
    const double squaredDistance = squaredDistanceToAxis(to[0], to[1], to[2], line.direction);
    return withinLength(enterRound(to, line.direction, squaredRadius, squaredDistance, 1.0), line.length);
}

std::optional<double> enterEllipsoid(const Line& line, const Real3& to, const HalfAxes& axes) noexcept
{
    const LocalLine local(line, to, axes);
    const Real3 centre = scaled(local.centre, 1.0 / local.volume);
    const Real3 direction = scaled(local.direction, 1.0 / local.volume);
    const double squaredLength = dot(direction, direction);
    const Real3 unit = scaled(direction, 1.0 / std::sqrt(squaredLength));
    const double squaredDistance = squaredDistanceToAxis(centre[0], centre[1], centre[2], unit);
    return withinLength(enterRound(centre, direction, 1.0, squaredDistance, squaredLength), line.length);
}

std::optional<double> enterBox(const Line& line, const Real3& to, const HalfAxes& axes) noexcept
{
    const LocalLine local(line, to, axes);
    const double reach = std::fabs(local.volume);
    double first = 0.0;
    double last = line.length;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const double centre = local.centre[axis];
        const double direction = local.direction[axis];
        if (direction == 0.0)
        {
            if (std::fabs(centre) > reach)
            {
                return std::nullopt;
            }
            continue;
        }
        const double a = (centre - reach) / direction;
        const double b = (centre + reach) / direction;
        first = std::max(first, std::min(a, b));
        last = std::min(last, std::max(a, b));
    }
    return first <= last ? std::optional(first) : std::nullopt;
}

} // namespace Kodo::Collisions
