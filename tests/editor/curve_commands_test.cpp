#include "editor/commands/curve_commands.hpp"

#include "editor/app/command_help.hpp"
#include "editor/commands/level_commands.hpp"
#include "editor/level/track_curve.hpp"
#include "tests/editor/headless_session_fixture.hpp"

#include <vector>

namespace fs = std::filesystem;

namespace
{

/// Scripts that edit the curve "quay".
class CurveCommandsTest : public HeadlessSessionTest
{
};

TEST_F(CurveCommandsTest, AnImportIsWaitedForAndSeenByTheNextCommand)
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

TEST_F(CurveCommandsTest, AnImportAtTheEndIsSavedAsWell)
{
    const fs::path track =
        m_directory.write("t.gpx", "<gpx><trk><trkseg><trkpt lat='0' lon='0'/></trkseg></trk></gpx>");
    EXPECT_EQ(run("curves.quay.import(\"" + track.string() + "\")\n"), 0) << errors();
    EXPECT_EQ(saved().curves[0].points.size(), 1U);
}

TEST_F(CurveCommandsTest, AScriptEditsACurvePointByPoint)
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

TEST_F(CurveCommandsTest, AScriptUndoesAndRedoesEachCommandAsAStep)
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

TEST_F(CurveCommandsTest, AWrongEditOfACurveIsNamed)
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

TEST_F(CurveCommandsTest, EveryCommandIsUndoneAndRedone)
{
    const std::string edits = "curves.quay.addPoint(\"0 0 0\")\n"
                              "curves.quay.addPoint(\"8 0 0\")\n"
                              "curves.quay.insertPoint(\"8 0 8\", \"1\")\n"
                              "curves.quay.setKind(\"bezier\")\n"
                              "curves.quay.setHandles(1, \"-1 0 0\", \"0 0 1\")\n"
                              "curves.quay.split(\"0.5\")\n"
                              "curves.quay.splitNear(\"9 0 4\")\n"
                              "curves.quay.movePoint(0, \"0 1 0\")\n"
                              "curves.quay.swapPoints(0, 2)\n"
                              "curves.quay.removePoint(1)\n"
                              "curves.quay.setClosed(true)\n"
                              "curves.quay.setColor(\"40A0FF\")\n"
                              "level.importTrack(\"" TERN_SAMPLES_DIR "/coast_road.gpx\")\n"
                              "curves.quay.import(\"" TERN_SAMPLES_DIR "/coast_road.gpx\")\n"
                              "level.addCurve(\"road\")\n"
                              "level.removeCurve(\"quay\")\n";
    constexpr std::size_t STEPS = 16;
    const auto repeated = [](const char* command)
    {
        std::string text;
        for (std::size_t i = 0; i < STEPS; ++i)
        {
            text += command;
        }
        return text;
    };
    EXPECT_EQ(run(edits), 0) << errors();
    const LevelData edited = saved();
    EXPECT_EQ(edited.curves.size(), 2U);
    EXPECT_EQ(run(edits + repeated("level.undo()\n")), 0) << errors();
    EXPECT_EQ(saved().curves, (std::vector<Curve>{{"quay", false, {}}}));
    EXPECT_EQ(run(edits + repeated("level.undo()\n") + repeated("level.redo()\n")), 0) << errors();
    EXPECT_EQ(saved(), edited);
    EXPECT_EQ(run(edits + repeated("level.undo()\n") + "level.undo()\n"), 1);
    EXPECT_TRUE(errors().ends_with("level.undo(): there is nothing to undo\n")) << errors();
}

TEST_F(CurveCommandsTest, APlaceOfTheCurveThatTheSceneCannotHoldIsNotSplit)
{
    m_options.level = m_directory.write("far.level", R"({"format": "tern-level", "version": 1, "curves":
        [{"name": "quay", "points": [[0, 0, 0], [1e39, 0, 0], [0, 0, 0]]}]})");
    EXPECT_EQ(
        run("curves.quay.split(\"1\")\ncurves.quay.movePoint(1, \"4 0 0\")\ncurves.quay.split(\"1.5\")\n"),
        1);
    EXPECT_EQ(errors(),
              "error: s.txt:1: curves.quay.split(\"1\"): a coordinate is too large for the scene\n");
    EXPECT_EQ(saved().curves[0].points, (std::vector<Position>{{0, 0, 0}, {4, 0, 0}, {2, 0, 0}, {0, 0, 0}}));
}

TEST_F(CurveCommandsTest, TheHelpNamesEachOfThem)
{
    Level level;
    level.addCurve("quay");
    CommandObject root;
    const LevelCommands commands(root, level);
    const CommandObject* const curve = root.findChild("curves")->findChild("quay");
    for (const char* const name : {"addPoint", "insertPoint", "split", "splitNear", "movePoint", "setHandles",
                                   "removePoint", "swapPoints", "setKind", "setClosed", "setColor", "import"})
    {
        EXPECT_NE(curve->findCommand(name), nullptr) << name;
        EXPECT_NE(commandHelp().find("curves.NAME." + std::string(name) + "("), std::string::npos) << name;
    }
    for (const char* const name : {"open", "save", "addCurve", "removeCurve", "importTrack", "undo", "redo"})
    {
        EXPECT_NE(root.findChild("level")->findCommand(name), nullptr) << name;
        EXPECT_NE(commandHelp().find("level." + std::string(name) + "("), std::string::npos) << name;
    }
}

TEST_F(CurveCommandsTest, ATrackBecomesACurveOfTheLevel)
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

TEST_F(CurveCommandsTest, ATrackIsOpenedAsALevelAndNotSavedOver)
{
    m_options.level = m_directory.write("t.gpx", readFile(TERN_SAMPLES_DIR "/coast_road.gpx"));
    EXPECT_EQ(run("curves.t.setClosed(true)\n"), 0) << errors();
    EXPECT_EQ(saved().curves[0].points.size(), 7U);
    m_options.save = m_options.level;
    EXPECT_EQ(run("curves.t.setClosed(true)\n"), 1);
    EXPECT_EQ(errors(), "error: t.gpx: cannot be saved: this is the name of a track, not of a level\n");
    EXPECT_EQ(readFile(*m_options.level), readFile(TERN_SAMPLES_DIR "/coast_road.gpx"));
}

} // namespace
