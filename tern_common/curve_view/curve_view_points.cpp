#include "kodo/core/main_thread_tracker.hpp"
#include "kodo/core/stack_tracker.hpp"
#include "tern/property_change_notifier.hpp"
#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_new_points.hpp"
#include "tern_common/curve_view/curve_view_presence.hpp"

#include <utility>

namespace
{

using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;

ColourRGBAFloat lighten(const ColourRGBAFloat& colour)
{
    const auto halfWay = [](float c) { return c + (1.0F - c) * 0.5F; };
    return {halfWay(colour.r()), halfWay(colour.g()), halfWay(colour.b()), colour.a()};
}

} // namespace

void CurveView::createControlPoints()
{
    KODO_PROFILE_SCOPE("CurveView::createControlPoints");
    if (!Kodo::MainThreadTracker::isCurrentThreadMain())
    {
        deferControlPoints();
        return;
    }
    // A model that removes points while they are being made has left none behind that could be kept.
    const std::shared_ptr<Presence> presence = m_presence;
    bool isDone = false;
    while (!isDone && presence->view != nullptr && m_curve && m_controlPoints.empty())
    {
        isDone = makeAllControlPoints();
    }
}

void CurveView::deferControlPoints()
{
    const auto create = [presence = m_presence]
    {
        if (CurveView* const view = presence->view)
        {
            view->createControlPoints();
        }
        return true;
    };
    Kodo::AsyncManager::Job job = Kodo::AsyncManager::sync(false, create);
    m_createJob.cancel(true);
    m_createJob = std::move(job);
}

/// False when a call from within has changed which control points there are: none of these are kept then.
bool CurveView::makeAllControlPoints()
{
    const std::shared_ptr<Presence> presence = m_presence;
    const std::size_t edits = presence->pointEdits;
    NewPoints made(m_spaceId);
    const std::size_t count = m_curve->pointCount();
    for (std::size_t i = 0; i < count && presence->pointEdits == edits; ++i)
    {
        if (Kodo::SmartPointer<CurveViewControlPoint> point = makeControlPoint(i))
        {
            made.add(std::move(point));
        }
    }
    if (presence->pointEdits != edits)
    {
        return false;
    }
    m_controlPoints = made.take();
    ++presence->pointEdits;
    return true;
}

void CurveView::insertControlPoints(std::size_t index, std::size_t count)
{
    const std::shared_ptr<Presence> presence = m_presence;
    NewPoints made(m_spaceId);
    for (std::size_t i = index; i < index + count; ++i)
    {
        Kodo::SmartPointer<CurveViewControlPoint> point = makeControlPoint(i);
        if (!point)
        {
            if (presence->view != nullptr)
            {
                update(); // other points have come or gone meanwhile: these may have no place any more
            }
            return;
        }
        made.add(std::move(point));
    }
    m_controlPoints.insert(m_controlPoints.begin() + static_cast<std::ptrdiff_t>(index),
                           made.points().begin(), made.points().end());
    made.take();
    ++presence->pointEdits;
}

/// Null when a call from within has changed which control points there are.
Kodo::SmartPointer<CurveViewControlPoint> CurveView::makeControlPoint(std::size_t index)
{
    const std::shared_ptr<Presence> presence = m_presence;
    const std::size_t edits = presence->pointEdits;
    const Kodo::Vector3 position = m_curve->pointPosition(index);
    if (presence->pointEdits != edits)
    {
        return {};
    }
    const Kodo::Matrix transform = pointTransform(position);
    tern::ReflectedObject object = m_curve->pointObject(index);
    if (presence->pointEdits != edits)
    {
        return {};
    }
    const auto deleter = [presence](CurveViewControlPoint* point)
    {
        if (CurveView* const view = presence->view)
        {
            view->tryDeleteControlPoint(point);
        }
    };
    const int spaceId = m_spaceId;
    const Kodo::SmartPointer<CurveViewControlPoint> point =
        new CurveViewControlPoint(deleter, spaceId, std::move(object), transform);
    if (presence->pointEdits != edits) // making it may report, and whoever hears that may call in
    {
        NewPoints::leaveEditorChunk(spaceId, {point});
        return {};
    }
    point->setColor(lighten(ColourRGBAFloat(m_curveColor)), ColourRGBAFloat(m_curveColorDown));
    return point;
}

Kodo::Matrix CurveView::pointTransform(const Kodo::Vector3& position) const noexcept
{
    Kodo::Matrix transform;
    transform.setTranslate(m_origin.applyPoint(position));
    return transform;
}

