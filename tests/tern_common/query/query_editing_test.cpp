#include "tern_common/query/query.hpp"

#include "tests/support/reports.hpp"
#include "tests/support/test_query.hpp"
#include "tests/tern_common/query/private_edits.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

constexpr std::size_t HUGE_VALUE = std::numeric_limits<std::size_t>::max();

bool refuseAll(const std::string& /*text*/, std::vector<Query::Token>& /*tokens*/)
{
    return false;
}

/// The text after @p edit; the edit must be taken.
template <class Edit>
std::string edited(const std::string& text, Edit edit)
{
    TestQuery query(text);
    EXPECT_TRUE(edit(query));
    return query.getQueryString();
}

std::string withoutDublicates(const std::string& text, Tokenizer tokenizer = splitWords)
{
    TestQuery query(text, std::move(tokenizer));
    query.removeDublicates();
    return query.getQueryString();
}

std::string withNormalSpaces(const std::string& text, Tokenizer tokenizer = splitWords)
{
    TestQuery query(text, std::move(tokenizer));
    query.normalizeSpaces();
    return query.getQueryString();
}

std::string normalized(const std::string& text)
{
    TestQuery query(text);
    query.normalize();
    return query.getQueryString();
}

std::string inserted(const std::string& text, std::size_t pos, const std::string& token)
{
    return edited(text, [&](Query& query) { return query.insertTokenString(pos, token); });
}

template <class Call>
void expectInvalidPosition(Call call)
{
    try
    {
        call();
        ADD_FAILURE() << "nothing was thrown";
    }
    catch (const std::out_of_range& error)
    {
        EXPECT_STREQ(error.what(), "invalid string position");
    }
}

TEST(QueryEditingTest, AnInsertedTokenStandsBetweenSpaces)
{
    EXPECT_EQ(inserted("a", 1, "b"), "a b ");
    EXPECT_EQ(inserted("a", 0, "b"), "b a");
    EXPECT_EQ(inserted("", 0, "x"), "x ");
    EXPECT_EQ(inserted("ab", 1, "x"), "a x b");
    EXPECT_EQ(inserted("a  b", 2, "x"), "a x b");
    EXPECT_EQ(inserted("a b", 2, "x"), "a x b");
    EXPECT_EQ(inserted("a b", 1, "x"), "a x b");
    EXPECT_EQ(inserted("a ", 2, "x"), "a x ");
    EXPECT_EQ(inserted(" a", 0, "x"), "x a");
}

TEST(QueryEditingTest, OnlyTheSpaceSeparates)
{
    EXPECT_EQ(inserted("a\tb", 2, "x"), "a\t x b");
    EXPECT_EQ(inserted("a\n", 2, "x"), "a\n x ");
    EXPECT_EQ(edited("a \tb", [](Query& query) { return query.removeToken(0); }), "\tb");
}

TEST(QueryEditingTest, TheEmptyTokenIsInsertedWithItsSpaces)
{
    EXPECT_EQ(inserted("ab", 1, ""), "a  b");
    EXPECT_EQ(inserted("", 0, ""), " ");
}

TEST(QueryEditingTest, InsertingBeyondTheEndChangesNothing)
{
    TestQuery query("ab");
    const int calls = query.tokenizeCalls();

    EXPECT_FALSE(query.insertTokenString(3, "x"));
    EXPECT_FALSE(query.insertTokenString(Query::invalidTokenIndex, "x"));

    EXPECT_EQ(query.getQueryString(), "ab");
    EXPECT_EQ(query.tokenizeCalls(), calls);
}

TEST(QueryEditingTest, ATokenIsInsertedInFrontOfTheOneNamed)
{
    EXPECT_EQ(edited("a b", [](Query& query) { return query.insertToken(1, "x"); }), "a x b");
    EXPECT_EQ(edited("  a", [](Query& query) { return query.insertToken(0, "x"); }), "  x a");
}

