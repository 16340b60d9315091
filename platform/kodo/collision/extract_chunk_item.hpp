#pragma once

#include "kodo/chunk/chunk_item_base.hpp"
#include "kodo/collision/scene_object.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/export.hpp"

namespace Kodo::Collisions
{

/// The chunk item of a space that an object of its collision scene stands for; null when there is none (any
/// more).
KODO_API SmartPointer<ChunkItemBase> extractChunkItem(const SceneObject& object, int spaceId);

} // namespace Kodo::Collisions
