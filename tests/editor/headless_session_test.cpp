#include "editor/app/headless_session.hpp"

#include "editor/files/file_error.hpp"
#include "editor/level/level_file.hpp"
#include "editor/level/track_curve.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <set>
#include <sstream>
#include <string>

namespace fs = std::filesystem;

namespace
{

/// Runs the headless editor on a level with a curve "quay" and a script of the test's.
class HeadlessSessionTest : public testing::Test
{
protected:
    HeadlessSessionTest()
    {
        m_options.headless = true;
        m_options.level = m_directory.write(
            "a.level", "{\"format\":\"tern-level\",\"version\":1,\"curves\":[{\"name\":\"quay\"}]}");
        m_options.save = m_directory.path() / "out.level";
    }

    int run(const std::string& script)
    {
        m_options.scripts = {m_directory.write("s.txt", script)};
        return run();
    }

    int run()
    {
        m_out.str("");
        m_errors.str("");
        const CollectReports seenByTheSession;
        return HeadlessSession(m_options, m_out, m_errors).run();
    }

    /// The messages of the last run, without the directory's name.
    std::string errors() const
    {
        std::string text = m_errors.str();
        const std::string prefix = m_directory.path().string() + "/";
        for (std::size_t at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at))
        {
            text.erase(at, prefix.size());
        }
        return text;
    }

    LevelData saved() const { return readLevelFile(*m_options.save); }

    TemporaryDirectory m_directory;
    EditorOptions m_options;
    std::ostringstream m_out;
    std::ostringstream m_errors;
};

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

TEST_F(HeadlessSessionTest, AnImportIsWaitedForAndSeenByTheNextCommand)
{
    const fs::path track =
        m_directory.write("t.gpx", "<gpx><trk><trkseg><trkpt lat='0' lon='0'/><trkpt lat='0' "
                                   "lon='1'/></trkseg></trk></gpx>");
    const fs::path between = m_directory.path() / "between.level";
    EXPECT_EQ(run("curves.quay.import(\"" + track.string() + "\")\nlevel.save(\"" + between.string() +
                  "\")\ncurves.quay.addPoint(\"0 0 0\")\n"),
              0)
        << errors();
    EXPECT_EQ(readLevelFile(between).curves[0].points.size(), 2U);
    EXPECT_EQ(saved().curves[0].points.size(), 3U);
}

