#include "editor/search/filter_matching.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace
{

using Indices = std::vector<std::size_t>;

/// A yard of things to be found.
class FilterMatchingTest : public testing::Test
{
protected:
    Indices found(const std::string& text) const
    {
        FilterQuery query;
        EXPECT_TRUE(query.setQueryString(text)) << text;
        return findMatches(query, m_items);
    }

    const std::vector<SearchableItem> m_items{
        {"Heavy Loader", "vehicle", {{"tier", "3"}, {"colour", "yellow"}}},
        {"heavy loader mk2", "Vehicle", {{"tier", "2"}}},
        {"Old Bridge", "building", {{"tier", "2"}, {"tag", "stone"}, {"tag", "two lanes"}}},
        {"Caf\xC3\xA9", "building", {{"note", ""}}},
    };
};

TEST_F(FilterMatchingTest, AnEmptyFilterMatchesAll)
{
    EXPECT_EQ(found(""), (Indices{0, 1, 2, 3}));
    EXPECT_EQ(found("  "), (Indices{0, 1, 2, 3}));
}

TEST_F(FilterMatchingTest, WordsAndPhrasesAreLookedForInTheName)
{
    EXPECT_EQ(found("loader"), (Indices{0, 1}));
    EXPECT_EQ(found("LOAD"), (Indices{0, 1}));
    EXPECT_EQ(found("bridge old"), Indices{2});
    EXPECT_EQ(found("\"bridge old\""), Indices{});
    EXPECT_EQ(found("\"old bridge\""), Indices{2});
    EXPECT_EQ(found("vehicle"), Indices{});
    EXPECT_EQ(found("caf\xC3\xA9"), Indices{3});
    EXPECT_EQ(found("caf\xC3\x89"), Indices{}); // only ASCII letters match in either case
}

TEST_F(FilterMatchingTest, FieldsAreComparedAsAWhole)
{
    EXPECT_EQ(found("type:vehicle"), (Indices{0, 1}));
    EXPECT_EQ(found("TYPE:VEHICLE"), (Indices{0, 1}));
    EXPECT_EQ(found("type:veh"), Indices{});
    EXPECT_EQ(found("tier:2"), (Indices{1, 2}));
    EXPECT_EQ(found("name:\"old bridge\""), Indices{2});
    EXPECT_EQ(found("tag:stone"), Indices{2});
    EXPECT_EQ(found("tag:\"two lanes\""), Indices{2});
    EXPECT_EQ(found("note:\"\""), Indices{3});
    EXPECT_EQ(found("unknown:x"), Indices{});
}

TEST_F(FilterMatchingTest, NegatedTermsMustNotHold)
{
    EXPECT_EQ(found("-loader"), (Indices{2, 3}));
    EXPECT_EQ(found("-tier:2"), (Indices{0, 3}));
    EXPECT_EQ(found("-tag:stone tier:2"), Indices{1});
}

TEST_F(FilterMatchingTest, AllTermsMustHold)
{
    EXPECT_EQ(found("type:vehicle -tier:2 \"heavy loader\""), Indices{0});
}

TEST_F(FilterMatchingTest, HalfTypedTermsDoNotHideAnything)
{
    EXPECT_EQ(found("type:"), (Indices{0, 1, 2, 3}));
    EXPECT_EQ(found("loader -"), (Indices{0, 1}));
    EXPECT_EQ(found("loader \""), (Indices{0, 1}));
    EXPECT_EQ(found("\"heavy l"), (Indices{0, 1}));
    EXPECT_EQ(found(":x"), (Indices{0, 1, 2, 3}));
}

} // namespace
