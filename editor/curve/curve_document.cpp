#include "editor/curve/curve_document.hpp"

#include "editor/assertion.hpp"
#include "editor/curve/curve_geometry.hpp"
#include "editor/curve/curve_point.hpp"
#include "editor/curve/position_text.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{

using PointId = CurveDocument::PointId;

/// A point with all that belongs to it.
struct Key
{
    PointId id{};
    Position position{};
    CurveHandles handles;

    bool operator==(const Key&) const = default;
};

/// What holds for the curve as a whole.
struct Shape
{
    CurveKind kind = CurveKind::Linear;
    bool closed = false;
    std::optional<Kodo::Render::Colour32Bit> color;

    bool operator==(const Shape&) const = default;
};

Shape shapeOf(const Curve& curve)
{
    return {curve.kind, curve.closed, curve.color};
}

Key keyOf(const Curve& curve, const std::vector<PointId>& ids, std::size_t index)
{
    return {ids[index], curve.points[index], curve.handles.empty() ? CurveHandles{} : curve.handles[index]};
}

std::vector<Key> keysOf(const Curve& curve, const std::vector<PointId>& ids, std::size_t begin,
                        std::size_t end)
{
    std::vector<Key> keys;
    keys.reserve(end - begin);
    for (std::size_t i = begin; i < end; ++i)
    {
        keys.push_back(keyOf(curve, ids, i));
    }
    return keys;
}

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

bool areShowable(const std::vector<Position>& points)
{
    return std::all_of(points.begin(), points.end(), [](const Position& point) { return isShowable(point); });
}

} // namespace

/// The replacement of a run of points, and of the shape.
class CurveDocument::Edit final : public EditHistory::IEdit
{
public:
    Edit(const std::shared_ptr<CurveDocument>& document, const State& before, const State& after)
        : m_document(document), m_shapes{shapeOf(before.curve), shapeOf(after.curve)}
    {
        const std::size_t sizes[] = {before.ids.size(), after.ids.size()};
        const std::size_t shorter = std::min(sizes[0], sizes[1]);
        std::size_t front = 0;
        std::size_t back = 0;
        // The kinds differ in their handles: all points are taken then.
        if (before.curve.kind == after.curve.kind)
        {
            const auto key = [](const State& state, std::size_t i)
            { return keyOf(state.curve, state.ids, i); };
            while (front < shorter && key(before, front) == key(after, front))
            {
                ++front;
            }
            while (back < shorter - front &&
                   key(before, sizes[0] - 1 - back) == key(after, sizes[1] - 1 - back))
            {
                ++back;
            }
        }
        m_index = front;
        m_keys[0] = keysOf(before.curve, before.ids, front, sizes[0] - back);
        m_keys[1] = keysOf(after.curve, after.ids, front, sizes[1] - back);
    }

    void undo() override { replace(1, 0); }
    void redo() override { replace(0, 1); }

    bool absorb(const IEdit& next) override
    {
        const auto* const edit = dynamic_cast<const Edit*>(&next);
        if (edit == nullptr || edit->m_document.lock() != m_document.lock() || !replacesSamePoints(*edit))
        {
            return false;
        }
        m_keys[1] = edit->m_keys[1];
        return true;
    }

    bool isNothing() const override { return m_shapes[0] == m_shapes[1] && m_keys[0] == m_keys[1]; }

    /// Puts the keys and shape of one side in the place of the other's. False where they are not there.
    bool replace(std::size_t from, std::size_t to) const
    {
        const std::shared_ptr<CurveDocument> document = m_document.lock();
        if (document == nullptr)
        {
            return false;
        }
        State& state = document->m_state;
        const bool isInPlace = holds(state, m_keys[from]);
        if (!TERN_EDITOR_ASSERT(isInPlace))
        {
            return false;
        }
        std::vector<Position> points;
        std::vector<CurveHandles> handles;
        std::vector<PointId> ids;
        for (const Key& key : m_keys[to])
        {
            points.push_back(key.position);
            handles.push_back(key.handles);
            ids.push_back(key.id);
        }
        const std::size_t count = m_keys[from].size();
        replaceRange(state.curve.points, m_index, count, points);
        replaceRange(state.ids, m_index, count, ids);
        if (m_shapes[to].kind != CurveKind::Bezier)
        {
            state.curve.handles.clear();
        }
        else if (m_shapes[from].kind != CurveKind::Bezier)
        {
            state.curve.handles = std::move(handles);
        }
        else
        {
            replaceRange(state.curve.handles, m_index, count, handles);
        }
        state.curve.kind = m_shapes[to].kind;
        state.curve.closed = m_shapes[to].closed;
        state.curve.color = m_shapes[to].color;
        ++document->m_revision;
        document->m_changed();
        return true;
    }

private:
    bool holds(const State& state, const std::vector<Key>& keys) const
    {
        return m_index + keys.size() <= state.ids.size() &&
               std::equal(keys.begin(), keys.end(), state.ids.begin() + static_cast<std::ptrdiff_t>(m_index),
                          [](const Key& key, PointId id) { return key.id == id; });
    }

