#include "tern_common/query/query.hpp"

#include "tests/support/naive_query.hpp"
#include "tests/support/random_seed.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_query.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

constexpr int OPERATIONS = 200'000;
constexpr int OPERATIONS_PER_QUERY = 50;
constexpr std::size_t HUGE_VALUE = std::numeric_limits<std::size_t>::max();

using Random = std::mt19937_64;

std::size_t below(Random& random, std::size_t bound)
{
    return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
}

std::string randomText(Random& random)
{
    static constexpr std::array<const char*, 14> PIECES{"a",  "b", "ab",    " ", " ",        "  ",  "\t",
                                                        "\"", "|", "\"a\"", "b", "\xC3\xB6", "a b", "-"};
    std::string text;
    for (std::size_t count = below(random, 12); count > 0; --count)
    {
        text += PIECES[below(random, PIECES.size())];
    }
    return text;
}

/// Anything from harmless to hostile: mostly near the text, sometimes so large that sums wrap round.
std::size_t randomOffset(Random& random, std::size_t size)
{
    return below(random, 12) == 0 ? HUGE_VALUE - below(random, size + 3) : below(random, size + 3);
}

Query::Token randomRecord(Random& random, std::size_t size)
{
    return {static_cast<int>(below(random, 2)), randomOffset(random, size), randomOffset(random, 3),
            randomOffset(random, size), below(random, 3)};
}

/// Records anywhere, in any order; the same for the same text.
Tokenizer lawlessTokenizer(std::size_t salt)
{
    return [salt](const std::string& text, std::vector<Query::Token>& tokens)
    {
        Random random(std::hash<std::string>()(text) ^ salt);
        for (std::size_t count = below(random, 7); count > 0; --count)
        {
            tokens.push_back(randomRecord(random, text.size()));
        }
        return below(random, 6) != 0;
    };
}

/// Records in order, which may touch, be empty and have their value anywhere in the text.
Tokenizer unusualTokenizer(std::size_t salt)
{
    return [salt](const std::string& text, std::vector<Query::Token>& tokens)
    {
        Random random(std::hash<std::string>()(text) ^ salt);
        for (std::size_t pos = below(random, 2); pos <= text.size(); pos += below(random, 3))
        {
            const std::size_t len = std::min(below(random, 3), text.size() - pos);
            tokens.push_back({0, pos, len, below(random, text.size() + 1), below(random, 2)});
            pos += len;
            if (below(random, 8) == 0)
            {
                break;
            }
        }
        return below(random, 6) != 0;
    };
}

/// Refuses some texts.
Tokenizer choosy(Tokenizer tokenizer, std::size_t salt)
{
    return
        [tokenizer = std::move(tokenizer), salt](const std::string& text, std::vector<Query::Token>& tokens)
    { return (std::hash<std::string>()(text) ^ salt) % 5 != 0 && tokenizer(text, tokens); };
}

Tokenizer randomTokenizer(Random& random)
{
    const std::size_t salt = random();
    switch (below(random, 6))
    {
    case 0:
        return splitWords;
    case 1:
        return splitExpression;
    case 2:
        return choosy(splitWords, salt);
    case 3:
        return choosy(splitExpression, salt);
    case 4:
        return unusualTokenizer(salt);
    default:
        return lawlessTokenizer(salt);
    }
}

/// What an operation did: its result, or that it threw.
template <class Operation>
auto outcomeOf(Operation operation)
{
    std::optional<decltype(operation())> outcome;
    try
    {
        outcome = operation();
    }
    catch (const std::out_of_range&)
    {
    }
    return outcome;
}

/// As above, for the query under test: the words are promised too.
template <class Operation>
auto wordedOutcomeOf(Operation operation)
{
    return outcomeOf(
        [&]
        {
            try
            {
                return operation();
            }
            catch (const std::out_of_range& error)
            {
                EXPECT_STREQ(error.what(), "invalid string position");
                throw;
            }
        });
}

class QueryModelTest : public testing::Test
{
protected:
    void start()
    {
        Tokenizer tokenizer = randomTokenizer(m_random);
        m_query = std::make_unique<TestQuery>(tokenizer);
        m_naive.emplace(std::move(tokenizer));
        m_changes = 0;
        m_connection = m_query->connectChanged([this] { ++m_changes; });
    }

    void step()
    {
        const CollectReports reports;
        switch (below(m_random, 10))
        {
        case 0:
            exchangeTokenizer();
            break;
        case 1:
        case 2:
            setText();
            break;
        case 3:
        case 4:
            insert();
            break;
        case 5:
            compareEdit([index = index()](auto& query) { return query.removeToken(index); });
            break;
        case 6:
            compareEdit([index = index(), by = randomText(m_random)](auto& query)
                        { return query.replaceToken(index, by); });
            break;
        default:
            tidy();
        }
        EXPECT_EQ(reports.texts(), m_naive->reports);
        m_naive->reports.clear();
        compareState();
    }

