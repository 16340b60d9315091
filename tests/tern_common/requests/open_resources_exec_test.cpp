#include "tern_common/requests/open_resources_request.hpp"

#include "kodo/fs/utils.hpp"
#include "qua/process.hpp"
#include "tests/support/allocation_hook.hpp"
#include "tests/support/process_record.hpp"
#include "tests/support/recording_editor_manager.hpp"
#include "tests/support/temporary_directory.hpp"
#include "tests/tern_common/requests/relay.hpp"
#include "vell/asset_registry.hpp"

#include <gtest/gtest.h>

#include <pthread.h>
#include <stdlib.h>

namespace fs = std::filesystem;
using vell::OpenResourcesRequest;

namespace
{

using Texts = std::vector<std::string>;
using Offers = std::vector<RecordingEditorManager::Offer>;

int forks = 0;
[[maybe_unused]] const int forksAreCounted = ::pthread_atfork(
    nullptr, [] { ++forks; }, nullptr);

/// Requests whose new process is this very program: it writes down what it got (see the program's main).
class ExecTest : public testing::Test
{
protected:
    ExecTest()
    {
        vell::AssetRegistry::instance().setType("curve", "Curve");
        m_forksBefore = forks;
    }
    ~ExecTest() override { vell::AssetRegistry::instance().setType("curve", ""); }

    static OpenResourcesRequest request(Texts resources, bool unique = false)
    {
        OpenResourcesRequest result;
        result.setResources(std::move(resources));
        result.setUniquePerApp(unique);
        return result;
    }

    void expectNoProcess() const { EXPECT_EQ(forks, m_forksBefore); }

    /// The arguments, without the application, of the one process that was started.
    Texts startedWith()
    {
        EXPECT_EQ(forks, m_forksBefore + 1);
        const auto records = readProcessRecords(m_records.path(), 1);
        if (records.size() != 1 || records[0].arguments.empty())
        {
            ADD_FAILURE() << records.size() << " processes were started";
            return {};
        }
        EXPECT_EQ(records[0].arguments[0], Kodo::FS::Utils::appPath());
        EXPECT_EQ(records[0].workingDirectory, fs::current_path().string());
        EXPECT_EQ(records[0].descriptors, (Texts{"0 /dev/null", "1 /dev/null", "2 /dev/null"})) << "no flags";
        return Texts(records[0].arguments.begin() + 1, records[0].arguments.end());
    }

    std::string copyOfThisProgram(std::string_view name) const
    {
        const fs::path copy = m_tools / name;
        fs::create_directories(copy.parent_path());
        fs::copy_file(Kodo::FS::Utils::appPath(), copy);
        return copy.string();
    }

    static void startRelay(const std::string& line, const char* how)
    {
        ::setenv(RELAY, how, 1);
        EXPECT_TRUE(qua::Process(line, ".").execDetached({}));
        ::unsetenv(RELAY);
    }

    /// The arguments of the one process that the relay started.
    Texts argumentsOfRelayed() const
    {
        const auto records = readProcessRecords(m_records.path(), 1);
        EXPECT_EQ(records.size(), 1U);
        return records.empty() ? Texts{} : records[0].arguments;
    }

    TemporaryDirectory m_tools;
    TemporaryDirectory m_records;
    ProcessRecordScope m_scope{m_records.path()};
    RecordingEditorManager m_manager;
    int m_forksBefore = 0;
};

} // namespace

TEST_F(ExecTest, WithoutAManagerAllTypedResourcesGoToOneNewProcess)
{
    request({"a.curve", "b.txt", "", "c d.curve"}).exec(nullptr, false);
    EXPECT_EQ(startedWith(), (Texts{"a.curve,c d.curve"}));
}

