#include "editor/app/headless_session.hpp"

#include "editor/files/file_error.hpp"
#include "tests/editor/headless_session_fixture.hpp"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <set>

namespace fs = std::filesystem;

namespace
{

TEST_F(HeadlessSessionTest, AScriptEditsTheLevelAndIsSaved)
{
    EXPECT_EQ(run("level.addCurve(\"road\")\ncurves.road.addPoint(\"12.5 -3 0.25\")\ncurves.road.addPoint(\" "
                  "1 2\t3 \")\n"
                  "level.removeCurve(\"quay\")\n"),
              0)
        << errors();
    ASSERT_EQ(saved().curves.size(), 1U);
    EXPECT_EQ(saved().curves[0], (Curve{"road", false, {{12.5, -3, 0.25}, {1, 2, 3}}}));
    EXPECT_EQ(errors(), "");
    EXPECT_NE(m_out.str().find("done: 4 of 4 commands started in 5 ticks, 0 reports"), std::string::npos)
        << m_out.str();
}

TEST_F(HeadlessSessionTest, ACurvesCommandsGoWithItWhileCommandsAreQueued)
{
    EXPECT_EQ(run("level.removeCurve(\"quay\")\ncurves.quay.addPoint(\"0 0 0\")\nlevel.addCurve(\"quay\")\n"
                  "curves.quay.addPoint(\"1 1 1\")\nlevel.save(\"" +
                  m_options.save->string() + "\")\n"),
              1);
    EXPECT_TRUE(
        errors().starts_with("error: s.txt:2: curves.quay.addPoint(\"0 0 0\"): ASSERTION FAILED: object at "))
        << errors();
    EXPECT_EQ(saved().curves[0].points, (std::vector<Position>{{1, 1, 1}}));
}

TEST_F(HeadlessSessionTest, OpeningALevelReplacesTheCurvesAndTheirCommands)
{
    const fs::path other = m_directory.write(
        "b.level", "{\"format\":\"tern-level\",\"version\":1,\"curves\":[{\"name\":\"other\"}]}");
    EXPECT_EQ(run("level.open(\"" + other.string() + "\")\ncurves.other.addPoint(\"1 2 3\")\n"), 0)
        << errors();
    EXPECT_EQ(saved().curves[0].name, "other");
    EXPECT_EQ(saved().curves.size(), 1U);
}

TEST_F(HeadlessSessionTest, AFailingCommandIsReportedWithItsLineAndTheRestRuns)
{
    EXPECT_EQ(run("level.addCurve(\"a b\")\n# note\ncurves.quay.addPoint(\"1 2\")\ncurves.quay.addPoint(\"1 "
                  "2 3 4\")\n"
                  "curves.quay.addPoint(\"1 2 x\")\ncurves.quay.addPoint(\"inf 0 "
                  "0\")\nlevel.nothing()\nlog.info(7)\n"
                  "curves.quay.import(\"absent.gpx\")\nlog.info(\"end\")\n"),
              1);
    const std::string said = errors();
    for (const char* part :
         {"s.txt:1: level.addCurve(\"a b\"): \"a b\" is no curve name", "s.txt:3: ", "s.txt:4: ", "s.txt:5: ",
          "s.txt:6: curves.quay.addPoint(\"inf 0 0\"): a coordinate is not finite",
          "s.txt:7: level.nothing(): ASSERTION FAILED: command at command_system.cpp(",
          "s.txt:8: log.info(7): ASSERTION FAILED: argv->tryCast(a) at command_object.hpp(",
          "s.txt:9: curves.quay.import(\"absent.gpx\"): absent.gpx: cannot be opened: "})
    {
        EXPECT_NE(said.find(part), std::string::npos) << part << "\nis not in\n" << said;
    }
    EXPECT_NE(m_out.str().find("info: end\n"), std::string::npos);
}

TEST_F(HeadlessSessionTest, AScriptWithAWrongLineIsNotRunAndTheLineIsNamed)
{
    m_options.save.reset();
    EXPECT_EQ(run("log.info(\"a\")\nwait(-1)\n"), 1);
    EXPECT_EQ(errors(), "error: s.txt:2: wait(-1): Unexpected character\n");
    EXPECT_EQ(m_out.str().find("info: "), std::string::npos);

    EXPECT_EQ(run("log.info(\"a\")\n  log.info(\"b)\n# c\n"), 1);
    EXPECT_EQ(errors(), "error: s.txt:2: log.info(\"b): a text without its closing quote\n");

    EXPECT_EQ(run("wait(2147483648)\n"), 1);
    EXPECT_EQ(errors(), "error: s.txt:1: wait(2147483648): stoi argument out of range\n");
}

TEST_F(HeadlessSessionTest, AScriptOfCommentsIsFine)
{
    EXPECT_EQ(run("# nothing\n\n"), 0) << errors();
}

TEST_F(HeadlessSessionTest, ScriptsThatCannotBeReadAreNamed)
{
    m_options.scripts = {m_directory.path() / "absent.txt", m_directory.path()};
    EXPECT_EQ(run(), 1);
    EXPECT_NE(errors().find("error: absent.txt: cannot be opened"), std::string::npos) << errors();
    EXPECT_NE(errors().find("is a directory"), std::string::npos) << errors();
}

TEST_F(HeadlessSessionTest, ACommandThatIsNeverDoneIsNamedWhenTheTicksRunOut)
{
    m_options.maxTicks = 20;
    m_options.save.reset();
    EXPECT_EQ(run("log.info(\"a\")\nwait(1000)\nlog.info(\"b\")\nlog.info(\"c\")\n"), 1);
    EXPECT_EQ(errors(), "error: gave up after 20 ticks at s.txt:2: wait(1000) (2 commands not started)\n");
}

TEST_F(HeadlessSessionTest, WithoutTicksNoCommandIsStarted)
{
    m_options.maxTicks = 0;
    EXPECT_EQ(run("log.info(\"a\")\n"), 1);
    EXPECT_TRUE(errors().starts_with(
        "error: gave up after 0 ticks before the first command (1 command not started)\n"))
        << errors();
}

TEST_F(HeadlessSessionTest, ScriptsRunOneAfterAnother)
{
    m_options.scripts = {m_directory.write("1.txt", "level.addCurve(\"a\")\n"),
                         m_directory.write("2.txt", "curves.a.addPoint(\"1 2 3\")\n")};
    EXPECT_EQ(run(), 0) << errors();
    EXPECT_EQ(saved().curves[1].points.size(), 1U);
}

TEST_F(HeadlessSessionTest, ALevelThatCannotBeReadIsLeftAlone)
{
    m_options.level = m_directory.write("a.level", "{\"format\":\"tern-level\",\n\"version\":2}");
    m_options.save = m_options.level;
    EXPECT_EQ(run("level.addCurve(\"road\")\n"), 1);
    EXPECT_EQ(errors(),
              "error: a.level:2:11: version 2 is newer than version 1, the latest that this editor reads\n");
    EXPECT_EQ(readFile(*m_options.level), "{\"format\":\"tern-level\",\n\"version\":2}");
}

TEST_F(HeadlessSessionTest, WhatWasDoneIsSavedElsewhereAlsoWhenSomethingWentWrong)
{
    EXPECT_EQ(run("level.addCurve(\"road\")\nlevel.nothing()\ncurves.road.addPoint(\"1 2 3\")\n"), 1);
    ASSERT_EQ(saved().curves.size(), 2U);
    EXPECT_EQ(saved().curves[1].points.size(), 1U);
}

TEST_F(HeadlessSessionTest, ALevelIsNotSavedOverByARunThatWentWrong)
{
    m_options.save = m_options.level;
    const std::string before = readFile(*m_options.level);
    for (const char* script :
         {"level.addCurve(\"road\")\nlevel.nothing()\n",
          "level.addCurve(\"road\")\ncurves.absent.addPoint(\"0 0 0\")\n",
          "level.addCurve(\"road\")\nlevel.addCurve(\"road\")\n", "level.addCurve(\"road\")\nwait(-1)\n"})
    {
        SCOPED_TRACE(script);
        EXPECT_EQ(run(script), 1);
        EXPECT_EQ(readFile(*m_options.level), before);
        EXPECT_TRUE(errors().ends_with("error: a.level: not saved over the level it came from: 1 report\n"))
            << errors();
    }
    EXPECT_EQ(run("level.addCurve(\"road\")\n"), 0);
    EXPECT_EQ(saved().curves.size(), 2U);
}

#if !defined(_WIN32)
TEST_F(HeadlessSessionTest, AScriptThatIsNoFileIsNotRun)
{
    m_options.scripts = {"/dev/zero"};
    EXPECT_EQ(run(), 1);
    EXPECT_TRUE(errors().starts_with("error: /dev/zero: is no regular file\n")) << errors();
}
#endif

TEST_F(HeadlessSessionTest, AScriptThatIsNotUtf8IsNotRun)
{
    EXPECT_EQ(run("log.info(\"a\")\nlog.info(\"\xE9\")\nlog.info(\"b\")\n"), 1);
    EXPECT_TRUE(errors().starts_with("error: s.txt:2:11: a script must be UTF-8\n")) << errors();
    EXPECT_EQ(m_out.str().find("info: "), std::string::npos);
}

TEST_F(HeadlessSessionTest, AFailedSaveIsReported)
{
    m_options.save = m_directory.path() / "absent" / "out.level";
    EXPECT_EQ(run("log.info(\"a\")\n"), 1);
    EXPECT_NE(errors().find("cannot be saved"), std::string::npos);
}

TEST_F(HeadlessSessionTest, ATraceHoldsTheRun)
{
    m_options.trace = m_directory.path() / "trace.json";
    EXPECT_EQ(run("level.save(\"" + (m_directory.path() / "x.level").string() + "\")\nwait(2)\n"), 0)
        << errors();
    const nlohmann::json trace = nlohmann::json::parse(readFile(*m_options.trace));
    std::multiset<std::string> names;
    for (const nlohmann::json& event : trace.at("traceEvents"))
    {
        names.insert(event.at("name").get<std::string>());
    }
    EXPECT_EQ(names.count("HeadlessSession::tick"), 5U);
    EXPECT_EQ(names.count("level.save"), 1U);
}

/// The exit code of the real program.
int runProgram(const std::string& arguments, const std::string& output = "/dev/null")
{
    const int status =
        std::system((std::string(TERN_EDITOR_PROGRAM) + " " + arguments + " >" + output + " 2>&1").c_str());
#if defined(_WIN32)
    return status;
#else
    return WEXITSTATUS(status);
#endif
}

TEST_F(HeadlessSessionTest, TheProgramReadsItsScriptsAsUtf8)
{
    const fs::path copy = m_directory.path() / u8"gr\u00f6\u00dfe.level";
    const std::string script =
        m_directory.write("utf8.txt", "level.save(\"" + displayName(copy) + "\")\n").string();
    EXPECT_EQ(runProgram("--headless --level " + m_options.level->string() + " --script " + script), 0);
    EXPECT_TRUE(fs::exists(copy));
}

TEST_F(HeadlessSessionTest, TheProgramsExitCodeTellsTheOutcome)
{
    const std::string level = m_options.level->string();
    const std::string good = m_directory.write("good.txt", "log.info(\"a\")\n").string();
    const std::string bad = m_directory.write("bad.txt", "log.info(\n").string();
    EXPECT_EQ(runProgram("--headless --level " + level + " --script " + good), 0);
    EXPECT_EQ(runProgram("--headless --level " + level + " --script " + bad), 1);
    EXPECT_EQ(runProgram("--headless --level " + level + ".absent"), 1);
    EXPECT_EQ(runProgram("--headless --level " + level + " --nonsense"), 2);
    EXPECT_EQ(runProgram("--help"), 0);
    EXPECT_EQ(runProgram("--headless --level " + level + " --find=-type:vehicle"), 0);
#if defined(__linux__)
    EXPECT_EQ(runProgram("--headless --level " + level + " --script " + good, "/dev/full"), 1);
#endif
}

} // namespace
