#include "kodo/core/debug_message_helper.hpp"

#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using Kodo::DebugMessage;
using Kodo::DebugMessageHelper;
using Kodo::DebugMessageSink;

static_assert(!std::is_copy_constructible_v<DebugMessageSink>);
static_assert(std::is_nothrow_default_constructible_v<DebugMessageSink>);
static_assert(std::is_nothrow_move_constructible_v<DebugMessageSink>);
static_assert(std::is_nothrow_move_assignable_v<DebugMessageSink>);

/// The test program listens itself; here that is not of interest.
class DebugMessageTest : public testing::Test
{
protected:
    DebugMessageSink collect(int leastPriority = 0)
    {
        return DebugMessageSink([this](const DebugMessage& message) { m_texts.emplace_back(message.text); },
                                leastPriority);
    }

    std::vector<std::string> m_texts;

private:
    CollectReports m_reports;
};

TEST_F(DebugMessageTest, ASinkSeesEveryField)
{
    int calls = 0;
    const DebugMessageSink sink(
        [&](const DebugMessage& message)
        {
            ++calls;
            EXPECT_EQ(message.text, "the lamp\0is out" + std::string());
            EXPECT_EQ(message.category, "harbour");
            EXPECT_EQ(message.componentPriority, 3);
            EXPECT_EQ(message.messagePriority, 5);
            EXPECT_EQ(message.source, 9);
            EXPECT_FALSE(message.critical);
        });

    DebugMessageHelper(3, 5, "harbour", 9).message("the lamp\0is out" + std::string());

    EXPECT_EQ(calls, 1);
}

TEST_F(DebugMessageTest, AMessageIsTextAndNotAFormat)
{
    const DebugMessageSink sink = collect();

    DebugMessageHelper(0, 5).message("100% {} %s %n");
    DebugMessageHelper(0, 5).message(std::string("a\0b", 3));
    DebugMessageHelper(0, 5).message("");

    EXPECT_EQ(m_texts, (std::vector<std::string>{"100% {} %s %n", std::string("a\0b", 3), ""}));
}

TEST_F(DebugMessageTest, ASinkIsSparedWhatLiesBelowItsLeastPriority)
{
    const DebugMessageSink sink = collect(5);

    DebugMessageHelper(9, 4).message("below");
    DebugMessageHelper(0, 5).message("at");
    DebugMessageHelper(0, 6).message("above");

    EXPECT_EQ(m_texts, (std::vector<std::string>{"at", "above"}));
}

TEST_F(DebugMessageTest, ACriticalMessageReachesEverySink)
{
    const DebugMessageSink sink = collect(1000);

    DebugMessageHelper(0, 0).criticalMessage("%s %d", "critical", 1);

    EXPECT_EQ(m_texts, (std::vector<std::string>{"critical 1"}));
}

TEST_F(DebugMessageTest, ACriticalMessageOfAnyLengthArrivesWhole)
{
    const DebugMessageSink sink = collect();
    std::vector<std::string> sent;
    for (const std::size_t length : {0U, 1U, 510U, 511U, 512U, 513U, 70000U})
    {
        sent.emplace_back(length, 'x');
        DebugMessageHelper().criticalMessage("%s", sent.back().c_str());
    }

    EXPECT_EQ(m_texts, sent);
}

TEST_F(DebugMessageTest, SinksAreCalledInTheOrderOfRegistration)
{
    const DebugMessageSink first([&](const DebugMessage&) { m_texts.emplace_back("first"); });
    const DebugMessageSink second([&](const DebugMessage&) { m_texts.emplace_back("second"); });

    DebugMessageHelper(0, 5).message("text");

    EXPECT_EQ(m_texts, (std::vector<std::string>{"first", "second"}));
}

