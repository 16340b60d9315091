#include "tern_common/curve_view/space_curve_point_collider.hpp"

#include "kodo/collision/collision_scene.hpp"
#include "kodo/collision/extract_chunk_item.hpp"
#include "kodo/collision/i_collision_collector.hpp"
#include "tern_common/curve_view/curve_view_control_point.hpp"

#include <utility>

namespace
{

/// Keeps the control points among what a ray hits.
class CurveControlPointCollector final : public Kodo::Collisions::ICollisionCollector
{
public:
    explicit CurveControlPointCollector(int spaceId) noexcept
        : ICollisionCollector(RETURN_ALL), m_spaceId(spaceId)
    {
    }

    void onHit(const Kodo::Collisions::RayHit& hit) override
    {
        const auto item = Kodo::Collisions::extractChunkItem(hit.sceneObject, m_spaceId);
        if (auto* const point = dynamic_cast<CurveViewControlPoint*>(item.get()))
        {
            m_hits.push_back(point);
        }
    }

    std::vector<CurveViewControlPoint*> takeHits() noexcept { return std::move(m_hits); }

private:
    std::vector<CurveViewControlPoint*> m_hits;
    int m_spaceId;
};

} // namespace

SpaceCurvePointCollider::SpaceCurvePointCollider(Kodo::SmartPointer<Kodo::ClientSpace> space) noexcept
    : m_space(std::move(space))
{
}

std::vector<CurveViewControlPoint*> SpaceCurvePointCollider::collide(Kodo::Collisions::Ray& ray)
{
    const Kodo::CollisionScene* const scene = m_space ? m_space->collisionScene() : nullptr;
    if (scene == nullptr)
    {
        return {};
    }
    CurveControlPointCollector collector(m_space->id());
    scene->collideRay(ray, collector, nullptr);
    return collector.takeHits();
}
