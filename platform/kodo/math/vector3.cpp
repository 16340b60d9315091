#include "kodo/math/vector3.hpp"

#include <cmath>

namespace Kodo
{

constinit const Vector3 Vector3::ZERO{};

namespace
{

/// In double, where the squares of floats neither overflow nor vanish.
double lengthOf(const Vector3& vector) noexcept
{
    const double x = vector.x;
    const double y = vector.y;
    const double z = vector.z;
    return std::sqrt(x * x + y * y + z * z);
}

} // namespace

float Vector3::length() const noexcept
{
    return static_cast<float>(lengthOf(*this));
}

Vector3 Vector3::normalised() const noexcept
{
    const double length = lengthOf(*this);
    if (!(length > 0.0) || !std::isfinite(length))
    {
        return {};
    }
    return {static_cast<float>(x / length), static_cast<float>(y / length), static_cast<float>(z / length)};
}

} // namespace Kodo
