#include "kodo/math/quaternion.hpp"

#include <glm/gtc/quaternion.hpp>

#include <cmath>

namespace Kodo
{

constinit const Quaternion Quaternion::IDENTITY{};

Quaternion Quaternion::fromAngleAxis(float radians, const Vector3& axis) noexcept
{
    const glm::dvec3 direction(axis.x, axis.y, axis.z);
    const double length = glm::length(direction);
    if (!(length > 0.0) || !std::isfinite(length) || !std::isfinite(radians))
    {
        return {};
    }
    const glm::dquat rotation = glm::angleAxis(static_cast<double>(radians), direction / length);
    return {static_cast<float>(rotation.x), static_cast<float>(rotation.y), static_cast<float>(rotation.z),
            static_cast<float>(rotation.w)};
}

} // namespace Kodo
