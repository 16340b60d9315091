#include "editor/search/filter_query.hpp"

#include "tern_common/query/query_controller.hpp"
#include "tests/support/fake_query_edit.hpp"
#include "tests/support/random_seed.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Kind = FilterMark::Kind;
using Marks = std::vector<FilterMark>;
using Texts = std::vector<std::string>;

FilterQuery& filled(FilterQuery& query, const std::string& text)
{
    EXPECT_TRUE(query.setQueryString(text)) << text;
    return query;
}

Texts tokensOf(const std::string& text)
{
    FilterQuery query;
    filled(query, text);
    Texts tokens;
    for (std::size_t index = 0; index < query.tokenCount(0); ++index)
    {
        tokens.push_back(query.getTokenString(index));
    }
    return tokens;
}

/// The only term of a text.
FilterTerm termOf(const std::string& text)
{
    FilterQuery query;
    filled(query, text);
    EXPECT_EQ(query.terms().size(), 1U) << text;
    return query.terms().empty() ? FilterTerm{} : query.terms().front();
}

Marks marksOf(const std::string& text)
{
    FilterQuery query;
    return filled(query, text).marks();
}

std::string normalized(const std::string& text)
{
    FilterQuery query;
    filled(query, text).normalize();
    return query.getQueryString();
}

FilterTerm word(std::string value, bool negated = false)
{
    return {negated, false, false, "", std::move(value)};
}

FilterTerm field(std::string key, std::string value, bool negated = false)
{
    return {negated, true, false, std::move(key), std::move(value)};
}

TEST(FilterQueryTest, SplitsWordsFieldsAndQuotedTexts)
{
    EXPECT_EQ(tokensOf("type:vehicle -tier:2 \"heavy loader\""),
              (Texts{"type:vehicle", "-tier:2", "\"heavy loader\""}));
    EXPECT_EQ(tokensOf("  a\tb\r\nc "), (Texts{"a", "b", "c"}));
    EXPECT_EQ(tokensOf("a\"b c\"d"), (Texts{"a", "\"b c\"", "d"}));
    EXPECT_EQ(tokensOf("key:\"b c\"d"), (Texts{"key:\"b c\"", "d"}));
    EXPECT_EQ(tokensOf("\"a\"\"b\""), (Texts{"\"a\"", "\"b\""}));
    EXPECT_EQ(tokensOf(" \t"), Texts{});
}

TEST(FilterQueryTest, UnderstandsEachToken)
{
    EXPECT_EQ(termOf("gr\xC3\xB6\xC3\x9F"
                     "e"),
              word("gr\xC3\xB6\xC3\x9F"
                   "e"));
    EXPECT_EQ(termOf("-a"), word("a", true));
    EXPECT_EQ(termOf("--a"), word("-a", true));
    EXPECT_EQ(termOf("a-b"), word("a-b"));
    EXPECT_EQ(termOf("a\\b"), word("a\\b"));
    EXPECT_EQ(termOf("\"a b\""), word("a b"));
    EXPECT_EQ(termOf("-\"a b\""), word("a b", true));
    EXPECT_EQ(termOf("\"a:b\""), word("a:b"));
    EXPECT_EQ(termOf("\"say \\\"hi\\\" \\\\ bye\""), word("say \"hi\" \\ bye"));
    EXPECT_EQ(termOf("type:vehicle"), field("type", "vehicle"));
    EXPECT_EQ(termOf("-type:\"a \\\"b\""), field("type", "a \"b", true));
    EXPECT_EQ(termOf("time:12:30"), field("time", "12:30"));
    EXPECT_EQ(termOf("note:\"\""), field("note", ""));
}

TEST(FilterQueryTest, TypesTellApartWhatIsNotTheSame)
{
    FilterQuery query;
    filled(query, "a \"a\" a:a -a -\"a\" -a:a");
    for (const int type : {FilterQuery::Word, FilterQuery::Phrase, FilterQuery::Field,
                           FilterQuery::NegatedWord, FilterQuery::NegatedPhrase, FilterQuery::NegatedField})
    {
        EXPECT_EQ(query.getTokenType(static_cast<std::size_t>(type)), type);
    }
    EXPECT_EQ(query.getTokenValue(1), "a");
    EXPECT_EQ(query.getTokenValue(2),
              "a:a"); // with the key: the same value under another key is another token
    EXPECT_EQ(query.getTokenValue(4), "a");
}

