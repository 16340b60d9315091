#include "editor/requests/open_request.hpp"

#include "editor/requests/asset_types.hpp"
#include "editor/requests/command_line_parser.hpp"
#include "editor/requests/editor_manager.hpp"
#include "kodo/fs/multi_file_system.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/temporary_directory.hpp"
#include "vell/asset_registry.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <set>
#include <thread>

#include <unistd.h>

namespace
{

using Texts = std::vector<std::string>;
using Flag = IEditorManager::OpenFlag;

/// With this variable in its environment the program acts as the editor, with the variable's value as the
/// root of its file system.
constexpr const char* EDITOR_ROOT = "TERN_TEST_EDITOR_ROOT";

/// Arguments as main() gets them.
class Arguments
{
public:
    explicit Arguments(Texts arguments) : m_arguments(std::move(arguments))
    {
        for (std::string& argument : m_arguments)
        {
            m_pointers.push_back(argument.data());
        }
        m_pointers.push_back(nullptr);
    }

    int argc() const { return static_cast<int>(m_arguments.size()); }
    char** argv() { return m_pointers.data(); }

private:
    Texts m_arguments;
    std::vector<char*> m_pointers;
};

std::vector<nlohmann::json> readReports(const std::string& file, std::size_t count)
{
    std::vector<nlohmann::json> reports;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (reports.size() < count && std::chrono::steady_clock::now() < deadline)
    {
        reports.clear();
        std::ifstream in(file);
        for (std::string line; std::getline(in, line) && !in.eof();)
        {
            reports.push_back(nlohmann::json::parse(line));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return reports;
}

class OpenRequestTest : public testing::Test
{
protected:
    OpenRequestTest()
    {
        registerAssetTypes();
        m_disk.write("a.curve");
        m_disk.write("b c.curve");
        m_disk.write("race.gpx");
        m_disk.write("notes.txt");
        Kodo::FS::fileSystem().addRoot(m_disk.path().string());
        ::setenv(EDITOR_ROOT, m_disk.path().c_str(), 1);
    }
    ~OpenRequestTest() override
    {
        Kodo::FS::fileSystem().clearRoots();
        ::unsetenv(EDITOR_ROOT);
        ::unsetenv("TERN_EDITOR_REPORT");
    }

    OpenRequestResult run(EditorManager& manager, Texts arguments, const std::string& reportFile = {}) const
    {
        Arguments own(std::move(arguments));
        OpenRequestOptions options;
        options.argc = own.argc();
        options.argv = own.argv();
        options.reportFile = reportFile;
        return runOpenRequest(manager, options);
    }

    std::string onDisk(std::string_view name) const { return (m_disk / name).string(); }

    TemporaryDirectory m_disk;
};

} // namespace

TEST(CommandLineParserTest, SwitchesAreFoundBehindArgumentZero)
{
    Arguments arguments({"-zero", "list", "-uniquePerApp"});
    const CommandLineParser parser(arguments.argc(), arguments.argv());
    EXPECT_EQ(parser.argc(), 3);
    EXPECT_STREQ(parser.argv()[1], "list");
    EXPECT_TRUE(parser.getFlag("-uniquePerApp"));
    EXPECT_FALSE(parser.getFlag("-unique"));
    EXPECT_FALSE(parser.getFlag("-zero"));
}

TEST(EditorManagerTest, OpenedResourcesAreListedInOrderAndOnce)
{
    EditorManager manager;
    Texts opened;
    Texts reloaded;
    const auto onOpened =
        manager.connectOpened([&opened](const IEditor& editor) { opened.push_back(editor.resource()); });
    const auto onReloaded = manager.connectReloaded([&reloaded](const IEditor& editor)
                                                    { reloaded.push_back(editor.resource()); });
    IEditor* const a = manager.openResource("a", Flag::Show);
    IEditor* const b = manager.openResource("b", {});
    EXPECT_EQ(manager.openResource("a", Flag::Reload), a);
    EXPECT_EQ(manager.openResource("a", {}), a);
    EXPECT_EQ(manager.editorCount(), 2U);
    EXPECT_EQ(manager.editorAt(1), b);
    EXPECT_EQ(manager.editorAt(2), nullptr);
    EXPECT_EQ(manager.findEditor("b"), b);
    EXPECT_EQ(manager.findEditor("c"), nullptr);
    EXPECT_EQ(manager.activeEditor(), a);
    EXPECT_EQ(opened, (Texts{"a", "b"}));
    EXPECT_EQ(reloaded, Texts{"a"});
}

TEST(EditorManagerTest, AnObserverMayCloseAResourceBeforeTheOthersHearOfIt)
{
    EditorManager manager;
    const auto close = [&manager](IEditor& editor) { EXPECT_TRUE(manager.close(&editor)); };
    Texts heard;
    const auto hear = [&heard](const IEditor& editor) { heard.push_back(editor.resource()); };
    {
        const auto closing = manager.connectOpened(close);
        const auto hearing = manager.connectOpened(hear);
        EXPECT_NE(manager.openResource("a", {}), nullptr);
        EXPECT_EQ(manager.editorCount(), 0U);
    }
    manager.openResource("b", {});
    const auto closing = manager.connectReloaded(close);
    const auto hearing = manager.connectReloaded(hear);
    EXPECT_NE(manager.openResource("b", Flag::Reload), nullptr);
    EXPECT_EQ(heard, (Texts{"a", "b"}));
    EXPECT_EQ(manager.editorCount(), 0U);
}

TEST(EditorManagerTest, ThePolicyDecidesWhatIsOpened)
{
    EditorManager manager(
        {.mostEditors = 1, .accepts = [](const std::string& name) { return name != "bad"; }});
    EXPECT_EQ(manager.openResource("bad", {}), nullptr);
    EXPECT_NE(manager.openResource("a", {}), nullptr);
    EXPECT_EQ(manager.openResource("b", {}), nullptr);
    EXPECT_NE(manager.openResource("a", {}), nullptr) << "open already";
    EXPECT_FALSE(manager.canOpen("b"));
}

TEST(EditorManagerTest, NewInstancesAreAllowedOnceSomethingIsOpenHere)
{
    EditorManager manager;
    EXPECT_FALSE(manager.allowsNewInstance());
    manager.openResource("a", {});
    EXPECT_TRUE(manager.allowsNewInstance());
    EditorManager single({.allowsNewInstance = false});
    single.openResource("a", {});
    EXPECT_FALSE(single.allowsNewInstance());
}

TEST(EditorManagerTest, AModifiedResourceStaysOpenUntilItIsSaved)
{
    Texts saved;
    EditorManager manager({.save = [&saved](const IEditor& editor)
                           {
                               saved.push_back(editor.resource());
                               return true;
                           }});
    Texts closed;
    const auto onClosed =
        manager.connectClosed([&closed](const std::string& name) { closed.push_back(name); });
    IEditor* const a = manager.openResource("a", {});
    manager.openResource("b", Flag::Show);
    manager.setModified(a, true);
    EXPECT_TRUE(manager.isModified(a));
    EXPECT_FALSE(manager.closeAll());
    EXPECT_EQ(closed, Texts{"b"});
    EXPECT_EQ(manager.activeEditor(), a);
    EXPECT_TRUE(manager.saveAll());
    EXPECT_EQ(saved, Texts{"a"});
    EXPECT_TRUE(manager.closeAll());
    EXPECT_EQ(manager.activeEditor(), nullptr);
    EXPECT_FALSE(manager.close(nullptr));
    EXPECT_FALSE(manager.setActiveEditor(nullptr));
}

TEST(EditorManagerTest, RememberedResourcesAreListedLatestFirst)
{
    EditorManager manager;
    manager.openResource("a", Flag::Remember);
    manager.openResource("b", Flag::Remember);
    manager.openResource("c", {});
    manager.openResource("a", Flag::Remember);
    EXPECT_EQ(manager.recentResources(), (Texts{"a", "b"}));
}

TEST_F(OpenRequestTest, WhatIsThereAndKnownIsOpenedHere)
{
    EditorManager manager;
    const OpenRequestResult result =
        run(manager, {"editor", onDisk("b c.curve") + ",notes.txt,none.curve,race.gpx"});
    EXPECT_EQ(result.requested.size(), 4U);
    EXPECT_EQ(result.found, (Texts{"b c.curve", "notes.txt", "race.gpx"}));
    EXPECT_EQ(result.opened, (Texts{"b c.curve", "race.gpx"}));
    EXPECT_FALSE(result.uniquePerApp);
    EXPECT_EQ(manager.editorCount(), 2U);
    EXPECT_EQ(result.startFailure, "");
}

TEST_F(OpenRequestTest, AUniqueRequestOpensOneResourceAProcessUntilAllAreOpen)
{
    const std::string reportFile = onDisk("report");
    EditorManager manager;
    run(manager, {"editor", "a.curve,race.gpx,b c.curve", "-uniquePerApp"}, reportFile);
    const auto reports = readReports(reportFile, 3);
    ASSERT_EQ(reports.size(), 3U);
    std::set<int> processes;
    std::set<std::string> opened;
    for (const nlohmann::json& report : reports)
    {
        ASSERT_EQ(report["opened"].size(), 1U) << report;
        EXPECT_TRUE(report["uniquePerApp"]);
        processes.insert(report["pid"].get<int>());
        opened.insert(report["opened"][0].get<std::string>());
    }
    EXPECT_EQ(processes.size(), 3U);
    EXPECT_TRUE(processes.contains(::getpid()));
    EXPECT_EQ(opened, (std::set<std::string>{"a.curve", "b c.curve", "race.gpx"}));
}

TEST_F(OpenRequestTest, AnEditorThatIsFullHandsTheRestToANewOne)
{
    const std::string reportFile = onDisk("report");
    EditorManager manager({.mostEditors = 1});
    run(manager, {"editor", "a.curve,race.gpx,b c.curve"}, reportFile);
    const auto reports = readReports(reportFile, 2);
    ASSERT_EQ(reports.size(), 2U);
    const bool firstIsOurs = reports[0]["pid"] == ::getpid();
    EXPECT_EQ(reports[firstIsOurs ? 0 : 1]["opened"], Texts{"a.curve"});
    EXPECT_EQ(reports[firstIsOurs ? 1 : 0]["opened"], (Texts{"race.gpx", "b c.curve"}));
}

TEST_F(OpenRequestTest, ANewProcessThatCannotBeStartedShowsInTheLog)
{
    std::string list = "a.curve";
    m_disk.write(std::string(200, 'd') + "/b.curve");
    for (int i = 0; i < 1'000; ++i)
    {
        list += ',' + std::string(200, 'd') + "/b.curve";
    }
    EditorManager manager(
        {.mostEditors = 1, .accepts = [](const std::string& name) { return name == "a.curve"; }});
    const ExpectReports reports{"A new editor process could not be started: Argument list too long"};
    const OpenRequestResult result = run(manager, {"editor", list});
    EXPECT_EQ(result.opened, Texts{"a.curve"});
    EXPECT_EQ(result.startFailure, "Argument list too long");
}

TEST_F(OpenRequestTest, AReportThatCannotBeWrittenShowsInTheLog)
{
    const std::string file = onDisk("none/report");
    const ExpectReports reports{"The report file '" + file + "' could not be written"};
    EditorManager manager;
    EXPECT_EQ(run(manager, {"editor", "a.curve"}, file).opened, Texts{"a.curve"});
}

TEST_F(OpenRequestTest, AReportReplacesBytesThatAreNoText)
{
    const std::string file = onDisk("report");
    EditorManager manager;
    run(manager, {"editor", "\xFF.curve"}, file);
    const auto reports = readReports(file, 1);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0]["requested"], Texts{"\xEF\xBF\xBD.curve"});
}

/// The tests, or the editor that they start.
int main(int argc, char** argv)
{
    if (const char* const root = std::getenv(EDITOR_ROOT))
    {
        registerAssetTypes();
        Kodo::FS::fileSystem().addRoot(root);
        EditorManager manager;
        OpenRequestOptions options;
        options.argc = argc;
        options.argv = argv;
        runOpenRequest(manager, options);
        return 0;
    }
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