TEST_F(ExecTest, NothingToOpenStartsNoProcess)
{
    request({}).exec(nullptr, false);
    request({}, true).exec(&m_manager, false);
    request({"a.txt", "b", ""}).exec(nullptr, false);
    request({"a.txt", "b", ""}).exec(&m_manager, false);
    EXPECT_EQ(m_manager.offers, Offers{});
    EXPECT_EQ(m_manager.newInstanceQuestions, 2);
    expectNoProcess();
}

TEST_F(ExecTest, AManagerIsOfferedEveryTypedResourceInOrder)
{
    m_manager.acceptsAll = true;
    request({"b.curve", "x.txt", "a.curve", "b.curve"}).exec(&m_manager, false);
    EXPECT_EQ(m_manager.offers, (Offers{{"b.curve", 5}, {"a.curve", 5}, {"b.curve", 5}}));
    EXPECT_EQ(m_manager.newInstanceQuestions, 1);
    expectNoProcess();
}

TEST_F(ExecTest, TheFlagAddsABitToTheOpenFlags)
{
    m_manager.acceptsAll = true;
    request({"a.curve"}).exec(&m_manager, true);
    EXPECT_EQ(m_manager.offers, (Offers{{"a.curve", 7}}));
}

TEST_F(ExecTest, WhatTheManagerRefusesGoesToANewProcess)
{
    m_manager.accepted = {"b.curve"};
    request({"a.curve", "b.curve", "c.curve"}).exec(&m_manager, false);
    EXPECT_EQ(m_manager.offers.size(), 3U);
    EXPECT_EQ(startedWith(), (Texts{"a.curve,c.curve"}));
}

TEST_F(ExecTest, AManagerThatAllowsNoNewInstanceEndsTheRequest)
{
    m_manager.newInstanceAllowed = false;
    request({"a.curve", "b.curve"}).exec(&m_manager, false);
    request({"a.curve", "b.curve"}, true).exec(&m_manager, false);
    EXPECT_EQ(m_manager.newInstanceQuestions, 2);
    expectNoProcess();
}

TEST_F(ExecTest, AUniqueRequestOffersNothingAfterTheFirstThatIsAccepted)
{
    m_manager.accepted = {"b.curve", "c.curve"};
    request({"a.curve", "b.curve", "c.curve"}, true).exec(&m_manager, false);
    EXPECT_EQ(m_manager.offers, (Offers{{"a.curve", 5}, {"b.curve", 5}}));
    EXPECT_EQ(startedWith(), (Texts{"a.curve,c.curve", "-uniquePerApp"}));
}

TEST_F(ExecTest, AUniqueRequestWithoutAManagerPassesTheSwitchOn)
{
    request({"a.curve"}, true).exec(nullptr, false);
    EXPECT_EQ(startedWith(), (Texts{"a.curve", "-uniquePerApp"}));
}

TEST_F(ExecTest, ARequestStaysAsItIsAndCanBeExecutedAgain)
{
    m_manager.acceptsAll = true;
    OpenResourcesRequest again = request({"a.curve", "x.txt"}, true);
    again.exec(&m_manager, false);
    again.exec(&m_manager, false);
    EXPECT_EQ(m_manager.offers.size(), 2U);
    EXPECT_EQ(again.resources(), (Texts{"a.curve", "x.txt"}));
    EXPECT_TRUE(again.isUniquePerApp());
}

TEST_F(ExecTest, AManagerMayChangeTheRequestWhileItOpens)
{
    OpenResourcesRequest changing = request({"a.curve", "b.curve"});
    m_manager.acceptsAll = true;
    m_manager.whileOpening = [&changing](const char*) { changing.setResources({"c.curve"}); };
    changing.exec(&m_manager, false);
    EXPECT_EQ(m_manager.offers, (Offers{{"a.curve", 5}, {"b.curve", 5}}));
    EXPECT_EQ(changing.resources(), Texts{"c.curve"});
}