TEST(FilterQueryTest, MarksWhatIsHalfTypedByItsPlace)
{
    EXPECT_EQ(marksOf("a b:c \"d\" -e f:\"\""), Marks{});
    EXPECT_EQ(marksOf("a \"b c"), (Marks{{Kind::UnterminatedQuote, 2, 4}}));
    EXPECT_EQ(marksOf("a k:\"b"), (Marks{{Kind::UnterminatedQuote, 4, 2}}));
    EXPECT_EQ(marksOf("\""), (Marks{{Kind::UnterminatedQuote, 0, 1}}));
    EXPECT_EQ(marksOf("\"a\\\""), (Marks{{Kind::UnterminatedQuote, 0, 4}}));
    EXPECT_EQ(marksOf("a :b"), (Marks{{Kind::EmptyKey, 2, 1}}));
    EXPECT_EQ(marksOf("a -b:"), (Marks{{Kind::EmptyValue, 3, 2}}));
    EXPECT_EQ(marksOf(":"), (Marks{{Kind::EmptyKey, 0, 1}, {Kind::EmptyValue, 0, 1}}));
    EXPECT_EQ(marksOf("a - b"), (Marks{{Kind::LoneNegation, 2, 1}}));
    EXPECT_EQ(marksOf("a -"), (Marks{{Kind::LoneNegation, 2, 1}}));
    EXPECT_EQ(marksOf("\"\" -\"\""), (Marks{{Kind::EmptyPhrase, 0, 2}, {Kind::EmptyPhrase, 4, 2}}));
    EXPECT_EQ(marksOf("\"a\\nb\""), (Marks{{Kind::UnknownEscape, 2, 2}}));
    EXPECT_EQ(marksOf("\"a\\nb"), (Marks{{Kind::UnterminatedQuote, 0, 5}, {Kind::UnknownEscape, 2, 2}}));
}

TEST(FilterQueryTest, IgnoresTermsOfWhichTooLittleIsTyped)
{
    for (const char* const text : {"-", "\"", "\"\"", "-\"", "a:", ":", ":a", "a:\"", ":\"a\""})
    {
        EXPECT_TRUE(termOf(text).ignored) << text;
    }
    for (const char* const text : {"a", "\"a", "a:b", "a:\"\"", "a:\"b", "\"\\n\""})
    {
        EXPECT_FALSE(termOf(text).ignored) << text;
    }
}

TEST(FilterQueryTest, IsCompleteWhenNothingIsMarked)
{
    FilterQuery query;
    EXPECT_TRUE(query.isComplete());
    EXPECT_FALSE(filled(query, "a:").isComplete());
    EXPECT_TRUE(filled(query, "a:b").isComplete());
}

TEST(FilterQueryTest, RefusesControlCharactersAndKeepsTermsAndMarks)
{
    FilterQuery query;
    filled(query, "a:");

    for (const std::string& text : {std::string("b\0", 2), std::string("b\x1b"), std::string("b\x7f")})
    {
        EXPECT_FALSE(query.setQueryString(text));
    }

    EXPECT_EQ(query.getQueryString(), "a:");
    EXPECT_EQ(query.terms().size(), 1U);
    EXPECT_EQ(query.marks().size(), 1U);
}

TEST(FilterQueryTest, NormalisingDropsRepetitionsAndOrdersSpaces)
{
    EXPECT_EQ(normalized("  a \t b  a"), "a b ");
    EXPECT_EQ(normalized("a\"b\"c"), "a \"b\" c ");
    EXPECT_EQ(normalized("a -a a:a \"a\" a:b"), "a -a a:a \"a\" a:b ");
    EXPECT_EQ(normalized("   "), "");
    EXPECT_EQ(normalized(""), "");
}

TEST(FilterQueryTest, NormalisingThreeEqualTokensSparesTheirNeighbours)
{
    EXPECT_EQ(normalized("a a a b"), "a b ");
    EXPECT_EQ(normalized("tree tree tree bridge"), "tree bridge ");
}

TEST(FilterQueryTest, NormalisingClosesAnOpenQuote)
{
    EXPECT_EQ(normalized("a \"b c"), "a \"b c\" ");
    EXPECT_EQ(normalized("k:\"b"), "k:\"b\" ");
    EXPECT_EQ(normalized("\"b\\"), "\"b\\\\\" ");
    EXPECT_EQ(normalized("\"b\\\\"), "\"b\\\\\" ");
    EXPECT_EQ(normalized("\"b\\\""), "\"b\\\"\" ");
    EXPECT_EQ(normalized("\"b\" \"b"), "\"b\" ");
}

TEST(FilterQueryTest, NormalisingIsAnnouncedOnceAndSurvivesAListenerThatDestroysTheQuery)
{
    auto query = std::make_unique<FilterQuery>();
    filled(*query, "a   a   b");
    int heard = 0;
    const qua::Connection connection = query->connectChanged(
        [&]
        {
            ++heard;
            query.reset();
        });

    query->normalize();

    EXPECT_EQ(heard, 1);
    EXPECT_EQ(query, nullptr);
}

TEST(FilterQueryTest, MakesTokensThatAskForAnyText)
{
    EXPECT_EQ(FilterQuery::wordToken("loader"), "loader");
    EXPECT_EQ(FilterQuery::wordToken("heavy loader"), "\"heavy loader\"");
    EXPECT_EQ(FilterQuery::wordToken("-x"), "\"-x\"");
    EXPECT_EQ(FilterQuery::wordToken("a:b"), "\"a:b\"");
    EXPECT_EQ(FilterQuery::wordToken(""), "\"\"");
    EXPECT_EQ(FilterQuery::fieldToken("k", "-a:b"), "k:-a:b");
    EXPECT_EQ(FilterQuery::fieldToken("k", ""), "k:\"\"");
    for (const char* const text : {"a", "-a", "a b", "a\"b", "\\", "a\\\"b\\\\", ":", "\xE6\xA9\x8B"})
    {
        EXPECT_EQ(termOf(FilterQuery::wordToken(text)), word(text)) << text;
        EXPECT_EQ(termOf(FilterQuery::quoted(text)), word(text)) << text;
        EXPECT_EQ(termOf(FilterQuery::fieldToken("k", text)), field("k", text)) << text;
    }
}

