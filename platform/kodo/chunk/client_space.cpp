#include "kodo/chunk/client_space.hpp"

#include "kodo/collision/collision_scene_manager.hpp"

namespace Kodo
{

ClientSpace::~ClientSpace() = default;

CollisionScene* ClientSpace::collisionScene() const noexcept
{
    return CollisionSceneManager::instance().scene(m_id);
}

} // namespace Kodo
