#include "tern_common/curve_view/curve_view_point_inserter.hpp"

#include "kodo/core/stack_tracker.hpp"
#include "tern_common/assertion.hpp"
#include "tern_common/curve_view/curve_view_new_points.hpp"
#include "tern_common/curve_view/curve_view_presence.hpp"
#include "tern_common/curve_view/nearest_sample.hpp"

#include <cstddef>
#include <limits>
#include <memory>
#include <utility>

namespace
{

Kodo::Matrix translation(const Kodo::Vector3& offset)
{
    Kodo::Matrix matrix;
    matrix.setTranslate(offset);
    return matrix;
}

} // namespace

CurveViewPointInserter::CurveViewPointInserter(
    std::function<void(std::function<void(CurveView&)>)> forEachView) noexcept
    : m_forEachView(std::move(forEachView))
{
}

void CurveViewPointInserter::insert(const Kodo::Ray& ray, InsertType type)
{
    KODO_PROFILE_SCOPE("CurveViewPointInserter::insert");
    float minDistance = std::numeric_limits<float>::max();
    std::size_t minIndex = std::numeric_limits<std::size_t>::max();
    std::shared_ptr<CurveView::Presence> minView;
    m_forEachView(
        [&](CurveView& view)
        {
            const NearestSample nearest = nearestSample(view.m_points, ray, minDistance);
            if (nearest.index != NearestSample::NONE)
            {
                minDistance = nearest.distance;
                minIndex = nearest.index;
                minView = view.m_presence;
            }
        });
    // The function that visits the views is the host's: what it did to them since must not matter.
    if (!minView || minView->view == nullptr || minIndex >= minView->view->m_points.size())
    {
        return;
    }
    TERN_COMMON_ASSERT(minIndex != std::numeric_limits<size_t>::max());
    TERN_COMMON_ASSERT(minDistance != std::numeric_limits<float>::max());
    if (type == InsertType::Ghost)
    {
        showGhost(*minView->view, minIndex);
    }
    else
    {
        insertPoint(*minView->view, minIndex);
    }
}

void CurveViewPointInserter::showGhost(CurveView& view, std::size_t index)
{
    const std::shared_ptr<CurveView::Presence> presence = view.m_presence;
    const int spaceId = view.m_spaceId;
    const Kodo::Matrix transform = translation(view.m_points[index]);
    if (const auto old = std::exchange(view.m_ghostPoint, {}))
    {
        CurveView::NewPoints::leaveEditorChunk(spaceId, {&old, 1});
    }
    CurveView::NewPoints made(spaceId);
    made.add(new CurveViewControlPoint([](CurveViewControlPoint*) {}, spaceId, tern::ReflectedObject(),
                                       transform));
    if (presence->view != nullptr)
    {
        std::swap(view.m_ghostPoint, made.points().front()); // one set meanwhile leaves with what made it
    }
}

void CurveViewPointInserter::insertPoint(CurveView& view, std::size_t index)
{
    Kodo::Matrix place = translation(view.m_points[index]);
    Kodo::Matrix toCurve = view.m_origin;
    const std::shared_ptr<CurveView::Presence> presence = view.m_presence;
    TERN_COMMON_ASSERT(toCurve.invert()); // what the place is then is the model's to judge
    place.postMultiply(toCurve);
    if (presence->view != nullptr && view.m_curve && index < view.m_parameters.size())
    {
        view.m_curve->insertPoint(place.translation(), view.m_parameters[index]);
    }
}
