#include "editor/curve/editor_curve.hpp"

#include "editor/assertion.hpp"
#include "editor/curve/position_text.hpp"

#include <utility>

EditorCurve::EditorCurve(std::shared_ptr<CurveDocument> document)
    : m_document(std::move(document)), m_announced(*m_document), m_self(std::make_shared<EditorCurve*>(this)),
      m_changed(m_document->connectChanged([this] { announce(); }))
{
}

std::size_t EditorCurve::pointCount() const
{
    return ShownPoints::count(m_document->curve());
}

float EditorCurve::pointParameter(std::size_t index) const
{
    return TERN_EDITOR_ASSERT(index < pointCount()) ? static_cast<float>(index) : 0.0F;
}

Kodo::Vector3 EditorCurve::positionAt(float parameter) const
{
    const Curve& curve = m_document->curve();
    if (curve.kind == CurveKind::Linear || CurveGeometry::segmentCount(curve) == 0)
    {
        return toVector(CurveGeometry::positionAt(curve, static_cast<double>(parameter)));
    }
    // A view samples segment by segment: its cubic is worked out once.
    const CurveGeometry::Place place = CurveGeometry::placeAt(curve, static_cast<double>(parameter));
    if (m_segment.index != place.segment || m_segment.revision != m_document->revision())
    {
        m_segment = {place.segment, m_document->revision(),
                     CurveGeometry::segmentCubic(curve, place.segment)};
    }
    return toVector(CurveGeometry::evaluate(m_segment.cubic, place.u));
}

float EditorCurve::segmentResolution(std::size_t index) const
{
    const Curve& curve = m_document->curve();
    return TERN_EDITOR_ASSERT(index < CurveGeometry::segmentCount(curve))
               ? static_cast<float>(CurveGeometry::samplingSteps(curve, index))
               : 1.0F;
}

bool EditorCurve::isValid() const
{
    return isShowable(m_document->curve());
}

Kodo::Vector3 EditorCurve::pointPosition(std::size_t index) const
{
    return TERN_EDITOR_ASSERT(index < pointCount())
               ? toVector(m_document->curve().points[documentIndex(index)])
               : Kodo::Vector3::ZERO;
}

void EditorCurve::insertPoint(const Kodo::Vector3& position, float parameter)
{
    const std::shared_ptr<CurveDocument> document = m_document; // a slot may destroy this
    document->insertPoint(toPosition(position), static_cast<double>(parameter));
}

void EditorCurve::removePoint(std::size_t index)
{
    if (TERN_EDITOR_ASSERT(index < pointCount()))
    {
        m_document->removePoint(documentIndex(index));
    }
}

tern::ReflectedObject EditorCurve::pointObject(std::size_t index) const
{
    if (!TERN_EDITOR_ASSERT(index < pointCount()))
    {
        return {};
    }
    const bool isClosing = index == m_document->curve().points.size();
    return isClosing ? m_document->firstPointObject() : m_document->pointObject(index);
}

std::size_t EditorCurve::documentIndex(std::size_t index) const
{
    return index == m_document->curve().points.size() ? 0 : index;
}

void EditorCurve::announce()
{
    using Kind = ShownPoints::Change::Kind;
    const std::weak_ptr<EditorCurve*> self = m_self;
    while (!self.expired())
    {
        // Looked at anew each time: a slot may have edited the curve, and that has been told already.
        const auto change = m_announced.approach(ShownPoints(*m_document));
        if (!change)
        {
            return;
        }
        switch (change->kind)
        {
        case Kind::Whole:
            changed();
            break;
        case Kind::Updated:
            pointUpdated(change->first, change->second);
            break;
        case Kind::Moved:
            pointMoved(change->first, change->second);
            break;
        case Kind::Added:
            pointAdded(change->first, change->second);
            break;
        case Kind::Removed:
            pointRemoved(change->first, change->second);
            break;
        }
    }
}

std::unique_ptr<EditorCurve> makeCurve(const Curve& curve)
{
    return std::make_unique<EditorCurve>(CurveDocument::make(curve));
}
