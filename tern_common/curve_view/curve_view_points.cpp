#include "kodo/core/main_thread_tracker.hpp"
#include "kodo/core/stack_tracker.hpp"
#include "tern/property_change_notifier.hpp"
#include "tern_common/assertion.hpp"
#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_new_points.hpp"
#include "tern_common/curve_view/curve_view_presence.hpp"
#include "tern_common/curve_view/lightened_colour.hpp"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace
{

/// Those that a call from within has overtaken, without the model having fewer points since.
constexpr int MOST_VAIN_ATTEMPTS = 8;

} // namespace

void CurveView::createControlPoints()
{
    KODO_PROFILE_SCOPE("CurveView::createControlPoints");
    if (!Kodo::MainThreadTracker::isCurrentThreadMain())
    {
        deferControlPoints();
        return;
    }
    // A model that removes points while they are being made has left none behind that could be kept. Each
    // time it has fewer; one that only says so would keep this from ending.
    const std::shared_ptr<Presence> presence = m_presence;
    std::size_t fewest = std::numeric_limits<std::size_t>::max();
    int vainAttempts = 0;
    while (presence->view != nullptr && m_curve && m_controlPoints.empty())
    {
        std::size_t count = 0;
        if (makeAllControlPoints(count))
        {
            return;
        }
        vainAttempts += count < fewest ? 0 : 1;
        fewest = std::min(fewest, count);
        if (!TERN_COMMON_ASSERT(vainAttempts < MOST_VAIN_ATTEMPTS))
        {
            return;
        }
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
/// @p count becomes what the model said it has.
bool CurveView::makeAllControlPoints(std::size_t& count)
{
    const std::shared_ptr<Presence> presence = m_presence;
    const std::size_t edits = presence->pointEdits;
    NewPoints made(m_spaceId);
    count = m_curve->pointCount();
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
            rebuild(*presence);
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
    Kodo::SmartPointer<CurveViewControlPoint> point =
        new CurveViewControlPoint(deleter, spaceId, std::move(object), transform);
    if (presence->pointEdits != edits) // making it may report, and whoever hears that may call in
    {
        NewPoints::leaveEditorChunk(spaceId, {&point, 1});
        return {};
    }
    point->setColor(TernCommonDetail::lightenedColour(m_curveColor),
                    Kodo::Render::ColourRGBAFloat(m_curveColorDown));
    return point;
}

Kodo::Matrix CurveView::pointTransform(const Kodo::Vector3& position) const noexcept
{
    Kodo::Matrix transform;
    transform.setTranslate(m_origin.applyPoint(position));
    return transform;
}

/// Moves control points to where the curve's points are. Listeners and model may change which points there
/// are meanwhile: those that are left are found again, and new ones are in place already.
void CurveView::refreshControlPoints(std::size_t index, std::size_t count)
{
    const std::shared_ptr<Presence> presence = m_presence;
    const auto first = m_controlPoints.begin() + static_cast<std::ptrdiff_t>(index);
    const ControlPoints points(first, first + static_cast<std::ptrdiff_t>(count));
    for (std::size_t i = 0; i < count && presence->view != nullptr; ++i)
    {
        const tern::PropertyChangeNotifier notifier(points[i]->getRefObject(),
                                                    {tern::PropertyChangeNotifier::ALL_PROPERTIES});
        if (presence->view != nullptr)
        {
            refreshControlPoint(points[i], index + i, *presence);
        }
    }
}

/// @p hint is where the point is, unless others have come or gone.
void CurveView::refreshControlPoint(const Kodo::SmartPointer<CurveViewControlPoint>& point, std::size_t hint,
                                    const Presence& presence)
{
    const bool isAtHint = hint < m_controlPoints.size() && m_controlPoints[hint] == point;
    const auto place = isAtHint ? m_controlPoints.begin() + static_cast<std::ptrdiff_t>(hint)
                                : std::find(m_controlPoints.begin(), m_controlPoints.end(), point);
    if (place == m_controlPoints.end() || !m_curve)
    {
        return;
    }
    const Kodo::Vector3 position =
        m_curve->pointPosition(static_cast<std::size_t>(place - m_controlPoints.begin()));
    if (presence.view != nullptr)
    {
        point->edTransform(pointTransform(position), {});
    }
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
    if (const auto ghost = std::exchange(m_ghostPoint, {}))
    {
        NewPoints::leaveEditorChunk(m_spaceId, {&ghost, 1});
    }
}
