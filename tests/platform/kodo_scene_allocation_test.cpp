#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/chunk/editor_custom_chunk_item.hpp"
#include "kodo/chunk/space_cache.hpp"
#include "kodo/collision/collision_scene.hpp"
#include "tests/support/allocation_hook.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <vector>

namespace
{

using Kodo::ChunkManager;
using Kodo::ChunkSpace;
using Kodo::CollisionScene;
using Kodo::CollisionShape;
using Kodo::Matrix;
using Kodo::SceneObject;
using Kodo::SmartPointer;
using Kodo::Vector3;

class CountingCollector final : public Kodo::Collisions::ICollisionCollector
{
public:
    CountingCollector() : ICollisionCollector(RETURN_ALL) {}
    void onHit(const Kodo::Collisions::RayHit& /*hit*/) override { ++hits; }

    std::size_t hits = 0;
};

Matrix scaled(float x, float y)
{
    Matrix matrix = Matrix::IDENTITY;
    matrix.m[0][0] = x;
    matrix.m[1][1] = y;
    return matrix;
}

TEST(SceneAllocationTest, MovingCastingAndTakingOutAllocateNothing)
{
    CollisionScene scene;
    std::vector<SceneObject> objects(1000);
    const SceneObject copy = objects[7]; // knows no slot
    const auto sphere =
        scene.createShape(CollisionShape::TEMPLATE_SPHERE, {2.0F, 2.0F, 2.0F}, Vector3::ZERO, false);
    const auto box =
        scene.createShape(CollisionShape::TEMPLATE_BOX, {2.0F, 2.0F, 2.0F}, Vector3::ZERO, false);
    for (std::size_t i = 0; i < objects.size(); ++i)
    {
        ASSERT_TRUE(scene.addUserObject(objects[i], i % 2 == 0 ? sphere : box, Matrix::IDENTITY, 0, 0, 16));
    }
    CountingCollector collector;
    const AllocationCount allocations;
    for (const SceneObject& object : objects)
    {
        scene.updateTransform(object, scaled(1.0F, 2.0F));
        scene.updateTransform(object, scaled(0.0F, 0.0F));
        scene.updateTransform(object, scaled(1.0F, 1.0F));
    }
    scene.updateTransform(copy, scaled(3.0F, 3.0F));
    scene.collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, collector, nullptr);
    for (const SceneObject& object : objects)
    {
        scene.deleteObstacle(object);
    }
    EXPECT_EQ(allocations.count(), 0U);
    EXPECT_EQ(collector.hits, objects.size());
}

TEST(SceneAllocationTest, AnObjectThatCouldNotBeTakenInIsNotThere)
{
    CollisionScene scene;
    const auto sphere =
        scene.createShape(CollisionShape::TEMPLATE_SPHERE, {2.0F, 2.0F, 2.0F}, Vector3::ZERO, false);
    std::vector<SceneObject> objects(100);
    std::size_t failures = 0;
    for (const SceneObject& object : objects)
    {
        const std::size_t before = scene.objectCount();
        for (std::size_t successes = 0; !scene.contains(object); ++successes)
        {
            const FailingAllocation failing(successes);
            try
            {
                EXPECT_TRUE(scene.addUserObject(object, sphere, Matrix::IDENTITY, 0, 0, 16));
            }
            catch (const std::bad_alloc&)
            {
                ++failures;
                EXPECT_EQ(scene.objectCount(), before);
                EXPECT_FALSE(scene.contains(object));
                CountingCollector collector;
                scene.collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, collector, nullptr);
                EXPECT_EQ(collector.hits, before);
            }
        }
    }
    EXPECT_GT(failures, objects.size());
    EXPECT_EQ(scene.objectCount(), objects.size());
}

class Crate final : public Kodo::EditorCustomChunkItem
{
public:
    explicit Crate(const SmartPointer<ChunkSpace>& space) : EditorCustomChunkItem(space, WANTS_NOTHING) {}
};

TEST(SceneAllocationTest, AnItemThatCouldNotEnterIsNotThere)
{
    const auto space = ChunkManager::instance().space(5, true);
    std::size_t failures = 0;
    while (space->editorChunk().itemCount() == 0)
    {
        const FailingAllocation failing(failures);
        try
        {
            new Crate(space);
        }
        catch (const std::bad_alloc&)
        {
            ++failures;
            EXPECT_EQ(space->editorChunk().itemCount(), 0U);
        }
    }
    EXPECT_GE(failures, 3U); // the item itself, its place in the space and in the chunk
    ChunkManager::instance().removeSpace(5);
}

struct Tally
{
    explicit Tally(const ChunkSpace& /*space*/) {}
    int entries = 0;
};

TEST(SceneAllocationTest, ACacheThatCouldNotBeMadeIsMadeNextTime)
{
    const auto space = ChunkManager::instance().space(6, true);
    const Kodo::SpaceCache<Tally> tallies;
    std::size_t failures = 0;
    while (space->cache(tallies.slot()) == nullptr)
    {
        const FailingAllocation failing(failures);
        try
        {
            tallies(*space).entries = 1;
        }
        catch (const std::bad_alloc&)
        {
            ++failures;
        }
    }
    EXPECT_GE(failures, 2U);
    EXPECT_EQ(tallies(*space).entries, 1);
    ChunkManager::instance().removeSpace(6);
}

TEST(SceneAllocationTest, ASpaceThatCouldNotBeMadeLeavesNothingBehind)
{
    std::size_t failures = 0;
    while (!ChunkManager::instance().space(7, false))
    {
        const FailingAllocation failing(failures);
        try
        {
            ChunkManager::instance().space(7, true);
        }
        catch (const std::bad_alloc&)
        {
            ++failures;
        }
    }
    EXPECT_GE(failures, 2U);
    EXPECT_EQ(ChunkManager::instance().spaceCount(), 1U);
    ChunkManager::instance().removeSpace(7);
}

} // namespace
