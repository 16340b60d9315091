#include "tern_common/curve_view/curve_view.hpp"

#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/stack_tracker.hpp"
#include "tern_common/assertion.hpp"
#include "tern_common/curve_view/curve_view_presence.hpp"
#include "tern_common/curve_view/curve_view_sampler.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tern_common/curve_view/default_curve_drawer.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace
{

constexpr float SAME_ORIGIN = 0.0004F;

CurveViewSpaceCache& cacheOf(int spaceId)
{
    return CurveViewSpaceCache::instance(*Kodo::ChunkManager::instance().space(spaceId, true));
}

} // namespace

CurveView::IAbstractCurve::IAbstractCurve() = default;
CurveView::IAbstractCurve::~IAbstractCurve() = default;

CurveView::CurveView(int spaceId, const Kodo::Matrix& origin, std::unique_ptr<ICurveDrawer> drawer)
    : m_drawer(std::move(drawer)), m_origin(origin), m_spaceId(spaceId),
      m_presence(std::make_shared<Presence>(Presence{this}))
{
}

CurveView::CurveView(std::unique_ptr<IAbstractCurve> curve, int spaceId)
    : CurveView(std::move(curve), spaceId, std::make_unique<DefaultCurveDrawer>())
{
}

CurveView::CurveView(std::unique_ptr<IAbstractCurve> curve, int spaceId, const Kodo::Matrix& origin)
    : CurveView(spaceId, origin, std::make_unique<DefaultCurveDrawer>())
{
    show(std::move(curve));
}

CurveView::CurveView(std::unique_ptr<IAbstractCurve> curve, int spaceId, std::unique_ptr<ICurveDrawer> drawer)
    : CurveView(spaceId, Kodo::Matrix::IDENTITY, std::move(drawer))
{
    show(std::move(curve));
}

CurveView::CurveView(CurveView&& other)
    : m_curve(std::move(other.m_curve)), m_drawer(std::move(other.m_drawer)),
      m_curveColor(other.m_curveColor), m_curveColorDown(other.m_curveColorDown),
      m_keyColor(other.m_keyColor), m_keyHoverColor(other.m_keyHoverColor),
      m_keySelectedColor(other.m_keySelectedColor), m_points(std::move(other.m_points)),
      m_parameters(std::move(other.m_parameters)), m_controlPoints(std::move(other.m_controlPoints)),
      m_origin(other.m_origin), m_spaceId(other.m_spaceId), m_ghostPoint(std::move(other.m_ghostPoint)),
      m_connections(std::move(other.m_connections)), m_createJob(std::move(other.m_createJob)),
      m_presence(std::make_shared<Presence>(Presence{this}))
{
    other.m_presence->makeAllObsolete();
}

CurveView::~CurveView()
{
    KODO_PROFILE_SCOPE("CurveView::~CurveView");
    m_presence->view = nullptr;
    m_presence->makeAllObsolete();
    m_connections.clear();
    disableCurveView();
    destroyControlPoints();
    destroyGhostPoint();
    m_createJob.cancel(true);
    // The members go last to first: the drawer after all that is drawn, and the model at the very end.
}

void CurveView::show(std::unique_ptr<IAbstractCurve> curve)
{
    setCurve(std::move(curve));
    enableCurveView();
    if (m_drawer)
    {
        m_drawer->setColor(m_curveColor);
        m_drawer->setColorDown(m_curveColorDown);
    }
}

void CurveView::setCurve(std::unique_ptr<IAbstractCurve> curve)
{
    KODO_PROFILE_SCOPE("CurveView::setCurve");
    const std::shared_ptr<Presence> presence = m_presence;
    presence->makeAllObsolete();
    m_connections.clear();
    std::swap(m_curve, curve);
    curve.reset(); // may call back in, and set yet another model: then that one is connected below
    if (presence->view == nullptr)
    {
        return;
    }
    if (m_curve)
    {
        connectCurve();
    }
    update();
}

void CurveView::connectCurve()
{
    m_curve->m_view = this;
    m_connections.clear();
    const auto connect = [this](auto& signal, auto handler)
    {
        m_connections.push_back(signal.connect(
            [presence = m_presence, handler](auto... arguments)
            {
                if (CurveView* const view = presence->view)
                {
                    (view->*handler)(arguments...);
                }
            }));
    };
    connect(m_curve->changed, &CurveView::update);
    connect(m_curve->pointUpdated, &CurveView::updatePoint);
    connect(m_curve->pointMoved, &CurveView::updatePointMoved);
    connect(m_curve->pointAdded, &CurveView::updatePointAdded);
    connect(m_curve->pointRemoved, &CurveView::updatePointRemoved);
}

void CurveView::setOrigin(const Kodo::Matrix& origin)
{
    KODO_PROFILE_SCOPE("CurveView::setOrigin");
    if (!Kodo::almostEqual(m_origin, origin, SAME_ORIGIN))
    {
        m_origin = origin;
        update();
    }
}

void CurveView::enableCurveView()
{
    cacheOf(m_spaceId).registerView(this);
}

void CurveView::disableCurveView()
{
    cacheOf(m_spaceId).unregisterView(this);
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
    if (!TERN_COMMON_ASSERT(isWithin(index, count)))
    {
        return;
    }
    for (std::size_t i = index; i < index + count && presence->view != nullptr; ++i)
    {
        refreshControlPoint(i);
    }
}

void CurveView::updatePointAdded(std::size_t index, std::size_t count)
{
    const std::shared_ptr<Presence> presence = m_presence;
    const bool isIndex =
        TERN_COMMON_ASSERT_AS(index != std::numeric_limits<std::size_t>::max(), "index != -1");
    if (presence->view == nullptr || isInvalid() || presence->view == nullptr)
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
    if (!isIndex || count == 0)
    {
        return; // the rest would be reported twice, or do nothing
    }
    const std::size_t pointCount = m_curve ? m_curve->pointCount() : 0;
    if (presence->view == nullptr)
    {
        return;
    }
    if (TERN_COMMON_ASSERT(index <= m_controlPoints.size() && index <= pointCount &&
                           count <= pointCount - index))
    {
        insertControlPoints(index, count);
    }
}

void CurveView::updatePointMoved(std::size_t first, std::size_t second)
{
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
    if (TERN_COMMON_ASSERT(isWithin(first, 1) && isWithin(second, 1)))
    {
        std::swap(m_controlPoints[first], m_controlPoints[second]);
        ++presence->pointEdits;
    }
}

void CurveView::updatePointRemoved(std::size_t index, std::size_t count)
{
    const std::shared_ptr<Presence> presence = m_presence;
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
    ++presence->pointEdits; // also where there are none: they may be in the making
    if (!m_controlPoints.empty() && TERN_COMMON_ASSERT(isWithin(index, count)))
    {
        removeControlPoints(index, count);
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
