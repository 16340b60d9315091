#include "editor/level/level_file.hpp"

#include "editor/files/file_error.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <string>

namespace
{

/// What parsing @p text complains of.
std::string complaint(std::string_view text)
{
    try
    {
        parseLevel(text, "a.level");
    }
    catch (const FileError& error)
    {
        return error.what();
    }
    return "no complaint";
}

std::string levelWith(const std::string& members)
{
    return "{\"format\": \"tern-level\", \"version\": 1" + members + "}";
}

TEST(LevelFileTest, ReadsTheSample)
{
    const LevelData level = readLevelFile(TERN_SAMPLES_DIR "/harbour.level");
    ASSERT_EQ(level.curves.size(), 5U);
    EXPECT_EQ(level.curves[0], (Curve{"quay", false, {{0, 1.5, 0}, {40, 1.5, 2}, {80, 1.5, 2}}}));
    EXPECT_TRUE(level.curves[1].closed);
    EXPECT_EQ(level.curves[2].kind, CurveKind::CatmullRom);
    EXPECT_EQ(level.curves[3].color, Kodo::Render::Colour32Bit(0xFF40A0FFU));
    EXPECT_EQ(level.curves[3].handles[0], (CurveHandles{{0, 0, -4.4}, {0, 0, 4.4}}));
    ASSERT_EQ(level.items.size(), 6U);
    EXPECT_EQ(level.items[0],
              (Item{"north crane", "crane", {10, 1.5, 4}, {{"definition", "quay_crane"}, {"load", "40"}}}));
}

TEST(LevelFileTest, SavingAndReadingGivesTheSameLevel)
{
    const TemporaryDirectory directory;
    LevelData level;
    level.curves = {{"a", false, {}}, {"b", true, {{0.1, -0.0, 1e300}, {5e-324, 1.0 / 3, -2}}}};
    level.items = {{"caf\xC3\xA9 \"x\"\n", "type", {1, 2, 3}, {{"k/~ey", ""}, {"", "v"}}}, {"", "", {}, {}}};
    writeLevelFile(directory.path() / "a.level", level);
    EXPECT_EQ(readLevelFile(directory.path() / "a.level"), level);
    writeLevelFile(directory.path() / "a.level", LevelData());
    EXPECT_EQ(readLevelFile(directory.path() / "a.level"), LevelData());
}

TEST(LevelFileTest, WritesAPointALine)
{
    LevelData level;
    level.curves = {{"a", false, {{1, 2, 3.5}}}};
    EXPECT_EQ(formatLevel(level), "{\n"
                                  "    \"format\": \"tern-level\",\n"
                                  "    \"version\": 1,\n"
                                  "    \"curves\": [\n"
                                  "        {\"name\": \"a\", \"closed\": false, \"points\": [\n"
                                  "            [1.0,2.0,3.5]\n"
                                  "        ]}\n"
                                  "    ],\n"
                                  "    \"items\": []\n"
                                  "}\n");
}

TEST(LevelFileTest, WritesOfACurveWhatIsNotAsUsual)
{
    LevelData level;
    level.curves = {{"a",
                     true,
                     {{1, 2, 3}},
                     CurveKind::Bezier,
                     {{{-1, 0, 0}, {1, 0, 0}}},
                     Kodo::Render::Colour32Bit(0xFF00FF0AU)},
                    {"b", false, {}, CurveKind::CatmullRom}};
    const std::string text = formatLevel(level);
    EXPECT_NE(
        text.find(
            "{\"name\": \"a\", \"closed\": true, \"kind\": \"bezier\", \"color\": \"00FF0A\", \"points\": [\n"
            "            {\"position\":[1.0,2.0,3.0],\"in\":[-1.0,0.0,0.0],\"out\":[1.0,0.0,0.0]}\n"),
        std::string::npos)
        << text;
    EXPECT_NE(text.find("{\"name\": \"b\", \"closed\": false, \"kind\": \"catmullRom\", \"points\": []}"),
              std::string::npos)
        << text;
    EXPECT_EQ(parseLevel(text, "a"), level);
}

TEST(LevelFileTest, AllOfACurveButItsNameMayBeLeftOut)
{
    const LevelData level =
        parseLevel(levelWith(",\"curves\":[{\"name\":\"a\"},{\"name\":\"b\",\"kind\":\"bezier\",\"points\":"
                             "[[1,2,3],{\"position\":[4,5,6]},{\"position\":[7,8,9],\"in\":[1,1,1]}]}]"),
                   "a");
    EXPECT_EQ(level.curves[0], (Curve{"a", false, {}}));
    EXPECT_EQ(
        level.curves[1],
        (Curve{"b", false, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, CurveKind::Bezier, {{}, {}, {{1, 1, 1}, {}}}}));
}

TEST(LevelFileTest, SaysWhichValueOfACurveIsWrong)
{
    const auto ofCurve = [](const std::string& members)
    { return complaint(levelWith(",\"curves\":[{\"name\":\"a\"" + members + "}]")); };
    EXPECT_EQ(ofCurve(",\n\"kind\":\"round\""),
              "a.level:2:8: a curve's kind is \"linear\", \"catmullRom\" or \"bezier\"");
    EXPECT_EQ(ofCurve(",\n\"kind\":1"), "a.level:2:8: \"kind\" is no text");
    EXPECT_EQ(ofCurve(",\n\"color\":\"red\""), "a.level:2:9: a colour is six hexadecimal digits");
    EXPECT_EQ(ofCurve(",\"points\":[\n{\"position\":[0,0,0]}]"),
              "a.level:2:1: only a Bezier curve's points have handles");
    const std::string bezier = ",\"kind\":\"bezier\",\"points\":[\n";
    EXPECT_EQ(ofCurve(bezier + "{}]"), "a.level:2:1: \"position\" is missing");
    EXPECT_EQ(ofCurve(bezier + "{\"position\":[0,0,0],\n\"in\":[1]}]"),
              "a.level:3:6: a position is an array of three numbers");
    EXPECT_EQ(ofCurve(bezier + "{\"position\":[0,0,0],\n\"up\":[1]}]"),
              "a.level:3:6: a member \"up\" is not known here");
    EXPECT_EQ(ofCurve(bezier + "{\"position\":[0,0,0],\n\"position\":[0,0,0]}]"),
              "a.level:3:1: a second member \"position\"");
    EXPECT_EQ(ofCurve(",\"kind\":\"linear\",\n\"kind\":\"linear\""), "a.level:2:1: a second member \"kind\"");
}

TEST(LevelFileTest, ALevelIsNotSavedAsATrack)
{
    const TemporaryDirectory directory;
    EXPECT_THROW(writeLevelFile(directory.path() / "a.gpx", LevelData()), FileError);
    EXPECT_FALSE(std::filesystem::exists(directory.path() / "a.gpx"));
}

TEST(LevelFileTest, SaysWhereAFileStopsBeingJson)
{
    EXPECT_EQ(complaint(""), "a.level:1:1: not JSON: the file ends too early");
    EXPECT_EQ(complaint("{\n  \"format\": \"tern-"), "a.level:2:19: not JSON: the file ends too early");
    EXPECT_EQ(complaint("{\n  \"format\" 1}"), "a.level:2:12: not JSON");
    EXPECT_EQ(complaint("level"), "a.level:1:1: not JSON");
    EXPECT_EQ(complaint("{\"format\": \"\xFF\"}"), "a.level:1:13: not JSON");
    EXPECT_EQ(complaint("{\"version\":\n 1e999}"), "a.level:2:6: not JSON");
}

TEST(LevelFileTest, EveryTruncationOfALevelIsRefused)
{
    const std::string text = readFile(TERN_SAMPLES_DIR "/harbour.level");
    const std::size_t end = text.rfind('}');
    for (std::size_t size = 0; size <= end; ++size)
    {
        const std::string said = complaint(std::string_view(text).substr(0, size));
        ASSERT_TRUE(said.starts_with("a.level:") && said.ends_with("not JSON: the file ends too early"))
            << size << ": " << said;
    }
}

TEST(LevelFileTest, RefusesANewerVersionAndOtherFormats)
{
    EXPECT_EQ(complaint("{\"format\": \"tern-level\",\n \"version\": 2}"),
              "a.level:2:13: version 2 is newer than version 1, the latest that this editor reads");
    EXPECT_EQ(complaint("{\"format\": \"tern-level\", \"version\": 0}"),
              "a.level:1:37: there is no version 0");
    EXPECT_EQ(complaint("{\"format\": \"tern-level\", \"version\": \"1\"}"),
              "a.level:1:37: a version is an integer");
    EXPECT_EQ(complaint("{\"format\": \"tern-level\"}"), "a.level:1:1: \"version\" is missing");
    EXPECT_EQ(complaint("{\"format\": \"map\", \"version\": 1}"),
              "a.level:1:12: the format is not \"tern-level\"");
    EXPECT_EQ(complaint("{}"), "a.level:1:1: the format is not \"tern-level\"");
    EXPECT_EQ(complaint("[1]"), "a.level:1:1: a level is an object");
}

TEST(LevelFileTest, SaysWhichValueIsWrong)
{
    EXPECT_EQ(complaint(levelWith(", \"more\":\n 1")), "a.level:2:2: a member \"more\" is not known here");
    EXPECT_EQ(complaint(levelWith(",\"curves\":[{\"name\":\"a b\"}]")),
              "a.level:1:57: a curve's name has letters, digits and \"_\", no digit first");
    EXPECT_EQ(complaint(levelWith(",\n\"curves\":[{\"name\":\"a\",\n\"points\":[[0,0,0],\n[1, 2]]}]")),
              "a.level:4:1: a position is an array of three numbers");
    EXPECT_EQ(complaint(levelWith(",\n\"curves\":[{\"name\":\"a\",\"points\":[[0,0,0],[1, 2,\n\"3\"]]}]")),
              "a.level:3:1: a coordinate is a number");
    EXPECT_EQ(complaint(levelWith(",\"curves\":[{\"name\":\"a\"},\n {\"name\":\"a\"}]")),
              "a.level:2:10: a second curve \"a\"");
    EXPECT_EQ(complaint(levelWith(",\"curves\":\n 5")), "a.level:2:2: this is no array");
    EXPECT_EQ(complaint(levelWith(",\"items\":[{\"name\":\"a\"}]")), "a.level:1:48: \"type\" is missing");
    EXPECT_EQ(
        complaint(levelWith(",\"items\":[\n{\"name\":\"a\",\"type\":\"b\",\"properties\":{\"a/b\":\n1}}]")),
        "a.level:3:1: \"a/b\" is no text");
    EXPECT_EQ(complaint(levelWith(",\"items\":[null]")), "a.level:1:48: this is no object");
}

TEST(LevelFileTest, RefusesASecondMemberOfOneName)
{
    EXPECT_EQ(complaint(levelWith(",\n\"curves\": [{\"name\": \"a\"}],\n \"curves\": []")),
              "a.level:3:2: a second member \"curves\"");
    EXPECT_EQ(complaint(levelWith(", \"version\": 1")), "a.level:1:40: a second member \"version\"");
    EXPECT_EQ(complaint(levelWith(
                  ",\"items\":[{\"name\":\"a\",\"type\":\"b\",\"properties\":{\"k\":\"1\"\n,\"k\":\"2\"}}]")),
              "a.level:2:2: a second member \"k\"");
    EXPECT_EQ(complaint(levelWith(",\"curves\":[{\"name\":\"a\"},{\"name\":\"b\"}]")), "no complaint");
}

TEST(LevelFileTest, SaysWhyAFileCannotBeRead)
{
    const TemporaryDirectory directory;
    EXPECT_THROW(readLevelFile(directory.path()), FileError);
    EXPECT_THROW(readLevelFile(directory.path() / "absent"), FileError);
}

TEST(LevelFileTest, ATextThatIsNotUtf8IsNotSavedAndNothingIsLost)
{
    const TemporaryDirectory directory;
    const std::filesystem::path file = directory.write("a.level", "before");
    LevelData level;
    level.items = {{"\xFF", "t", {}, {}}};
    EXPECT_THROW(writeLevelFile(file, level), FileError);
    EXPECT_EQ(readFile(file), "before");
}

} // namespace
