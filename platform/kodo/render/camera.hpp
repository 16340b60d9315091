#pragma once

#include "kodo/export.hpp"
#include "kodo/math/matrix.hpp"
#include "kodo/math/ray.hpp"

namespace Kodo::Render
{

/// Where a scene is seen from. The rows of the world matrix are right, up, forward and position, so that an
/// unturned camera looks along z with x to the right and y upwards. Main thread only.
class KODO_API Camera
{
public:
    enum class Projection
    {
        Perspective,
        Orthographic
    };

    const Matrix& worldMatrix() const noexcept { return m_world; }
    void setWorldMatrix(const Matrix& world) noexcept { m_world = world; }
    /// Places the camera at @p position, looking at @p target with @p up upwards on the screen. An @p up that
    /// is zero or lies along the view is replaced; with the target at the position, only that is changed.
    void lookAt(const Vector3& position, const Vector3& target, const Vector3& up) noexcept;

    Projection projection() const noexcept { return m_projection; }
    /// @p verticalFieldOfView in radians.
    void setPerspective(float verticalFieldOfView, float nearPlane, float farPlane) noexcept;
    /// @p height of the view in world units.
    void setOrthographic(float height, float nearPlane, float farPlane) noexcept;
    float verticalFieldOfView() const noexcept { return m_verticalFieldOfView; }
    float orthographicHeight() const noexcept { return m_orthographicHeight; }
    float nearPlane() const noexcept { return m_nearPlane; }
    float farPlane() const noexcept { return m_farPlane; }

    /// World to camera: the world matrix's inverse, the identity where it has none.
    Matrix viewMatrix() const noexcept;
    /// Camera to clip space as OpenGL has it: x and y in -w to w, depth from -w (near) to w (far). @p aspect
    /// is width by height. Here the fourth column does count.
    Matrix projectionMatrix(float aspect) const noexcept;
    /// The ray into the scene through a place of the picture: @p x from -1 (left) to 1, @p y from -1 (bottom)
    /// to 1. It starts at the camera (orthographic: beside it) and has a direction of length 1.
    Ray pickRay(float x, float y, float aspect) const noexcept;

private:
    Matrix m_world = Matrix::IDENTITY;
    Projection m_projection = Projection::Perspective;
    float m_verticalFieldOfView = 1.0F;
    float m_orthographicHeight = 10.0F;
    float m_nearPlane = 0.1F;
    float m_farPlane = 10000.0F;
};

/// What is rendered with, once a process. Main thread only.
class KODO_API RenderSystem
{
public:
    static RenderSystem& instance();

    Camera& sceneCamera() noexcept { return m_sceneCamera; }

private:
    RenderSystem() = default;

    Camera m_sceneCamera;
};

} // namespace Kodo::Render
