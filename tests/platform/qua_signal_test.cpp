#include "qua/signal.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

static_assert(!std::is_copy_constructible_v<qua::Connection>);
static_assert(!std::is_copy_assignable_v<qua::Connection>);
static_assert(std::is_nothrow_default_constructible_v<qua::Connection>);
static_assert(std::is_nothrow_move_constructible_v<qua::Connection>);
static_assert(std::is_nothrow_move_assignable_v<qua::Connection>);
static_assert(!std::is_copy_constructible_v<qua::Signal<void()>>);
static_assert(!std::is_move_constructible_v<qua::Signal<void()>>);

TEST(SignalTest, CallsSlotsInTheOrderOfConnection)
{
    qua::Signal<void(int)> signal;
    std::vector<int> calls;
    const qua::Connection first = signal.connect([&](int value) { calls.push_back(value); });
    const qua::Connection second = signal.connect([&](int value) { calls.push_back(value * 10); });

    signal(4);

    EXPECT_EQ(calls, (std::vector{4, 40}));
    EXPECT_EQ(signal.slotCount(), 2U);
}

TEST(SignalTest, EmittingWithoutSlotsDoesNothing)
{
    const qua::Signal<void(int)> signal;

    signal(4);

    EXPECT_EQ(signal.slotCount(), 0U);
}

TEST(SignalTest, AnEmptyFunctionIsNotConnected)
{
    qua::Signal<void()> signal;

    const qua::Connection connection = signal.connect(nullptr);
    signal();

    EXPECT_FALSE(connection.connected());
    EXPECT_EQ(signal.slotCount(), 0U);
}

TEST(SignalTest, DroppingTheConnectionTakesTheSlotOut)
{
    qua::Signal<void()> signal;
    int calls = 0;
    {
        const qua::Connection connection = signal.connect([&] { ++calls; });
        signal();
    }

    signal();

    EXPECT_EQ(calls, 1);
    EXPECT_EQ(signal.slotCount(), 0U);
}

TEST(SignalTest, DisconnectingReleasesTheCallableAtOnce)
{
    qua::Signal<void()> signal;
    auto captured = std::make_shared<int>(1);
    qua::Connection connection = signal.connect([captured] {});
    ASSERT_EQ(captured.use_count(), 2);

    connection.disconnect();

    EXPECT_EQ(captured.use_count(), 1);
    EXPECT_FALSE(connection.connected());
}

TEST(SignalTest, DisconnectingTwiceIsHarmless)
{
    qua::Signal<void()> signal;
    qua::Connection connection = signal.connect([] {});

    connection.disconnect();
    connection.disconnect();

    EXPECT_FALSE(connection.connected());
}

