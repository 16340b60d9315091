#include "editor/app/output_files.hpp"

#include "tests/editor/headless_session_fixture.hpp"

#include <filesystem>

namespace fs = std::filesystem;

namespace
{

/// A run that would write to files that it should leave alone.
class OutputFilesTest : public HeadlessSessionTest
{
protected:
    fs::path path(const char* name) const { return m_directory.path() / name; }

    std::string mistake() const
    {
        std::string text = findOutputMistake(m_options).value_or("none");
        const std::string directory = m_directory.path().string() + "/";
        const std::size_t at = text.find(directory);
        return at == std::string::npos ? text : text.erase(at, directory.size());
    }
};

TEST_F(OutputFilesTest, FilesOfTheirOwnAreNoMistake)
{
    m_options.picture = path("a.png");
    m_options.trace = path("a.json");
    m_options.scripts = {path("a.txt")};
    EXPECT_EQ(mistake(), "none");
    m_options.save = m_options.level;
    EXPECT_EQ(mistake(), "none") << "saving the level is what --save is for";
}

TEST_F(OutputFilesTest, AnOutputDoesNotTakeThePlaceOfTheLevelOrAScript)
{
    m_options.picture = m_options.level;
    EXPECT_EQ(mistake(), "--picture a.level would destroy what is read from there");
    m_options.picture = path("missing/../a.level");
    EXPECT_EQ(mistake(), "--picture missing/../a.level would destroy what is read from there");
    m_options.picture.reset();
    m_options.trace = m_options.level;
    EXPECT_EQ(mistake(), "--trace a.level would destroy what is read from there");
    m_options.trace.reset();
    m_options.scripts = {path("a.txt"), m_directory.write("b.txt", "")};
    m_options.save = path("b.txt");
    EXPECT_EQ(mistake(), "--save b.txt would destroy what is read from there");
}

TEST_F(OutputFilesTest, TwoOutputsAreTwoFiles)
{
    m_options.picture = m_options.save;
    EXPECT_EQ(mistake(), "--picture out.level would destroy what --save writes there");
    m_options.picture = path("a.png");
    m_options.trace = path("./a.png");
    EXPECT_EQ(mistake(), "--trace ./a.png would destroy what --picture writes there");
}

TEST_F(OutputFilesTest, ARunWithSuchAMistakeDoesNothing)
{
    const std::string before = readFile(*m_options.level);
    m_options.picture = m_options.level;
    EXPECT_EQ(run("level.addCurve(\"road\")\n"), 1);
    EXPECT_EQ(errors(), "error: --picture a.level would destroy what is read from there\n");
    EXPECT_EQ(readFile(*m_options.level), before);
    EXPECT_FALSE(fs::exists(*m_options.save));
}

} // namespace
