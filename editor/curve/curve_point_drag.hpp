#pragma once

#include "editor/curve/curve_document.hpp"
#include "editor/history/edit_history.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/math/matrix.hpp"
#include "kodo/math/vector3.hpp"
#include "tern_common/curve_view/curve_view_control_point.hpp"

#include <memory>
#include <optional>

/// Moves the curve's point to where its control point stands, by way of the reflected object, so that the
/// move can be undone and every view follows. @p origin is that of the control point's view. A control point
/// that stands where its view put it changes nothing. False when there is no curve's point to move (it is
/// gone, or the control point is a preview), or the origin has no inverse. Main thread only.
bool applyToCurve(CurveViewControlPoint& point, const Kodo::Matrix& origin);

/// A control point under the mouse, from press to release: all its moves are one step of the history, and
/// nothing else can be undone meanwhile. Removal of the point ends what the moves do, not the drag. Main
/// thread only.
class CurvePointDrag
{
public:
    /// @p point must not be null; @p origin is that of its view.
    CurvePointDrag(Kodo::SmartPointer<CurveViewControlPoint> point, const Kodo::Matrix& origin);
    CurvePointDrag(const CurvePointDrag&) = delete;
    CurvePointDrag& operator=(const CurvePointDrag&) = delete;
    /// The release.
    ~CurvePointDrag();

    /// Moves the control point, and the curve's point with it, to a place in the world. False when the scene
    /// or the curve doesn't have it.
    bool moveTo(const Kodo::Vector3& place);
    /// Puts everything back where it was at the press; the drag goes on from there.
    void cancel();

private:
    Kodo::SmartPointer<CurveViewControlPoint> m_point;
    Kodo::Matrix m_origin;
    Kodo::Matrix m_start;
    std::shared_ptr<CurveDocument> m_document; ///< null for a preview; keeps the history
    std::optional<EditHistory::Step> m_step;
};
