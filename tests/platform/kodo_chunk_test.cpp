#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/chunk/client_space.hpp"
#include "kodo/chunk/editor_custom_chunk_item.hpp"
#include "kodo/chunk/space_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"
#include "kodo/collision/extract_chunk_item.hpp"
#include "tests/platform/chunk_fixture.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Kodo::ChunkItemBase;
using Kodo::Matrix;

static_assert(!std::is_copy_constructible_v<ChunkSpace> && !std::is_copy_constructible_v<ChunkManager>);
static_assert(!std::is_copy_constructible_v<Kodo::EditorChunk>);

/// Whose constructor fails after it has handed out pointers to itself.
class Faulty final : public Crate
{
public:
    explicit Faulty(const SmartPointer<ChunkSpace>& space) : Crate(space)
    {
        {
            const SmartPointer<EditorCustomChunkItem> held(this);
        }
        edWorldTransform(Matrix::IDENTITY, {});
        throw std::runtime_error("faulty");
    }
};

TEST_F(ChunkTest, ASpaceIsMadeOnDemandAndIsTheSameFromThenOn)
{
    EXPECT_FALSE(ChunkManager::instance().space(ID, false));
    const SmartPointer<ChunkSpace> made = ChunkManager::instance().space(ID, true);
    EXPECT_EQ(made->id(), ID);
    EXPECT_TRUE(ChunkManager::instance().space(ID, false) == made);
    EXPECT_FALSE(space(OTHER_ID) == made);
    EXPECT_EQ(ChunkManager::instance().spaceCount(), 2U);
}

TEST_F(ChunkTest, AnItemEntersItsSpacesChunkWhichHoldsIt)
{
    auto* const crate = new Crate(space());
    EXPECT_EQ(crate->refCount(), 1);
    EXPECT_EQ(crate->space(), space().get());
    EXPECT_EQ(crate->wantFlags(), ChunkItemBase::WANTS_DRAW);
    EXPECT_TRUE(space()->editorChunk().contains(crate));
    EXPECT_EQ(space()->editorChunk().itemCount(), 1U);
    EXPECT_EQ(space()->itemOf(crate->sceneObject()), crate);

    space()->editorChunk().addDynamicItem(crate); // is here already
    EXPECT_EQ(crate->refCount(), 1);
    space()->editorChunk().addDynamicItem(nullptr);
    EXPECT_EQ(space()->editorChunk().itemCount(), 1U);
}

TEST_F(ChunkTest, TheChunkLetsGoOfAnItemWhichLivesOnWhileItIsHeld)
{
    SmartPointer<Crate> crate(new Crate(space()));
    EXPECT_EQ(crate->refCount(), 2);
    space()->editorChunk().delDynamicItem(crate);
    EXPECT_EQ(crate->refCount(), 1);
    EXPECT_EQ(crate->space(), space().get()) << "it knows its space for as long as both live";
    EXPECT_FALSE(space()->editorChunk().contains(crate.get()));

    space()->editorChunk().delDynamicItem(crate); // is gone already
    EXPECT_EQ(crate->refCount(), 1);
    space()->editorChunk().delDynamicItem(nullptr);

    space()->editorChunk().addDynamicItem(crate.get());
    EXPECT_EQ(crate->refCount(), 2);
    crate = nullptr;
    EXPECT_EQ(Crate::alive, 1);
}

TEST_F(ChunkTest, AnItemThatNobodyHoldsGoesWithItsPlaceInTheChunk)
{
    auto* const crate = new Crate(space());
    const Kodo::SceneObject object = crate->sceneObject();
    space()->editorChunk().delDynamicItem(crate);
    EXPECT_EQ(Crate::alive, 0);
    EXPECT_EQ(space()->itemOf(object), nullptr);
    space()->editorChunk().delDynamicItem(crate); // not looked at
}

