#include "tern_common/query/query.hpp"

#include "tests/support/test_query.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace
{

/// Queries as people type them, each heading joined with each tail by each joint.
std::vector<std::string> corpus()
{
    static constexpr std::array<const char*, 10> HEADS{"bridge",
                                                       "\"heavy loader\"",
                                                       "tier=2",
                                                       "!hidden",
                                                       "(road|rail)",
                                                       "  lead",
                                                       "gr\xC3\xB6\xC3\x9F"
                                                       "e<10",
                                                       "\"left \"\"right\"",
                                                       "name=\"stone wall\"",
                                                       "a&b|c"};
    static constexpr std::array<const char*, 6> JOINTS{" ", "   ", "\t", "|", " & ", "\"quoted\""};
    static constexpr std::array<const char*, 8> TAILS{
        "tree",  "\"oak tree\"  ", "(height>3 & height<9)",
        "!!x",   "caf\xC3\xA9\t",  "\xE6\xA9\x8B \"\xE6\xA9\x8B\"",
        "a a a", "\"never closed"};
    std::vector<std::string> queries{"", " ", "x", "\"", "\"\"", "()", "\t\t"};
    for (const char* const head : HEADS)
    {
        for (const char* const joint : JOINTS)
        {
            for (const char* const tail : TAILS)
            {
                queries.push_back(std::string(head).append(joint).append(tail));
            }
        }
    }
    return queries;
}

/// A token that can stand wherever one of @p type stands.
std::string replacementFor(int type)
{
    switch (type)
    {
    case QUOTED:
        return "\"n e w\"";
    case OPERATOR:
        return "=";
    default:
        return "new-\xC3\xA9";
    }
}

std::string shown(const std::string& text, std::size_t index)
{
    return "token " + std::to_string(index) + " of [" + text + "]";
}

TEST(NeighbourSafetyTest, TheCorpusIsLargeAndHasTouchingTokens)
{
    std::size_t touching = 0;
    for (const std::string& text : corpus())
    {
        const TestQuery query(text, splitExpression);
        for (std::size_t index = 1; index < query.tokenCount(0); ++index)
        {
            touching +=
                query.getTokenPos(index - 1) + query.getTokenLen(index - 1) == query.getTokenPos(index);
        }
    }
    EXPECT_GE(corpus().size(), 300U);
    EXPECT_GE(touching, 300U);
}

TEST(NeighbourSafetyTest, ReplacingATokenByOneOfItsKindLeavesAllOthersWhatTheyWere)
{
    for (const std::string& text : corpus())
    {
        const TestQuery original(text, splitExpression);
        for (std::size_t index = 0; index < original.tokenCount(0); ++index)
        {
            std::vector<std::string> expected = tokenStrings(original);
            expected[index] = replacementFor(original.getTokenType(index));
            TestQuery query(text, splitExpression);

            ASSERT_TRUE(query.replaceToken(index, expected[index])) << shown(text, index);

            ASSERT_EQ(tokenStrings(query), expected) << shown(text, index);
            for (std::size_t other = 0; other < expected.size(); ++other)
            {
                ASSERT_EQ(query.getTokenType(other), original.getTokenType(other)) << shown(text, index);
            }
        }
    }
}

TEST(NeighbourSafetyTest, RemovingATokenBetweenSpacesLeavesAllOthersWhatTheyWere)
{
    for (const std::string& text : corpus())
    {
        const TestQuery original(text, splitExpression);
        for (std::size_t index = 0; index < original.tokenCount(0); ++index)
        {
            const std::size_t pos = original.getTokenPos(index);
            if (pos != 0 && text[pos - 1] != ' ')
            {
                continue; // its neighbours may come to touch
            }
            std::vector<std::string> expected = tokenStrings(original);
            expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(index));
            TestQuery query(text, splitExpression);

            ASSERT_TRUE(query.removeToken(index)) << shown(text, index);

            ASSERT_EQ(tokenStrings(query), expected) << shown(text, index);
        }
    }
}

TEST(NeighbourSafetyTest, AnInsertedTokenLeavesTheOthersWhatTheyWere)
{
    for (const std::string& text : corpus())
    {
        const TestQuery original(text, splitExpression);
        for (std::size_t index = 0; index < original.tokenCount(0); ++index)
        {
            std::vector<std::string> expected = tokenStrings(original);
            expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(index), "new");
            TestQuery query(text, splitExpression);

            ASSERT_TRUE(query.insertToken(index, "new")) << shown(text, index);

            ASSERT_EQ(tokenStrings(query), expected) << shown(text, index);
        }
    }
}

TEST(NeighbourSafetyTest, NormalSpacesLeaveEveryTokenWhatItWas)
{
    for (const std::string& text : corpus())
    {
        TestQuery query(text, splitExpression);
        const std::vector<std::string> expected = tokenStrings(query);
        if (!expected.empty() && query.getTokenType(expected.size() - 1) == QUOTED &&
            (expected.back().size() == 1 || expected.back().back() != '"'))
        {
            continue; // what is never closed takes the space behind it in
        }
        query.normalizeSpaces();

        ASSERT_EQ(tokenStrings(query), expected) << shown(text, 0);
    }
}

TEST(NeighbourSafetyTest, RepeatedErasureTakesInnocentNeighboursAlongFromTheThirdEqualTokenOn)
{
    TestQuery two("tree tree bridge", splitExpression);
    two.removeDublicates();
    EXPECT_EQ(tokenStrings(two), (std::vector<std::string>{"tree", "bridge"}));

    TestQuery three("tree tree tree bridge", splitExpression);
    three.removeDublicates();
    EXPECT_EQ(tokenStrings(three), (std::vector<std::string>{"tree", "ge"}));
}

TEST(NeighbourSafetyTest, AWordThatReplacesATokenTouchedByAWordJoinsThatWord)
{
    TestQuery query("a|b", splitExpression);

    EXPECT_TRUE(query.replaceToken(1, "x")); // it goes in as it is, without a space before it

    EXPECT_EQ(tokenStrings(query), (std::vector<std::string>{"ax", "b"}));
}

TEST(NeighbourSafetyTest, RemovingATokenBetweenTouchingWordsJoinsThem)
{
    TestQuery query("a|b", splitExpression);

    EXPECT_TRUE(query.removeToken(1));

    EXPECT_EQ(tokenStrings(query), (std::vector<std::string>{"ab"}));
}

} // namespace
