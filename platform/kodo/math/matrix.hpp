#pragma once

#include "kodo/export.hpp"
#include "kodo/math/quaternion.hpp"
#include "kodo/math/vector3.hpp"

namespace Kodo
{

/// A 4x4 transform of row vectors: p' = p * M, rows 0 to 2 hold the axes, row 3 the translation, and a * b
/// applies a first. All zeros by default. A plain value.
class KODO_API Matrix
{
public:
    float m[4][4] = {};

    static const Matrix IDENTITY;

    constexpr Matrix() noexcept = default;

    void setZero() noexcept { *this = Matrix(); }
    void setIdentity() noexcept { *this = IDENTITY; }
    /// Makes this the translation by @p offset and nothing else: identity axes, 1 in the corner.
    constexpr void setTranslate(const Vector3& offset) noexcept
    {
        *this = Matrix();
        m[0][0] = m[1][1] = m[2][2] = m[3][3] = 1.0F;
        m[3][0] = offset.x;
        m[3][1] = offset.y;
        m[3][2] = offset.z;
    }

    /// The first three elements of row @p index (0 to 3).
    constexpr Vector3 row(int index) const noexcept { return {m[index][0], m[index][1], m[index][2]}; }
    constexpr Vector3 translation() const noexcept { return row(3); }

    /// Transforms a point: axes and translation. The fourth column is taken as (0, 0, 0, 1).
    constexpr Vector3 applyPoint(const Vector3& point) const noexcept
    {
        return {point.x * m[0][0] + point.y * m[1][0] + point.z * m[2][0] + m[3][0],
                point.x * m[0][1] + point.y * m[1][1] + point.z * m[2][1] + m[3][1],
                point.x * m[0][2] + point.y * m[1][2] + point.z * m[2][2] + m[3][2]};
    }
    /// Transforms a direction: axes alone.
    constexpr Vector3 applyVector(const Vector3& vector) const noexcept
    {
        return {vector.x * m[0][0] + vector.y * m[1][0] + vector.z * m[2][0],
                vector.x * m[0][1] + vector.y * m[1][1] + vector.z * m[2][1],
                vector.x * m[0][2] + vector.y * m[1][2] + vector.z * m[2][2]};
    }

    /// this = this * @p next: applies @p next afterwards.
    void postMultiply(const Matrix& next) noexcept;
    /// this = @p first * this: applies @p first before.
    void preMultiply(const Matrix& first) noexcept;
    /// Inverts this in place, in double precision. False, with nothing changed, when there is no inverse
    /// (but for the rounding of what the elements were made from) or floats can't hold it.
    bool invert() noexcept;

    /// Scale, then rotation, then translation.
    static Matrix constructTransformationMatrix(const Vector3& position, const Quaternion& rotation,
                                                const Vector3& scale) noexcept;
    /// The parts of such a matrix; the fourth column does not count. A mirroring matrix gives a negative
    /// scale on the x axis. An axis of zero length has scale 0 and the direction that completes the rotation
    /// (the identity's where that is free). Axes that are not at right angles are squared up, the first one
    /// first. False, with the identity rotation and scale, when an element is not finite.
    static bool decomposeMatrix(const Matrix& matrix, Vector3& position, Quaternion& rotation,
                                Vector3& scale) noexcept;

    friend constexpr bool operator==(const Matrix&, const Matrix&) noexcept = default;
};

/// Whether all pairs of elements differ by at most @p epsilon. Never true where one is not a number.
KODO_API bool almostEqual(const Matrix& a, const Matrix& b, float epsilon) noexcept;
KODO_API bool almostEqual(const Vector3& a, const Vector3& b, float epsilon) noexcept;

} // namespace Kodo
