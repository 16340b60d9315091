#include "kodo/collision/extract_chunk_item.hpp"

#include "kodo/chunk/chunk_manager.hpp"

namespace Kodo::Collisions
{

SmartPointer<ChunkItemBase> extractChunkItem(const SceneObject& object, int spaceId)
{
    const SmartPointer<ChunkSpace> space = ChunkManager::instance().space(spaceId, false);
    ChunkItemBase* const item = space ? space->itemOf(object) : nullptr;
    if (item == nullptr || !item->tryIncRef()) // one that is being destroyed must not be held again
    {
        return {};
    }
    SmartPointer<ChunkItemBase> held(item);
    item->decRef(); // the pointer has a reference of its own
    return held;
}

} // namespace Kodo::Collisions
