#pragma once

#include "kodo/math/vector3.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

/// Whether a picture can show a place: with coordinates far larger the squares of distances leave the floats.
inline bool isDrawable(const Kodo::Vector3& place) noexcept
{
    constexpr float MOST_METRES = 1e12F;
    return std::fabs(place.x) <= MOST_METRES && std::fabs(place.y) <= MOST_METRES &&
           std::fabs(place.z) <= MOST_METRES;
}

/// Points, and the smallest box along the axes that holds them. A plain value.
class SceneBounds
{
public:
    void include(const Kodo::Vector3& point)
    {
        m_points.push_back(point);
        m_low = {std::min(m_low.x, point.x), std::min(m_low.y, point.y), std::min(m_low.z, point.z)};
        m_high = {std::max(m_high.x, point.x), std::max(m_high.y, point.y), std::max(m_high.z, point.z)};
    }

    const std::vector<Kodo::Vector3>& points() const noexcept { return m_points; }
    bool isEmpty() const noexcept { return m_points.empty(); }
    /// These are for bounds that are not empty.
    const Kodo::Vector3& low() const noexcept { return m_low; }
    const Kodo::Vector3& high() const noexcept { return m_high; }
    Kodo::Vector3 centre() const noexcept { return m_low * 0.5F + m_high * 0.5F; }
    /// From the centre to a corner.
    float radius() const noexcept { return (m_high * 0.5F - m_low * 0.5F).length(); }

private:
    static constexpr float FAR = std::numeric_limits<float>::infinity();

    std::vector<Kodo::Vector3> m_points;
    Kodo::Vector3 m_low{FAR, FAR, FAR};
    Kodo::Vector3 m_high{-FAR, -FAR, -FAR};
};