    Random m_random{randomSeed()};
    std::size_t m_thrown = 0;
    std::size_t m_taken = 0;

private:
    std::size_t index()
    {
        return below(m_random, 15) == 0 ? HUGE_VALUE : below(m_random, m_naive->tokens.size() + 2);
    }

    void exchangeTokenizer()
    {
        Tokenizer tokenizer = randomTokenizer(m_random);
        m_query->setTokenizer(tokenizer);
        m_naive->setTokenizer(std::move(tokenizer));
    }

    void setText()
    {
        const std::string text = below(m_random, 8) == 0 ? m_naive->text : randomText(m_random);
        compareEdit([&](auto& query) { return query.setQueryString(text); });
    }

    void insert()
    {
        const std::string inserted = randomText(m_random);
        if (below(m_random, 2) == 0)
        {
            compareEdit([&, index = index()](auto& query) { return query.insertToken(index, inserted); });
        }
        else
        {
            const std::size_t pos = randomOffset(m_random, m_naive->text.size());
            compareEdit([&](auto& query) { return query.insertTokenString(pos, inserted); });
        }
    }

    void tidy()
    {
        const std::size_t kind = below(m_random, 3);
        compareEdit(
            [kind](auto& query)
            {
                switch (kind)
                {
                case 0:
                    query.removeDublicates();
                    break;
                case 1:
                    query.normalizeSpaces();
                    break;
                default:
                    query.normalize();
                }
                return true;
            });
    }

    template <class Edit>
    void compareEdit(Edit edit)
    {
        const std::optional<bool> expected = outcomeOf([&] { return edit(*m_naive); });
        EXPECT_EQ(wordedOutcomeOf([&] { return edit(*m_query); }), expected);
        m_thrown += expected.has_value() ? 0U : 1U;
        m_taken += expected.value_or(false) ? 1U : 0U;
    }

    void compareState()
    {
        ASSERT_EQ(m_query->getQueryString(), m_naive->text);
        ASSERT_EQ(m_changes, m_naive->changes);
        const std::vector<Query::Token>& tokens = m_naive->tokens;
        ASSERT_EQ(m_query->tokenCount(static_cast<int>(below(m_random, 4)) - 1), tokens.size());
        for (std::size_t index = 0; index < tokens.size(); ++index)
        {
            compareToken(index, tokens[index]);
        }
        const std::size_t pos = randomOffset(m_random, m_naive->text.size());
        EXPECT_EQ(m_query->getTokenIndexAt(pos), m_naive->getTokenIndexAt(pos));
        compareRecords(randomRecord(m_random, m_naive->text.size()),
                       randomRecord(m_random, m_naive->text.size()));
    }

    void compareToken(std::size_t index, const Query::Token& token)
    {
        EXPECT_EQ(m_query->getTokenType(index), token.type);
        EXPECT_EQ(m_query->getTokenPos(index), token.pos);
        EXPECT_EQ(m_query->getTokenLen(index), token.len);
        EXPECT_EQ(wordedOutcomeOf([&] { return m_query->getTokenString(index); }),
                  outcomeOf([&] { return m_naive->text.substr(token.pos, token.len); }));
        EXPECT_EQ(wordedOutcomeOf([&] { return m_query->getTokenValue(index); }),
                  outcomeOf([&] { return m_naive->text.substr(token.valuePos, token.valueLen); }));
    }

    void compareRecords(const Query::Token& a, const Query::Token& b)
    {
        EXPECT_EQ(wordedOutcomeOf([&] { return m_query->isEqual(a, b); }),
                  outcomeOf([&] { return m_naive->isEqual(a, b); }));
    }

    std::unique_ptr<TestQuery> m_query;
    std::optional<NaiveQuery> m_naive;
    qua::Connection m_connection;
    int m_changes = 0;
};

TEST_F(QueryModelTest, BehavesLikeTheRulesWrittenOutUnderAnyTokeniser)
{
    for (int done = 0; done < OPERATIONS && !HasFailure(); ++done)
    {
        if (done % OPERATIONS_PER_QUERY == 0)
        {
            start();
        }
        step();
        ASSERT_FALSE(HasFailure()) << "after " << done << " operations";
    }
    // The run was worth something: edits were taken, and tokenisers misbehaved.
    EXPECT_GT(m_taken, OPERATIONS / 4U);
    EXPECT_GT(m_thrown, OPERATIONS / 100U);
}

} // namespace