TEST_F(ChunkTest, AnItemWhoseConstructorThrowsIsNoLongerInItsSpace)
{
    const SmartPointer<ChunkSpace> held = space();
    EXPECT_THROW(new Faulty(held), std::runtime_error);
    EXPECT_EQ(Crate::alive, 0);
    EXPECT_EQ(held->editorChunk().itemCount(), 0U);
    EXPECT_EQ(held->refCount(), 2);
}

TEST_F(ChunkTest, AnItemWithoutASpaceBelongsToItsMaker)
{
    SmartPointer<Crate> crate(new Crate(nullptr));
    EXPECT_EQ(crate->refCount(), 1);
    EXPECT_EQ(crate->space(), nullptr);
    crate->edDelete(); // stands nowhere
    EXPECT_EQ(Crate::alive, 1);
    crate = nullptr;
    EXPECT_EQ(Crate::alive, 0);
    EXPECT_THROW(new Faulty(new ChunkSpace(OTHER_ID)), std::runtime_error);
}

TEST_F(ChunkTest, DestructorsOfItemsMayTakeOutThemselvesAndOthers)
{
    const SmartPointer<ChunkSpace> held = space();
    auto* const other = new Crate(held);
    auto* const first = new Crate(held,
                                  [&](Crate& going)
                                  {
                                      held->editorChunk().delDynamicItem(&going);
                                      held->editorChunk().delDynamicItem(other);
                                      EXPECT_EQ(Crate::alive, 0);
                                  });
    held->editorChunk().delDynamicItem(first);
    EXPECT_EQ(Crate::alive, 0);
    EXPECT_EQ(held->editorChunk().itemCount(), 0U);
}

TEST_F(ChunkTest, ARemovedSpaceLetsGoOfItsItems)
{
    const SmartPointer<Crate> outliving(new Crate(space()));
    new Crate(space());
    ChunkManager::instance().removeSpace(ID);
    EXPECT_EQ(Crate::alive, 1);
    EXPECT_EQ(outliving->space(), nullptr);
    EXPECT_EQ(outliving->refCount(), 1);
    outliving->edDelete();
    EXPECT_EQ(space()->itemOf(outliving->sceneObject()), nullptr) << "a space of that identifier, made anew";
    ChunkManager::instance().removeSpace(ID);
    ChunkManager::instance().removeSpace(ID); // there is none
}

TEST_F(ChunkTest, ASpaceThatIsHeldIsUsableAfterItsRemovalAndLetsGoWhenItDies)
{
    SmartPointer<ChunkSpace> held = space();
    ChunkManager::instance().removeSpace(ID);
    EXPECT_FALSE(space() == held);
    const SmartPointer<Crate> crate(new Crate(held));
    EXPECT_EQ(held->editorChunk().itemCount(), 1U);
    held = nullptr;
    EXPECT_EQ(crate->space(), nullptr);
    EXPECT_EQ(crate->refCount(), 1);
}

TEST_F(ChunkTest, DestructorsOfItemsMayUseASpaceThatIsBeingRemoved)
{
    const auto useSpace = [](Crate& going)
    {
        EXPECT_EQ(going.space(), nullptr);
        const SmartPointer<ChunkSpace> again = ChunkManager::instance().space(ID, true);
        again->editorChunk().delDynamicItem(&going);
        again->editorChunk().delDynamicItem(SmartPointer<EditorCustomChunkItem>());
    };
    for (int i = 0; i < 10; ++i)
    {
        new Crate(space(), useSpace);
    }
    ChunkManager::instance().removeSpace(ID);
    EXPECT_EQ(Crate::alive, 0);
    EXPECT_EQ(ChunkManager::instance().space(ID, false)->editorChunk().itemCount(), 0U);
}

