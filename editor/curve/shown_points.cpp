#include "editor/curve/shown_points.hpp"

#include <algorithm>
#include <unordered_set>

namespace
{

using PointId = CurveDocument::PointId;

template <class Points>
std::unordered_set<PointId> idsOf(const Points& points, std::size_t begin, std::size_t end)
{
    std::unordered_set<PointId> ids;
    for (std::size_t i = begin; i < end; ++i)
    {
        ids.insert(points[i].id);
    }
    return ids;
}

template <class Points>
auto iteratorAt(Points& points, std::size_t index)
{
    return points.begin() + static_cast<std::ptrdiff_t>(index);
}

} // namespace

ShownPoints::ShownPoints(const CurveDocument& document)
    : m_kind(document.curve().kind), m_closed(document.curve().closed), m_color(document.curve().color),
      m_isValid(isShowable(document.curve()))
{
    const Curve& curve = document.curve();
    m_points.reserve(count(curve));
    for (std::size_t i = 0; i < curve.points.size(); ++i)
    {
        const CurveHandles handles = curve.handles.empty() ? CurveHandles{} : curve.handles[i];
        m_points.push_back({document.pointIds()[i], curve.points[i], handles});
    }
    if (m_points.size() < count(curve))
    {
        m_points.push_back({CLOSING, curve.points.front(), {}});
    }
}

std::size_t ShownPoints::count(const Curve& curve) noexcept
{
    return curve.points.size() + (curve.closed && curve.points.size() > 1 ? 1 : 0);
}

bool ShownPoints::hasSameShape(const ShownPoints& other) const noexcept
{
    return m_kind == other.m_kind && m_closed == other.m_closed && m_color == other.m_color &&
           m_isValid == other.m_isValid;
}

std::optional<ShownPoints::Change> ShownPoints::approach(const ShownPoints& next)
{
    if (hasSameShape(next) && m_points == next.m_points)
    {
        return std::nullopt;
    }
    if (!hasSameShape(next) || !m_isValid)
    {
        *this = next;
        return Change{Change::Kind::Whole, 0, 0};
    }
    const std::optional<Change> change = approachOrder(next);
    return change ? change : approachValues(next);
}

std::optional<ShownPoints::Change> ShownPoints::approachOrder(const ShownPoints& next)
{
    // Only what lies between the points that agree at the front and at the back can differ in order.
    const std::size_t shorter = std::min(m_points.size(), next.m_points.size());
    const std::size_t oldSize = m_points.size();
    const std::size_t newSize = next.m_points.size();
    std::size_t front = 0;
    while (front < shorter && m_points[front].id == next.m_points[front].id)
    {
        ++front;
    }
    std::size_t back = 0;
    while (back < shorter - front && m_points[oldSize - 1 - back].id == next.m_points[newSize - 1 - back].id)
    {
        ++back;
    }
    if (front == oldSize && front == newSize)
    {
        return std::nullopt;
    }

    const std::unordered_set<PointId> newIds = idsOf(next.m_points, front, newSize - back);
    for (std::size_t end = oldSize - back; end > front; --end)
    {
        std::size_t begin = end;
        while (begin > front && !newIds.contains(m_points[begin - 1].id))
        {
            --begin;
        }
        if (begin < end)
        {
            m_points.erase(iteratorAt(m_points, begin), iteratorAt(m_points, end));
            return Change{Change::Kind::Removed, begin, end - begin};
        }
    }

    // All that is left here is there as well: in the same order?
    const std::unordered_set<PointId> oldIds = idsOf(m_points, front, oldSize - back);
    std::vector<std::size_t> outOfPlace;
    std::size_t place = front;
    for (std::size_t i = front; i < newSize - back; ++i)
    {
        if (oldIds.contains(next.m_points[i].id))
        {
            if (m_points[place].id != next.m_points[i].id)
            {
                outOfPlace.push_back(place);
            }
            ++place;
        }
    }
    if (outOfPlace.size() == 2)
    {
        std::swap(m_points[outOfPlace[0]], m_points[outOfPlace[1]]);
        return Change{Change::Kind::Moved, outOfPlace[0], outOfPlace[1]};
    }
    if (!outOfPlace.empty())
    {
        *this = next;
        return Change{Change::Kind::Whole, 0, 0};
    }

    std::size_t begin = front;
    while (oldIds.contains(next.m_points[begin].id))
    {
        ++begin;
    }
    std::size_t end = begin;
    while (end < newSize - back && !oldIds.contains(next.m_points[end].id))
    {
        ++end;
    }
    m_points.insert(iteratorAt(m_points, begin), iteratorAt(next.m_points, begin),
                    iteratorAt(next.m_points, end));
    return Change{Change::Kind::Added, begin, end - begin};
}

std::optional<ShownPoints::Change> ShownPoints::approachValues(const ShownPoints& next)
{
    std::size_t begin = 0;
    while (begin < m_points.size() && m_points[begin] == next.m_points[begin])
    {
        ++begin;
    }
    std::size_t end = begin;
    while (end < m_points.size() && m_points[end] != next.m_points[end])
    {
        m_points[end] = next.m_points[end];
        ++end;
    }
    return begin < end ? std::optional(Change{Change::Kind::Updated, begin, end - begin}) : std::nullopt;
}
