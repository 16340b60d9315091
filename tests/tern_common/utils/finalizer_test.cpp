#include "tern_common/utils/finalizer.hpp"

#include "tests/support/allocation_hook.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace
{

static_assert(!std::is_copy_constructible_v<Finalizer> && !std::is_copy_assignable_v<Finalizer>);
static_assert(std::is_nothrow_move_constructible_v<Finalizer> &&
              std::is_nothrow_move_assignable_v<Finalizer>);
static_assert(noexcept(std::declval<Finalizer&>().finalize()));
static_assert(std::is_nothrow_destructible_v<Finalizer> && !std::is_polymorphic_v<Finalizer>);
static_assert(!std::is_convertible_v<bool, Finalizer>);

/// A pointer to release: notes its name when that happens.
struct Note
{
    std::string* log;
    char name;

    static void write(void* pointer)
    {
        const Note& note = *static_cast<Note*>(pointer);
        *note.log += note.name;
    }
};

class FinalizerTest : public testing::Test
{
protected:
    void addThree(Finalizer& finalizer)
    {
        finalizer.add(&m_a, &Note::write);
        finalizer.add(&m_b, &Note::write);
        finalizer.add(&m_c, &Note::write);
    }

    std::string m_log;
    Note m_a{&m_log, 'A'};
    Note m_b{&m_log, 'B'};
    Note m_c{&m_log, 'C'};
    Note m_d{&m_log, 'D'};
};

using FinalizerDeathTest = FinalizerTest;

} // namespace

TEST_F(FinalizerTest, FinalizeRunsTheLastAddedFirst)
{
    Finalizer finalizer;
    EXPECT_TRUE(finalizer.empty());
    addThree(finalizer);
    EXPECT_FALSE(finalizer.empty());
    finalizer.finalize();
    EXPECT_EQ(m_log, "CBA");
    EXPECT_TRUE(finalizer.empty());
}

TEST_F(FinalizerTest, FinalizingAgainOrWithoutActionsRunsNothing)
{
    {
        Finalizer finalizer;
        finalizer.finalize();
        addThree(finalizer);
        finalizer.finalize();
        finalizer.finalize();
    }
    EXPECT_EQ(m_log, "CBA");
}

TEST_F(FinalizerTest, DestructionRunsTheLastAddedFirst)
{
    {
        Finalizer finalizer;
        addThree(finalizer);
    }
    EXPECT_EQ(m_log, "CBA");
}

TEST_F(FinalizerTest, WithTheFlagClearedDestructionRunsTheFirstAddedFirst)
{
    {
        Finalizer finalizer(false);
        addThree(finalizer);
    }
    EXPECT_EQ(m_log, "ABC");
    m_log.clear();
    {
        Finalizer finalizer(true);
        addThree(finalizer);
    }
    EXPECT_EQ(m_log, "CBA");
}

TEST_F(FinalizerTest, WithTheFlagClearedFinalizeStillRunsTheLastAddedFirst)
{
    Finalizer finalizer(false);
    addThree(finalizer);
    finalizer.finalize();
    EXPECT_EQ(m_log, "CBA");
}

TEST_F(FinalizerTest, ANullPointerIsRemovedWithoutARelease)
{
    Finalizer finalizer;
    finalizer.add(&m_a, &Note::write);
    finalizer.add(nullptr, &Note::write);
    finalizer.add(&m_b, &Note::write);
    finalizer.add(nullptr, &Note::write);
    finalizer.finalize();
    EXPECT_EQ(m_log, "BA");
    EXPECT_TRUE(finalizer.empty());
    finalizer.add(nullptr, &Note::write);
    EXPECT_FALSE(finalizer.empty());
}

TEST_F(FinalizerTest, CallablesRunInTurnWithPointers)
{
    {
        Finalizer finalizer;
        finalizer.add(&m_a, &Note::write);
        finalizer.add([this] { m_log += 'x'; });
        finalizer.add([this, text = std::make_unique<std::string>("move-only")] { m_log += text->front(); });
    }
    EXPECT_EQ(m_log, "mxA");
}