TEST_F(ChunkTest, WhatEntersADyingSpaceLeavesItAsWell)
{
    SmartPointer<ChunkSpace> held(new ChunkSpace(OTHER_ID));
    ChunkSpace* const dying = held.get();
    new Crate(held, [dying](Crate&) { new Crate(SmartPointer<ChunkSpace>(dying)); });
    held = nullptr;
    EXPECT_EQ(Crate::alive, 0);
}

TEST_F(ChunkTest, AMoveGoesThroughTheVirtualOperationOnce)
{
    class Stubborn final : public Crate
    {
    public:
        using Crate::Crate;
        bool edTransform(const Matrix& transform, qua::Flags<tern::SetterFlag> flags) override
        {
            ++moves;
            lastFlags = flags;
            return transform.translation().x < 10.0F && Crate::edTransform(transform, flags);
        }
        using Crate::edTransform;

        int moves = 0;
        qua::Flags<tern::SetterFlag> lastFlags;
    };
    const SmartPointer<Stubborn> crate(new Stubborn(space()));
    EXPECT_EQ(crate->edWorldTransform(), Matrix::IDENTITY);
    Matrix near;
    near.setTranslate({1.0F, 2.0F, 3.0F});
    EXPECT_TRUE(crate->edWorldTransform(near, tern::SetterFlag::Interactive));
    EXPECT_TRUE(crate->lastFlags == tern::SetterFlag::Interactive);
    Matrix far;
    far.setTranslate({11.0F, 2.0F, 3.0F});
    EXPECT_FALSE(crate->edWorldTransform(far, {}));
    EXPECT_EQ(crate->edWorldTransform(), near);
    EXPECT_EQ(crate->edTransform(), near);
    EXPECT_EQ(crate->moves, 2);
}

TEST_F(ChunkTest, TheEditorsDeleteTakesAnItemOutUnlessItHasItsOwnWay)
{
    class Guarded final : public Crate
    {
    public:
        using Crate::Crate;
        bool customDeleter() const override { return true; }
        void customDelete() override { ++deletions; }

        int deletions = 0;
    };
    const SmartPointer<Guarded> guarded(new Guarded(space()));
    guarded->edDelete();
    EXPECT_EQ(guarded->deletions, 1);
    EXPECT_TRUE(space()->editorChunk().contains(guarded.get()));

    const SmartPointer<Crate> plain(new Crate(space()));
    EXPECT_FALSE(plain->customDeleter());
    plain->customDelete();
    EXPECT_TRUE(space()->editorChunk().contains(plain.get()));
    plain->edDelete();
    EXPECT_FALSE(space()->editorChunk().contains(plain.get()));
    EXPECT_EQ(plain->edSelectItemType(), Kodo::SelectItemType::ChunkItem);
}

TEST_F(ChunkTest, SelectionAndHoverShowAsReadOnlyProperties)
{
    const auto& metaObject = tern::staticMetaObject<EditorCustomChunkItem>();
    EXPECT_EQ(metaObject.className(), "EditorCustomChunkItem");
    EXPECT_EQ(tern::MetaObjectManager::instance().find("EditorCustomChunkItem"), &metaObject);
    ASSERT_EQ(metaObject.properties().size(), 2U);

    const SmartPointer<Crate> crate(new Crate(space()));
    const auto flag = [&](const char* name)
    {
        bool value = false;
        EXPECT_TRUE(metaObject.findProperty(name)->getter(*crate).tryCast(value));
        EXPECT_FALSE(metaObject.findProperty(name)->setter);
        return value;
    };
    EXPECT_FALSE(flag("selected") || flag("hovered"));
    crate->edSelected();
    EXPECT_TRUE(flag("selected") && crate->edIsSelected());
    EXPECT_FALSE(flag("hovered"));
    crate->edDeselected();
    crate->edHovered(true);
    EXPECT_TRUE(flag("hovered") && crate->edIsHovered());
    EXPECT_FALSE(flag("selected"));

    struct Stranger : tern::Object
    {
    };
    EXPECT_TRUE(metaObject.findProperty("selected")->getter(Stranger()).isVoid());
}

