#pragma once

#include "kodo/math/matrix.hpp"
#include "kodo/math/vector3.hpp"

#include <array>
#include <cmath>
#include <optional>

/// Geometry of the collision scene: plain data and functions over it, all in double precision. Numbers that
/// come from floats neither overflow nor vanish on the way: every product here stays within a double's range.
namespace Kodo::Collisions
{

using Real3 = std::array<double, 3>;

constexpr double dot(const Real3& a, const Real3& b) noexcept
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// A ray as the tests take it.
struct Line
{
    Real3 origin{};
    Real3 direction{};       ///< of length 1
    double length = 0.0;     ///< where it ends, in units of the world
    double unitLength = 1.0; ///< the length of the direction that the ray was given with
};

/// How far the line through the origin passes the point @p to, squared. @p direction has length 1. Taken from
/// the vector between the two, as the difference of squares would lose small spheres that are far away.
constexpr double squaredDistanceToAxis(double toX, double toY, double toZ, const Real3& direction) noexcept
{
    const double along = toX * direction[0] + toY * direction[1] + toZ * direction[2];
    const double x = toX - along * direction[0];
    const double y = toY - along * direction[1];
    const double z = toZ - along * direction[2];
    return x * x + y * y + z * z;
}

enum class ShapeKind : unsigned char
{
    Nothing, ///< has no volume, or a number that is not finite
    Sphere,
    Ellipsoid,
    Box
};

/// The half axes of a box or ellipsoid, in world directions; not necessarily at right angles to each other.
using HalfAxes = std::array<Real3, 3>;

/// A shape where it stands.
struct PlacedShape
{
    ShapeKind kind = ShapeKind::Nothing;
    Real3 centre{};
    /// Of a sphere that contains the shape; of a sphere, its own, to the bit. Negative when there is nothing.
    double squaredRadius = -1.0;
    HalfAxes axes{}; ///< of what is no sphere
};

/// Places the unit sphere or box (from -1 to 1) that @p extent makes full size of.
PlacedShape placeShape(bool isBox, const Vector3& extent, const Vector3& offset,
                       const Matrix& transform) noexcept;

/// Where a line enters a shape, in units of the world: 0 when it begins inside, nothing when it misses. The
/// surface belongs to the shape. @p to leads from the line's origin to the shape's centre.
std::optional<double> enterSphere(const Line& line, const Real3& to, double squaredRadius) noexcept;
std::optional<double> enterEllipsoid(const Line& line, const Real3& to, const HalfAxes& axes) noexcept;
std::optional<double> enterBox(const Line& line, const Real3& to, const HalfAxes& axes) noexcept;

} // namespace Kodo::Collisions
