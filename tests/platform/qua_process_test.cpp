#include "qua/process.hpp"

#include "qua/descriptors.hpp"
#include "tests/support/process_record.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{

using Texts = std::vector<std::string>;

class ProcessTest : public testing::Test
{
protected:
    /// Starts the line in @p directory and gives what the new process wrote down.
    ProcessRecord start(const std::string& line, const std::string& directory = ".",
                        qua::Flags<qua::Process::Flag> flags = {})
    {
        qua::Process process(line, directory);
        EXPECT_TRUE(process.execDetached(flags)) << line << ": " << process.error().message();
        EXPECT_FALSE(process.error());
        auto records = readProcessRecords(m_records.path(), ++m_started);
        EXPECT_EQ(records.size(), m_started);
        return records.empty() ? ProcessRecord() : records.back();
    }

    /// The error number of a start that must fail.
    static int failToStart(const std::string& line, const std::string& directory = ".")
    {
        qua::Process process(line, directory);
        EXPECT_FALSE(process.execDetached({}));
        return process.error().value();
    }

    std::string copyOfProbe(const std::string& name) const
    {
        const fs::path copy = m_tools / name;
        fs::create_directories(copy.parent_path());
        fs::copy_file(PROBE, copy);
        return copy.string();
    }

    static inline const std::string PROBE = TERN_PROCESS_PROBE;

    TemporaryDirectory m_records;
    TemporaryDirectory m_tools;
    ProcessRecordScope m_scope{m_records.path()};
    std::size_t m_started = 0;
};

} // namespace

TEST_F(ProcessTest, TheNewProcessGetsTheArgumentsThatTheLineMeans)
{
    const ProcessRecord record = start(PROBE + R"( "roads/a b.curve,c.curve" -uniquePerApp a\\\"b "")");
    EXPECT_EQ(record.arguments, (Texts{PROBE, "roads/a b.curve,c.curve", "-uniquePerApp", R"(a\"b)", ""}));
}

TEST_F(ProcessTest, NoShellSeesTheLine)
{
    const ProcessRecord record = start(PROBE + " $HOME *.cpp ;true |cat `id` 'a b' >x");
    EXPECT_EQ(record.arguments, (Texts{PROBE, "$HOME", "*.cpp", ";true", "|cat", "`id`", "'a", "b'", ">x"}));
}

TEST_F(ProcessTest, BytesThatAreNoTextArriveAsTheyAre)
{
    const std::string bytes = "\xC3\xA4\xE6\xBC\xA2\xFF\xFE\x80";
    EXPECT_EQ(start(PROBE + " \"" + bytes + "\"").arguments, (Texts{PROBE, bytes}));
}

TEST_F(ProcessTest, AnUnquotedProgramPathMayHaveBlanks)
{
    const std::string program = copyOfProbe("my tools/level editor");
    EXPECT_EQ(start(program + " \"a,b\"").arguments, (Texts{program, "a,b"}));
    EXPECT_EQ(start('"' + program + "\" \"a,b\"").arguments, (Texts{program, "a,b"}));
}

TEST_F(ProcessTest, TheShortestBeginningThatNamesAProgramIsTheProgram)
{
    const std::string shorter = copyOfProbe("level");
    copyOfProbe("level editor");
    EXPECT_EQ(start(shorter + " editor x").arguments, (Texts{shorter, "editor", "x"}));
}

TEST_F(ProcessTest, DirectoriesAndFilesThatCannotRunAreNoPrograms)
{
    const std::string program = copyOfProbe("my editor");
    fs::create_directory(m_tools / "my");
    EXPECT_EQ(start(program + " x").arguments, (Texts{program, "x"}));

    const std::string other = copyOfProbe("plain editor");
    m_tools.write("plain");
    EXPECT_EQ(start(other + " x").arguments, (Texts{other, "x"}));
}

TEST_F(ProcessTest, ARelativeProgramPathStartsFromThisProcesssDirectory)
{
    const std::string relative = fs::relative(PROBE).string();
    const std::string program = relative.find('/') == std::string::npos ? "./" + relative : relative;
    const ProcessRecord record = start(program, m_tools.path().string());
    EXPECT_EQ(record.arguments, (Texts{program}));
    EXPECT_EQ(record.workingDirectory, m_tools.path().string());
}

