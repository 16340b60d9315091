#include "editor/search/filter_suggestions.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace
{

using Texts = std::vector<std::string>;

const FilterVocabulary& vocabulary()
{
    static const FilterVocabulary words{
        {"Bridge", "heavy loader", "tower", "-odd"},
        {{"type", {"vehicle", "building", "heavy vehicle"}}, {"tier", {"1", "2", "10"}}}};
    return words;
}

/// The suggestions where @p text has its '|'.
Texts at(std::string text, std::size_t limit = 10)
{
    const std::size_t cursor = text.find('|');
    text.erase(cursor, 1);
    FilterQuery query;
    EXPECT_TRUE(query.setQueryString(text));
    return suggestTokens(query, cursor, vocabulary(), limit);
}

TEST(FilterSuggestionsTest, CompletesAWordToKeysThenWords)
{
    EXPECT_EQ(at("t|"), (Texts{"type:", "tier:", "tower"}));
    EXPECT_EQ(at("b|"), Texts{"Bridge"});
    EXPECT_EQ(at("H|"), Texts{"\"heavy loader\""});
    EXPECT_EQ(at("x|"), Texts{});
}

TEST(FilterSuggestionsTest, CompletesAFieldToTheValuesOfItsKey)
{
    EXPECT_EQ(at("type:|"), (Texts{"type:vehicle", "type:building", "type:\"heavy vehicle\""}));
    EXPECT_EQ(at("TIER:1|"), (Texts{"tier:1", "tier:10"}));
    EXPECT_EQ(at("tier:1|"), Texts{"tier:10"}); // never what is there
    EXPECT_EQ(at("type:\"heavy |"), Texts{"type:\"heavy vehicle\""});
    EXPECT_EQ(at("colour:|"), Texts{});
    EXPECT_EQ(at(":|"), Texts{});
}

TEST(FilterSuggestionsTest, CompletesAQuotedTextToWords)
{
    EXPECT_EQ(at("\"t|"), Texts{"\"tower\""});
    EXPECT_EQ(at("\"heavy l|oader\""), Texts{});
    EXPECT_EQ(at("\"heavy l|"), Texts{"\"heavy loader\""});
}

TEST(FilterSuggestionsTest, KeepsTheNegation)
{
    EXPECT_EQ(at("-ti|"), Texts{"-tier:"});
    EXPECT_EQ(at("-type:v|"), Texts{"-type:vehicle"});
    EXPECT_EQ(at("-|", 2), (Texts{"-type:", "-tier:"}));
    EXPECT_EQ(at("--|"), Texts{"-\"-odd\""});
}

TEST(FilterSuggestionsTest, LooksOnlyAtWhatStandsInFrontOfTheCursor)
{
    EXPECT_EQ(at("ty|zzz:2"), Texts{"type:"});
    EXPECT_EQ(at("road t|ow gate"), (Texts{"type:", "tier:", "tower"}));
}

TEST(FilterSuggestionsTest, OffersNothingOutsideAllTokensOrBeyondTheLimit)
{
    EXPECT_EQ(at("|t"), Texts{});
    EXPECT_EQ(at("a |"), Texts{});
    EXPECT_EQ(at("|"), Texts{});
    EXPECT_EQ(at("t|", 2), (Texts{"type:", "tier:"}));
    EXPECT_EQ(at("t|", 0), Texts{});
}

TEST(FilterSuggestionsTest, ASuggestionTakesTheTokensPlace)
{
    FilterQuery query;
    ASSERT_TRUE(query.setQueryString("road -ty gate"));

    ASSERT_TRUE(query.replaceToken(query.getTokenIndexAt(8), suggestTokens(query, 8, vocabulary()).front()));

    EXPECT_EQ(query.getQueryString(), "road -type: gate");
}

} // namespace
