#include "editor/app/editor_options.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

EditorOptions parse(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "tern_editor");
    return parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

TEST(EditorOptionsTest, ReadsEveryOption)
{
    const EditorOptions options =
        parse({"--headless", "--level", "a.level", "--script", "1.txt", "2.txt", "--save", "b.level",
               "--script", "3.txt", "--max-ticks", "7", "--trace", "t.json"});
    EXPECT_TRUE(options.headless);
    EXPECT_EQ(options.level, "a.level");
    EXPECT_EQ(options.scripts, (std::vector<std::filesystem::path>{"1.txt", "2.txt", "3.txt"}));
    EXPECT_EQ(options.save, "b.level");
    EXPECT_EQ(options.maxTicks, 7U);
    EXPECT_EQ(options.trace, "t.json");
}

TEST(EditorOptionsTest, ReadsWhichNamesToList)
{
    const EditorOptions options =
        parse({"--headless", "--level", "a.level", "--names", "--language", "de", "--project", "p"});
    EXPECT_TRUE(options.names);
    EXPECT_EQ(options.language, "de");
    EXPECT_EQ(options.project, "p");
    EXPECT_FALSE(parse({"--headless", "--level", "a.level"}).names);
    EXPECT_EQ(parse({"--headless", "--level", "a", "--script", "s", "--language", "de"}).language, "de");
}

TEST(EditorOptionsTest, ReadsARequestWithASingleDash)
{
    const EditorOptions options = parse({"a.level,b.curve.json", "-uniquePerApp", "--report", "r.json"});
    EXPECT_EQ(options.resources, "a.level,b.curve.json");
    EXPECT_TRUE(options.uniquePerApp);
    EXPECT_EQ(options.report, "r.json");
    EXPECT_EQ(parse({"--headless", "a b.level,"}).resources, "a b.level,");
    EXPECT_FALSE(parse({"--headless", "a"}).uniquePerApp);
}

TEST(EditorOptionsTest, ReadsAPalette)
{
    const EditorOptions options =
        parse({"--colors", "9", "--seed", "7", "--ban", "ff0000", "00FF7f", "--picture", "p.png"});
    EXPECT_EQ(options.colors, 9U);
    EXPECT_EQ(options.seed, 7U);
    EXPECT_EQ(options.banned, (std::vector<std::uint32_t>{0xFF0000, 0x00FF7F}));
    EXPECT_EQ(options.picture, "p.png");
}

TEST(EditorOptionsTest, ReadsAPictureOfALevel)
{
    const EditorOptions options = parse({"--headless", "--level", "a.level", "--picture", "p.png", "--size",
                                         "640x480", "--camera", "eye=1,2,-3", "at=0,0,0", "fov=50"});
    EXPECT_EQ(options.picture, "p.png");
    EXPECT_EQ(options.size, (PictureSize{640, 480}));
    EXPECT_EQ(options.camera.place, (CameraOption::Place{{1.0F, 2.0F, -3.0F}, {0.0F, 0.0F, 0.0F}}));
    EXPECT_EQ(options.camera.fieldOfView, 50.0F);
    EXPECT_EQ(parse({"--headless", "--level", "a", "--picture", "p.png"}).size, (PictureSize{1280, 720}));
}

TEST(EditorOptionsTest, HelpNeedsNothingElse)
{
    EXPECT_TRUE(parse({"--help"}).help);
    for (const char* word : {"--level", "--script", "--save", "--max-ticks", "--trace", "--picture",
                             "--camera", "Exit code", "wait(n)"})
    {
        EXPECT_NE(helpText().find(word), std::string::npos) << word;
    }
}

TEST(EditorOptionsTest, RefusesWhatMakesNoSense)
{
    const std::vector<std::vector<const char*>> wrong = {
        {},
        {"--level", "a"},
        {"--headless"},
        {"--headless", "--level"},
        {"--headless", "--level", "a", "--level", "b"},
        {"--headless", "--level", "a", "--max-ticks", "many"},
        {"--headless", "--level", "a", "--max-ticks", "1.5"},
        {"--headless", "--level", "a", "--max-ticks", "-1"},
        {"--headless", "--level", "a", "--max-ticks", "18446744073709551616"},
        {"--headless", "--level", "a", "--lev", "b"},
        {"--headless", "--level", "a", "stray"},
        {"a.level", "b.level"},
        {"a.level", "--find", "crane"},
        {"--colors", "3", "--script", "a.txt"},
        {"a.level", "--names"},
        {"--colors", "3", "--language", "de"},
        {"--headless", "--level", "a", "--language", "de"},
        {"--headless", "--level", "a", "--project", "p"},
        {"--headless", "--level", "a", "--names", "--language"},
        {"a.level", "--colors", "3"},
        {"--colors", "-1"},
        {"--colors", "9", "--seed", "4294967296"},
        {"--headless", "--level", "a", "--max-ticks", "-1"},
        {"--colors", "9", "--ban", "red"},
        {"--colors", "9", "--ban", "0xFF00"},
        {"--headless", "--level", "a", "--unknown"},
        {"a.level", "--picture", "p.png"},
        {"--headless", "--level", "a", "--size", "640x480"},
        {"--headless", "--level", "a", "--camera", "ortho=fit"},
        {"--colors", "3", "--picture", "p.png", "--size", "640x480"},
        {"--headless", "--level", "a", "--picture", "p.png", "--size", "640"},
        {"--headless", "--level", "a", "--picture", "p.png", "--camera"},
        {"--headless", "--level", "a", "--picture", "p.png", "--camera", "eye=1,2,3"},
    };
    for (const auto& arguments : wrong)
    {
        EXPECT_THROW(parse(arguments), CommandLineError) << testing::PrintToString(arguments);
    }
}

} // namespace
