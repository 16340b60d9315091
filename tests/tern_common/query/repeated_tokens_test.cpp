#include "tern_common/query/token_text.hpp"

#include "tests/support/naive_query.hpp"
#include "tests/support/random_seed.hpp"
#include "tests/support/test_query.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace
{

constexpr std::size_t TEXTS = 500'000;

using Random = std::mt19937_64;

std::size_t below(Random& random, std::size_t bound)
{
    return static_cast<std::size_t>(random() % bound);
}

struct Tokenized
{
    std::string text;
    std::vector<Query::Token> tokens;
};

/// A text made of few different tokens, so that ties are the rule; some have length 0, some touch, some have
/// a value that is only a part of them or lies elsewhere.
Tokenized randomText(Random& random)
{
    static const std::vector<std::string> words{
        "a",  "b",    "ab",    "",         "aa",        "\"a\"",      "long word, longer still",
        "ba", "wxyz", "wxxyz", "12345678", "123456789", "12345678901"};
    static const std::vector<std::string> gaps{" ", " ", " ", "", "  ", "\t", " , ", "   "};
    const std::size_t variety = 1 + below(random, words.size());
    const std::size_t gapVariety = 1 + below(random, gaps.size());

    Tokenized result;
    result.text = gaps[below(random, gaps.size())];
    const bool many = below(random, 5) == 0; // enough for the table of tokens
    for (std::size_t count = many ? 25 + below(random, 20) : below(random, 13); count > 0; --count)
    {
        const std::string& word = words[below(random, variety)];
        const std::size_t pos = result.text.size();
        const bool quoted = word == "\"a\"";
        result.tokens.push_back({static_cast<int>(below(random, 8) == 0), pos, word.size(),
                                 quoted ? pos + 1 : pos, quoted ? 1 : word.size()});
        result.text += word + gaps[below(random, gapVariety)];
    }
    result.text += gaps[below(random, gaps.size())];
    if (!result.tokens.empty() && below(random, 10) == 0)
    {
        result.tokens[below(random, result.tokens.size())].valuePos = below(random, result.text.size() + 1);
    }
    return result;
}

std::string byPairs(const Tokenized& input)
{
    NaiveQuery naive(fixedTokens(input.tokens));
    naive.setQueryString(input.text);
    naive.setTokenizer([](const std::string&, std::vector<Query::Token>&) { return true; });
    naive.removeDublicates();
    return naive.text;
}

/// What one would write who did not know the rule: each repetition goes once.
std::string byDroppingRepetitions(const Tokenized& input)
{
    std::string text = input.text;
    std::vector<const Query::Token*> repeated;
    std::set<std::pair<int, std::string>> seen;
    for (const Query::Token& token : input.tokens)
    {
        if (!seen.emplace(token.type, input.text.substr(token.valuePos, token.valueLen)).second)
        {
            repeated.push_back(&token);
        }
    }
    for (auto token = repeated.rbegin(); token != repeated.rend(); ++token)
    {
        NaiveQuery::removeTokenFromString(text, **token);
    }
    return text;
}

TEST(RepeatedTokensTest, OnePassGivesTheTextOfTheDoubleLoop)
{
    Random random(randomSeed());
    std::size_t differing = 0;
    for (std::size_t done = 0; done < TEXTS; ++done)
    {
        const Tokenized input = randomText(random);
        ASSERT_TRUE(TernCommonDetail::liesInOrder(input.text.size(), input.tokens));
        const std::string expected = byPairs(input);

        ASSERT_EQ(TernCommonDetail::withoutRepetitions(input.text, input.tokens), expected)
            << "from '" << input.text << "', text " << done;

        differing += byDroppingRepetitions(input) != expected ? 1U : 0U;
    }
    // The texts tell the rule from the simpler one that it is easily taken for.
    EXPECT_GT(differing, TEXTS / 5);
}

TEST(RepeatedTokensTest, NormalSpacesInOnePassAreThoseMadeTokenByToken)
{
    Random random(randomSeed());
    std::size_t differing = 0;
    for (std::size_t done = 0; done < TEXTS / 5; ++done)
    {
        const Tokenized input = randomText(random);
        NaiveQuery naive(fixedTokens(input.tokens));
        naive.setQueryString(input.text);
        naive.normalizeSpaces();

        ASSERT_EQ(TernCommonDetail::withNormalSpaces(input.text, input.tokens), naive.text)
            << "from '" << input.text << "', text " << done;

        differing += naive.text != input.text ? 1U : 0U;
    }
    EXPECT_GT(differing, TEXTS / 10);
}

TEST(RepeatedTokensTest, LongTextsOfManyEqualTokensAgreeToo)
{
    Random random(randomSeed());
    for (const std::size_t count : {24U, 25U, 100U, 400U})
    {
        Tokenized input;
        for (std::size_t index = 0; index < count; ++index)
        {
            const std::string word = "key" + std::to_string(below(random, count / 2));
            input.tokens.push_back(token(input.text.size(), word.size()));
            input.text += word + " ";
        }
        EXPECT_EQ(TernCommonDetail::withoutRepetitions(input.text, input.tokens), byPairs(input));
    }
}

TEST(RepeatedTokensTest, RecordsAreInOrderOnlyInsideTheTextAndWithoutOverlap)
{
    const auto inOrder = [](std::vector<Query::Token> tokens)
    { return TernCommonDetail::liesInOrder(10, tokens); };
    constexpr std::size_t HUGE_VALUE = static_cast<std::size_t>(-1);

    EXPECT_TRUE(inOrder({}));
    EXPECT_TRUE(inOrder({token(0, 10)}));
    EXPECT_TRUE(inOrder({token(0, 3), token(3, 0), token(3, 7), token(10, 0)}));
    EXPECT_FALSE(inOrder({token(0, 3), token(2, 1)}));
    EXPECT_FALSE(inOrder({token(3, 1), token(0, 1)}));
    EXPECT_FALSE(inOrder({token(3, 1), token(3, 1)}));
    EXPECT_FALSE(inOrder({token(9, 2)}));
    EXPECT_FALSE(inOrder({token(11, 0)}));
    EXPECT_FALSE(inOrder({token(5, HUGE_VALUE)}));
    EXPECT_FALSE(inOrder({token(HUGE_VALUE, 5)}));
    EXPECT_FALSE(inOrder({{0, 0, 1, 11, 0}}));
    EXPECT_TRUE(inOrder({{0, 0, 1, 10, HUGE_VALUE}}));
}

} // namespace
