#pragma once

#include "kodo/math/vector3.hpp"
#include "kodo/render/colour.hpp"
#include "kodo/render/debug_drawer.hpp"

#include <concepts>
#include <memory>
#include <new>
#include <vector>

/// Draws the polyline of a curve view. Main thread only.
///
/// There is no virtual destructor on purpose: whoever owns a drawer through this interface releases its
/// storage and runs no destructor, so a drawer must not own anything that needs one. `std::unique_ptr` does
/// just that, see below. A drawer must be made by plain `new` (or `std::make_unique`), without an alignment
/// or an operator of its own.
class ICurveDrawer
{
public:
    /// Draws through @p points: world space, in order, never empty when a view draws.
    virtual void draw(Kodo::DebugDrawer::Context& context, const std::vector<Kodo::Vector3>& points) = 0;
    /// Colour of what is visible.
    virtual void setColor(Kodo::Render::Colour32Bit colour) = 0;
    /// Colour of what is hidden behind scene geometry.
    virtual void setColorDown(Kodo::Render::Colour32Bit colour) = 0;
    /// The line's width as the view reports it.
    virtual float thickness() const = 0;
    /// The line's width as it is drawn.
    virtual void setThickness(float thickness) = 0;

protected:
    ICurveDrawer() = default;
    ICurveDrawer(const ICurveDrawer&) = default;
    ICurveDrawer& operator=(const ICurveDrawer&) = default;
    ~ICurveDrawer() = default;
};

/// Releases what `new` gave for a drawer, whatever class and size it has.
template <>
struct std::default_delete<ICurveDrawer>
{
    constexpr default_delete() noexcept = default;
    template <std::derived_from<ICurveDrawer> Drawer>
    constexpr default_delete(const std::default_delete<Drawer>&) noexcept
    {
    }

    void operator()(ICurveDrawer* drawer) const noexcept
    {
        // The interface may stand anywhere in the drawer. The size is not known here: hence without.
        ::operator delete(dynamic_cast<void*>(drawer));
    }
};
