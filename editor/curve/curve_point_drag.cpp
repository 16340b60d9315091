#include "editor/curve/curve_point_drag.hpp"

#include "editor/curve/curve_point.hpp"
#include "editor/curve/position_text.hpp"

#include <utility>

namespace
{

/// The editor's own object behind a control point; null for a preview or another host's.
CurvePoint* curvePointOf(const CurveViewControlPoint& point)
{
    return dynamic_cast<CurvePoint*>(point.getRefObject().object());
}

} // namespace

bool applyToCurve(CurveViewControlPoint& point, const Kodo::Matrix& origin)
{
    const tern::ReflectedObject object = point.getRefObject(); // the move may destroy the control point
    const CurvePoint* const curvePoint = curvePointOf(point);
    const std::optional<Position> before =
        curvePoint != nullptr ? curvePoint->position() : std::optional<Position>();
    if (!before)
    {
        return false;
    }
    const Kodo::Vector3 place = point.edTransform().translation();
    if (origin.applyPoint(toVector(*before)) == place)
    {
        return true; // there and back again would leave the rounding of it as an edit
    }
    Kodo::Matrix toCurve = origin;
    return toCurve.invert() &&
           object.setProperty(CurvePoint::POSITION, formatPosition(toPosition(toCurve.applyPoint(place))));
}

CurvePointDrag::CurvePointDrag(Kodo::SmartPointer<CurveViewControlPoint> point, const Kodo::Matrix& origin)
    : m_point(std::move(point)), m_origin(origin), m_start(m_point->edTransform())
{
    if (const CurvePoint* const curvePoint = curvePointOf(*m_point))
    {
        m_document = curvePoint->document();
    }
    if (m_document != nullptr)
    {
        m_step.emplace(m_document->history());
    }
}

CurvePointDrag::~CurvePointDrag() = default;

bool CurvePointDrag::moveTo(const Kodo::Vector3& place)
{
    Kodo::Matrix transform;
    transform.setTranslate(place);
    return m_point->edTransform(transform, tern::SetterFlag::Interactive) && applyToCurve(*m_point, m_origin);
}

void CurvePointDrag::cancel()
{
    m_point->edTransform(m_start, {});
    if (m_step)
    {
        m_step->cancel();
    }
}
