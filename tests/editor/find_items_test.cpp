#include "editor/app/find_items.hpp"

#include "tests/editor/headless_session_fixture.hpp"

#include <vector>

namespace
{

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

} // namespace