TEST_F(ExecTest, ResourcesArriveAsTheComposedLineMeansThem)
{
    request({"blank name.curve", "tick'$HOME`.curve", "\xC3\xA4\xE6\xBC\xA2.curve", "\xFF\xFE.curve",
             "c,d.curve", "back\\slash.curve"})
        .exec(nullptr, false);
    EXPECT_EQ(startedWith(), (Texts{"blank name.curve,tick'$HOME`.curve,\xC3\xA4\xE6\xBC\xA2.curve,"
                                    "\xFF\xFE.curve,c,d.curve,back\\slash.curve"}));
}

TEST_F(ExecTest, AQuoteInAResourceEndsTheQuotedTextThere)
{
    request({"a\"b c.curve", "d.curve"}).exec(nullptr, false);
    EXPECT_EQ(startedWith(), (Texts{"ab", "c.curve,d.curve"})) << "items are not escaped";
}

TEST_F(ExecTest, MoreResourcesThanACommandLineTakesAreIgnoredInSilence)
{
    Texts resources;
    for (int i = 0; i < 10'000; ++i)
    {
        resources.push_back("levels/road " + std::to_string(i) + ".curve");
    }
    std::vector<int> errors;
    const qua::Connection connection = qua::Process::connectStartFailed(
        [&errors](const qua::Process& process) { errors.push_back(process.error().value()); });
    request(resources).exec(nullptr, false); // a report would fail this test
    EXPECT_EQ(errors, std::vector<int>{E2BIG});
    EXPECT_EQ(countProcessRecords(m_records.path()), 0U);
}

TEST_F(ExecTest, TheWorkAndTheMemoryGrowWithTheResourcesAlone)
{
    const auto allocationsFor = [this](std::size_t count)
    {
        m_manager.acceptsAll = true;
        OpenResourcesRequest many = request(Texts(count, "levels/a rather long name of a road.curve"));
        m_manager.offers.reserve(m_manager.offers.size() + count);
        const AllocationCount allocations;
        many.exec(&m_manager, false);
        return allocations.count();
    };
    const std::size_t ofThousand = allocationsFor(1'000);
    const std::size_t ofTenThousand = allocationsFor(10'000);
    EXPECT_LE(ofTenThousand, 10 * ofThousand);
    expectNoProcess();
}

TEST_F(ExecTest, AProcessStartsThoughItsDirectoryIsGone)
{
    const qua::Connection connection = qua::Process::connectStartFailed(
        [](const qua::Process& process) { ADD_FAILURE() << process.error().message(); });
    const fs::path before = fs::current_path();
    const fs::path gone = m_records / "gone";
    fs::create_directory(gone);
    fs::current_path(gone);
    fs::remove(gone);
    request({"a.curve"}).exec(nullptr, false); // the test framework ends the process for want of a directory
    fs::current_path(before);
    EXPECT_EQ(forks, m_forksBefore + 1);
}

TEST_F(ExecTest, AnEditorWhosePathHasBlanksStartsAnotherOfItself)
{
    const std::string editor = copyOfThisProgram("my tools/level editor");
    startRelay('"' + editor + "\" \"a b.curve,c.txt,d.curve\" -uniquePerApp", "1");
    EXPECT_EQ(argumentsOfRelayed(), (Texts{editor, "a b.curve,d.curve", "-uniquePerApp"}));
}

TEST_F(ExecTest, AnEditorThatWasUpdatedWhileItRunsStartsTheNewOne)
{
    const std::string editor = copyOfThisProgram("editor");
    startRelay(editor + " a.curve", AFTER_UPDATE);
    EXPECT_EQ(argumentsOfRelayed(), (Texts{editor, "a.curve"}));
}

TEST_F(ExecTest, AnEditorThatIsNamedLikeADeletedOneStartsAnotherOfItself)
{
    const std::string editor = copyOfThisProgram("editor (deleted)");
    startRelay(editor + " a.curve", "1");
    EXPECT_EQ(argumentsOfRelayed(), (Texts{editor, "a.curve"}));
}
