#include "editor/curve/curve_change.hpp"

#include <algorithm>
#include <utility>

namespace
{

template <class T>
void replaceRange(std::vector<T>& values, std::size_t index, std::size_t count, const std::vector<T>& with)
{
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(index);
    const std::size_t common = std::min(count, with.size());
    const auto middle = std::copy_n(with.begin(), common, at);
    if (common < count)
    {
        values.erase(middle, at + static_cast<std::ptrdiff_t>(count));
    }
    else
    {
        values.insert(middle, with.begin() + static_cast<std::ptrdiff_t>(common), with.end());
    }
}

} // namespace

CurveChange::CurveChange(const CurveState& before, const CurveState& after)
{
    const std::size_t shorter = std::min(before.ids.size(), after.ids.size());
    std::size_t front = 0;
    std::size_t back = 0;
    // Curves of different kinds differ in every point's handles.
    if (before.curve.kind == after.curve.kind)
    {
        while (front < shorter && keyAt(before, front) == keyAt(after, front))
        {
            ++front;
        }
        while (back < shorter - front &&
               keyAt(before, before.ids.size() - 1 - back) == keyAt(after, after.ids.size() - 1 - back))
        {
            ++back;
        }
    }
    m_index = front;
    m_sides = {sideOf(before, front, before.ids.size() - back),
               sideOf(after, front, after.ids.size() - back)};
}

bool CurveChange::isNothing() const
{
    return m_sides[0] == m_sides[1];
}

bool CurveChange::apply(CurveState& state, Direction direction) const
{
    const bool isForth = direction == Direction::Forth;
    const Side& from = m_sides[isForth ? 0 : 1];
    const Side& to = m_sides[isForth ? 1 : 0];
    if (!holdsPoints(state, from))
    {
        return false;
    }
    std::vector<Position> points;
    std::vector<CurveHandles> handles;
    std::vector<CurvePointId> ids;
    for (const Key& key : to.keys)
    {
        points.push_back(key.position);
        handles.push_back(key.handles);
        ids.push_back(key.id);
    }
    const std::size_t count = from.keys.size();
    replaceRange(state.curve.points, m_index, count, points);
    replaceRange(state.ids, m_index, count, ids);
    if (to.kind != CurveKind::Bezier)
    {
        state.curve.handles.clear();
    }
    else if (from.kind != CurveKind::Bezier)
    {
        state.curve.handles = std::move(handles); // of all points, as the kinds differ
    }
    else
    {
        replaceRange(state.curve.handles, m_index, count, handles);
    }
    state.curve.kind = to.kind;
    state.curve.closed = to.closed;
    state.curve.color = to.color;
    return true;
}

bool CurveChange::absorb(const CurveChange& next)
{
    const auto valuesAlone = [](const CurveChange& change)
    {
        return change.m_sides[0].hasSameShape(change.m_sides[1]) &&
               change.m_sides[0].hasSamePoints(change.m_sides[1]);
    };
    if (m_index != next.m_index || !valuesAlone(*this) || !valuesAlone(next) ||
        !m_sides[1].hasSamePoints(next.m_sides[0]))
    {
        return false;
    }
    m_sides[1] = next.m_sides[1];
    return true;
}

bool CurveChange::Side::hasSameShape(const Side& other) const
{
    return kind == other.kind && closed == other.closed && color == other.color;
}

bool CurveChange::Side::hasSamePoints(const Side& other) const
{
    return std::equal(keys.begin(), keys.end(), other.keys.begin(), other.keys.end(),
                      [](const Key& a, const Key& b) { return a.id == b.id; });
}

CurveChange::Key CurveChange::keyAt(const CurveState& state, std::size_t index)
{
    const auto& handles = state.curve.handles;
    return {state.ids[index], state.curve.points[index], handles.empty() ? CurveHandles{} : handles[index]};
}

CurveChange::Side CurveChange::sideOf(const CurveState& state, std::size_t begin, std::size_t end)
{
    Side side{{}, state.curve.kind, state.curve.closed, state.curve.color};
    side.keys.reserve(end - begin);
    for (std::size_t i = begin; i < end; ++i)
    {
        side.keys.push_back(keyAt(state, i));
    }
    return side;
}

bool CurveChange::holdsPoints(const CurveState& state, const Side& side) const
{
    return m_index + side.keys.size() <= state.ids.size() &&
           std::equal(side.keys.begin(), side.keys.end(),
                      state.ids.begin() + static_cast<std::ptrdiff_t>(m_index),
                      [](const Key& key, CurvePointId id) { return key.id == id; });
}