TEST_F(ProcessTest, ANameWithoutADirectoryIsLookedForInThePath)
{
    copyOfProbe("tern-probe-in-path");
    const std::string before = std::getenv("PATH");
    ::setenv("PATH", (before + ":" + m_tools.path().string()).c_str(), 1);
    EXPECT_EQ(start("tern-probe-in-path x").arguments, (Texts{"tern-probe-in-path", "x"}));
    ::setenv("PATH", before.c_str(), 1);
}

TEST_F(ProcessTest, TheWorkingDirectoryIsTheNewProcesssAlone)
{
    const fs::path before = fs::current_path();
    EXPECT_EQ(start(PROBE, m_tools.path().string()).workingDirectory, m_tools.path().string());
    EXPECT_EQ(start(PROBE, ".").workingDirectory, before.string());
    EXPECT_EQ(fs::current_path(), before);
}

TEST_F(ProcessTest, NoDescriptorIsInheritedAndTheStandardStreamsAreTheNullDevice)
{
    const int open = ::open("/dev/zero", O_RDONLY); // without close-on-exec, as careless libraries leave them
    ASSERT_GE(::dup2(open, 900), 0);
    EXPECT_EQ(start(PROBE).descriptors, (Texts{"0 /dev/null", "1 /dev/null", "2 /dev/null"}));
    ::close(open);
    ::close(900);
}

TEST_F(ProcessTest, DescriptorsAreMarkedOneByOneWhereNoRangeCanBe)
{
    const int open = ::open("/dev/zero", O_RDONLY);
    const int high = ::fcntl(open, F_DUPFD, 700);
    ASSERT_GE(high, 700);
    qua::Detail::closeOnExecOneByOne(high, high + 100);
    EXPECT_EQ(::fcntl(high, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(open, F_GETFD), 0);
    EXPECT_GT(qua::Detail::highestDescriptor(), high);
    ::close(open);
    ::close(high);
}

TEST_F(ProcessTest, OutputIsSharedWhenAskedFor)
{
    int ends[2] = {};
    ASSERT_EQ(::pipe(ends), 0);
    const int before = ::dup(STDOUT_FILENO);
    ::setenv("TERN_PROBE_TALKS", "1", 1);
    ::dup2(ends[1], STDOUT_FILENO);
    start(PROBE, ".", qua::Process::Flag::KeepOutput);
    ::dup2(before, STDOUT_FILENO);
    ::unsetenv("TERN_PROBE_TALKS");
    ::close(ends[1]);
    char text[64] = {};
    EXPECT_GT(::read(ends[0], text, sizeof text - 1), 0);
    EXPECT_STREQ(text, "probe says hello\n");
    ::close(ends[0]);
    ::close(before);
}

TEST_F(ProcessTest, StartsEvenWithoutStandardStreams)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        ::close(STDIN_FILENO);
        ::close(STDOUT_FILENO);
        ::close(STDERR_FILENO);
        qua::Process good(PROBE, ".");
        qua::Process bad(PROBE + "-that-is-not-there", ".");
        ::_exit(good.execDetached({}) && !bad.execDetached({}) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    const auto records = readProcessRecords(m_records.path(), 1);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].descriptors, (Texts{"0 /dev/null", "1 /dev/null", "2 /dev/null"}));
}

TEST_F(ProcessTest, SignalsAreAsInAFreshProcess)
{
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigset_t maskBefore;
    ::pthread_sigmask(SIG_BLOCK, &blocked, &maskBefore);
    EXPECT_EQ(start(PROBE).handledSignals, Texts{});
    sigset_t maskAfter;
    ::pthread_sigmask(SIG_SETMASK, &maskBefore, &maskAfter);
    EXPECT_EQ(sigismember(&maskAfter, SIGUSR1), 1) << "this thread keeps its mask";
    EXPECT_EQ(sigismember(&maskAfter, SIGUSR2), 0);
    std::signal(SIGPIPE, before);
}

TEST_F(ProcessTest, TheNewProcessIsNobodysChildHereAndHasASessionOfItsOwn)
{
    const ProcessRecord record = start(PROBE);
    EXPECT_NE(record.parent, ::getpid());
    EXPECT_NE(record.session, ::getsid(0));
    EXPECT_NE(record.session, record.process) << "no session leader: it can't take a terminal";
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD) << "a zombie is left";
}

