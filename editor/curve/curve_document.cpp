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

bool areShowable(const std::vector<Position>& points)
{
    return std::all_of(points.begin(), points.end(), [](const Position& point) { return isShowable(point); });
}

} // namespace

/// A change of a document that may be gone by the time it is undone.
class CurveDocument::Edit final : public EditHistory::IEdit
{
public:
    Edit(std::weak_ptr<CurveDocument> document, CurveChange change)
        : m_document(std::move(document)), m_change(std::move(change))
    {
    }

    void undo() override { apply(CurveChange::Direction::Back); }
    void redo() override { apply(CurveChange::Direction::Forth); }

    bool absorb(const IEdit& next) override
    {
        const auto* const edit = dynamic_cast<const Edit*>(&next);
        return edit != nullptr && edit->m_document.lock() == m_document.lock() &&
               m_change.absorb(edit->m_change);
    }

    bool isNothing() const override { return m_change.isNothing(); }

private:
    void apply(CurveChange::Direction direction) const
    {
        const std::shared_ptr<CurveDocument> document = m_document.lock();
        if (document != nullptr && TERN_EDITOR_ASSERT(m_change.apply(document->m_state, direction)))
        {
            ++document->m_revision;
            document->m_changed();
        }
    }

    std::weak_ptr<CurveDocument> m_document;
    CurveChange m_change;
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
    CurveState next = m_state;
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
    CurveState next = m_state;
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
    CurveState next = m_state;
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
    CurveState next = m_state;
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
    CurveState next = m_state;
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
    CurveState next = m_state;
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
    CurveState next = m_state;
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
    CurveState next = m_state;
    next.curve.closed = closed;
    change(std::move(next));
    return true;
}

bool CurveDocument::setColor(std::optional<Kodo::Render::Colour32Bit> color)
{
    CurveState next = m_state;
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

void CurveDocument::change(CurveState next, SetterFlags flags)
{
    const CurveChange change(m_state, next);
    if (change.isNothing())
    {
        return;
    }
    const std::shared_ptr<CurveDocument> self = shared_from_this(); // a listener may let the last share go
    m_state = std::move(next);
    ++m_revision;
    if (!flags.contains(tern::SetterFlag::NoUndo))
    {
        // Before anyone hears of it: an edit that a listener makes comes after this one in the history, too.
        m_history->push(std::make_unique<Edit>(self, change), flags.contains(tern::SetterFlag::Interactive));
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
