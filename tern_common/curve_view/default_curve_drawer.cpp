#include "tern_common/curve_view/default_curve_drawer.hpp"

#include "kodo/core/stack_tracker.hpp"

namespace
{

void drawStrip(Kodo::DebugDrawer::Context& context, const std::vector<Kodo::Vector3>& points,
               Kodo::Render::Colour32Bit colour, float width, bool depthTest)
{
    Kodo::DebugDrawer::Context::Line line = context.line();
    line.colour(Kodo::Render::ColourRGBAFloat(colour));
    line.point(points);
    line.zTestEnable(depthTest);
    line.zWriteEnable(false);
    line.width(width);
}

} // namespace

void DefaultCurveDrawer::draw(Kodo::DebugDrawer::Context& context, const std::vector<Kodo::Vector3>& points)
{
    KODO_PROFILE_SCOPE("DefaultCurveDrawer::draw");
    drawStrip(context, points, m_color, m_thickness, true);
    drawStrip(context, points, m_colorDown, m_thickness, false);
}

void DefaultCurveDrawer::setColor(Kodo::Render::Colour32Bit colour)
{
    m_color = colour;
}

void DefaultCurveDrawer::setColorDown(Kodo::Render::Colour32Bit colour)
{
    m_colorDown = colour;
}

float DefaultCurveDrawer::thickness() const
{
    return 1.2F;
}

void DefaultCurveDrawer::setThickness(float thickness)
{
    m_thickness = thickness;
}
