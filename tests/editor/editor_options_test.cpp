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

TEST(EditorOptionsTest, HelpNeedsNothingElse)
{
    EXPECT_TRUE(parse({"--help"}).help);
    for (const char* word :
         {"--level", "--script", "--save", "--max-ticks", "--trace", "Exit code", "wait(n)"})
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
        {"--headless", "--level", "a", "--unknown"},
    };
    for (const auto& arguments : wrong)
    {
        EXPECT_THROW(parse(arguments), CommandLineError) << testing::PrintToString(arguments);
    }
}

} // namespace
