#include "editor/picture/picture_camera.hpp"

#include <cmath>
#include <numbers>

using Kodo::Vector3;
using Kodo::Render::Camera;

namespace
{

constexpr float DEFAULT_FIELD_OF_VIEW = 45.0F;
constexpr float MARGIN = 1.12F;
constexpr Vector3 DEFAULT_DIRECTION{0.42F, -0.52F, 0.74F};
constexpr Vector3 UP{0.0F, 1.0F, 0.0F};

SceneBounds orDefault(const SceneBounds& bounds)
{
    SceneBounds result = bounds;
    if (bounds.isEmpty())
    {
        result.include({-20.0F, 0.0F, -20.0F});
        result.include({20.0F, 4.0F, 20.0F});
    }
    return result;
}

float radians(float degrees)
{
    return degrees * std::numbers::pi_v<float> / 180.0F;
}

/// How far from the centre, against the view's direction, a perspective camera must stand to see all corners.
float framingDistance(const Camera& camera, const SceneBounds& bounds, float tangent, float aspect)
{
    const Kodo::Matrix& world = camera.worldMatrix();
    float distance = 0.0F;
    for (const Vector3& corner : bounds.corners())
    {
        const Vector3 offset = corner - bounds.centre();
        const float across = std::fabs(offset.dotProduct(world.row(0))) / (tangent * aspect);
        const float upwards = std::fabs(offset.dotProduct(world.row(1))) / tangent;
        distance = std::max(distance, std::max(across, upwards) - offset.dotProduct(world.row(2)));
    }
    return distance;
}

/// How high an orthographic view must be to show all corners.
float framingHeight(const Camera& camera, const SceneBounds& bounds, float aspect)
{
    const Kodo::Matrix& world = camera.worldMatrix();
    float height = 0.0F;
    for (const Vector3& corner : bounds.corners())
    {
        const Vector3 offset = corner - bounds.centre();
        height = std::max({height, 2.0F * std::fabs(offset.dotProduct(world.row(0))) / aspect,
                           2.0F * std::fabs(offset.dotProduct(world.row(1)))});
    }
    return height;
}

float distanceTo(const SceneBounds& bounds, const Vector3& place)
{
    const auto outside = [](float low, float high, float value) {
        return std::max({low - value, value - high, 0.0F});
    };
    return Vector3(outside(bounds.low().x, bounds.high().x, place.x),
                   outside(bounds.low().y, bounds.high().y, place.y),
                   outside(bounds.low().z, bounds.high().z, place.z))
        .length();
}

} // namespace

Camera placeCamera(const CameraOption& option, const SceneBounds& levelBounds, float aspect)
{
    const SceneBounds bounds = orDefault(levelBounds);
    const float fieldOfView = radians(option.fieldOfView.value_or(DEFAULT_FIELD_OF_VIEW));
    const float radius = std::max(bounds.radius(), 1.0F);
    Camera camera;
    if (option.place)
    {
        camera.lookAt(option.place->eye, option.place->at, UP);
    }
    else
    {
        camera.lookAt(bounds.centre() - DEFAULT_DIRECTION, bounds.centre(), UP);
        const float distance =
            option.isOrthographic
                ? 4.0F * radius
                : std::max(framingDistance(camera, bounds, std::tan(fieldOfView / 2.0F), aspect) * MARGIN,
                           radius * 0.1F);
        camera.lookAt(bounds.centre() - camera.worldMatrix().row(2) * distance, bounds.centre(), UP);
    }
    // Near planes far out keep depths apart. Only the ground may be nearer than the level.
    const float gap = distanceTo(bounds, camera.worldMatrix().translation());
    const float nearPlane = std::max(0.05F, 0.05F * gap);
    const float farPlane = gap + 100.0F * radius;
    if (option.isOrthographic)
    {
        const float height =
            option.height.value_or(std::max(framingHeight(camera, bounds, aspect) * MARGIN, 1.0F));
        camera.setOrthographic(height, nearPlane, farPlane);
    }
    else
    {
        camera.setPerspective(fieldOfView, nearPlane, farPlane);
    }
    return camera;
}
