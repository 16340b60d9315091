#include "qua/signal.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace
{

constexpr int ROUNDS = 400;

TEST(SignalThreadTest, ConnectingEmittingAndCuttingAreSafeAgainstEachOther)
{
    qua::Signal<void(int)> signal;
    std::atomic<long> sum = 0;
    std::vector<std::thread> threads;
    for (int emitter = 0; emitter < 2; ++emitter)
    {
        threads.emplace_back(
            [&]
            {
                for (int round = 0; round < ROUNDS; ++round)
                {
                    signal(1);
                }
            });
    }
    for (int user = 0; user < 2; ++user)
    {
        threads.emplace_back(
            [&]
            {
                for (int round = 0; round < ROUNDS; ++round)
                {
                    // Freed with the connection: a call that came later would touch freed memory. Atomic, as
                    // all four threads may call the slot at once.
                    auto counter = std::make_unique<std::atomic<long>>(0);
                    qua::Connection connection = signal.connect([&counter](int value) { *counter += value; });
                    signal(1);
                    connection.disconnect();
                    EXPECT_GE(*counter, 1);
                    sum += *counter;
                    counter.reset();
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    EXPECT_GE(sum, 2 * ROUNDS);
    EXPECT_EQ(signal.slotCount(), 0U);
}

TEST(SignalThreadTest, SlotsThatEmitIntoEachOtherInTwoThreadsDoNotWaitForEachOther)
{
    qua::Signal<void(bool)> first;
    qua::Signal<void(bool)> second;
    std::barrier bothAreInside(2);
    std::atomic<int> nestedCalls = 0;
    const auto emitInto = [&](const qua::Signal<void(bool)>& other)
    {
        return [&](bool nested)
        {
            if (nested)
            {
                ++nestedCalls;
                return;
            }
            bothAreInside.arrive_and_wait();
            other(true);
        };
    };
    const qua::Connection inFirst = first.connect(emitInto(second));
    const qua::Connection inSecond = second.connect(emitInto(first));

    std::thread thread([&] { first(false); });
    second(false);
    thread.join();

    EXPECT_EQ(nestedCalls, 2);
}

TEST(SignalThreadTest, OneThreadMayCutASlotThatItRunsWhileAnotherRunsItToo)
{
    qua::Signal<void(bool)> signal;
    qua::Connection connection;
    auto captured = std::make_shared<std::atomic<int>>(0);
    std::barrier bothAreInside(2);
    connection = signal.connect(
        [&connection, &bothAreInside, captured](bool cuts)
        {
            bothAreInside.arrive_and_wait();
            if (cuts)
            {
                connection.disconnect();
            }
            ++*captured;
        });

    std::thread other([&] { signal(false); });
    signal(true);
    EXPECT_EQ(*captured, 2);
    EXPECT_EQ(captured.use_count(), 1);
    other.join();
}

/// A slot that has been entered in another thread and stays there until it is let go.
class RunningSlot
{
public:
    RunningSlot()
    {
        m_connection = m_signal.connect(
            [this]
            {
                m_entered.set_value();
                m_letGo.get_future().wait();
                // Long enough for a disconnect() that does not wait to come back first.
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                m_returned = true;
            });
        m_thread = std::thread([this] { m_signal(); });
        m_entered.get_future().wait();
    }
    RunningSlot(const RunningSlot&) = delete;
    RunningSlot& operator=(const RunningSlot&) = delete;
    ~RunningSlot() { m_thread.join(); }

    qua::Connection& connection() { return m_connection; }
    void letGo() { m_letGo.set_value(); }
    bool returned() const { return m_returned; }

private:
    qua::Signal<void()> m_signal;
    qua::Connection m_connection;
    std::promise<void> m_entered;
    std::promise<void> m_letGo;
    std::atomic<bool> m_returned = false;
    std::thread m_thread;
};

TEST(SignalThreadTest, DisconnectingWaitsForACallThatRunsInAnotherThread)
{
    RunningSlot slot;

    slot.letGo();
    slot.connection().disconnect();

    EXPECT_TRUE(slot.returned());
}

TEST(SignalThreadTest, AskingWhetherASlotIsConnectedDoesNotWaitForItsCall)
{
    RunningSlot slot;

    auto asked = std::async(std::launch::async, [&] { return slot.connection().connected(); });
    const bool answered = asked.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
    slot.letGo();

    EXPECT_TRUE(answered) << "the call was waited for";
    EXPECT_TRUE(asked.get());
}

} // namespace
