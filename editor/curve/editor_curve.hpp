#pragma once

#include "editor/curve/curve_document.hpp"
#include "editor/curve/curve_geometry.hpp"
#include "editor/curve/shown_points.hpp"
#include "qua/connection.hpp"
#include "tern_common/curve_view/curve_view.hpp"

#include <cstdint>
#include <limits>
#include <memory>

/// A curve document as a view sees it. The view owns this, and the document is shared: undo and the points'
/// objects outlive the view, and several views may show one curve. Main thread only.
///
/// A view draws from each point to the next one. So that a closed curve is drawn closed, it shows one point
/// more: behind the last, where the first is, with a reflected object that stands for whichever point is the
/// first. Moving or removing it moves or removes the first point. (Below two points nothing is closed.)
///
/// The point with index i has the parameter i, exact in a float up to 2^24, so that each segment is longer in
/// the parameter than the view's threshold of 0.1; see CurveGeometry.
///
/// After each edit, undo and redo of the document the signals tell the view how to get from what it was told
/// last to what is there now, in the fewest steps: what is removed, then exchanged, then added, then changed.
/// A change of the curve as a whole, as of its kind, is `changed` alone. During each signal the data is
/// already as it stays. A slot may edit the document again, or destroy this.
class EditorCurve final : public CurveView::IAbstractCurve
{
public:
    explicit EditorCurve(std::shared_ptr<CurveDocument> document);

    const std::shared_ptr<CurveDocument>& document() const noexcept { return m_document; }

    std::size_t pointCount() const override;
    /// The functions of an index report one that is not there, and go on with zero or do nothing.
    float pointParameter(std::size_t index) const override;
    Kodo::Vector3 positionAt(float parameter) const override;
    float segmentResolution(std::size_t index) const override;
    /// Whether every coordinate is one that the scene can hold. Only a file can bring others; while there are
    /// some, every edit is told as `changed`.
    bool isValid() const override;
    Kodo::Vector3 pointPosition(std::size_t index) const override;
    void insertPoint(const Kodo::Vector3& position, float parameter) override;
    void removePoint(std::size_t index) override;
    tern::ReflectedObject pointObject(std::size_t index) const override;

private:
    /// The segment that was asked for last.
    struct Segment
    {
        std::size_t index = std::numeric_limits<std::size_t>::max();
        std::uint64_t revision = 0;
        CurveGeometry::Cubic cubic{};
    };

    /// The index of the point that the view's point @p index stands for.
    std::size_t documentIndex(std::size_t index) const;
    void announce();

    std::shared_ptr<CurveDocument> m_document;
    ShownPoints m_announced;
    std::shared_ptr<EditorCurve*> m_self; ///< expires with this, for who calls out
    mutable Segment m_segment;
    qua::Connection m_changed;
};

/// A curve of its own, with a history of its own, to be shown.
std::unique_ptr<EditorCurve> makeCurve(const Curve& curve);
