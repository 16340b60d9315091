#include "kodo/collision/collision_scene_manager.hpp"

namespace Kodo
{
namespace
{
[[maybe_unused]] const CollisionSceneManager& readyBeforeMain = CollisionSceneManager::instance();
} // namespace

CollisionSceneManager& CollisionSceneManager::instance()
{
    static CollisionSceneManager manager;
    return manager;
}

CollisionScene* CollisionSceneManager::scene(int spaceId) const noexcept
{
    const auto found = m_scenes.find(spaceId);
    return found == m_scenes.end() ? nullptr : found->second.get();
}

CollisionScene& CollisionSceneManager::createScene(int spaceId)
{
    std::unique_ptr<CollisionScene>& scene = m_scenes[spaceId];
    if (!scene)
    {
        scene = std::make_unique<CollisionScene>();
    }
    return *scene;
}

void CollisionSceneManager::removeScene(int spaceId)
{
    m_scenes.erase(spaceId);
}

} // namespace Kodo