TEST(QueryEditingTest, AnIndexBeyondTheTokensAppends)
{
    EXPECT_EQ(edited("a", [](Query& query) { return query.insertToken(1, "x"); }), "a x ");
    EXPECT_EQ(edited("a", [](Query& query) { return query.insertToken(Query::invalidTokenIndex, "x"); }),
              "a x ");
    EXPECT_EQ(edited("", [](Query& query) { return query.insertToken(0, "x"); }), "x ");
}

TEST(QueryEditingTest, ATokenRecordedBeyondTheTextTakesNoInsertion)
{
    TestQuery query("ab", fixedTokens({token(3, 1)}));

    EXPECT_FALSE(query.insertToken(0, "x"));
    EXPECT_EQ(query.getQueryString(), "ab");
}

TEST(QueryEditingTest, ARemovedTokenTakesTheSpacesBehindItAlong)
{
    const auto without = [](const std::string& text, std::size_t index)
    { return edited(text, [index](Query& query) { return query.removeToken(index); }); };

    EXPECT_EQ(without("a b ", 1), "a ");
    EXPECT_EQ(without("a b ", 0), "b ");
    EXPECT_EQ(without("  a   b", 0), "  b");
    EXPECT_EQ(without("a", 0), "");
    EXPECT_EQ(without("a  ", 0), "");
    EXPECT_EQ(without("a b", 1), "a ");
}

TEST(QueryEditingTest, RemovingCutsARecordAtTheEndOfTheText)
{
    TestQuery query("abc", fixedTokens({token(1, HUGE_VALUE), token(3, 2), token(4, 1)}));

    EXPECT_TRUE(query.removeToken(1)); // nothing of it is in the text
    EXPECT_EQ(query.getQueryString(), "abc");
    expectInvalidPosition([&] { query.removeToken(2); });
    EXPECT_TRUE(query.removeToken(0));
    EXPECT_EQ(query.getQueryString(), "a");
}

TEST(QueryEditingTest, AnIndexBeyondTheTokensIsNeitherRemovedNorReplaced)
{
    TestQuery query("a b");
    const int calls = query.tokenizeCalls();

    for (const std::size_t index : {std::size_t{2}, std::size_t{7}, Query::invalidTokenIndex})
    {
        EXPECT_FALSE(query.removeToken(index));
        EXPECT_FALSE(query.replaceToken(index, "x"));
    }

    EXPECT_EQ(query.getQueryString(), "a b");
    EXPECT_EQ(query.tokenizeCalls(), calls);
}

TEST(QueryEditingTest, AReplacedTokenHasOneSpaceBehindIt)
{
    const auto replaced = [](const std::string& text, std::size_t index, const std::string& by)
    { return edited(text, [&](Query& query) { return query.replaceToken(index, by); }); };

    EXPECT_EQ(replaced("a   b", 0, "c"), "c b");
    EXPECT_EQ(replaced("a b", 0, "c"), "c b");
    EXPECT_EQ(replaced("a b", 1, "c"), "a c ");
    EXPECT_EQ(replaced("a   b   ", 1, "long"), "a   long ");
    EXPECT_EQ(replaced("  a", 0, " c "), "   c  ");
    EXPECT_EQ(replaced("a b", 0, ""), " b");
}

TEST(QueryEditingTest, AReplacedTokenThatTouchesTheNextIsPartedFromIt)
{
    TestQuery query("abcd", fixedTokens({token(0, 2), token(2, 2)}));

    EXPECT_TRUE(query.replaceToken(0, "x"));

    EXPECT_EQ(query.getQueryString(), "x cd");
}

TEST(QueryEditingTest, AReplacedTokenOfLengthZeroLosesItsGap)
{
    TestQuery query("ab   cd", fixedTokens({token(0, 2), token(3, 0), token(5, 2)}));

    EXPECT_TRUE(query.replaceToken(1, "x"));

    EXPECT_EQ(query.getQueryString(), "ab xcd");
}

