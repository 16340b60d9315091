#include "kodo/render/camera.hpp"

#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cmath>

namespace Kodo::Render
{

namespace
{

void setRow(Matrix& matrix, int index, const Vector3& row) noexcept
{
    matrix.m[index][0] = row.x;
    matrix.m[index][1] = row.y;
    matrix.m[index][2] = row.z;
}

/// The direction to the right of one who looks @p forward; zero where @p up is no help.
Vector3 rightOf(const Vector3& forward, const Vector3& up) noexcept
{
    constexpr float PARALLEL = 1e-5F;
    const Vector3 right = up.normalised().crossProduct(forward);
    return right.length() > PARALLEL ? right.normalised() : Vector3::ZERO;
}

} // namespace

void Camera::lookAt(const Vector3& position, const Vector3& target, const Vector3& up) noexcept
{
    setRow(m_world, 3, position);
    const Vector3 forward = (target - position).normalised();
    if (forward == Vector3::ZERO)
    {
        return;
    }
    Vector3 right = rightOf(forward, up);
    if (right == Vector3::ZERO)
    {
        const bool isSteep = std::fabs(forward.y) > 0.9F;
        right = rightOf(forward, isSteep ? Vector3(0.0F, 0.0F, 1.0F) : Vector3(0.0F, 1.0F, 0.0F));
    }
    m_world.setTranslate(position);
    setRow(m_world, 0, right);
    setRow(m_world, 1, forward.crossProduct(right).normalised());
    setRow(m_world, 2, forward);
}

void Camera::setPerspective(float verticalFieldOfView, float nearPlane, float farPlane) noexcept
{
    m_projection = Projection::Perspective;
    m_verticalFieldOfView = verticalFieldOfView;
    m_nearPlane = nearPlane;
    m_farPlane = farPlane;
}

void Camera::setOrthographic(float height, float nearPlane, float farPlane) noexcept
{
    m_projection = Projection::Orthographic;
    m_orthographicHeight = height;
    m_nearPlane = nearPlane;
    m_farPlane = farPlane;
}

Matrix Camera::viewMatrix() const noexcept
{
    Matrix view = m_world;
    if (!view.invert())
    {
        view.setIdentity();
    }
    return view;
}

Matrix Camera::projectionMatrix(float aspect) const noexcept
{
    glm::mat4 projection(1.0F);
    if (m_projection == Projection::Perspective)
    {
        projection = glm::perspectiveLH_NO(m_verticalFieldOfView, aspect, m_nearPlane, m_farPlane);
    }
    else
    {
        const float up = m_orthographicHeight / 2.0F;
        const float right = up * aspect;
        projection = glm::orthoLH_NO(-right, right, -up, up, m_nearPlane, m_farPlane);
    }
    Matrix result;
    std::copy_n(glm::value_ptr(projection), 16, &result.m[0][0]);
    return result;
}

Ray Camera::pickRay(float x, float y, float aspect) const noexcept
{
    if (m_projection == Projection::Perspective)
    {
        const float height = std::tan(m_verticalFieldOfView / 2.0F);
        const Vector3 direction(x * aspect * height, y * height, 1.0F);
        return {m_world.translation(), m_world.applyVector(direction).normalised()};
    }
    const float height = m_orthographicHeight / 2.0F;
    const Vector3 origin(x * aspect * height, y * height, 0.0F);
    return {m_world.applyPoint(origin), m_world.row(2).normalised()};
}

RenderSystem& RenderSystem::instance()
{
    static RenderSystem system;
    return system;
}

} // namespace Kodo::Render
