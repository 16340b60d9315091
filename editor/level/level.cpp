#include "editor/level/level.hpp"

#include <algorithm>
#include <cmath>

bool isCurveName(std::string_view name) noexcept
{
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return !name.empty() && !isDigit(name.front()) &&
           std::all_of(name.begin(), name.end(), [&](char c) { return isLetter(c) || isDigit(c); });
}

const Curve* Level::findCurve(std::string_view name) const noexcept
{
    const auto found = std::find_if(m_data.curves.begin(), m_data.curves.end(),
                                    [name](const Curve& curve) { return curve.name == name; });
    return found == m_data.curves.end() ? nullptr : &*found;
}

void Level::replace(LevelData data)
{
    const LevelData before = std::exchange(m_data, std::move(data));
    for (const Curve& curve : before.curves)
    {
        m_curveRemoved(curve.name);
    }
    const std::vector<Curve> added = m_data.curves; // a slot may edit the level
    for (const Curve& curve : added)
    {
        m_curveAdded(curve.name);
    }
}

void Level::addCurve(const std::string& name)
{
    if (!isCurveName(name))
    {
        throw LevelError("\"" + name + "\" is no curve name: letters, digits and \"_\", no digit first");
    }
    if (findCurve(name) != nullptr)
    {
        throw LevelError("there is a curve \"" + name + "\" already");
    }
    m_data.curves.push_back({name, false, {}});
    m_curveAdded(name);
}

void Level::removeCurve(const std::string& name)
{
    const std::string kept = name; // it may be the removed curve's own
    if (std::erase_if(m_data.curves, [&kept](const Curve& curve) { return curve.name == kept; }) == 0)
    {
        throw LevelError("there is no curve \"" + kept + "\"");
    }
    m_curveRemoved(kept);
}

void Level::addPoints(const std::string& curve, const std::vector<Position>& points)
{
    const auto found = std::find_if(m_data.curves.begin(), m_data.curves.end(),
                                    [&curve](const Curve& candidate) { return candidate.name == curve; });
    if (found == m_data.curves.end())
    {
        throw LevelError("there is no curve \"" + curve + "\"");
    }
    for (const Position& point : points)
    {
        if (!std::all_of(point.begin(), point.end(),
                         [](double coordinate) { return std::isfinite(coordinate); }))
        {
            throw LevelError("a coordinate is not finite");
        }
    }
    found->points.insert(found->points.end(), points.begin(), points.end());
}

qua::Connection Level::connectCurveAdded(std::function<void(const std::string&)> slot)
{
    return m_curveAdded.connect(std::move(slot));
}

qua::Connection Level::connectCurveRemoved(std::function<void(const std::string&)> slot)
{
    return m_curveRemoved.connect(std::move(slot));
}