TEST(QueryEditingTest, AnEditThatTheLanguageRefusesChangesNothing)
{
    TestQuery query("a  b");
    int changes = 0;
    const qua::Connection connection = query.connectChanged([&] { ++changes; });
    query.setTokenizer(refuseAll);

    EXPECT_FALSE(query.insertToken(0, "x"));
    EXPECT_FALSE(query.insertTokenString(0, "x"));
    EXPECT_FALSE(query.removeToken(0));
    EXPECT_FALSE(query.replaceToken(0, "x"));

    EXPECT_EQ(query.getQueryString(), "a  b");
    EXPECT_EQ(query.tokenCount(0), 2U);
    EXPECT_EQ(changes, 0);
}

TEST(QueryEditingTest, AnEditWithoutEffectIsTakenInSilence)
{
    TestQuery query("a b");
    int changes = 0;
    const qua::Connection connection = query.connectChanged([&] { ++changes; });
    query.setTokenizer(refuseAll);

    EXPECT_TRUE(query.replaceToken(0, "a"));

    EXPECT_EQ(changes, 0);
}

TEST(QueryEditingTest, ArgumentsMayBeTheQuerysOwnText)
{
    TestQuery query("a b");

    EXPECT_TRUE(query.replaceToken(0, query.getQueryString()));
    EXPECT_EQ(query.getQueryString(), "a b b");
    EXPECT_TRUE(query.insertToken(0, query.getQueryString()));
    EXPECT_EQ(query.getQueryString(), "a b b a b b");
    EXPECT_TRUE(query.insertTokenString(0, query.getQueryString()));
    EXPECT_EQ(query.getQueryString(), "a b b a b b a b b a b b");
}

TEST(QueryEditingTest, TheGapBehindATokenBecomesOneSpace)
{
    TestQuery query("a   b");
    const auto edit = [&](std::string text, std::size_t index)
    {
        PrivateEdits::normalizeSpaceAfterToken(query, text, index);
        return text;
    };

    EXPECT_EQ(edit("a   b", 0), "a b");
    EXPECT_EQ(edit("a   b", 1), "a   b ");
    EXPECT_EQ(edit("a   bcd", 1), "a   b ");
}

TEST(QueryEditingTest, TheGapBehindAMissingTokenIsReportedAndLeftAlone)
{
    TestQuery query("a   b");
    std::string text = "a   b";
    ExpectReports reports{"token != nullptr"};

    PrivateEdits::normalizeSpaceAfterToken(query, text, 2);

    EXPECT_EQ(text, "a   b");
    ASSERT_EQ(reports.reports().size(), 1U);
    EXPECT_EQ(reports.reports()[0].whole, "ASSERTION FAILED: token != nullptr\r\nquery/query.cpp(236)\r\n");
    EXPECT_TRUE(reports.reports()[0].critical);
}

TEST(QueryEditingTest, ErasingFromAForeignTextCutsAtItsEnd)
{
    const TestQuery query;
    std::string text = "ab   c";

    PrivateEdits::removeTokenFromString(query, text, token(1, 1));
    EXPECT_EQ(text, "ac");
    PrivateEdits::removeTokenFromString(query, text, token(2, 5));
    EXPECT_EQ(text, "ac");
    expectInvalidPosition([&] { PrivateEdits::removeTokenFromString(query, text, token(3, 0)); });
}

TEST(QueryEditingTest, NormalSpacesAreOneBehindEveryTokenAndLeadingOnesStay)
{
    EXPECT_EQ(withNormalSpaces("  a    b"), "  a b ");
    EXPECT_EQ(withNormalSpaces("a"), "a ");
    EXPECT_EQ(withNormalSpaces("a b "), "a b ");
    EXPECT_EQ(withNormalSpaces("a  b  "), "a b ");
    EXPECT_EQ(withNormalSpaces(""), "");
    EXPECT_EQ(withNormalSpaces("   "), "   ");
}

