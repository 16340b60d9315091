#pragma once

#include "kodo/math/vector3.hpp"

#include <algorithm>
#include <array>
#include <limits>

/// The smallest box along the axes that holds what it was given. A plain value.
class SceneBounds
{
public:
    void include(const Kodo::Vector3& point) noexcept
    {
        m_low = {std::min(m_low.x, point.x), std::min(m_low.y, point.y), std::min(m_low.z, point.z)};
        m_high = {std::max(m_high.x, point.x), std::max(m_high.y, point.y), std::max(m_high.z, point.z)};
    }

    bool isEmpty() const noexcept { return !(m_low.x <= m_high.x); }
    /// These are for bounds that are not empty.
    const Kodo::Vector3& low() const noexcept { return m_low; }
    const Kodo::Vector3& high() const noexcept { return m_high; }
    Kodo::Vector3 centre() const noexcept { return m_low * 0.5F + m_high * 0.5F; }
    /// From the centre to a corner.
    float radius() const noexcept { return (m_high * 0.5F - m_low * 0.5F).length(); }
    std::array<Kodo::Vector3, 8> corners() const noexcept
    {
        std::array<Kodo::Vector3, 8> corners;
        for (unsigned i = 0; i < corners.size(); ++i)
        {
            corners[i] = {(i & 1U) == 0 ? m_low.x : m_high.x, (i & 2U) == 0 ? m_low.y : m_high.y,
                          (i & 4U) == 0 ? m_low.z : m_high.z};
        }
        return corners;
    }

private:
    static constexpr float FAR = std::numeric_limits<float>::infinity();

    Kodo::Vector3 m_low{FAR, FAR, FAR};
    Kodo::Vector3 m_high{-FAR, -FAR, -FAR};
};