TEST_F(ProcessTest, AFailedStartLeavesNoChildAndNoDescriptorBehind)
{
    const auto lowestFree = []
    {
        const int descriptor = ::dup(STDIN_FILENO);
        ::close(descriptor);
        return descriptor;
    };
    const int before = lowestFree();
    EXPECT_EQ(failToStart(PROBE, (m_tools / "gone").string()), ENOENT);
    EXPECT_EQ(lowestFree(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(ProcessTest, AStartThatCannotSucceedSaysWhy)
{
    EXPECT_EQ(failToStart(""), ENOENT);
    EXPECT_EQ(failToStart("/nothing/here x"), ENOENT);
    EXPECT_EQ(failToStart("tern-no-such-program"), ENOENT);
    EXPECT_EQ(failToStart(m_tools.path().string()), EACCES);
    EXPECT_EQ(failToStart(m_tools.write("plain text")), EACCES);
    EXPECT_EQ(failToStart(PROBE, m_tools.write("no directory")), ENOTDIR);
}

TEST_F(ProcessTest, AFileThatIsNoProgramIsNotHandedToAShell)
{
    const std::string script = m_tools.write("script", "touch " + (m_tools / "touched").string() + "\n");
    fs::permissions(script, fs::perms::owner_all);
    EXPECT_EQ(failToStart(script), ENOEXEC);
    EXPECT_FALSE(fs::exists(m_tools / "touched"));
}

TEST_F(ProcessTest, ALineBeyondTheSystemsLimitFails)
{
    EXPECT_EQ(failToStart(PROBE + " \"" + std::string(8U << 20U, 'a') + '"'), E2BIG);
    EXPECT_EQ(countProcessRecords(m_records.path()), 0U);
}

TEST_F(ProcessTest, ANulMakesALineInvalid)
{
    EXPECT_EQ(failToStart(PROBE + std::string(" a\0b", 4)), EINVAL);
    EXPECT_EQ(failToStart(PROBE, std::string(".\0x", 3)), EINVAL);
}

TEST_F(ProcessTest, FailedStartsAreAnnouncedAndSuccessfulOnesAreNot)
{
    Texts lines;
    const qua::Connection connection = qua::Process::connectStartFailed(
        [&lines](const qua::Process& process)
        {
            EXPECT_EQ(process.error(), std::errc::no_such_file_or_directory);
            lines.push_back(process.commandLine());
        });
    failToStart("/nothing/here x");
    start(PROBE);
    EXPECT_EQ(lines, (Texts{"/nothing/here x"}));
}

TEST_F(ProcessTest, WhatAnObserverThrowsChangesNothingForTheStarter)
{
    const qua::Connection connection = qua::Process::connectStartFailed(
        [](const qua::Process&) { throw std::runtime_error("from an observer"); });
    EXPECT_EQ(failToStart("/nothing/here"), ENOENT);
}

TEST_F(ProcessTest, OneObjectStartsAsOftenAsItIsAsked)
{
    qua::Process process(PROBE, ".");
    EXPECT_TRUE(process.execDetached({}));
    EXPECT_TRUE(process.execDetached({}));
    EXPECT_EQ(readProcessRecords(m_records.path(), 2).size(), 2U);
}

TEST_F(ProcessTest, ThreadsMayStartProcessesAtOnceWhileOthersAllocate)
{
    std::atomic<bool> done{false};
    std::thread allocating(
        [&done]
        {
            while (!done)
            {
                const std::string text(1000, 'x');
                EXPECT_EQ(text.size(), 1000U);
            }
        });
    std::vector<std::thread> starting;
    for (int thread = 0; thread < 4; ++thread)
    {
        starting.emplace_back(
            []
            {
                for (int i = 0; i < 5; ++i)
                {
                    EXPECT_TRUE(qua::Process(PROBE + " x", ".").execDetached({}));
                }
            });
    }
    for (std::thread& thread : starting)
    {
        thread.join();
    }
    done = true;
    allocating.join();
    EXPECT_EQ(readProcessRecords(m_records.path(), 20).size(), 20U);
}