TEST(QueryEditingTest, AGapOfOtherCharactersBecomesASpaceToo)
{
    EXPECT_EQ(withNormalSpaces("a,b", fixedTokens({token(0, 1), token(2, 1)})), "a b ");
    EXPECT_EQ(withNormalSpaces("a\tb\t", splitExpression), "a b ");
    EXPECT_EQ(withNormalSpaces("ab", fixedTokens({token(0, 1), token(1, 1)})), "a b ");
}

TEST(QueryEditingTest, NoSpaceFollowsATokenOfLengthZero)
{
    EXPECT_EQ(withNormalSpaces("a   b  ", fixedTokens({token(0, 1), token(2, 0), token(4, 1), token(6, 0)})),
              "a b ");
    EXPECT_EQ(withNormalSpaces("  ", fixedTokens({token(0, 0)})), "");
}

TEST(QueryEditingTest, WhereRecordsOverlapAllBehindTheEarlierOneIsItsGap)
{
    EXPECT_EQ(withNormalSpaces("abcdef", fixedTokens({token(0, 4), token(2, 4)})), "abcd ");
    EXPECT_EQ(withNormalSpaces("abcdef", fixedTokens({token(3, 2), token(0, 4)})), "abcd  ");
    EXPECT_EQ(withNormalSpaces("abcdef", fixedTokens({token(3, 0), token(1, 5)})), "abc");
}

TEST(QueryEditingTest, NormalisingSpacesBehindTheEndOfTheTextThrows)
{
    TestQuery query("abc", fixedTokens({token(2, 2)}));

    expectInvalidPosition([&] { query.normalizeSpaces(); });
    expectInvalidPosition([&] { query.replaceToken(0, "x"); });
    EXPECT_EQ(query.getQueryString(), "abc");
    TestQuery cutBefore("abcdef", fixedTokens({token(3, 2), token(0, 1)}));
    expectInvalidPosition([&] { cutBefore.normalizeSpaces(); }); // the last token's gap took the first's end
}

TEST(QueryEditingTest, RefusedNormalSpacesAreReported)
{
    TestQuery query("a  b");
    query.setTokenizer(refuseAll);
    ExpectReports reports{"success"};

    query.normalizeSpaces();

    EXPECT_EQ(query.getQueryString(), "a  b");
    ASSERT_EQ(reports.reports().size(), 1U);
    EXPECT_EQ(reports.reports()[0].whole, "ASSERTION FAILED: success\r\nquery/query.cpp(230)\r\n");
    EXPECT_TRUE(reports.reports()[0].critical);
}

TEST(QueryEditingTest, EqualTokensHaveTheSameTypeAndValueBytes)
{
    const TestQuery query("ab ab aB abc");
    const auto equal = [&](Query::Token a, Query::Token b) { return query.isEqual(a, b); };

    EXPECT_TRUE(equal(token(0, 2), token(3, 2)));
    EXPECT_FALSE(equal(token(0, 2), token(6, 2)));
    EXPECT_FALSE(equal(token(0, 2), token(9, 3)));
    EXPECT_FALSE(equal(token(0, 2, 1), token(3, 2, 2)));
    EXPECT_TRUE(equal({0, 0, 1, 0, 2}, {0, 5, 9, 3, 2}));
    EXPECT_TRUE(equal({0, 0, 1, 12, 5}, {0, 0, 1, 3, 0}));
}

TEST(QueryEditingTest, ComparingValuesBeyondTheTextThrowsUnlessTheTypesDiffer)
{
    const TestQuery query("ab");

    EXPECT_FALSE(query.isEqual({1, 0, 0, 9, 1}, {2, 0, 0, 0, 1}));
    expectInvalidPosition([&] { return query.isEqual({1, 0, 0, 9, 1}, {1, 0, 0, 0, 1}); });
    expectInvalidPosition([&] { return query.isEqual({1, 0, 0, 0, 1}, {1, 0, 0, 3, 0}); });
}

