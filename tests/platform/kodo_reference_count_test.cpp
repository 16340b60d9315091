#include "kodo/core/reference_count.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "vell/variant.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using Kodo::SmartPointer;
using Kodo::WeakPointer;

namespace
{

/// Counts its kind.
class Boat : public Kodo::SafeReferenceCount, public Kodo::WeakReferenceCount
{
public:
    explicit Boat(std::atomic<int>& afloat) : m_afloat(afloat) { ++m_afloat; }

    SmartPointer<Boat> towed;

protected:
    ~Boat() override { --m_afloat; }

private:
    std::atomic<int>& m_afloat;
};

class Cargo
{
public:
    virtual ~Cargo() = default;
    long weight = 1;
};

/// With a base in front, so that pointers to its bases differ.
class Freighter : public Cargo, public Boat
{
public:
    using Boat::Boat;
};

static_assert(sizeof(SmartPointer<Boat>) == sizeof(Boat*));
static_assert(std::is_nothrow_move_constructible_v<SmartPointer<Boat>>);
static_assert(std::is_nothrow_copy_constructible_v<SmartPointer<Boat>>);
static_assert(std::is_convertible_v<SmartPointer<Freighter>, SmartPointer<Boat>>);
static_assert(!std::is_convertible_v<SmartPointer<Boat>, SmartPointer<Freighter>>);
static_assert(!std::is_copy_constructible_v<Boat>);

class ReferenceCountTest : public testing::Test
{
protected:
    std::atomic<int> m_afloat = 0;
};

TEST_F(ReferenceCountTest, TheLastPointerTakesTheObjectAlong)
{
    SmartPointer<Boat> first = new Boat(m_afloat);
    EXPECT_EQ(first->refCount(), 1);
    {
        const SmartPointer<Boat> second = first;
        EXPECT_EQ(first->refCount(), 2);
        EXPECT_EQ(first, second);
    }
    EXPECT_EQ(first->refCount(), 1);
    first = nullptr;
    EXPECT_EQ(m_afloat, 0);
    EXPECT_FALSE(first);
    EXPECT_FALSE(first.hasObject());
}

TEST_F(ReferenceCountTest, MovingCarriesTheReferenceOver)
{
    SmartPointer<Boat> first = new Boat(m_afloat);
    SmartPointer<Boat> second = std::move(first);
    EXPECT_EQ(first.get(), nullptr); // NOLINT(bugprone-use-after-move): emptied by promise
    EXPECT_EQ(second->refCount(), 1);
    SmartPointer<Boat> third = new Boat(m_afloat);
    third = std::move(second);
    EXPECT_EQ(m_afloat, 1);
}

TEST_F(ReferenceCountTest, AssigningAPointerToItselfKeepsTheObject)
{
    SmartPointer<Boat> pointer = new Boat(m_afloat);
    SmartPointer<Boat>& same = pointer;
    pointer = same;
    EXPECT_EQ(pointer->refCount(), 1);
    pointer = std::move(same);
    EXPECT_EQ(pointer->refCount(), 1);
    pointer = pointer.get();
    EXPECT_EQ(pointer->refCount(), 1);
    EXPECT_EQ(m_afloat, 1);
}

TEST_F(ReferenceCountTest, WhatTheObjectHoldsMayTakeItsPlace)
{
    SmartPointer<Boat> tug = new Boat(m_afloat);
    tug->towed = new Boat(m_afloat);
    Boat* const barge = tug->towed.get();

    tug = tug->towed;

    EXPECT_EQ(tug.get(), barge);
    EXPECT_EQ(barge->refCount(), 1);
    EXPECT_EQ(m_afloat, 1);
}

TEST_F(ReferenceCountTest, APointerToABaseHoldsTheWholeObject)
{
    SmartPointer<Freighter> freighter = new Freighter(m_afloat);
    SmartPointer<Boat> boat = freighter;
    EXPECT_EQ(boat, freighter);
    EXPECT_EQ(freighter->refCount(), 2);
    freighter = {};
    EXPECT_EQ(m_afloat, 1);
    boat = {};
    EXPECT_EQ(m_afloat, 0);
}

TEST_F(ReferenceCountTest, AnObjectMayBePointedToWhileItIsBeingDestroyed)
{
    /// Hands itself out as it goes.
    class Farewell : public Boat
    {
    public:
        using Boat::Boat;

    protected:
        ~Farewell() override
        {
            const SmartPointer<Boat> self = this;
            EXPECT_FALSE(tryIncRef());
        }
    };
    SmartPointer<Boat> pointer = new Farewell(m_afloat);
    pointer = nullptr;
    EXPECT_EQ(m_afloat, 0) << "destroyed once";
}

TEST_F(ReferenceCountTest, AVariantHoldsAReference)
{
    SmartPointer<Boat> boat = new Boat(m_afloat);
    {
        const vell::Variant variant = boat;
        EXPECT_EQ(boat->refCount(), 2);
        vell::Variant copy = variant;
        EXPECT_EQ(boat->refCount(), 3);
        vell::Variant moved = std::move(copy);
        EXPECT_EQ(boat->refCount(), 3);
        SmartPointer<Boat> cast;
        EXPECT_TRUE(moved.tryCast(cast));
        EXPECT_EQ(cast, boat);
        Boat* plain = nullptr;
        EXPECT_TRUE(moved.tryCast(plain));
        EXPECT_EQ(plain, boat.get());
        EXPECT_EQ(variant.type().size(), sizeof(void*));
        EXPECT_TRUE(*variant.type().underlyingType() == typeid(Boat));
    }
    EXPECT_EQ(boat->refCount(), 1);
    vell::Variant last = boat;
    boat = nullptr;
    EXPECT_EQ(m_afloat, 1);
    last = vell::Variant();
    EXPECT_EQ(m_afloat, 0);
}

TEST_F(ReferenceCountTest, AnObserverHoldsNothing)
{
    SmartPointer<Boat> boat = new Boat(m_afloat);
    const WeakPointer<Boat> observer = boat;
    const WeakPointer<Boat> another = boat.get();
    EXPECT_EQ(boat->refCount(), 1);
    {
        const SmartPointer<Boat> held = observer.lock();
        EXPECT_EQ(held, boat);
        EXPECT_EQ(boat->refCount(), 2);
    }
    boat = nullptr;
    EXPECT_EQ(m_afloat, 0);
    EXPECT_FALSE(observer.lock());
    EXPECT_FALSE(another.lock());
    EXPECT_FALSE(WeakPointer<Boat>().lock());
    EXPECT_FALSE(WeakPointer<Boat>(nullptr).lock());
}

TEST_F(ReferenceCountTest, ADestructorIsNotObserved)
{
    /// Looks at itself as it goes.
    class Mirror : public Boat
    {
    public:
        using Boat::Boat;
        WeakPointer<Mirror> self;

    protected:
        ~Mirror() override { EXPECT_FALSE(self.lock()); }
    };
    SmartPointer<Mirror> mirror = new Mirror(m_afloat);
    mirror->self = mirror;
    mirror = nullptr;
    EXPECT_EQ(m_afloat, 0);
}

TEST_F(ReferenceCountTest, ThreadsCountTogether)
{
    const SmartPointer<Boat> boat = new Boat(m_afloat);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
    {
        threads.emplace_back(
            [boat]
            {
                for (int i = 0; i < 2000; ++i)
                {
                    const SmartPointer<Boat> copy = boat;
                    const WeakPointer<Boat> observer = copy;
                    EXPECT_TRUE(observer.lock());
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    threads.clear();
    EXPECT_EQ(boat->refCount(), 1);
}

TEST_F(ReferenceCountTest, ObserversRaceTheEndOfAnObject)
{
    for (int round = 0; round < 300; ++round)
    {
        SmartPointer<Boat> boat = new Boat(m_afloat);
        const WeakPointer<Boat> observer = boat;
        std::atomic<bool> ready = false;
        std::thread watcher(
            [&]
            {
                ready = true;
                while (const SmartPointer<Boat> held = observer.lock())
                {
                    EXPECT_GE(held->refCount(), 1);
                }
            });
        while (!ready)
        {
        }
        boat = nullptr;
        watcher.join();
        ASSERT_EQ(m_afloat, 0);
    }
}

} // namespace
