#pragma once

#include "kodo/collision/collision_scene.hpp"
#include "kodo/export.hpp"

#include <memory>
#include <unordered_map>

namespace Kodo
{

/// The collision scenes of the process, by space. Main thread only.
class KODO_API CollisionSceneManager
{
public:
    static CollisionSceneManager& instance();

    /// The scene of a space, or null.
    CollisionScene* scene(int spaceId) const noexcept;
    /// The scene of a space, made if need be.
    CollisionScene& createScene(int spaceId);
    /// Handles of its objects name nothing afterwards.
    void removeScene(int spaceId);

private:
    CollisionSceneManager() = default;

    std::unordered_map<int, std::unique_ptr<CollisionScene>> m_scenes;
};

} // namespace Kodo
