#pragma once

#include "tern_common/curve_view/curve_view.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

/// A curve of straight ways through given points that keeps what it is asked to insert, and inserts it where
/// it grows.
class PolylineCurve : public CurveView::IAbstractCurve
{
public:
    struct Key
    {
        Kodo::Vector3 position;
        float parameter;
    };

    explicit PolylineCurve(std::vector<Key> keys, float resolution = 16) noexcept
        : m_keys(std::move(keys)), m_resolution(resolution)
    {
    }
    /// Points at the parameters 0, 1, 2 and so on.
    explicit PolylineCurve(const std::vector<Kodo::Vector3>& points, float resolution = 16)
        : m_resolution(resolution)
    {
        for (const Kodo::Vector3& point : points)
        {
            m_keys.push_back({point, static_cast<float>(m_keys.size())});
        }
    }

    std::size_t pointCount() const override { return m_keys.size(); }
    float pointParameter(std::size_t index) const override { return m_keys[index].parameter; }
    Kodo::Vector3 pointPosition(std::size_t index) const override { return m_keys[index].position; }
    float segmentResolution(std::size_t) const override { return m_resolution; }
    bool isValid() const override { return valid; }
    tern::ReflectedObject pointObject(std::size_t) const override { return {}; }

    Kodo::Vector3 positionAt(float parameter) const override
    {
        const std::size_t next = placeOf(parameter);
        if (next == 0 || next == m_keys.size())
        {
            return m_keys[next == 0 ? 0 : next - 1].position;
        }
        const Key& from = m_keys[next - 1];
        const Key& to = m_keys[next];
        const float part = (parameter - from.parameter) / (to.parameter - from.parameter);
        return from.position + (to.position - from.position) * part;
    }

    void insertPoint(const Kodo::Vector3& position, float parameter) override
    {
        insertions.push_back({position, parameter});
        if (grows)
        {
            const std::size_t index = placeOf(parameter);
            m_keys.insert(m_keys.begin() + static_cast<std::ptrdiff_t>(index), {position, parameter});
            pointAdded(index, 1);
        }
    }

    void removePoint(std::size_t index) override
    {
        m_keys.erase(m_keys.begin() + static_cast<std::ptrdiff_t>(index));
        pointRemoved(index, 1);
    }

    std::vector<Key> insertions; ///< in the order asked for
    bool grows = false;
    bool valid = true;

private:
    /// The first point beyond a parameter.
    std::size_t placeOf(float parameter) const
    {
        const auto beyond = std::find_if(m_keys.begin(), m_keys.end(),
                                         [=](const Key& key) { return key.parameter > parameter; });
        return static_cast<std::size_t>(beyond - m_keys.begin());
    }

    std::vector<Key> m_keys;
    float m_resolution;
};
