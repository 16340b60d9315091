#pragma once

#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/chunk/space_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"

#include <cstddef>

/// A space with all that belongs to it, for the length of a test.
class TestSpace
{
public:
    explicit TestSpace(int spaceId = 4711) : id(spaceId)
    {
        Kodo::SpaceManager::instance().createSpace(id);
        Kodo::CollisionSceneManager::instance().createScene(id);
    }
    TestSpace(const TestSpace&) = delete;
    TestSpace& operator=(const TestSpace&) = delete;
    ~TestSpace()
    {
        Kodo::ChunkManager::instance().removeSpace(id);
        Kodo::CollisionSceneManager::instance().removeScene(id);
        Kodo::SpaceManager::instance().removeSpace(id);
    }

    Kodo::ChunkSpace& chunkSpace() const { return *Kodo::ChunkManager::instance().space(id, true); }
    Kodo::CollisionScene& scene() const { return *Kodo::CollisionSceneManager::instance().scene(id); }
    std::size_t itemCount() const { return chunkSpace().editorChunk().itemCount(); }

    int id;
};
