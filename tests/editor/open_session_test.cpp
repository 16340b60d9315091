// The real program, started with resources: it opens some and starts further real programs for the rest.

#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <thread>

namespace
{

class OpenSessionTest : public testing::Test
{
protected:
    OpenSessionTest()
    {
        m_directory.write("a.level", "{\"format\":\"tern-level\",\"version\":1}");
        m_directory.write("broken.level", "{\"format\":");
        m_directory.write("b c.curve.json", "{}");
        m_directory.write("d.curve", "");
        m_directory.write("notes.txt", "");
    }

    /// The exit code of the editor started in the directory with these arguments.
    int run(const std::string& arguments) const
    {
        const std::string line = "cd '" + m_directory.path().string() + "' && '" TERN_EDITOR_PROGRAM "' " +
                                 arguments + " --report report.json >out.txt 2>errors.txt";
        const int status = std::system(line.c_str());
        return WEXITSTATUS(status);
    }

    /// Which process opened what, once so many have reported.
    std::map<int, std::set<std::string>> reports(std::size_t count) const
    {
        std::map<int, std::set<std::string>> opened;
        for (int attempt = 0; attempt < 2000 && opened.size() < count; ++attempt)
        {
            opened.clear();
            std::ifstream file(m_directory / "report.json");
            for (std::string line; std::getline(file, line) && !file.eof();)
            {
                const nlohmann::json report = nlohmann::json::parse(line);
                opened[report.at("pid").get<int>()] = report.at("opened").get<std::set<std::string>>();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return opened;
    }

    using Names = std::set<std::string>;

    static std::multiset<Names> values(const std::map<int, Names>& opened)
    {
        std::multiset<Names> result;
        for (const auto& [pid, names] : opened)
        {
            result.insert(names);
        }
        return result;
    }

    TemporaryDirectory m_directory;
};

TEST_F(OpenSessionTest, OpensEveryKnownResourceInOneProcess)
{
    EXPECT_EQ(run("--headless 'a.level,b c.curve.json,d.curve'"), 0) << readFile(m_directory / "errors.txt");
    EXPECT_EQ(values(reports(1)), (std::multiset<Names>{{"a.level", "b c.curve.json", "d.curve"}}));
}

TEST_F(OpenSessionTest, NamesNeedNotBeText)
{
    const std::string name = "\xC3\xA4 \xFF.level";
    m_directory.write(name, "{\"format\":\"tern-level\",\"version\":1}");
    EXPECT_EQ(run("'" + name + "'"), 0) << readFile(m_directory / "errors.txt");
    EXPECT_EQ(readFile(m_directory / "out.txt"), name + ": opened\n");
}

TEST_F(OpenSessionTest, AUniqueRequestStartsAProcessForEachResource)
{
    EXPECT_EQ(run("'a.level,b c.curve.json,d.curve' -uniquePerApp"), 0)
        << readFile(m_directory / "errors.txt");
    EXPECT_EQ(values(reports(3)), (std::multiset<Names>{{"a.level"}, {"b c.curve.json"}, {"d.curve"}}));
}

TEST_F(OpenSessionTest, WhatIsNotThereOrNotKnownIsSaid)
{
    EXPECT_EQ(run("a.level,absent.level,notes.txt,../a.level"), 1);
    EXPECT_EQ(values(reports(1)), (std::multiset<Names>{{"a.level"}}));
    EXPECT_EQ(readFile(m_directory / "out.txt"), "a.level: opened\nnotes.txt: not opened\n");
    EXPECT_EQ(readFile(m_directory / "errors.txt"),
              "error: 2 of the resources are no files below the working directory\n");
}

TEST_F(OpenSessionTest, ALevelThatCannotBeReadIsRefusedByEveryProcess)
{
    EXPECT_EQ(run("a.level,broken.level"), 0);
    EXPECT_EQ(values(reports(2)), (std::multiset<Names>{{"a.level"}, {}}));
    EXPECT_NE(readFile(m_directory / "errors.txt").find("broken.level:1:11: not JSON"), std::string::npos);
}

TEST(PaletteJobTest, DrawsAndPrintsThePalette)
{
    const TemporaryDirectory directory;
    const std::string picture = (directory / "p.png").string();
    const std::string table = (directory / "table.txt").string();
    const int status = std::system(("'" TERN_EDITOR_PROGRAM "' --colors 9 --seed 7 --ban ff0000 --picture '" +
                                    picture + "' >'" + table + "'")
                                       .c_str());
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_TRUE(readFile(picture).starts_with("\x89PNG\r\n"));
    const std::string text = readFile(table);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 10) << text;
}

} // namespace