TEST_F(HeadlessSessionTest, AnImportAtTheEndIsSavedAsWell)
{
    const fs::path track =
        m_directory.write("t.gpx", "<gpx><trk><trkseg><trkpt lat='0' lon='0'/></trkseg></trk></gpx>");
    EXPECT_EQ(run("curves.quay.import(\"" + track.string() + "\")\n"), 0) << errors();
    EXPECT_EQ(saved().curves[0].points.size(), 1U);
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

TEST_F(HeadlessSessionTest, AScriptEditsACurvePointByPoint)
{
    EXPECT_EQ(run("curves.quay.addPoint(\"0 0 0\")\n"
                  "curves.quay.addPoint(\"8 0 0\")\n"
                  "curves.quay.addPoint(\"8 0 8\")\n"
                  "curves.quay.insertPoint(\"4 1 0\", \"0.5\")\n"
                  "curves.quay.movePoint(0, \"-1 0 0\")\n"
                  "curves.quay.setClosed(true)\n"
                  "curves.quay.splitNear(\"3 0 9\")\n"
                  "curves.quay.swapPoints(0, 1)\n"
                  "curves.quay.removePoint(3)\n"
                  "curves.quay.setColor(\"ff8000\")\n"),
              0)
        << errors();
    const Curve curve = saved().curves[0];
    ASSERT_EQ(curve.points.size(), 4U);
    EXPECT_EQ(curve.points[0], (Position{4, 1, 0}));
    EXPECT_EQ(curve.points[1], (Position{-1, 0, 0}));
    EXPECT_EQ(curve.points[2], (Position{8, 0, 0}));
    // The foot on the way from (8, 0, 8) back to (-1, 0, 0).
    EXPECT_NEAR(curve.points[3][0] * 8 - curve.points[3][2] * 9, -8, 1e-9);
    EXPECT_NEAR(curve.points[3][0] * 9 + curve.points[3][2] * 8, 3 * 9 + 9 * 8, 1e-6);
    EXPECT_TRUE(curve.closed);
    EXPECT_EQ(curve.color, Kodo::Render::Colour32Bit(0xFFFF8000U));
}

TEST_F(HeadlessSessionTest, AScriptUndoesAndRedoesEachCommandAsAStep)
{
    EXPECT_EQ(run("curves.quay.addPoint(\"0 0 0\")\n"
                  "curves.quay.addPoint(\"8 0 0\")\n"
                  "curves.quay.setKind(\"bezier\")\n"
                  "curves.quay.setHandles(0, \"0 0 0\", \"0 4 0\")\n"
                  "curves.quay.split(\"0.5\")\n"
                  "level.addCurve(\"road\")\n"
                  "level.undo()\nlevel.undo()\nlevel.undo()\nlevel.redo()\n"),
              0)
        << errors();
    ASSERT_EQ(saved().curves.size(), 1U);
    EXPECT_EQ(saved().curves[0].kind, CurveKind::Bezier);
    EXPECT_EQ(saved().curves[0].points.size(), 2U);
    EXPECT_EQ(saved().curves[0].handles[0].out, (Position{0, 4, 0}));
}

TEST_F(HeadlessSessionTest, AWrongEditOfACurveIsNamed)
{
    EXPECT_EQ(run("curves.quay.movePoint(0, \"0 0 0\")\n"
                  "curves.quay.split(\"0\")\n"
                  "curves.quay.addPoint(\"1 2 3\")\n"
                  "curves.quay.insertPoint(\"1 2 3\", \"half\")\n"
                  "curves.quay.insertPoint(\"1 2 3\", \"nan\")\n"
                  "curves.quay.setHandles(0, \"0 0 0\", \"0 0 0\")\n"
                  "curves.quay.setKind(\"round\")\n"
                  "curves.quay.setColor(\"red\")\n"
                  "curves.quay.addPoint(\"1 2 1e39\")\n"
                  "curves.quay.swapPoints(0, 7)\n"
                  "level.redo()\nlevel.undo()\nlevel.undo()\n"),
              1);
    EXPECT_EQ(
        errors(),
        "error: s.txt:1: curves.quay.movePoint(0, \"0 0 0\"): there is no point 0: the curve has 0\n"
        "error: s.txt:2: curves.quay.split(\"0\"): the curve has no point\n"
        "error: s.txt:4: curves.quay.insertPoint(\"1 2 3\", \"half\"): \"half\" is no parameter: a number\n"
        "error: s.txt:5: curves.quay.insertPoint(\"1 2 3\", \"nan\"): \"nan\" is no parameter: a number\n"
        "error: s.txt:6: curves.quay.setHandles(0, \"0 0 0\", \"0 0 0\"): only a Bezier curve's points have "
        "handles\n"
        "error: s.txt:7: curves.quay.setKind(\"round\"): \"round\" is no kind: linear, catmullRom or bezier\n"
        "error: s.txt:8: curves.quay.setColor(\"red\"): \"red\" is no colour: six hexadecimal digits\n"
        "error: s.txt:9: curves.quay.addPoint(\"1 2 1e39\"): a coordinate is too large for the scene\n"
        "error: s.txt:10: curves.quay.swapPoints(0, 7): there is no point 7: the curve has 1\n"
        "error: s.txt:11: level.redo(): there is nothing to redo\n"
        "error: s.txt:13: level.undo(): there is nothing to undo\n");
}

TEST_F(HeadlessSessionTest, ATrackBecomesACurveOfTheLevel)
{
    const std::string track = TERN_SAMPLES_DIR "/coast_road.gpx";
    EXPECT_EQ(run("level.importTrack(\"" + track +
                  "\")\ncurves.coast_road.setKind(\"catmullRom\")\nlevel.undo()\nlevel.importTrack(\"" +
                  track + "\")\n"),
              1);
    EXPECT_TRUE(errors().ends_with("there is a curve \"coast_road\" already\n")) << errors();
    ASSERT_EQ(saved().curves.size(), 2U);
    EXPECT_EQ(saved().curves[1], readTrackCurve(track));
}

TEST_F(HeadlessSessionTest, ATrackIsOpenedAsALevelAndNotSavedOver)
{
    m_options.level = m_directory.write("t.gpx", readFile(TERN_SAMPLES_DIR "/coast_road.gpx"));
    EXPECT_EQ(run("curves.t.setClosed(true)\n"), 0) << errors();
    EXPECT_EQ(saved().curves[0].points.size(), 7U);
    m_options.save = m_options.level;
    EXPECT_EQ(run("curves.t.setClosed(true)\n"), 1);
    EXPECT_EQ(errors(), "error: t.gpx: cannot be saved: this is the name of a track, not of a level\n");
    EXPECT_EQ(readFile(*m_options.level), readFile(TERN_SAMPLES_DIR "/coast_road.gpx"));
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

/// The items of the sample that a query lists, each on its line.
class FindTest : public HeadlessSessionTest
{
protected:
    std::vector<std::string> find(const std::string& query)
    {
        m_options.level = TERN_SAMPLES_DIR "/harbour.level";
        m_options.save.reset();
        m_options.find = query;
        m_exitCode = run();
        std::istringstream lines(m_out.str());
        std::vector<std::string> names;
        for (std::string line; std::getline(lines, line);)
        {
            if (line.starts_with("found: \""))
            {
                names.push_back(line.substr(8, line.find('"', 8) - 8));
            }
        }
        return names;
    }

    using Names = std::vector<std::string>;
    int m_exitCode = -1;
};

TEST_F(FindTest, ListsTheItemsThatMatchEveryTerm)
{
    EXPECT_EQ(find("type:vehicle -tier:2 \"heavy loader\""), (Names{"heavy loader"}));
    EXPECT_EQ(find("type:vehicle"), (Names{"heavy loader", "light loader"}));
    EXPECT_EQ(find("type:vehicle -tier:1"), (Names{"heavy loader"}));
    EXPECT_EQ(find("crane -north"), (Names{"south crane"}));
    EXPECT_EQ(find("").size(), 6U);
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(find("type:plane"), Names{});
    EXPECT_NE(m_out.str().find("found 0 of 6 items"), std::string::npos);
    EXPECT_EQ(m_exitCode, 0);
}

TEST_F(FindTest, ShowsWhatAnItemHas)
{
    find("tug");
    EXPECT_NE(m_out.str().find("found: \"tug\" type:ship at 50 0 -12 definition:tug draught:3.2\n"),
              std::string::npos)
        << m_out.str();
}

TEST_F(FindTest, SaysWhatIsWrongWithAQueryAndWhere)
{
    EXPECT_EQ(find("crane type: \"north").size(), 1U);
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(errors(), "error: --find: column 7: a key without a value\n"
                        "error: --find: column 13: a quote that is not closed\n");
    find("-\"\" crane");
    EXPECT_EQ(errors(), "error: --find: column 2: quotes with nothing in them\n");
    find("a\x01"
         "b");
    EXPECT_EQ(errors(), "error: --find: the query holds a control character\n");
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
