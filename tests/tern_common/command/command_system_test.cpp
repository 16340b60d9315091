#include "tern_common/command_system.hpp"

#include "tests/support/futures.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace
{

static_assert(!std::is_copy_constructible_v<CommandSystem> && !std::is_copy_assignable_v<CommandSystem>);

/// A command system with the commands `log("…")`, `hold()` whose future the test fulfils, and, on a child
/// object, `obj.log("…")`.
class CommandSystemTest : public testing::Test
{
protected:
    CommandSystemTest()
    {
        const auto log = [this](const std::string& text)
        {
            m_log.push_back(text);
            return readyFuture();
        };
        m_system->rootObject().addCommand("log", log);
        m_system->rootObject().addCommand("hold",
                                          [this]
                                          {
                                              m_log.push_back("hold");
                                              return m_held.emplace_back().get_future();
                                          });
        m_object.addCommand("log", [log](const std::string& text) { return log("obj " + text); });
        m_system->rootObject().addChild("obj", &m_object);
    }

    void queue(std::string_view script)
    {
        m_system->parseScriptFile(m_directory.write("script.txt", script).wstring());
    }

    void tick(int times = 1)
    {
        for (int i = 0; i < times; ++i)
        {
            m_system->tick();
        }
    }

    /// Ticks until nothing is left to do and gives what was logged since the last call.
    std::vector<std::string> run()
    {
        for (int i = 0; i < 1000 && !m_system->isIdle(); ++i)
        {
            m_system->tick();
        }
        EXPECT_TRUE(m_system->isIdle());
        return std::exchange(m_log, {});
    }

    using Log = std::vector<std::string>;

    TemporaryDirectory m_directory;
    CommandObject m_object;
    std::unique_ptr<CommandSystem> m_system = std::make_unique<CommandSystem>();
    Log m_log;
    std::vector<std::promise<void>> m_held;
};

TEST_F(CommandSystemTest, HasOneCommandAtFirstAndNothingToDo)
{
    CommandSystem system;
    ASSERT_NE(system.rootObject().findCommand("wait"), nullptr);
    EXPECT_EQ(system.rootObject().findCommand("wait")->argc(), 1U);
    EXPECT_TRUE(system.isIdle());
    EXPECT_EQ(system.startedLine().line, 0U);
    EXPECT_EQ(system.parsedLine().line, 0U);
    system.tick();
    EXPECT_TRUE(system.isIdle());
}

TEST_F(CommandSystemTest, RunsAScriptInOrderFromTheRoot)
{
    queue("# a script\nlog(\"one\")\n\n  obj.log(\"two\")\nlog(\"three\")\n");
    EXPECT_EQ(run(), (Log{"one", "obj two", "three"}));
}

TEST_F(CommandSystemTest, StartsNoMoreThanOneCommandATick)
{
    queue("log(\"a\")\nlog(\"b\")\nlog(\"c\")\n");
    EXPECT_EQ(m_system->queuedCommandCount(), 3U);
    tick();
    EXPECT_EQ(m_log, (Log{"a"}));
    tick();
    EXPECT_EQ(m_log, (Log{"a", "b"}));
    EXPECT_FALSE(m_system->isIdle());
    tick();
    EXPECT_EQ(m_log, (Log{"a", "b", "c"}));
    EXPECT_FALSE(m_system->isIdle()); // the last future is not yet taken
    tick();
    EXPECT_TRUE(m_system->isIdle());
}

TEST_F(CommandSystemTest, WaitsForTheRunningCommand)
{
    queue("hold()\nlog(\"after\")\n");
    tick(5);
    EXPECT_EQ(m_log, (Log{"hold"}));
    m_held.front().set_value();
    tick();
    EXPECT_EQ(m_log, (Log{"hold", "after"}));
}

TEST_F(CommandSystemTest, RunsTwoFilesInTheOrderOfParsing)
{
    queue("log(\"a\")\nlog(\"b\")\n");
    queue("log(\"c\")\n");
    EXPECT_EQ(run(), (Log{"a", "b", "c"}));
}

TEST_F(CommandSystemTest, ScriptsMayBeAddedWhileCommandsRun)
{
    queue("hold()\nlog(\"a\")\n");
    tick(2);
    queue("log(\"b\")\n");
    m_held.front().set_value();
    EXPECT_EQ(run(), (Log{"hold", "a", "b"}));
}

TEST_F(CommandSystemTest, ACommandMayQueueAScript)
{
    m_directory.write("inner.txt", "log(\"inner\")\n");
    m_system->rootObject().addCommand("include",
                                      [this]
                                      {
                                          m_system->parseScriptFile(
                                              (m_directory.path() / "inner.txt").wstring());
                                          return readyFuture();
                                      });
    queue("include()\nlog(\"outer\")\n");
    EXPECT_EQ(run(), (Log{"outer", "inner"}));
    queue("include()\n");
    EXPECT_EQ(run(), (Log{"inner"}));
}

TEST_F(CommandSystemTest, AWrongLineQueuesNothingOfItsFile)
{
    queue("log(\"before\")\n");
    {
        ExpectReports reports{"Unexpected character"};
        queue("log(\"a\")\nlog(\"b\")\nlog(-1)\nlog(+1)\n");
    }
    EXPECT_EQ(m_system->queuedCommandCount(), 1U);
    EXPECT_EQ(m_system->parsedLine().line, 3U);
    EXPECT_EQ(run(), (Log{"before"}));
}

TEST_F(CommandSystemTest, AnUnterminatedStringDropsTheFileInSilence)
{
    queue("log(\"a\")\nlog(\"b)\n");
    EXPECT_TRUE(m_system->isIdle());
    EXPECT_EQ(m_system->parsedLine().line, 2U);
}

TEST_F(CommandSystemTest, ANumberTooLargeThrowsAndQueuesNothing)
{
    queue("log(\"before\")\n");
    EXPECT_THROW(queue("log(\"a\")\nwait(2147483648)\n"), std::out_of_range);
    EXPECT_EQ(run(), (Log{"before"}));
}

TEST_F(CommandSystemTest, EmptyFilesAndCommentsQueueNothing)
{
    queue("");
    queue("# one\n\n   \n\t# two");
    EXPECT_TRUE(m_system->isIdle());
}

TEST_F(CommandSystemTest, AFileThatCannotBeOpenedQueuesNothingInSilence)
{
    queue("log(\"before\")\n");
    m_system->parseScriptFile((m_directory.path() / "absent.txt").wstring());
    m_system->parseScriptFile(m_directory.path().wstring());
    m_system->parseScriptFile(L"");
    std::wstring cut = (m_directory.path() / "script.txt").wstring();
    cut.push_back(L'\0');
    cut += L".other";
    m_system->parseScriptFile(cut);
    EXPECT_EQ(m_system->queuedCommandCount(), 1U);
}

TEST_F(CommandSystemTest, AScriptMayHaveANameBeyondAscii)
{
    m_directory.write("\xE2\x98\x83 scr\xC3\xAFpt.txt", "log(\"a\")\n");
    m_system->parseScriptFile(m_directory.path().wstring() + L"/\u2603 scr\u00efpt.txt");
    EXPECT_EQ(run(), (Log{"a"}));
}

TEST_F(CommandSystemTest, WaitHoldsTheQueueForItsTicks)
{
    for (const int ticks : {0, 1, 2, 5})
    {
        SCOPED_TRACE(ticks);
        m_log.clear();
        queue("wait(" + std::to_string(ticks) + ")\nobj.log(\"b\")\nlog(\"last\")\n");
        tick(); // T
        tick(ticks);
        EXPECT_EQ(m_log, Log{});
        tick(); // T + n + 1
        EXPECT_EQ(m_log, (Log{"obj b"}));
        EXPECT_EQ(run(), (Log{"obj b", "last"}));
    }
}

TEST_F(CommandSystemTest, WaitsMayFollowOneAnother)
{
    queue("wait(1)\nwait(1)\nlog(\"a\")\n");
    tick(4);
    EXPECT_EQ(m_log, Log{});
    tick();
    EXPECT_EQ(m_log, (Log{"a"}));
}

TEST_F(CommandSystemTest, ADirectWaitCountsWithoutTheQueue)
{
    const vell::Variant ticks(2);
    std::future<void> future = m_system->rootObject().findCommand("wait")->invoke(1, &ticks);
    queue("hold()\n");
    tick(2);
    EXPECT_EQ(future.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    tick();
    EXPECT_EQ(future.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    m_held.front().set_value();
    run();
}

TEST_F(CommandSystemTest, ASecondWaitReportsAndReplacesThePendingOne)
{
    const Command& wait = *m_system->rootObject().findCommand("wait");
    const vell::Variant ticks(3);
    std::future<void> first = wait.invoke(1, &ticks);
    ExpectReports reports{"!m_waitPromise.has_value()"};
    std::future<void> second = wait.invoke(1, &ticks);
    EXPECT_EQ(reports.reports().at(0).path, "command_system.cpp");
    EXPECT_THROW(first.get(), std::future_error);
    tick(4);
    EXPECT_NO_THROW(second.get());
}

TEST_F(CommandSystemTest, AReplacedWaitLeavesTickAsABrokenPromise)
{
    queue("wait(5)\nlog(\"a\")\n");
    tick();
    {
        ExpectReports reports{"!m_waitPromise.has_value()"};
        const vell::Variant ticks(0);
        m_system->rootObject().findCommand("wait")->invoke(1, &ticks);
    }
    EXPECT_THROW(tick(), std::future_error);
    tick();
    EXPECT_EQ(m_log, (Log{"a"}));
}

TEST_F(CommandSystemTest, ANegativeWaitIsNotClamped)
{
    const vell::Variant ticks(-1);
    std::future<void> future = m_system->rootObject().findCommand("wait")->invoke(1, &ticks);
    tick(1000);
    EXPECT_EQ(future.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
}

TEST_F(CommandSystemTest, AnUnknownObjectIsReportedAndSkipped)
{
    queue("obj.sub.log(\"a\")\nlog(\"b\")\n");
    {
        ExpectReports reports{"object"};
        tick();
        EXPECT_EQ(reports.reports().at(0).path, "command_system.cpp");
        EXPECT_TRUE(reports.reports().at(0).critical);
    }
    EXPECT_EQ(m_log, Log{});
    tick();
    EXPECT_EQ(m_log, (Log{"b"}));
}

TEST_F(CommandSystemTest, AnUnknownCommandIsReportedAndSkipped)
{
    queue("obj.nothing()\nlog(\"b\")\n");
    {
        ExpectReports reports{"command"};
        tick();
    }
    EXPECT_EQ(m_log, Log{});
    EXPECT_EQ(run(), (Log{"b"}));
}

TEST_F(CommandSystemTest, AChildThatIsNullCountsAsNotFound)
{
    {
        ExpectReports reports{"object"};
        m_system->rootObject().addChild("null", nullptr);
    }
    queue("null.log(\"a\")\n");
    ExpectReports reports{"object"};
    run();
}

TEST_F(CommandSystemTest, WrongArgumentsAreReportedAndTheCommandRuns)
{
    queue("log(1)\nlog()\n");
    ExpectReports reports{"argv->tryCast(a)", "argc == this->argc()", "argc == sizeof...(Args)"};
    EXPECT_EQ(run(), (Log{"", ""}));
}

TEST_F(CommandSystemTest, AStoredExceptionLeavesTheTickThatSeesIt)
{
    m_system->rootObject().addCommand("fail", [] { return failedFuture<std::runtime_error>("stored"); });
    queue("fail()\nlog(\"after\")\n");
    EXPECT_NO_THROW(tick());
    EXPECT_THROW(tick(), std::runtime_error);
    EXPECT_EQ(m_log, Log{});
    EXPECT_FALSE(m_system->isIdle());
    tick();
    EXPECT_EQ(m_log, (Log{"after"}));
}

TEST_F(CommandSystemTest, AThrowingCommandLeavesItsTickAndTheQueueGoesOn)
{
    m_system->rootObject().addCommand("fail",
                                      []() -> std::future<void> { throw std::logic_error("thrown"); });
    queue("fail()\nlog(\"after\")\n");
    EXPECT_THROW(tick(), std::logic_error);
    EXPECT_EQ(m_system->queuedCommandCount(), 1U);
    tick();
    EXPECT_EQ(m_log, (Log{"after"}));
}

TEST_F(CommandSystemTest, ABrokenPromiseLeavesTick)
{
    queue("hold()\nlog(\"after\")\n");
    tick();
    m_held.clear();
    EXPECT_THROW(tick(), std::future_error);
    EXPECT_EQ(run(), (Log{"hold", "after"}));
}

TEST_F(CommandSystemTest, AFutureWithoutStateCountsAsDone)
{
    m_system->rootObject().addCommand("none", [] { return std::future<void>(); });
    queue("none()\nlog(\"after\")\n");
    tick(2);
    EXPECT_EQ(m_log, (Log{"after"}));
}

TEST_F(CommandSystemTest, ADeferredFutureIsNeverReady)
{
    bool ran = false;
    m_system->rootObject().addCommand("deferred", [&ran]
                                      { return std::async(std::launch::deferred, [&ran] { ran = true; }); });
    queue("deferred()\nlog(\"after\")\n");
    tick(50);
    EXPECT_EQ(m_log, Log{});
    EXPECT_FALSE(ran);
}

TEST_F(CommandSystemTest, DestructionDoesNotWaitForTheRunningCommand)
{
    queue("hold()\nlog(\"never\")\n");
    tick();
    m_system.reset();
    EXPECT_NO_THROW(m_held.front().set_value());
    EXPECT_EQ(m_log, (Log{"hold"}));
    EXPECT_NE(m_object.findCommand("log"), nullptr); // children belong to the host
}

TEST_F(CommandSystemTest, TheQueuedCommandIsGoneAfterItsCall)
{
    m_system->rootObject().addCommand("nested",
                                      [this]
                                      {
                                          EXPECT_EQ(m_system->queuedCommandCount(), 1U);
                                          return readyFuture();
                                      });
    queue("nested()\nlog(\"a\")\n");
    EXPECT_EQ(run(), (Log{"a"}));
}

TEST_F(CommandSystemTest, ATickFromWithinACommandStartsNothing)
{
    m_system->rootObject().addCommand("nested",
                                      [this]
                                      {
                                          m_system->tick();
                                          m_log.push_back("nested");
                                          return m_held.emplace_back().get_future();
                                      });
    queue("nested()\nlog(\"a\")\n");
    tick(3);
    EXPECT_EQ(m_log, (Log{"nested"}));
    m_held.front().set_value();
    EXPECT_EQ(run(), (Log{"nested", "a"}));
}

TEST_F(CommandSystemTest, ATickFromWithinACommandStillCountsAWaitDown)
{
    const vell::Variant ticks(1);
    std::future<void> wait = m_system->rootObject().findCommand("wait")->invoke(1, &ticks);
    m_system->rootObject().addCommand("nested",
                                      [this]
                                      {
                                          m_system->tick();
                                          return readyFuture();
                                      });
    queue("nested()\n");
    tick();
    EXPECT_EQ(wait.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    run();
}

TEST_F(CommandSystemTest, ACommandMayDestroyTheObjectItStandsOn)
{
    std::string text = "a text that is long enough to live on the heap";
    auto doomed = std::make_unique<CommandObject>();
    CommandObject& root = m_system->rootObject();
    doomed->addCommand("remove",
                       [&root, &doomed, text, this]
                       {
                           root.removeChild("doomed");
                           doomed.reset();
                           m_log.push_back(text); // the callable is alive as long as it runs
                           return readyFuture();
                       });
    root.addChild("doomed", doomed.get());
    queue("doomed.remove()\ndoomed.remove()\n");
    ExpectReports reports{"object"};
    EXPECT_EQ(run(), (Log{text}));
}

TEST_F(CommandSystemTest, TellsWhichLineItStartedAndWhichItParsed)
{
    const std::wstring script = (m_directory.path() / "script.txt").wstring();
    queue("# one\nlog(\"a\")\n\nlog(\"b\")\nlog(\"c\")\n");
    EXPECT_EQ(m_system->parsedLine().script, script);
    EXPECT_EQ(m_system->parsedLine().line, 5U);
    EXPECT_EQ(m_system->startedLine().line, 0U);
    for (const std::size_t line : {2U, 4U, 5U})
    {
        tick();
        EXPECT_EQ(m_system->startedLine().script, script);
        EXPECT_EQ(m_system->startedLine().line, line);
    }
}

TEST_F(CommandSystemTest, TheLineIsKnownBeforeTheCommandIsLookedUp)
{
    std::size_t line = 0;
    m_system->rootObject().addCommand("where",
                                      [&]
                                      {
                                          line = m_system->startedLine().line;
                                          return readyFuture();
                                      });
    queue("\n\nwhere()\n");
    run();
    EXPECT_EQ(line, 3U);
}

} // namespace