TEST_F(DebugMessageTest, ADroppedSinkReceivesNothingAndReleasesItsCallable)
{
    auto captured = std::make_shared<int>(0);
    {
        const DebugMessageSink sink([captured](const DebugMessage&) { ++*captured; });
        DebugMessageHelper(0, 5).message("text");
    }

    DebugMessageHelper(0, 5).message("text");

    EXPECT_EQ(*captured, 1);
    EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(DebugMessageTest, MovingASinkKeepsItsRegistration)
{
    DebugMessageSink from = collect();
    DebugMessageSink to(std::move(from));
    from.remove(); // NOLINT(bugprone-use-after-move): what is left behind is empty

    DebugMessageHelper(0, 5).message("one");
    to = DebugMessageSink();
    DebugMessageHelper(0, 5).message("two");

    EXPECT_EQ(m_texts, (std::vector<std::string>{"one"}));
}

TEST_F(DebugMessageTest, ASinkMayRemoveItselfInItsCall)
{
    auto captured = std::make_shared<int>(0);
    DebugMessageSink sink;
    sink = DebugMessageSink(
        [&sink, captured](const DebugMessage&)
        {
            sink.remove();
            ++*captured; // the captured state is still there
        });

    DebugMessageHelper(0, 5).message("text");
    DebugMessageHelper(0, 5).message("text");

    EXPECT_EQ(*captured, 1);
    EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(DebugMessageTest, ASinkRemovedBeforeItsTurnIsNotCalled)
{
    DebugMessageSink second;
    const DebugMessageSink first([&](const DebugMessage&) { second.remove(); });
    second = collect();

    DebugMessageHelper(0, 5).message("text");

    EXPECT_TRUE(m_texts.empty());
}

TEST_F(DebugMessageTest, ASinkRegisteredInACallReceivesTheNextMessage)
{
    DebugMessageSink added;
    DebugMessageSink first;
    first = DebugMessageSink(
        [&](const DebugMessage&)
        {
            added = collect();
            first.remove();
        });

    DebugMessageHelper(0, 5).message("one");
    DebugMessageHelper(0, 5).message("two");

    EXPECT_EQ(m_texts, (std::vector<std::string>{"two"}));
}

TEST_F(DebugMessageTest, ASinkMayReportItself)
{
    const DebugMessageSink sink(
        [&](const DebugMessage& message)
        {
            m_texts.emplace_back(message.text);
            if (m_texts.size() < 3)
            {
                DebugMessageHelper(0, 5).message("nested in " + std::string(message.text));
            }
        });

    DebugMessageHelper(0, 5).message("text");

    EXPECT_EQ(m_texts, (std::vector<std::string>{"text", "nested in text", "nested in nested in text"}));
}

TEST_F(DebugMessageTest, SinksThatReportInSeveralThreadsDoNotWaitForEachOther)
{
    constexpr int ROUNDS = 300;
    int received = 0;
    const auto answer = [&received](const DebugMessage& message)
    {
        ++received;
        if (message.messagePriority == 5)
        {
            DebugMessageHelper(0, 6).message("an answer");
        }
    };
    const DebugMessageSink first(answer);
    const DebugMessageSink second(answer);
    const auto report = []
    {
        for (int round = 0; round < ROUNDS; ++round)
        {
            DebugMessageHelper(0, 5).message("text");
        }
    };

    std::thread other(report);
    report();
    other.join();

    // Each message reaches both; each of the two answers it, and both hear each answer.
    EXPECT_EQ(received, 2 * ROUNDS * (2 + 2 * 2));
}

TEST_F(DebugMessageTest, WhatASinkThrowsReachesNeitherTheCallerNorTheOtherSinks)
{
    const DebugMessageSink thrower([](const DebugMessage&) { throw std::runtime_error("out of a sink"); });
    const DebugMessageSink other = collect();

    DebugMessageHelper(0, 5).message("text");
    DebugMessageHelper().criticalMessage("critical");

    EXPECT_EQ(m_texts, (std::vector<std::string>{"text", "critical"}));
}

TEST_F(DebugMessageTest, AnEmptyReceiverIsASinkThatHearsNothing)
{
    const DebugMessageSink sink(nullptr);

    DebugMessageHelper(0, 5).message("text");
}

TEST_F(DebugMessageTest, RemovalWaitsForACallThatRunsInAnotherThread)
{
    std::promise<void> entered;
    std::atomic<bool> returned = false;
    DebugMessageSink sink(
        [&](const DebugMessage&)
        {
            entered.set_value();
            // Long enough for a removal that does not wait to come back first.
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            returned = true;
        });
    std::thread other([] { DebugMessageHelper(0, 5).message("text"); });
    entered.get_future().wait();

    sink.remove();

    EXPECT_TRUE(returned);
    other.join();
}

TEST_F(DebugMessageTest, ReportingAndRegisteringAreSafeFromAnyThread)
{
    constexpr int ROUNDS = 200;
    std::atomic<bool> overlapped = false;
    long received = 0; // no atomic: calls of a sink never overlap
    std::atomic<int> inside = 0;
    const DebugMessageSink sink(
        [&](const DebugMessage&)
        {
            overlapped = overlapped || inside.fetch_add(1) != 0;
            ++received;
            inside.fetch_sub(1);
        });
    const auto work = []
    {
        for (int round = 0; round < ROUNDS; ++round)
        {
            auto count = std::make_unique<int>(0); // a call after the removal would touch freed memory
            DebugMessageSink own([&count](const DebugMessage&) { ++*count; });
            DebugMessageHelper(0, 5).message("text");
            own.remove();
            EXPECT_GE(*count, 1);
            count.reset();
        }
    };

    std::thread first(work);
    std::thread second(work);
    work();
    first.join();
    second.join();

    EXPECT_EQ(received, 3 * ROUNDS);
    EXPECT_FALSE(overlapped);
}

} // namespace