    /// Whether both give other values to the same points, and nothing else.
    bool replacesSamePoints(const Edit& next) const
    {
        const auto sameId = [](const Key& a, const Key& b) { return a.id == b.id; };
        return m_index == next.m_index && m_shapes[0] == m_shapes[1] &&
               next.m_shapes[0] == next.m_shapes[1] &&
               std::equal(m_keys[0].begin(), m_keys[0].end(), m_keys[1].begin(), m_keys[1].end(), sameId) &&
               std::equal(m_keys[1].begin(), m_keys[1].end(), next.m_keys[0].begin(), next.m_keys[0].end(),
                          sameId) &&
               std::equal(next.m_keys[0].begin(), next.m_keys[0].end(), next.m_keys[1].begin(),
                          next.m_keys[1].end(), sameId);
    }

    std::weak_ptr<CurveDocument> m_document;
    Shape m_shapes[2]; ///< before and after
    std::vector<Key> m_keys[2];
    std::size_t m_index = 0;
};

std::shared_ptr<CurveDocument> CurveDocument::make(Curve curve, std::shared_ptr<EditHistory> history)
{
    if (history == nullptr)
    {
        history = std::make_shared<EditHistory>();
    }
    return std::shared_ptr<CurveDocument>(new CurveDocument(std::move(curve), std::move(history)));
}

CurveDocument::CurveDocument(Curve curve, std::shared_ptr<EditHistory> history)
    : m_history(std::move(history))
{
    m_state.curve = std::move(curve);
    const std::size_t points = m_state.curve.points.size();
    m_state.curve.handles.resize(m_state.curve.kind == CurveKind::Bezier ? points : 0);
    for (std::size_t i = 0; i < points; ++i)
    {
        m_state.ids.push_back(PointId{++m_lastId});
    }
}

std::optional<std::size_t> CurveDocument::indexOf(PointId id) const noexcept
{
    const auto found = std::find(m_state.ids.begin(), m_state.ids.end(), id);
    if (found == m_state.ids.end())
    {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - m_state.ids.begin());
}

bool CurveDocument::insertPoint(const Position& position, double parameter)
{
    if (!TERN_EDITOR_ASSERT(isShowable(position)) || !TERN_EDITOR_ASSERT(!std::isnan(parameter)))
    {
        return false;
    }
    State next = m_state;
    const std::size_t index = CurveGeometry::insertPoint(next.curve, parameter);
    next.ids.insert(next.ids.begin() + static_cast<std::ptrdiff_t>(index), PointId{++m_lastId});
    const bool isOnCurve = m_state.ids.size() > 1 && toVector(next.curve.points[index]) == toVector(position);
    if (!isOnCurve)
    {
        next.curve.points[index] = position;
    }
    change(std::move(next));
    return true;
}

bool CurveDocument::splitAt(double parameter)
{
    return TERN_EDITOR_ASSERT(!std::isnan(parameter)) &&
           insertPoint(CurveGeometry::positionAt(m_state.curve, parameter), parameter);
}

bool CurveDocument::appendPoints(const std::vector<Position>& points)
{
    if (!TERN_EDITOR_ASSERT(areShowable(points)))
    {
        return false;
    }
    State next = m_state;
    for (const Position& position : points)
    {
        next.curve.points.push_back(position);
        next.ids.push_back(PointId{++m_lastId});
    }
    if (next.curve.kind == CurveKind::Bezier)
    {
        next.curve.handles.resize(next.curve.points.size());
    }
    change(std::move(next));
    return true;
}

