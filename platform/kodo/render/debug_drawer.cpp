#include "kodo/render/debug_drawer.hpp"

#include <algorithm>

namespace Kodo::DebugDrawer
{

Context::Line Context::line()
{
    LineRecord record;
    record.firstPoint = m_points.size();
    m_lines.push_back(record);
    m_commands.push_back({Kind::Line, m_lines.size() - 1});
    return {*this, m_lines.size() - 1};
}

Context::Sphere Context::sphere()
{
    m_spheres.emplace_back();
    m_commands.push_back({Kind::Sphere, m_spheres.size() - 1});
    return {*this, m_spheres.size() - 1};
}

std::span<const Vector3> Context::pointsOf(const LineRecord& line) const noexcept
{
    return points().subspan(line.firstPoint, line.pointCount);
}

void Context::clear() noexcept
{
    m_commands.clear();
    m_lines.clear();
    m_spheres.clear();
    m_points.clear();
}

void Context::append(LineRecord& line, const Vector3* points, std::size_t count)
{
    const std::size_t end = line.firstPoint + line.pointCount;
    if (end != m_points.size())
    {
        // Another strip was begun meanwhile: this one goes on behind it.
        const std::size_t first = m_points.size();
        m_points.resize(first + line.pointCount);
        std::copy_n(m_points.begin() + static_cast<std::ptrdiff_t>(line.firstPoint), line.pointCount,
                    m_points.begin() + static_cast<std::ptrdiff_t>(first));
        line.firstPoint = first;
    }
    m_points.insert(m_points.end(), points, points + count);
    line.pointCount += count;
}

LineRecord& Context::Line::record() const
{
    return m_context->m_lines[m_index];
}

Context::Line& Context::Line::colour(const Render::ColourRGBAFloat& colour)
{
    record().colour = colour;
    return *this;
}

Context::Line& Context::Line::point(const Vector3& point)
{
    const Vector3 copy = point; // it may be one of the recorded ones
    m_context->append(record(), &copy, 1);
    return *this;
}

Context::Line& Context::Line::point(const std::vector<Vector3>& points)
{
    m_context->append(record(), points.data(), points.size());
    return *this;
}

Context::Line& Context::Line::zTestEnable(bool enable)
{
    record().zTest = enable;
    return *this;
}

Context::Line& Context::Line::zWriteEnable(bool enable)
{
    record().zWrite = enable;
    return *this;
}

Context::Line& Context::Line::width(float worldUnits)
{
    record().width = worldUnits;
    return *this;
}

SphereRecord& Context::Sphere::record() const
{
    return m_context->m_spheres[m_index];
}

Context::Sphere& Context::Sphere::colour(const Render::ColourRGBAFloat& colour)
{
    record().colour = colour;
    return *this;
}

Context::Sphere& Context::Sphere::position(const Vector3& position)
{
    record().position = position;
    return *this;
}

Context::Sphere& Context::Sphere::rotation(const Quaternion& rotation)
{
    record().rotation = rotation;
    return *this;
}

Context::Sphere& Context::Sphere::scale(const Vector3& scale)
{
    record().scale = scale;
    return *this;
}

Context::Sphere& Context::Sphere::zTestEnable(bool enable)
{
    record().zTest = enable;
    return *this;
}

Context::Sphere& Context::Sphere::zWriteEnable(bool enable)
{
    record().zWrite = enable;
    return *this;
}

} // namespace Kodo::DebugDrawer
