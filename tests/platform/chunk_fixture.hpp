#pragma once

#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/chunk/editor_custom_chunk_item.hpp"
#include "kodo/chunk/space_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

using Kodo::ChunkManager;
using Kodo::ChunkSpace;
using Kodo::CollisionSceneManager;
using Kodo::EditorCustomChunkItem;
using Kodo::SmartPointer;
using Kodo::SpaceManager;

/// An item that tells when it goes.
class Crate : public EditorCustomChunkItem
{
public:
    explicit Crate(const SmartPointer<ChunkSpace>& space, std::function<void(Crate&)> destroyed = {})
        : EditorCustomChunkItem(space, WANTS_DRAW), m_destroyed(std::move(destroyed))
    {
        ++alive;
    }
    ~Crate() override
    {
        --alive;
        if (m_destroyed)
        {
            m_destroyed(*this);
        }
    }

    static inline int alive = 0;

private:
    std::function<void(Crate&)> m_destroyed;
};

/// Two spaces, and nothing that is left of them afterwards.
class ChunkTest : public testing::Test
{
protected:
    static constexpr int ID = 41;
    static constexpr int OTHER_ID = 42;

    ~ChunkTest() override
    {
        ChunkManager::instance().removeSpace(ID);
        ChunkManager::instance().removeSpace(OTHER_ID);
        SpaceManager::instance().removeSpace(ID);
        CollisionSceneManager::instance().removeScene(ID);
        EXPECT_EQ(ChunkManager::instance().spaceCount(), 0U);
        EXPECT_EQ(Crate::alive, 0);
    }

    static SmartPointer<ChunkSpace> space(int id = ID) { return ChunkManager::instance().space(id, true); }
};
