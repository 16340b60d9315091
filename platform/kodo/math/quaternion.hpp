#pragma once

#include "kodo/export.hpp"
#include "kodo/math/vector3.hpp"

namespace Kodo
{

/// A rotation as a unit quaternion (x, y, z imaginary, w real). The identity by default.
struct KODO_API Quaternion
{
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
    float w = 1.0F;

    static const Quaternion IDENTITY;

    /// The rotation by @p radians about @p axis, counter-clockwise seen against the axis in a right-handed
    /// system. The identity when the axis is zero.
    static Quaternion fromAngleAxis(float radians, const Vector3& axis) noexcept;

    friend constexpr bool operator==(const Quaternion&, const Quaternion&) noexcept = default;
};

} // namespace Kodo