/// Moves a control point to where the curve's point is, if both are still there when listeners and model have
/// been called.
void CurveView::refreshControlPoint(std::size_t index)
{
    if (index >= m_controlPoints.size())
    {
        return;
    }
    const std::shared_ptr<Presence> presence = m_presence;
    const tern::PropertyChangeNotifier notifier(m_controlPoints[index]->getRefObject(),
                                                {tern::PropertyChangeNotifier::ALL_PROPERTIES});
    if (presence->view == nullptr || !m_curve)
    {
        return;
    }
    const Kodo::Vector3 position = m_curve->pointPosition(index);
    if (presence->view == nullptr || index >= m_controlPoints.size())
    {
        return;
    }
    const Kodo::SmartPointer<CurveViewControlPoint> point = m_controlPoints[index];
    point->edTransform(pointTransform(position), {});
}

void CurveView::removeControlPoints(std::size_t index, std::size_t count)
{
    const auto first = m_controlPoints.begin() + static_cast<std::ptrdiff_t>(index);
    const auto last = first + static_cast<std::ptrdiff_t>(count);
    ControlPoints removed(std::make_move_iterator(first), std::make_move_iterator(last));
    m_controlPoints.erase(first, last);
    const Kodo::SmartPointer<Kodo::ChunkSpace> space = Kodo::ChunkManager::instance().space(m_spaceId, true);
    for (; !removed.empty(); removed.pop_back())
    {
        space->editorChunk().delDynamicItem(removed.back());
    }
}

void CurveView::destroyControlPoints()
{
    KODO_PROFILE_SCOPE("CurveView::destroyControlPoints");
    ++m_presence->pointEdits;
    // Out of the view first: the points' destructors may come back to it.
    const ControlPoints points = std::exchange(m_controlPoints, {});
    NewPoints::leaveEditorChunk(m_spaceId, points);
}

void CurveView::destroyGhostPoint()
{
    KODO_PROFILE_SCOPE("CurveView::destroyGhostPoint");
    if (m_ghostPoint)
    {
        NewPoints::leaveEditorChunk(m_spaceId, {std::exchange(m_ghostPoint, {})});
    }
}

void CurveView::render(Kodo::DebugDrawer::Context& context)
{
    KODO_PROFILE_SCOPE("CurveView::render");
    if (m_points.empty())
    {
        return;
    }
    const std::shared_ptr<Presence> presence = m_presence;
    if (m_drawer)
    {
        m_drawer->draw(context, m_points);
    }
    if (presence->view != nullptr)
    {
        drawControlPoints(context);
    }
    if (presence->view != nullptr && m_ghostPoint)
    {
        const Kodo::SmartPointer<CurveViewControlPoint> ghost = m_ghostPoint;
        ghost->render(context);
        if (presence->view != nullptr)
        {
            destroyGhostPoint();
        }
    }
}

void CurveView::drawControlPoints(Kodo::DebugDrawer::Context& context) const
{
    KODO_PROFILE_SCOPE("CurveView::drawControlPoints");
    const std::shared_ptr<Presence> presence = m_presence;
    for (const bool selected : {true, false})
    {
        // By index: whoever hears what a point reports may change the points, or end the view.
        for (std::size_t i = 0; presence->view != nullptr && i < m_controlPoints.size(); ++i)
        {
            if (m_controlPoints[i]->edIsSelected() == selected)
            {
                const Kodo::SmartPointer<CurveViewControlPoint> point = m_controlPoints[i];
                point->render(context);
            }
        }
    }
}

void CurveView::setCurveColor(Colour32Bit colour)
{
    m_curveColor = colour;
    const std::shared_ptr<Presence> presence = m_presence;
    if (m_drawer)
    {
        m_drawer->setColor(colour);
    }
    if (presence->view != nullptr)
    {
        for (const auto& point : m_controlPoints)
        {
            point->setColor(lighten(ColourRGBAFloat(colour)), point->getOverlapColor());
        }
    }
}

void CurveView::setCurveColorDown(Colour32Bit colour)
{
    m_curveColorDown = colour;
    const std::shared_ptr<Presence> presence = m_presence;
    if (m_drawer)
    {
        m_drawer->setColorDown(colour);
    }
    if (presence->view != nullptr)
    {
        for (const auto& point : m_controlPoints)
        {
            point->setColor(point->getColor(), ColourRGBAFloat(colour));
        }
    }
}

void CurveView::setCurveThickness(float thickness)
{
    if (m_drawer)
    {
        m_drawer->setThickness(thickness);
    }
}

float CurveView::curveThickness() const
{
    return m_drawer ? m_drawer->thickness() : 1.2F;
}
