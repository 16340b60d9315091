#pragma once

#include "kodo/export.hpp"

namespace Kodo
{

/// Three floats, side by side without padding: a point, a direction or a scale.
struct KODO_API Vector3
{
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;

    constexpr Vector3() noexcept = default;
    constexpr Vector3(float xValue, float yValue, float zValue) noexcept : x(xValue), y(yValue), z(zValue) {}

    static const Vector3 ZERO;

    /// Unordered where a component is not a number, as comparison of floats is.
    friend constexpr bool operator==(const Vector3&, const Vector3&) noexcept = default;

    friend constexpr Vector3 operator+(const Vector3& a, const Vector3& b) noexcept
    {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend constexpr Vector3 operator-(const Vector3& a, const Vector3& b) noexcept
    {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend constexpr Vector3 operator*(const Vector3& a, float factor) noexcept
    {
        return {a.x * factor, a.y * factor, a.z * factor};
    }
    friend constexpr Vector3 operator*(float factor, const Vector3& a) noexcept { return a * factor; }
    constexpr Vector3 operator-() const noexcept { return {-x, -y, -z}; }

    /// (x*x + y*y) + z*z, rounded after each operation.
    constexpr float dotProduct(const Vector3& other) const noexcept
    {
        return x * other.x + y * other.y + z * other.z;
    }
    constexpr Vector3 crossProduct(const Vector3& other) const noexcept
    {
        return {y * other.z - z * other.y, z * other.x - x * other.z, x * other.y - y * other.x};
    }
    constexpr float lengthSquared() const noexcept { return dotProduct(*this); }
    float length() const noexcept;
    /// This direction with length 1; the zero vector where there is none to keep.
    Vector3 normalised() const noexcept;
};

static_assert(sizeof(Vector3) == 3 * sizeof(float));

} // namespace Kodo