TEST(SignalTest, ASlotThatCutsItselfIsReleasedWhenItsCallReturns)
{
    qua::Signal<void()> signal;
    qua::Connection connection;
    auto captured = std::make_shared<int>(0);
    long duringCall = 0;
    connection = signal.connect(
        [&connection, &duringCall, captured]
        {
            connection.disconnect();
            ++*captured; // the captured state is still there
            duringCall = captured.use_count();
        });

    signal();
    signal();

    EXPECT_EQ(*captured, 1);
    EXPECT_EQ(duringCall, 2);
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(SignalTest, ASlotThatCutsItselfInANestedCallIsReleasedWhenTheOutermostReturns)
{
    qua::Signal<void()> signal;
    qua::Connection connection;
    auto captured = std::make_shared<int>(0);
    std::vector<long> shares;
    connection = signal.connect(
        [&, captured]
        {
            if (++*captured == 1)
            {
                signal();
            }
            else
            {
                connection.disconnect();
            }
            shares.push_back(captured.use_count());
        });

    signal();

    EXPECT_EQ(shares, (std::vector{2L, 2L}));
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(SignalTest, WhatASlotThatCutItselfReleasesMayUseTheSignal)
{
    struct EmitsWhenReleased
    {
        explicit EmitsWhenReleased(qua::Signal<void()>& emitted) : signal(emitted) {}
        EmitsWhenReleased(const EmitsWhenReleased&) = delete;
        EmitsWhenReleased& operator=(const EmitsWhenReleased&) = delete;
        ~EmitsWhenReleased() { signal(); }

        qua::Signal<void()>& signal;
    };
    qua::Signal<void()> signal;
    qua::Connection connection;
    int others = 0;
    const qua::Connection other = signal.connect([&] { ++others; });
    connection = signal.connect([&connection, released = std::make_shared<EmitsWhenReleased>(signal)]
                                { connection.disconnect(); });

    signal();

    EXPECT_EQ(others, 2);
    EXPECT_EQ(signal.slotCount(), 1U);
}

TEST(SignalTest, ASlotCutBeforeItsTurnIsNotCalled)
{
    qua::Signal<void()> signal;
    qua::Connection second;
    std::vector<int> calls;
    const qua::Connection first = signal.connect(
        [&]
        {
            calls.push_back(1);
            second.disconnect();
        });
    second = signal.connect([&] { calls.push_back(2); });
    const qua::Connection third = signal.connect([&] { calls.push_back(3); });

    signal();

    EXPECT_EQ(calls, (std::vector{1, 3}));
}

TEST(SignalTest, ASlotConnectedDuringAnEmissionIsCalledFromTheNextOneOn)
{
    qua::Signal<void()> signal;
    std::vector<qua::Connection> added;
    int calls = 0;
    const qua::Connection first = signal.connect([&] { added.push_back(signal.connect([&] { ++calls; })); });

    signal();
    EXPECT_EQ(calls, 0);
    signal();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(signal.slotCount(), 3U);
}

TEST(SignalTest, ANestedEmissionReachesEverySlotBeforeTheOuterGoesOn)
{
    qua::Signal<void(int)> signal;
    std::vector<std::string> calls;
    const qua::Connection first = signal.connect(
        [&](int depth)
        {
            calls.push_back("first " + std::to_string(depth));
            if (depth < 2)
            {
                signal(depth + 1);
            }
        });
    const qua::Connection second =
        signal.connect([&](int depth) { calls.push_back("second " + std::to_string(depth)); });

    signal(1);

    EXPECT_EQ(calls, (std::vector<std::string>{"first 1", "first 2", "second 2", "second 1"}));
}

TEST(SignalTest, ASlotThatDestroysTheSignalEndsTheEmission)
{
    auto signal = std::make_unique<qua::Signal<void()>>();
    auto captured = std::make_shared<int>(0);
    int behind = 0;
    const qua::Connection first = signal->connect(
        [&signal, captured]
        {
            signal.reset();
            ++*captured;
        });
    const qua::Connection second = signal->connect([&behind, captured] { ++behind; });

    (*signal)();

    EXPECT_EQ(*captured, 1);
    EXPECT_EQ(behind, 0);
    EXPECT_EQ(captured.use_count(), 1) << "the callables are gone with the signal";
    EXPECT_FALSE(first.connected());
    EXPECT_FALSE(second.connected());
}

TEST(SignalTest, ASlotMayOwnTheSignalThatItIsConnectedTo)
{
    auto owner = std::make_shared<qua::Signal<void()>>();
    qua::Signal<void()>& signal = *owner;
    qua::Connection connection;
    connection = signal.connect([&connection, owner] { connection.disconnect(); });
    const std::weak_ptr<qua::Signal<void()>> watched = owner;
    owner.reset();

    signal();

    EXPECT_TRUE(watched.expired());
}

TEST(SignalTest, AConnectionThatOutlivesItsSignalIsInert)
{
    auto signal = std::make_unique<qua::Signal<void()>>();
    auto captured = std::make_shared<int>(0);
    qua::Connection connection = signal->connect([captured] {});

    signal.reset();

    EXPECT_EQ(captured.use_count(), 1);
    EXPECT_FALSE(connection.connected());
    connection.disconnect();
}

TEST(SignalTest, MovingAConnectionMovesTheSlotsPlace)
{
    qua::Signal<void()> signal;
    int calls = 0;
    qua::Connection from = signal.connect([&] { ++calls; });

    qua::Connection to(std::move(from));
    from.disconnect(); // NOLINT(bugprone-use-after-move): what is left behind is inert
    signal();

    EXPECT_FALSE(from.connected());
    EXPECT_TRUE(to.connected());
    EXPECT_EQ(calls, 1);
}

TEST(SignalTest, AssigningToAConnectionCutsWhatItHeld)
{
    qua::Signal<void()> signal;
    std::vector<int> calls;
    qua::Connection held = signal.connect([&] { calls.push_back(1); });

    held = signal.connect([&] { calls.push_back(2); });
    qua::Connection& same = held;
    held = std::move(same);
    signal();

    EXPECT_EQ(calls, (std::vector{2}));
    EXPECT_EQ(signal.slotCount(), 1U);
}

TEST(SignalTest, AnExceptionLeavesTheEmissionAndTheSignalStaysUsable)
{
    qua::Signal<void()> signal;
    qua::Connection thrower;
    auto captured = std::make_shared<int>(0);
    int behind = 0;
    thrower = signal.connect(
        [&thrower, captured]
        {
            thrower.disconnect();
            throw std::runtime_error("out of a slot");
        });
    const qua::Connection second = signal.connect([&] { ++behind; });

    EXPECT_THROW(signal(), std::runtime_error);
    EXPECT_EQ(behind, 0);
    EXPECT_EQ(captured.use_count(), 1) << "released though its call was left by an exception";

    signal();
    EXPECT_EQ(behind, 1);
}

TEST(SignalTest, EachSlotGetsItsOwnCopyOfAnArgumentByValue)
{
    qua::Signal<void(std::string)> signal;
    std::vector<std::string> seen;
    const auto take = [&](std::string text)
    {
        seen.push_back(text);
        text.clear();
    };
    const qua::Connection first = signal.connect(take);
    const qua::Connection second = signal.connect(take);

    signal("text");

    EXPECT_EQ(seen, (std::vector<std::string>{"text", "text"}));
}

TEST(SignalTest, ArgumentsByReferenceAreTheCallersOwn)
{
    qua::Signal<void(const std::string&, int&)> signal;
    const std::string text = "text";
    const std::string* seen = nullptr;
    int count = 0;
    const auto take = [&](const std::string& given, int& counter)
    {
        seen = &given;
        ++counter;
    };
    const qua::Connection first = signal.connect(take);
    const qua::Connection second = signal.connect(take);

    signal(text, count);

    EXPECT_EQ(seen, &text);
    EXPECT_EQ(count, 2);
}

} // namespace
