#include "kodo/math/matrix.hpp"

#include <glm/gtc/quaternion.hpp>
#include <glm/mat3x3.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Kodo
{

namespace
{

/// A direction shorter than this part of what it was made from is nothing but rounding.
constexpr double PARALLEL = 1e-12;

/// The axes of a transform: lengths with a sign, and directions at right angles. All in double, where the
/// squares of floats neither overflow nor vanish.
class Axes
{
public:
    explicit Axes(const Matrix& matrix) noexcept
    {
        for (int i = 0; i < 3; ++i)
        {
            const glm::dvec3 axis(matrix.m[i][0], matrix.m[i][1], matrix.m[i][2]);
            m_lengths[i] = glm::length(axis);
            addDirection(i, axis);
        }
        if (m_count == 3)
        {
            takeOutMirroring();
        }
        else
        {
            complete();
        }
    }

    const glm::dvec3& lengths() const noexcept { return m_lengths; }
    glm::dquat rotation() const noexcept { return glm::normalize(glm::quat_cast(m_directions)); }

private:
    /// Keeps what of @p axis is at right angles to the directions known.
    void addDirection(int index, const glm::dvec3& axis) noexcept
    {
        if (!(m_lengths[index] > 0.0))
        {
            return;
        }
        glm::dvec3 direction = axis / m_lengths[index];
        double length = 0.0;
        do
        {
            for (int other = 0; other < index; ++other)
            {
                direction -= m_directions[other] * glm::dot(direction, m_directions[other]);
            }
            length = glm::length(direction);
            if (!(length > PARALLEL))
            {
                return;
            }
            direction /= length;
        } while (length < 0.5); // of an axis that hardly sticks out, what is left is mostly rounding
        m_directions[index] = direction;
        m_isKnown[static_cast<std::size_t>(index)] = true;
        ++m_count;
    }

    void takeOutMirroring() noexcept
    {
        if (glm::determinant(m_directions) < 0.0)
        {
            m_directions[0] = -m_directions[0];
            m_lengths[0] = -m_lengths[0];
        }
    }

    /// Gives the missing directions: right-handed, and the identity's where they are free.
    void complete() noexcept
    {
        for (int i = 0; i < 3; ++i)
        {
            const int next = (i + 1) % 3;
            if (m_count == 0)
            {
                m_directions = glm::dmat3(1.0);
                return;
            }
            if (m_count == 1 && isKnown(i))
            {
                m_directions[next] = perpendicular(m_directions[i], next);
                m_isKnown[static_cast<std::size_t>(next)] = true;
                ++m_count;
            }
        }
        for (int i = 0; i < 3; ++i)
        {
            if (!isKnown(i))
            {
                m_directions[i] = glm::cross(m_directions[(i + 1) % 3], m_directions[(i + 2) % 3]);
            }
        }
    }

    bool isKnown(int index) const noexcept { return m_isKnown[static_cast<std::size_t>(index)]; }

    /// A direction at right angles to @p direction: the @p index-th of the identity where that sticks out.
    static glm::dvec3 perpendicular(const glm::dvec3& direction, int index) noexcept
    {
        glm::dvec3 candidate(0.0);
        candidate[std::fabs(direction[index]) < 0.9 ? index : (index + 1) % 3] = 1.0;
        return glm::normalize(candidate - direction * glm::dot(candidate, direction));
    }

    glm::dvec3 m_lengths{0.0};
    glm::dmat3 m_directions{0.0};
    std::array<bool, 3> m_isKnown{};
    int m_count = 0;
};

bool hasIdentityAxes(const Matrix& matrix) noexcept
{
    return matrix.row(0) == Vector3(1.0F, 0.0F, 0.0F) && matrix.row(1) == Vector3(0.0F, 1.0F, 0.0F) &&
           matrix.row(2) == Vector3(0.0F, 0.0F, 1.0F);
}

bool isFinite(const Vector3& v) noexcept
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

float toFloat(double value) noexcept
{
    constexpr double LARGEST = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value, -LARGEST, LARGEST));
}

} // namespace

bool Matrix::decomposeMatrix(const Matrix& matrix, Vector3& position, Quaternion& rotation,
                             Vector3& scale) noexcept
{
    position = matrix.translation();
    rotation = Quaternion::IDENTITY;
    scale = Vector3(1.0F, 1.0F, 1.0F);
    const bool isWhole =
        isFinite(position) && isFinite(matrix.row(0)) && isFinite(matrix.row(1)) && isFinite(matrix.row(2));
    if (!isWhole || hasIdentityAxes(matrix)) // what stands unturned, as most things do, is told at once
    {
        return isWhole;
    }
    const Axes axes(matrix);
    const glm::dvec3& lengths = axes.lengths();
    scale = {toFloat(lengths.x), toFloat(lengths.y), toFloat(lengths.z)};
    const glm::dquat turned = axes.rotation();
    rotation = {toFloat(turned.x), toFloat(turned.y), toFloat(turned.z), toFloat(turned.w)};
    return true;
}

} // namespace Kodo
