#pragma once

#include "tern_common/curve_view/i_curve_drawer.hpp"
#include "tern_common/export.hpp"

/// Draws a curve as one strip of lines, twice: tested against the depth of the scene in the one colour, and
/// untested in the other, so that hidden parts show too. Writes no depth. Main thread only.
class TERN_COMMON_API DefaultCurveDrawer final : public ICurveDrawer
{
public:
    void draw(Kodo::DebugDrawer::Context& context, const std::vector<Kodo::Vector3>& points) override;
    void setColor(Kodo::Render::Colour32Bit colour) override;
    void setColorDown(Kodo::Render::Colour32Bit colour) override;
    /// Always 1.2, whatever width is drawn: editors show this figure, in units of their own.
    float thickness() const override;
    /// @p thickness in world units.
    void setThickness(float thickness) override;

private:
    Kodo::Render::Colour32Bit m_color{0xFFFF0000U};
    Kodo::Render::Colour32Bit m_colorDown{0xFFFF0000U};
    float m_thickness = 0.04F;
};
