#pragma once

#include "kodo/collision/scene_object.hpp"
#include "kodo/core/reference_count.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/export.hpp"

namespace Kodo
{

class ChunkSpace;

/// Something that stands in a chunk space. Knows its space for as long as both live. Main thread only, but
/// for the reference counts.
class KODO_API ChunkItemBase : public SafeReferenceCount, public WeakReferenceCount
{
public:
    enum WantFlags : unsigned
    {
        WANTS_NOTHING = 0,
        WANTS_DRAW = 1
    };

    /// The space, or null once it is gone.
    ChunkSpace* space() const noexcept { return m_space; }
    WantFlags wantFlags() const noexcept { return m_wantFlags; }
    /// The object that stands for this item in its space's collision scene.
    const SceneObject& sceneObject() const noexcept { return m_sceneObject; }

protected:
    /// Makes the item known to @p space, which may be null, by its scene object.
    ChunkItemBase(const SmartPointer<ChunkSpace>& space, WantFlags wantFlags);
    ~ChunkItemBase() override;

private:
    friend class ChunkSpace;

    ChunkSpace* m_space;
    WantFlags m_wantFlags;
    SceneObject m_sceneObject;
};

} // namespace Kodo