TEST(QueryEditingTest, LaterRepetitionsGoWithTheSpacesBehindThem)
{
    EXPECT_EQ(withoutDublicates("a b a "), "a b ");
    EXPECT_EQ(withoutDublicates("a b a"), "a b ");
    EXPECT_EQ(withoutDublicates("a   a   b"), "a   b");
    EXPECT_EQ(withoutDublicates("a A"), "a A");
}

TEST(QueryEditingTest, AThirdEqualTokenAlsoTakesTextBehindIt)
{
    EXPECT_EQ(withoutDublicates("a a a"), "a ");
    EXPECT_EQ(withoutDublicates("a a a b"), "a ");
    EXPECT_EQ(withoutDublicates("a a a bc d"), "a c d");
    EXPECT_EQ(withoutDublicates("ab ab ab c d e"), "ab d e");
}

TEST(QueryEditingTest, ValuesDecideWhichTokensAreRepeated)
{
    EXPECT_EQ(withoutDublicates("\"a\" a", splitExpression), "\"a\" a");
    const auto sameValue = fixedTokens({{1, 0, 3, 1, 1}, {1, 4, 1, 4, 1}});
    EXPECT_EQ(withoutDublicates("\"a\" a b", sameValue), "\"a\" b");
    const auto otherType = fixedTokens({{1, 0, 1, 0, 1}, {2, 2, 1, 2, 1}});
    EXPECT_EQ(withoutDublicates("a a b", otherType), "a a b");
}

TEST(QueryEditingTest, FewerThanTwoTokensAreLeftAlone)
{
    TestQuery query("a", fixedTokens({token(5, 5)}));
    query.setTokenizer(refuseAll);
    const int calls = query.tokenizeCalls();

    query.removeDublicates();

    EXPECT_EQ(query.getQueryString(), "a");
    EXPECT_EQ(query.tokenizeCalls(), calls);
}

TEST(QueryEditingTest, RepetitionsThatCannotBeRemovedAreReported)
{
    TestQuery query("a a");
    query.setTokenizer(refuseAll);
    ExpectReports reports{"success"};

    query.removeDublicates();

    EXPECT_EQ(query.getQueryString(), "a a");
    ASSERT_EQ(reports.reports().size(), 1U);
    EXPECT_EQ(reports.reports()[0].whole, "ASSERTION FAILED: success\r\nquery/query.cpp(195)\r\n");
}

TEST(QueryEditingTest, RemovingRepetitionsBeyondTheTextThrows)
{
    TestQuery erased("ab", fixedTokens({{0, 0, 1, 0, 1}, {0, 3, 1, 0, 1}}));
    expectInvalidPosition([&] { erased.removeDublicates(); });
    TestQuery compared("ab", fixedTokens({{0, 0, 1, 0, 1}, {0, 1, 1, 3, 1}}));
    expectInvalidPosition([&] { compared.removeDublicates(); });
    TestQuery neither("ab", fixedTokens({{0, 0, 1, 0, 1}, {1, 3, 1, 9, 1}}));
    neither.removeDublicates();
    EXPECT_EQ(neither.getQueryString(), "ab");
}

TEST(QueryEditingTest, NormalisingDropsRepetitionsAndOrdersSpacesInUpToTwoSteps)
{
    TestQuery query("a  b   a");
    std::vector<std::string> heard;
    const qua::Connection connection = query.connectChanged([&] { heard.push_back(query.getQueryString()); });

    query.normalize();

    EXPECT_EQ(heard, (std::vector<std::string>{"a  b   ", "a b "}));
    EXPECT_EQ(normalized("  a"), "  a ");
    EXPECT_EQ(normalized(""), "");
}

} // namespace