TEST_F(FinalizerTest, AMoveTakesTheActionsAndLeavesAnEmptyObjectThatCanBeUsedAgain)
{
    std::optional<Finalizer> source(std::in_place);
    addThree(*source);
    {
        Finalizer moved(std::move(*source));
        EXPECT_TRUE(source->empty());
        source->add(&m_d, &Note::write);
        source.reset();
        EXPECT_EQ(m_log, "D");
    }
    EXPECT_EQ(m_log, "DCBA");
}

TEST_F(FinalizerTest, AMoveCopiesTheFlagAndTheSourceKeepsIts)
{
    {
        Finalizer source(false);
        addThree(source);
        {
            Finalizer moved(std::move(source));
        }
        EXPECT_EQ(m_log, "ABC");
        addThree(source);
    }
    EXPECT_EQ(m_log, "ABCABC");
}

TEST_F(FinalizerTest, AssignmentRunsItsOwnActionsInTheOrderAddedWhateverTheFlagSays)
{
    for (const bool flag : {true, false})
    {
        m_log.clear();
        {
            Finalizer target(flag);
            target.add(&m_a, &Note::write);
            target.add(&m_b, &Note::write);
            Finalizer source(false);
            source.add(&m_c, &Note::write);
            source.add(&m_d, &Note::write);
            target = std::move(source);
            EXPECT_EQ(m_log, "AB");
            EXPECT_TRUE(source.empty());
            EXPECT_FALSE(target.empty());
        }
        EXPECT_EQ(m_log, "ABCD") << "the flag came along";
    }
}

TEST_F(FinalizerTest, AssigningToItselfRunsNothingAndKeepsEverything)
{
    {
        Finalizer finalizer(false);
        addThree(finalizer);
        Finalizer& same = finalizer;
        finalizer = std::move(same);
        EXPECT_EQ(m_log, "");
        EXPECT_FALSE(finalizer.empty());
    }
    EXPECT_EQ(m_log, "ABC");
}

TEST_F(FinalizerTest, AnActionIsPendingUntilItHasReturned)
{
    Finalizer finalizer;
    bool emptyInside = true;
    finalizer.add([&] { emptyInside = finalizer.empty(); });
    finalizer.finalize();
    EXPECT_FALSE(emptyInside);
    EXPECT_TRUE(finalizer.empty());
}

TEST_F(FinalizerTest, WhatAnActionAddsRunsNext)
{
    Finalizer finalizer;
    finalizer.add(&m_a, &Note::write);
    finalizer.add(
        [&]
        {
            m_log += 'x';
            for (int i = 0; i < 100; ++i) // makes the list grow while one of its entries runs
            {
                finalizer.add(nullptr, &Note::write);
            }
            finalizer.add(&m_b, &Note::write);
            finalizer.add(&m_c, &Note::write);
            m_log += 'y';
        });
    finalizer.finalize();
    EXPECT_EQ(m_log, "xyCBA");
    EXPECT_TRUE(finalizer.empty());
}

TEST_F(FinalizerTest, FinalizingFromWithinAnActionRunsTheRestAndNothingTwice)
{
    Finalizer finalizer;
    finalizer.add(&m_a, &Note::write);
    finalizer.add(&m_b, &Note::write);
    finalizer.add(
        [&]
        {
            m_log += 'x';
            finalizer.finalize();
            EXPECT_TRUE(finalizer.empty());
            m_log += 'y';
        });
    finalizer.finalize();
    EXPECT_EQ(m_log, "xBAy");
    EXPECT_TRUE(finalizer.empty());
}

TEST_F(FinalizerTest, WhatIsAddedAfterFinalizingFromWithinAnActionRunsToo)
{
    Finalizer finalizer;
    finalizer.add(&m_a, &Note::write);
    finalizer.add(
        [&]
        {
            finalizer.add(&m_b, &Note::write);
            finalizer.finalize();
            finalizer.add(&m_c, &Note::write);
        });
    finalizer.finalize();
    EXPECT_EQ(m_log, "BAC");
}

