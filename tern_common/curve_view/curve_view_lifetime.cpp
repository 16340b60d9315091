#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/core/stack_tracker.hpp"
#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_presence.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tern_common/curve_view/default_curve_drawer.hpp"

#include <utility>

namespace
{

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

// Nothing is taken before what can throw has been done: the source keeps all then.
// NOLINTNEXTLINE(performance-noexcept-move-constructor): it allocates
CurveView::CurveView(CurveView&& other) : CurveView(other.m_spaceId, other.m_origin, nullptr)
{
    other.m_presence->makeAllObsolete();
    m_curve = std::move(other.m_curve);
    m_drawer = std::move(other.m_drawer);
    m_curveColor = other.m_curveColor;
    m_curveColorDown = other.m_curveColorDown;
    m_keyColor = other.m_keyColor;
    m_keyHoverColor = other.m_keyHoverColor;
    m_keySelectedColor = other.m_keySelectedColor;
    m_points = std::move(other.m_points);
    m_parameters = std::move(other.m_parameters);
    m_controlPoints = std::move(other.m_controlPoints);
    m_ghostPoint = std::move(other.m_ghostPoint);
    m_connections = std::move(other.m_connections);
    m_createJob = std::move(other.m_createJob);
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
    if (curve == m_curve)
    {
        static_cast<void>(curve.release()); // given again, as getCurve() yields it: not an old one
    }
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

void CurveView::enableCurveView()
{
    cacheOf(m_spaceId).registerView(this);
}

void CurveView::disableCurveView()
{
    cacheOf(m_spaceId).unregisterView(this);
}
