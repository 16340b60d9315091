#include "kodo/core/stack_tracker.hpp"
#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_presence.hpp"
#include "tern_common/curve_view/lightened_colour.hpp"

using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;

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
            point->setColor(TernCommonDetail::lightenedColour(colour), point->getOverlapColor());
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