TEST_F(FinalizerTest, AnActionMayMoveTheRestAway)
{
    Finalizer other;
    {
        Finalizer finalizer;
        finalizer.add(&m_a, &Note::write);
        finalizer.add(
            [&]
            {
                m_log += 'x';
                other = std::move(finalizer);
            });
        finalizer.finalize();
        EXPECT_TRUE(finalizer.empty());
    }
    EXPECT_EQ(m_log, "x");
    other.finalize();
    EXPECT_EQ(m_log, "xA");
}

TEST_F(FinalizerTest, WhatActionsOfADiscardedListAddRunsBehindThem)
{
    {
        Finalizer finalizer(false);
        finalizer.add(
            [&]
            {
                m_log += 'x';
                finalizer.add(&m_c, &Note::write);
                finalizer.add(&m_d, &Note::write);
            });
        finalizer.add(&m_a, &Note::write);
    }
    EXPECT_EQ(m_log, "xACD");
}

TEST_F(FinalizerTest, FinalizingFromWithinADiscardedListKeepsItsOrder)
{
    {
        Finalizer finalizer(false);
        finalizer.add(
            [&]
            {
                finalizer.add(&m_d, &Note::write);
                finalizer.finalize();
                m_log += 'x';
            });
        finalizer.add(&m_a, &Note::write);
        finalizer.add(&m_b, &Note::write);
    }
    EXPECT_EQ(m_log, "DxAB");
}

TEST_F(FinalizerTest, WhatActionsAddDuringAnAssignmentRunsBeforeItTakesTheOthers)
{
    Finalizer target;
    Finalizer source;
    target.add([&] { target.add(&m_a, &Note::write); });
    target.add([&] { source.add(&m_c, &Note::write); });
    source.add(&m_b, &Note::write);
    target = std::move(source);
    EXPECT_EQ(m_log, "A");
    target.finalize();
    EXPECT_EQ(m_log, "ACB");
}

TEST_F(FinalizerTest, APointerIsReleasedAtOnceWhenTheListCannotGrow)
{
    Finalizer finalizer;
    {
        const FailingAllocation failing(0);
        EXPECT_THROW(finalizer.add(&m_a, &Note::write), std::bad_alloc);
    }
    EXPECT_EQ(m_log, "A");
    EXPECT_TRUE(finalizer.empty());
    finalizer.finalize();
    EXPECT_EQ(m_log, "A");
}

TEST_F(FinalizerTest, ACallableRunsAtOnceWhicheverAllocationFails)
{
    for (const std::size_t successes : {0U, 1U})
    {
        m_log.clear();
        auto released = std::make_shared<int>(0);
        Finalizer finalizer;
        auto action = [this, released] { m_log += 'x'; };
        {
            const FailingAllocation failing(successes);
            EXPECT_THROW(finalizer.add(std::move(action)), std::bad_alloc);
        }
        EXPECT_EQ(m_log, "x");
        EXPECT_TRUE(finalizer.empty());
        EXPECT_EQ(released.use_count(), 1) << "the callable is gone";
    }
}

TEST_F(FinalizerTest, AFailedAdditionKeepsTheActionsAddedBefore)
{
    Finalizer finalizer;
    for (int i = 0; i < 16; ++i) // the next one makes the list grow, for the usual growth by doubling
    {
        finalizer.add(&m_a, &Note::write);
    }
    bool failed = false;
    for (int i = 0; i < 32 && !failed; ++i)
    {
        const FailingAllocation failing(0);
        try
        {
            finalizer.add(&m_b, &Note::write);
        }
        catch (const std::bad_alloc&)
        {
            failed = true;
        }
    }
    EXPECT_TRUE(failed);
    EXPECT_EQ(m_log, "B");
    finalizer.finalize();
    EXPECT_TRUE(m_log.ends_with(std::string(16, 'A')));
}

TEST_F(FinalizerDeathTest, AnActionThatThrowsEndsTheProcess)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto throwing = [](void*) { throw std::runtime_error("from a release function"); };
    EXPECT_EXIT(
        {
            Finalizer finalizer;
            finalizer.add(&m_a, throwing);
            finalizer.finalize();
        },
        testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT({ Finalizer(false).add([] { throw std::runtime_error("from a callable"); }); },
                testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(
        {
            Finalizer target;
            target.add(&m_a, throwing);
            target = Finalizer();
        },
        testing::KilledBySignal(SIGABRT), "");
}
