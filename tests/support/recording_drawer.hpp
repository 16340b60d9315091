#pragma once

#include "tern_common/curve_view/i_curve_drawer.hpp"

#include <cstdint>
#include <functional>
#include <vector>

/// What a RecordingDrawer was asked for. It stands apart: a drawer's destructor is never run.
struct DrawerLog
{
    std::vector<std::vector<Kodo::Vector3>> drawn;
    std::vector<std::uint32_t> colors;
    std::vector<std::uint32_t> downColors;
    std::vector<float> thicknesses;
    std::function<void()> onCall;
};

/// Something else that a drawer may be beside a drawer.
class DrawersOtherBase
{
public:
    virtual int otherValue() const { return m_other; }

protected:
    DrawersOtherBase() = default;
    ~DrawersOtherBase() = default;

private:
    int m_other = 7;
};

/// Writes to a log of its own what it is asked for. Not only a drawer, and larger than one.
class RecordingDrawer final : public DrawersOtherBase, public ICurveDrawer
{
public:
    static constexpr float THICKNESS = 3.5F;

    explicit RecordingDrawer(DrawerLog& log) : m_log(&log) {}

    void draw(Kodo::DebugDrawer::Context&, const std::vector<Kodo::Vector3>& points) override
    {
        m_log->drawn.push_back(points);
        called();
    }
    void setColor(Kodo::Render::Colour32Bit colour) override
    {
        m_log->colors.push_back(colour.argb());
        called();
    }
    void setColorDown(Kodo::Render::Colour32Bit colour) override
    {
        m_log->downColors.push_back(colour.argb());
        called();
    }
    float thickness() const override { return THICKNESS; }
    void setThickness(float thickness) override { m_log->thicknesses.push_back(thickness); }

private:
    void called() const
    {
        if (m_log->onCall)
        {
            const auto keep = m_log->onCall;
            keep(); // may end the view, and this drawer with it
        }
    }

    DrawerLog* m_log;
    unsigned char m_room[4096] = {};
};
