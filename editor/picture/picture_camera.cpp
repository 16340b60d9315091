#include "editor/picture/picture_camera.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

using Kodo::Vector3;
using Kodo::Render::Camera;

namespace
{

constexpr float DEFAULT_FIELD_OF_VIEW = 45.0F;
constexpr float MARGIN = 1.12F;
constexpr Vector3 DEFAULT_DIRECTION{0.4F, -0.36F, 0.84F};
constexpr Vector3 UP{0.0F, 1.0F, 0.0F};

float radians(float degrees)
{
    return degrees * std::numbers::pi_v<float> / 180.0F;
}

/// Where a camera must stand to just see all points: along one axis of the picture and how far back, both
/// from the centre.
struct Standpoint
{
    float aside = 0.0F;
    float back = 0.0F;
};

/// @p axis is one of the picture's, @p tangent half of what is seen along it at a distance of 1; 0 without
/// perspective.
Standpoint standpointAlong(const Vector3& axis, const Vector3& forward, const SceneBounds& bounds,
                           float tangent)
{
    // Each point keeps the camera on one side of two planes: the edges of the view through the point.
    float least = std::numeric_limits<float>::infinity();
    float most = -least;
    for (const Vector3& point : bounds.points())
    {
        const Vector3 offset = point - bounds.centre();
        const float slope = offset.dotProduct(forward) * tangent;
        least = std::min(least, offset.dotProduct(axis) + slope);
        most = std::max(most, offset.dotProduct(axis) - slope);
    }
    return {(least + most) / 2.0F, tangent > 0.0F ? (most - least) / (2.0F * tangent) : 0.0F};
}

/// Places the camera as it looks, for a perspective view with such a tangent of half its height.
void frameInPerspective(Camera& camera, const SceneBounds& bounds, float tangent, float aspect)
{
    const Vector3 right = camera.worldMatrix().row(0);
    const Vector3 up = camera.worldMatrix().row(1);
    const Vector3 forward = camera.worldMatrix().row(2);
    const Standpoint across = standpointAlong(right, forward, bounds, tangent * aspect / MARGIN);
    const Standpoint upwards = standpointAlong(up, forward, bounds, tangent / MARGIN);
    float nearest = 0.0F; // of the points, behind the plane through the centre
    for (const Vector3& point : bounds.points())
    {
        nearest = std::max(nearest, (bounds.centre() - point).dotProduct(forward));
    }
    const float space = std::max(5.0F, bounds.radius() * 0.05F); // before the nearest point
    const float back = std::max({across.back, upwards.back, nearest + space});
    const Vector3 eye = bounds.centre() + right * across.aside + up * upwards.aside - forward * back;
    camera.lookAt(eye, eye + forward, UP);
}

/// How high an orthographic view must be to show all points.
float framingHeight(const Camera& camera, const SceneBounds& bounds, float aspect)
{
    float height = 1.0F;
    for (const Vector3& point : bounds.points())
    {
        const Vector3 offset = point - camera.worldMatrix().translation();
        height = std::max({height, 2.0F * std::fabs(offset.dotProduct(camera.worldMatrix().row(0))) / aspect,
                           2.0F * std::fabs(offset.dotProduct(camera.worldMatrix().row(1)))});
    }
    return height * MARGIN;
}

/// Places the camera as it looks, with the points around the middle of an orthographic view.
void centreInParallel(Camera& camera, const SceneBounds& bounds)
{
    const Vector3 right = camera.worldMatrix().row(0);
    const Vector3 up = camera.worldMatrix().row(1);
    const Vector3 forward = camera.worldMatrix().row(2);
    const Vector3 eye = bounds.centre() + right * standpointAlong(right, forward, bounds, 0.0F).aside +
                        up * standpointAlong(up, forward, bounds, 0.0F).aside;
    camera.lookAt(eye, eye + forward, UP);
}

/// Moves the camera back from the middle of the points until all of them are before it, and some of the
/// ground.
void stepBackInParallel(Camera& camera, const SceneBounds& bounds, float height)
{
    const Vector3 eye = camera.worldMatrix().translation();
    const Vector3 forward = camera.worldMatrix().row(2);
    camera.lookAt(eye - forward * std::max(height * 1.2F, bounds.radius() * 1.1F), eye, UP);
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
    SceneBounds bounds = levelBounds;
    if (bounds.isEmpty())
    {
        bounds.include({-20.0F, 0.0F, -20.0F});
        bounds.include({20.0F, 4.0F, 20.0F});
    }
    Camera camera;
    if (option.place)
    {
        camera.lookAt(option.place->eye, option.place->at, UP);
    }
    else
    {
        camera.lookAt(bounds.centre() - DEFAULT_DIRECTION, bounds.centre(), UP);
    }
    const float fieldOfView = radians(option.fieldOfView.value_or(DEFAULT_FIELD_OF_VIEW));
    if (!option.place)
    {
        option.isOrthographic ? centreInParallel(camera, bounds)
                              : frameInPerspective(camera, bounds, std::tan(fieldOfView / 2.0F), aspect);
    }
    const float height = option.height.value_or(framingHeight(camera, bounds, aspect));
    if (!option.place && option.isOrthographic)
    {
        stepBackInParallel(camera, bounds, height);
    }
    // A near plane far out keeps depths apart. Only the ground may be nearer than the level.
    const float gap = distanceTo(bounds, camera.worldMatrix().translation());
    const float nearPlane = std::max(0.05F, 0.05F * gap);
    const float farPlane = gap + 100.0F * std::max(bounds.radius(), 10.0F);
    option.isOrthographic ? camera.setOrthographic(height, nearPlane, farPlane)
                          : camera.setPerspective(fieldOfView, nearPlane, farPlane);
    return camera;
}
