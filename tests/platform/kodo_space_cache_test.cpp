#include "kodo/chunk/space_cache.hpp"

#include "kodo/chunk/chunk_manager.hpp"
#include "tests/platform/chunk_fixture.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace
{

using Kodo::Matrix;
using Kodo::SpaceCache;

static_assert(!std::is_copy_constructible_v<SpaceCache<int>>);

/// A cache that tells when it goes, and does what the test says then.
class Ledger
{
public:
    explicit Ledger(const ChunkSpace& space) : spaceId(space.id())
    {
        ++alive;
        if (onMade)
        {
            onMade(space);
        }
    }
    Ledger(const Ledger&) = delete;
    Ledger& operator=(const Ledger&) = delete;
    ~Ledger()
    {
        --alive;
        if (onDestroyed)
        {
            onDestroyed(*this);
        }
    }

    int spaceId;
    int entries = 0;

    static inline int alive = 0;
    static inline std::function<void(const ChunkSpace&)> onMade;
    static inline std::function<void(Ledger&)> onDestroyed;
};

struct Notebook
{
    explicit Notebook(const ChunkSpace&) { ++alive; }
    Notebook(const Notebook&) = delete;
    Notebook& operator=(const Notebook&) = delete;
    ~Notebook() { --alive; }

    static inline int alive = 0;
};

class SpaceCacheTest : public ChunkTest
{
protected:
    ~SpaceCacheTest() override
    {
        ledgers.reset();
        Ledger::onMade = nullptr;
        Ledger::onDestroyed = nullptr;
        EXPECT_EQ(Ledger::alive, 0);
        EXPECT_EQ(Notebook::alive, 0);
        EXPECT_EQ(ChunkSpace::registeredCacheCount(), 0U);
    }

    std::optional<SpaceCache<Ledger>> ledgers{std::in_place};
};

TEST_F(SpaceCacheTest, EachSpaceHasItsOwnMadeOnFirstUse)
{
    EXPECT_EQ(Ledger::alive, 0);
    Ledger& ledger = (*ledgers)(*space());
    ledger.entries = 3;
    EXPECT_EQ(ledger.spaceId, ID);
    EXPECT_EQ(&(*ledgers)(*space()), &ledger);
    EXPECT_EQ((*ledgers)(*space(OTHER_ID)).spaceId, OTHER_ID);
    EXPECT_EQ((*ledgers)(*space(OTHER_ID)).entries, 0);
    EXPECT_EQ(Ledger::alive, 2);
}

TEST_F(SpaceCacheTest, ItGoesWithItsSpace)
{
    (*ledgers)(*space());
    SmartPointer<ChunkSpace> held = space();
    ChunkManager::instance().removeSpace(ID);
    EXPECT_EQ(Ledger::alive, 1) << "the space is held still";
    held = nullptr;
    EXPECT_EQ(Ledger::alive, 0);
}

TEST_F(SpaceCacheTest, ItGoesWithItsSlotInEverySpaceThatLives)
{
    const SmartPointer<ChunkSpace> removed = space();
    (*ledgers)(*removed);
    ChunkManager::instance().removeSpace(ID);
    const SmartPointer<ChunkSpace> unmanaged(new ChunkSpace(77));
    (*ledgers)(*unmanaged);
    (*ledgers)(*space(OTHER_ID));
    EXPECT_EQ(Ledger::alive, 3);
    const std::size_t slot = ledgers->slot();
    ledgers.reset();
    EXPECT_EQ(Ledger::alive, 0);
    EXPECT_EQ(removed->cache(slot), nullptr);
    ChunkSpace::unregisterCache(slot); // not reserved any more
    EXPECT_EQ(ChunkSpace::registeredCacheCount(), 0U);
}

TEST_F(SpaceCacheTest, SlotsAreReusedLowestFirstAndComeEmpty)
{
    const std::size_t first = ledgers->slot();
    const std::size_t second = ChunkSpace::registerCache();
    const std::size_t third = ChunkSpace::registerCache();
    EXPECT_EQ(first, 0U);
    EXPECT_EQ(second, 1U);
    EXPECT_EQ(third, 2U);
    (*ledgers)(*space());
    ChunkSpace::unregisterCache(second);
    ledgers.reset();
    EXPECT_EQ(ChunkSpace::registeredCacheCount(), 1U);
    EXPECT_EQ(ChunkSpace::registerCache(), first);
    EXPECT_EQ(space()->cache(first), nullptr);
    EXPECT_EQ(ChunkSpace::registerCache(), second);
    for (const std::size_t slot : {first, second, third})
    {
        ChunkSpace::unregisterCache(slot);
    }
}

TEST_F(SpaceCacheTest, ACacheTakesThePlaceOfTheOneInItsSlot)
{
    struct Marked final : ChunkSpace::Cache
    {
        explicit Marked(int& count) : destroyed(count) {}
        ~Marked() override { ++destroyed; }
        int& destroyed;
    };
    int destroyed = 0;
    const std::size_t slot = ChunkSpace::registerCache();
    space()->setCache(slot, std::make_unique<Marked>(destroyed));
    space()->setCache(slot, std::make_unique<Marked>(destroyed));
    EXPECT_EQ(destroyed, 1);
    space()->setCache(slot, nullptr);
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(space()->cache(slot), nullptr);
    ChunkSpace::unregisterCache(slot);
    {
        const ExpectReports reports{"isCacheRegistered(slot)"};
        space()->setCache(slot, std::make_unique<Marked>(destroyed));
        EXPECT_EQ(destroyed, 3) << "nobody would give it back";
    }
}

TEST_F(SpaceCacheTest, ConstructorsAndDestructorsOfCachesMayLookOthersUp)
{
    std::optional<SpaceCache<Notebook>> notebooks(std::in_place);
    const SmartPointer<ChunkSpace> held = space();
    Ledger::onMade = [&](const ChunkSpace& made) { (*notebooks)(made); };
    (*ledgers)(*held);
    EXPECT_EQ(Notebook::alive, 1);
    Ledger::onMade = nullptr;

    Ledger::onDestroyed = [&](Ledger&) { (*notebooks)(*space(OTHER_ID)); };
    ledgers.reset();
    EXPECT_EQ(Notebook::alive, 2);
    notebooks.reset();
    EXPECT_EQ(Notebook::alive, 0);
}

TEST_F(SpaceCacheTest, WhatIsMadeAnewInASlotThatIsGoingGoesAsWell)
{
    int times = 0;
    Ledger::onDestroyed = [&](Ledger&)
    {
        if (++times <= 3)
        {
            (*ledgers)(*space(times % 2 == 0 ? ID : OTHER_ID));
            EXPECT_NE(ChunkSpace::registerCache(), ledgers->slot()) << "not free before it is empty";
        }
    };
    (*ledgers)(*space());
    const std::size_t slot = ledgers->slot();
    ChunkSpace::unregisterCache(slot);
    EXPECT_EQ(times, 4);
    EXPECT_EQ(Ledger::alive, 0);
    for (const std::size_t other : {slot + 1, slot + 2, slot + 3})
    {
        ChunkSpace::unregisterCache(other);
    }
}

TEST_F(SpaceCacheTest, ADestructorMayGiveSlotsBack)
{
    std::optional<SpaceCache<Notebook>> notebooks(std::in_place);
    (*ledgers)(*space());
    (*notebooks)(*space());
    Ledger::onDestroyed = [&, slot = ledgers->slot()](Ledger&)
    {
        notebooks.reset();
        ChunkSpace::unregisterCache(slot); // is on its way already
    };
    ledgers.reset();
    EXPECT_EQ(Notebook::alive, 0);
}

TEST_F(SpaceCacheTest, WhatCachesMakeInASpaceThatIsGoingGoesAsWell)
{
    SpaceCache<Notebook> notebooks;
    SmartPointer<ChunkSpace> held(new ChunkSpace(77));
    ChunkSpace* const dying = held.get();
    notebooks(*held);
    (*ledgers)(*held);
    int times = 0;
    Ledger::onDestroyed = [&](Ledger&)
    {
        const SmartPointer<ChunkSpace> again(dying);
        notebooks(*again);
        new Crate(again);
        if (++times == 1)
        {
            (*ledgers)(*again);
        }
    };
    held = nullptr;
    EXPECT_EQ(times, 2);
    EXPECT_EQ(Ledger::alive, 0);
    EXPECT_EQ(Notebook::alive, 0);
    EXPECT_EQ(Crate::alive, 0);
}

TEST_F(SpaceCacheTest, ADestructorMayRemoveSpacesWhileItsSlotIsGoing)
{
    (*ledgers)(*space());
    (*ledgers)(*space(OTHER_ID));
    Ledger::onDestroyed = [](Ledger& going)
    {
        ChunkManager::instance().removeSpace(going.spaceId);
        ChunkManager::instance().removeSpace(going.spaceId == ID ? OTHER_ID : ID);
    };
    ledgers.reset();
    EXPECT_EQ(ChunkManager::instance().spaceCount(), 0U);
}

TEST_F(SpaceCacheTest, WhatIsLookedUpAfterTheSlotIsGoneGoesWithItsSpace)
{
    ChunkSpace::unregisterCache(ledgers->slot());
    Ledger& late = (*ledgers)(*space());
    late.entries = 3;
    EXPECT_EQ(late.spaceId, ID);
    EXPECT_EQ(space()->cache(ledgers->slot()), nullptr);
    EXPECT_EQ((*ledgers)(*space()).entries, 0) << "nothing is kept for later";
    EXPECT_EQ(late.entries, 3);
    EXPECT_EQ(Ledger::alive, 2);
    ChunkManager::instance().removeSpace(ID);
    EXPECT_EQ(Ledger::alive, 0);
}

TEST_F(SpaceCacheTest, AConstructorThatLooksItselfUpSharesTheOneItMade)
{
    Ledger* inner = nullptr;
    Ledger::onMade = [&](const ChunkSpace& made)
    {
        Ledger::onMade = nullptr;
        inner = &(*ledgers)(made);
    };
    EXPECT_EQ(&(*ledgers)(*space()), inner);
    EXPECT_EQ(Ledger::alive, 1);
}

} // namespace