bool CurveDocument::removePoint(std::size_t index)
{
    if (!TERN_EDITOR_ASSERT(index < m_state.ids.size()))
    {
        return false;
    }
    State next = m_state;
    const auto offset = static_cast<std::ptrdiff_t>(index);
    next.curve.points.erase(next.curve.points.begin() + offset);
    next.ids.erase(next.ids.begin() + offset);
    if (next.curve.kind == CurveKind::Bezier)
    {
        next.curve.handles.erase(next.curve.handles.begin() + offset);
    }
    change(std::move(next));
    return true;
}

bool CurveDocument::movePoint(std::size_t index, const Position& position, SetterFlags flags)
{
    if (!TERN_EDITOR_ASSERT(index < m_state.ids.size()) || !TERN_EDITOR_ASSERT(isShowable(position)))
    {
        return false;
    }
    State next = m_state;
    next.curve.points[index] = position;
    change(std::move(next), flags);
    return true;
}

bool CurveDocument::setHandles(std::size_t index, const CurveHandles& handles, SetterFlags flags)
{
    if (m_state.curve.kind != CurveKind::Bezier)
    {
        return false;
    }
    const bool isHandleShowable = isShowable(handles.in) && isShowable(handles.out);
    if (!TERN_EDITOR_ASSERT(index < m_state.ids.size()) || !TERN_EDITOR_ASSERT(isHandleShowable))
    {
        return false;
    }
    State next = m_state;
    next.curve.handles[index] = handles;
    change(std::move(next), flags);
    return true;
}

bool CurveDocument::swapPoints(std::size_t first, std::size_t second)
{
    if (!TERN_EDITOR_ASSERT(first < m_state.ids.size()) || !TERN_EDITOR_ASSERT(second < m_state.ids.size()))
    {
        return false;
    }
    State next = m_state;
    std::swap(next.curve.points[first], next.curve.points[second]);
    std::swap(next.ids[first], next.ids[second]);
    if (next.curve.kind == CurveKind::Bezier)
    {
        std::swap(next.curve.handles[first], next.curve.handles[second]);
    }
    change(std::move(next));
    return true;
}

bool CurveDocument::setKind(CurveKind kind)
{
    State next = m_state;
    next.curve.handles.clear();
    if (kind == CurveKind::Bezier)
    {
        next.curve.handles = CurveGeometry::handlesOf(m_state.curve);
    }
    next.curve.kind = kind;
    if (kind != m_state.curve.kind)
    {
        change(std::move(next));
    }
    return true;
}

bool CurveDocument::setClosed(bool closed)
{
    State next = m_state;
    next.curve.closed = closed;
    change(std::move(next));
    return true;
}

bool CurveDocument::setColor(std::optional<Kodo::Render::Colour32Bit> color)
{
    State next = m_state;
    next.curve.color = color;
    change(std::move(next));
    return true;
}

tern::ReflectedObject CurveDocument::pointObject(std::size_t index)
{
    if (!TERN_EDITOR_ASSERT(index < m_state.ids.size()))
    {
        return {};
    }
    return objectOf(m_state.ids[index]);
}

tern::ReflectedObject CurveDocument::firstPointObject()
{
    return objectOf(std::nullopt);
}

qua::Connection CurveDocument::connectChanged(std::function<void()> slot)
{
    return m_changed.connect(std::move(slot));
}

void CurveDocument::change(State next, SetterFlags flags)
{
    const std::shared_ptr<CurveDocument> self = shared_from_this(); // a listener may let the last share go
    auto edit = std::make_unique<Edit>(self, m_state, next);
    if (edit->isNothing())
    {
        return;
    }
    m_state = std::move(next);
    ++m_revision;
    if (!flags.contains(tern::SetterFlag::NoUndo))
    {
        // Before anyone hears of it: an edit that a listener makes comes after this one in the history, too.
        m_history->push(std::move(edit), flags.contains(tern::SetterFlag::Interactive));
    }
    m_changed();
}

tern::ReflectedObject CurveDocument::objectOf(std::optional<PointId> id)
{
    std::weak_ptr<CurvePoint>& known = m_objects[id];
    std::shared_ptr<CurvePoint> point = known.lock();
    if (point == nullptr)
    {
        point = std::make_shared<CurvePoint>(weak_from_this(), id);
        known = point;
        if (m_objects.size() > 2 * m_state.ids.size() + 16) // mostly those of points that are gone
        {
            std::erase_if(m_objects, [](const auto& entry) { return entry.second.expired(); });
        }
    }
    return {point, tern::staticMetaObject<CurvePoint>()};
}