/// Random texts of the characters that mean something.
class FilterQueryRandomTest : public testing::Test
{
protected:
    static constexpr int TEXTS = 50'000;

    std::string randomText()
    {
        static constexpr std::array<const char*, 12> PIECES{"a", "b", " ",  "  ",       "\"",  "\\",
                                                            "-", ":", "\t", "\xC3\xA9", "a b", "\"a\""};
        std::string text;
        for (std::size_t count = m_random() % 12; count > 0; --count)
        {
            text += PIECES[m_random() % PIECES.size()];
        }
        return text;
    }

    std::mt19937_64 m_random{randomSeed()};
};

TEST_F(FilterQueryRandomTest, TokensAreInOrderAndCoverAllButBlanks)
{
    FilterQuery query;
    for (int done = 0; done < TEXTS; ++done)
    {
        const std::string text = randomText();
        filled(query, text);
        ASSERT_EQ(query.terms().size(), query.tokenCount(0)) << text;
        std::size_t end = 0;
        for (std::size_t index = 0; index < query.tokenCount(0); ++index)
        {
            const std::size_t pos = query.getTokenPos(index);
            ASSERT_GE(pos, end) << text;
            ASSERT_GT(query.getTokenLen(index), 0U) << text;
            ASSERT_EQ(text.substr(end, pos - end).find_first_not_of(" \t"), std::string::npos) << text;
            end = pos + query.getTokenLen(index);
        }
        ASSERT_EQ(text.find_first_not_of(" \t", end), std::string::npos) << text;
        for (const FilterMark& mark : query.marks())
        {
            ASSERT_LE(mark.pos + mark.len, text.size()) << text;
            ASSERT_GT(mark.len, 0U) << text;
        }
        const auto byPlace = [](const FilterMark& a, const FilterMark& b) { return a.pos < b.pos; };
        ASSERT_TRUE(std::is_sorted(query.marks().begin(), query.marks().end(), byPlace)) << text;
    }
}

TEST_F(FilterQueryRandomTest, NormalisingKeepsWhatIsAskedAndDoneTwiceChangesNothing)
{
    using Asked = std::set<std::pair<std::pair<bool, bool>, std::pair<std::string, std::string>>>;
    const auto askedBy = [](const FilterQuery& query)
    {
        Asked asked;
        for (const FilterTerm& term : query.terms())
        {
            if (!term.ignored)
            {
                asked.insert({{term.negated, term.field}, {term.key, term.value}});
            }
        }
        return asked;
    };
    FilterQuery query;
    for (int done = 0; done < TEXTS; ++done)
    {
        const std::string text = randomText();
        filled(query, text);
        const Asked before = askedBy(query);
        const bool opened = std::any_of(query.terms().begin(), query.terms().end(),
                                        [](const FilterTerm& term) { return term.ignored && term.field; });

        query.normalize();
        if (!opened) // quotes just opened behind a key, once closed, ask for the empty value
        {
            ASSERT_EQ(askedBy(query), before) << text;
        }
        const std::string once = query.getQueryString();
        query.normalize();
        ASSERT_EQ(query.getQueryString(), once) << text;
    }
}

TEST_F(FilterQueryRandomTest, EveryStateOfTypingIsTakenAndShown)
{
    FakeQueryEdit edit;
    QueryController controller;
    controller.setQuery(std::make_unique<FilterQuery>());
    controller.setEdit(&edit);
    for (int done = 0; done < TEXTS / 50; ++done)
    {
        edit.enter("");
        const std::string text = randomText();
        for (std::size_t typed = 1; typed <= text.size(); ++typed)
        {
            edit.type(text.substr(typed - 1, 1));
            ASSERT_EQ(edit.text(), text.substr(0, typed));
            ASSERT_EQ(controller.query()->getQueryString(), edit.text());
        }
    }
}

TEST_F(FilterQueryRandomTest, ReplacingATokenByAQuotedOneLeavesTheOthersAlone)
{
    FilterQuery query;
    for (int done = 0; done < TEXTS / 10; ++done)
    {
        const std::string text = randomText();
        Texts expected = tokensOf(text);
        for (std::size_t index = 0; index < expected.size(); ++index)
        {
            filled(query, text);
            const std::size_t pos = query.getTokenPos(index);
            if (pos > 0 && text[pos - 1] == ':')
            {
                continue; // cannot be: quotes behind a colon are its value
            }
            const std::string replaced = std::exchange(expected[index], FilterQuery::quoted("new one"));
            ASSERT_TRUE(query.replaceToken(index, expected[index]));
            ASSERT_EQ(tokensOf(query.getQueryString()), expected) << text;
            expected[index] = replaced;
        }
    }
}

} // namespace
