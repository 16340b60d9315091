#pragma once

#include "kodo/chunk/spatial_feature.hpp"
#include "kodo/core/reference_count.hpp"
#include "kodo/export.hpp"

namespace Kodo
{

class CollisionScene;

/// A space as the running game sees it: its collision scene and its features. Main thread only.
class KODO_API ClientSpace : public SafeReferenceCount
{
public:
    explicit ClientSpace(int id) noexcept : m_id(id) {}

    int id() const noexcept { return m_id; }
    /// The collision scene of this space; null while there is none.
    CollisionScene* collisionScene() const noexcept;
    SpatialFeature& spatialFeature() noexcept { return m_spatialFeature; }

private:
    ~ClientSpace() override;

    int m_id;
    SpatialFeature m_spatialFeature;
};

} // namespace Kodo