TEST_F(ChunkTest, ASceneObjectLeadsToItsItemInItsSpaceOnly)
{
    using Kodo::Collisions::extractChunkItem;
    SmartPointer<Crate> crate(new Crate(space()));
    const Kodo::SceneObject object = crate->sceneObject();
    const SmartPointer<ChunkItemBase> found = extractChunkItem(object, ID);
    EXPECT_EQ(found.get(), crate.get());
    EXPECT_EQ(crate->refCount(), 3);
    EXPECT_FALSE(extractChunkItem(object, OTHER_ID));
    EXPECT_FALSE(ChunkManager::instance().space(OTHER_ID, false)) << "asking must not make a space";
    EXPECT_FALSE(extractChunkItem(Kodo::SceneObject(), ID));
}

TEST_F(ChunkTest, AnItemThatIsGoingIsNotFoundAnyMore)
{
    using Kodo::Collisions::extractChunkItem;
    Kodo::SceneObject object;
    bool looked = false;
    auto* const crate = new Crate(space(),
                                  [&](Crate&)
                                  {
                                      looked = true;
                                      EXPECT_FALSE(extractChunkItem(object, ID));
                                  });
    object = crate->sceneObject();
    space()->editorChunk().delDynamicItem(crate);
    EXPECT_TRUE(looked);
    EXPECT_FALSE(extractChunkItem(object, ID));
}

TEST_F(ChunkTest, AClientSpaceFindsTheCollisionSceneOfItsIdentifier)
{
    EXPECT_FALSE(SpaceManager::instance().space(ID));
    const auto client = SpaceManager::instance().createSpace(ID);
    EXPECT_TRUE(SpaceManager::instance().createSpace(ID) == client);
    EXPECT_TRUE(SpaceManager::instance().space(ID) == client);
    EXPECT_EQ(client->id(), ID);
    EXPECT_EQ(client->collisionScene(), nullptr);
    Kodo::CollisionScene& scene = CollisionSceneManager::instance().createScene(ID);
    EXPECT_EQ(&CollisionSceneManager::instance().createScene(ID), &scene);
    EXPECT_EQ(client->collisionScene(), &scene);
    CollisionSceneManager::instance().removeScene(ID);
    EXPECT_EQ(client->collisionScene(), nullptr);
    SpaceManager::instance().removeSpace(ID);
    EXPECT_FALSE(SpaceManager::instance().space(ID));
    EXPECT_EQ(client->refCount(), 1);
}

TEST_F(ChunkTest, TheSpatialFeatureFollowsTheObjectsThatWereAdded)
{
    const auto client = SpaceManager::instance().createSpace(ID);
    Kodo::SpatialFeature& feature = client->spatialFeature();
    const Kodo::SceneObject object;
    const Kodo::SceneObject copy = object;
    const Kodo::SceneObject other;
    Matrix moved;
    moved.setTranslate({1.0F, 2.0F, 3.0F});
    feature.modify(object, moved);
    feature.remove(object);
    EXPECT_FALSE(feature.isPresent(object));
    EXPECT_EQ(feature.transformOf(object), nullptr);

    feature.add(object, Matrix::IDENTITY);
    EXPECT_TRUE(feature.isPresent(copy));
    EXPECT_FALSE(feature.isPresent(other));
    feature.modify(other, moved);
    EXPECT_EQ(feature.objectCount(), 1U);
    EXPECT_EQ(*feature.transformOf(object), Matrix::IDENTITY);
    feature.modify(copy, moved);
    EXPECT_EQ(*feature.transformOf(object), moved);
    feature.add(object, Matrix::IDENTITY); // again: where it stands now
    EXPECT_EQ(*feature.transformOf(object), Matrix::IDENTITY);
    feature.remove(copy);
    EXPECT_EQ(feature.objectCount(), 0U);
}

} // namespace
