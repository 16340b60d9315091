#include "tern_common/curve_view/curve_view.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/stack_tracker.hpp"
#include "tern_common/assertion.hpp"
#include "tern_common/curve_view/curve_view_presence.hpp"
#include "tern_common/curve_view/curve_view_sampler.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace
{

constexpr float SAME_ORIGIN = 0.0004F;

} // namespace

void CurveView::setOrigin(const Kodo::Matrix& origin)
{
    KODO_PROFILE_SCOPE("CurveView::setOrigin");
    if (!Kodo::almostEqual(m_origin, origin, SAME_ORIGIN))
    {
        m_origin = origin;
        update();
    }
}

void CurveView::prepare()
{
    KODO_PROFILE_SCOPE("CurveView::prepare");
    update();
}

void CurveView::update()
{
    KODO_PROFILE_SCOPE("CurveView::update");
    const std::shared_ptr<Presence> presence = m_presence;
    clearSamples();
    destroyControlPoints();
    if (presence->view != nullptr && m_curve)
    {
        createControlPoints();
    }
    if (presence->view != nullptr && m_curve)
    {
        updateCurve();
    }
}

void CurveView::updatePoint(std::size_t index, std::size_t count)
{
    KODO_PROFILE_SCOPE("CurveView::updatePoint");
    const std::shared_ptr<Presence> presence = m_presence;
    if (isInvalid() || presence->view == nullptr)
    {
        return;
    }
    updateCurve();
    if (presence->view == nullptr)
    {
        return;
    }
    if (m_controlPoints.empty())
    {
        createControlPoints();
        return;
    }
    if (count == 0)
    {
        return;
    }
    // The points as the model counts them as well: it is asked for these places.
    const std::size_t pointCount = m_curve ? m_curve->pointCount() : 0;
    if (presence->view != nullptr &&
        TERN_COMMON_ASSERT(isWithin(index, count) && index + count <= pointCount))
    {
        refreshControlPoints(index, count);
    }
}

void CurveView::updatePointAdded(std::size_t index, std::size_t count)
{
    const std::shared_ptr<Presence> presence = m_presence;
    const bool isIndex =
        TERN_COMMON_ASSERT_AS(index != std::numeric_limits<std::size_t>::max(), "index != -1");
    if (presence->view == nullptr || !followEdit() || !isIndex || count == 0)
    {
        return; // the rest would report the index again, or do nothing
    }
    const std::size_t edits = presence->pointEdits;
    const std::size_t pointCount = m_curve ? m_curve->pointCount() : 0;
    if (presence->pointEdits != edits)
    {
        rebuild(*presence);
    }
    else if (TERN_COMMON_ASSERT(index <= m_controlPoints.size() && index <= pointCount &&
                                count <= pointCount - index))
    {
        insertControlPoints(index, count);
    }
}

void CurveView::updatePointMoved(std::size_t first, std::size_t second)
{
    if (followEdit() && TERN_COMMON_ASSERT(isWithin(first, 1) && isWithin(second, 1)))
    {
        std::swap(m_controlPoints[first], m_controlPoints[second]);
        ++m_presence->pointEdits;
    }
}

void CurveView::updatePointRemoved(std::size_t index, std::size_t count)
{
    const std::shared_ptr<Presence> presence = m_presence;
    const std::size_t edits = presence->pointEdits;
    const bool invalid = isInvalid();
    if (presence->view == nullptr)
    {
        return;
    }
    if (invalid)
    {
        destroyControlPoints();
        return;
    }
    updateCurve();
    if (presence->view == nullptr || count == 0)
    {
        return;
    }
    if (presence->pointEdits != edits)
    {
        rebuild(*presence);
        return;
    }
    ++presence->pointEdits; // also where there are none: they may be in the making
    if (!m_controlPoints.empty() && TERN_COMMON_ASSERT(isWithin(index, count)))
    {
        removeControlPoints(index, count);
    }
}

/// What comes before control points are added or exchanged. True when that is left to do.
bool CurveView::followEdit()
{
    const std::shared_ptr<Presence> presence = m_presence;
    const std::size_t edits = presence->pointEdits;
    if (isInvalid() || presence->view == nullptr)
    {
        return false;
    }
    updateCurve();
    if (presence->view == nullptr)
    {
        return false;
    }
    if (m_controlPoints.empty())
    {
        createControlPoints();
        return false;
    }
    if (presence->pointEdits != edits)
    {
        rebuild(*presence);
        return false;
    }
    return true;
}

/// For an edit that a call from within has overtaken: the numbers it names its points by may be those of
/// other points by now.
void CurveView::rebuild(const Presence& presence)
{
    if (presence.view != nullptr && !presence.view->isInvalid() && presence.view != nullptr)
    {
        presence.view->update();
    }
}

/// Whether there is a model that can't be shown now. The call may end the view.
bool CurveView::isInvalid() const
{
    return m_curve && !m_curve->isValid();
}

/// Nothing is within whatever range.
bool CurveView::isWithin(std::size_t index, std::size_t count) const noexcept
{
    const std::size_t size = m_controlPoints.size();
    return count == 0 || (index < size && count <= size - index);
}

void CurveView::clearSamples() noexcept
{
    ++m_presence->samplings;
    m_points.clear();
    m_parameters.clear();
}

void CurveView::updateCurve()
{
    KODO_PROFILE_SCOPE("CurveView::updateCurve");
    Sampler sampler(*this);
    const std::size_t count = sampler.count();
    for (std::size_t i = 0; i + 1 < count && sampler.isCurrent(); ++i)
    {
        TERN_COMMON_ASSERT_AS(sampler.addSegment(i), "sampling of the segment ends");
    }
    if (count != 0 && sampler.isCurrent())
    {
        sampler.addLastPoint(count - 1);
    }
    sampler.finish();
}

void CurveView::tryDeleteControlPoint(CurveViewControlPoint* point)
{
    KODO_PROFILE_SCOPE("CurveView::tryDeleteControlPoint");
    const std::shared_ptr<Presence> presence = m_presence;
    if (!TERN_COMMON_ASSERT(m_curve) && presence->view == nullptr)
    {
        return; // whoever heard of it has ended the view
    }
    const auto found = std::find(m_controlPoints.begin(), m_controlPoints.end(), point);
    if (found == m_controlPoints.end())
    {
        Kodo::DebugMessageHelper(0, 5).message(
            "CurveView::tryDeleteControlPoint :: control point cannot be found");
    }
    else if (m_curve)
    {
        m_curve->removePoint(static_cast<std::size_t>(found - m_controlPoints.begin()));
    }
}
