#include "tern_common/query/query.hpp"

#include "tests/support/reports.hpp"
#include "tests/support/test_query.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

static_assert(std::is_abstract_v<Query> && std::has_virtual_destructor_v<Query>);
static_assert(!std::is_copy_constructible_v<TestQuery> && !std::is_copy_assignable_v<TestQuery>);
static_assert(!std::is_move_constructible_v<TestQuery> && !std::is_move_assignable_v<TestQuery>);
static_assert(std::is_same_v<decltype(Query::invalidTokenIndex), const std::size_t>);
static_assert(std::is_same_v<decltype(Query::invalidTokenType), const int>);
static_assert(Query::invalidTokenIndex == std::numeric_limits<std::size_t>::max());
static_assert(Query::invalidTokenType == -1);

static_assert(std::is_trivially_copyable_v<Query::Token> && std::is_standard_layout_v<Query::Token>);
static_assert(std::is_same_v<decltype(Query::Token::type), std::int32_t>);
static_assert(offsetof(Query::Token, type) < offsetof(Query::Token, pos) &&
              offsetof(Query::Token, pos) < offsetof(Query::Token, len) &&
              offsetof(Query::Token, len) < offsetof(Query::Token, valuePos) &&
              offsetof(Query::Token, valuePos) < offsetof(Query::Token, valueLen));

constexpr std::size_t HUGE_VALUE = std::numeric_limits<std::size_t>::max();
constexpr std::size_t INVALID = Query::invalidTokenIndex;

/// Runs @p call, which must throw std::out_of_range in the words promised on every platform.
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

#if defined(__GXX_ABI_VERSION) && defined(__x86_64__)
/// The place of a virtual member function in the virtual table. The destructor takes the first two.
template <class Member>
std::size_t slotOf(Member member)
{
    const auto parts = std::bit_cast<std::array<std::uintptr_t, 2>>(member);
    return (parts[0] - 1) / sizeof(void*) - 1;
}

TEST(QueryTest, VirtualOperationsStandInTheOrderOfTheHeader)
{
    struct Opened : TestQuery
    {
        static auto tokenizer() { return &Opened::tokenize; }
    };
    EXPECT_EQ(slotOf(&Query::normalize), 1U);
    EXPECT_EQ(slotOf(&Query::isComplete), 2U);
    EXPECT_EQ(slotOf(Opened::tokenizer()), 3U);
}
#endif

TEST(QueryTest, StartsEmpty)
{
    const TestQuery query;

    EXPECT_EQ(query.getQueryString(), "");
    EXPECT_EQ(query.tokenCount(0), 0U);
    EXPECT_EQ(query.tokenizeCalls(), 0);
}

TEST(QueryTest, TakesATextWithItsTokensAndAnnouncesItAfterwards)
{
    TestQuery query;
    std::vector<std::string> heard;
    const qua::Connection connection = query.connectChanged(
        [&] { heard.push_back(query.getQueryString() + "/" + query.getTokenString(1)); });

    EXPECT_TRUE(query.setQueryString("road bridge"));

    EXPECT_EQ(heard, (std::vector<std::string>{"road bridge/bridge"}));
}

TEST(QueryTest, TheTextItHoldsIsTakenInSilenceEvenIfTheLanguageWouldRefuseItNow)
{
    TestQuery query("road");
    int changes = 0;
    const qua::Connection connection = query.connectChanged([&] { ++changes; });
    query.setTokenizer([](const std::string&, std::vector<Query::Token>&) { return false; });
    const int calls = query.tokenizeCalls();

    EXPECT_TRUE(query.setQueryString("road"));
    EXPECT_TRUE(query.setQueryString(query.getQueryString()));

    EXPECT_EQ(changes, 0);
    EXPECT_EQ(query.tokenizeCalls(), calls);
}

TEST(QueryTest, TheEmptyTextOfANewQueryIsHeldAlready)
{
    TestQuery query([](const std::string&, std::vector<Query::Token>&) { return false; });

    EXPECT_TRUE(query.setQueryString(""));

    EXPECT_EQ(query.tokenizeCalls(), 0);
}

TEST(QueryTest, TextsAreComparedWithTheirZeroBytes)
{
    TestQuery query(std::string("a\0b", 3));

    EXPECT_TRUE(query.setQueryString(std::string("a\0c", 3)));

    EXPECT_EQ(query.getQueryString(), std::string("a\0c", 3));
    EXPECT_EQ(query.tokenizeCalls(), 2);
}

TEST(QueryTest, ARefusedTextChangesNothing)
{
    TestQuery query("road bridge");
    int changes = 0;
    const qua::Connection connection = query.connectChanged([&] { ++changes; });
    query.setTokenizer(
        [](const std::string&, std::vector<Query::Token>& tokens)
        {
            tokens.push_back(token(0, 1));
            return false;
        });

    EXPECT_FALSE(query.setQueryString("x"));

    EXPECT_EQ(query.getQueryString(), "road bridge");
    EXPECT_EQ(tokenStrings(query), (std::vector<std::string>{"road", "bridge"}));
    EXPECT_EQ(changes, 0);
}

TEST(QueryTest, AnExceptionOfTheTokeniserChangesNothing)
{
    TestQuery query("road");
    query.setTokenizer([](const std::string&, std::vector<Query::Token>&) -> bool
                       { throw std::runtime_error("out of words"); });

    EXPECT_THROW(query.setQueryString("x"), std::runtime_error);

    EXPECT_EQ(query.getQueryString(), "road");
    EXPECT_EQ(query.tokenCount(0), 1U);
}

TEST(QueryTest, TheTokeniserGetsAnEmptyListEachTime)
{
    TestQuery query(
        [](const std::string&, std::vector<Query::Token>& tokens)
        {
            EXPECT_TRUE(tokens.empty());
            tokens.push_back(token(0, 1));
            return true;
        });
    query.setQueryString("a");
    query.setQueryString("b");

    EXPECT_EQ(query.tokenCount(0), 1U);
}

TEST(QueryTest, CountsTokensOfWhateverTypeIsAskedFor)
{
    const TestQuery query("a", fixedTokens({token(0, 1, 5), token(0, 1, 7)}));

    EXPECT_EQ(query.tokenCount(5), 2U);
    EXPECT_EQ(query.tokenCount(-1), 2U);
    EXPECT_EQ(query.tokenCount(0), 2U);
}

TEST(QueryTest, FindsTheTokenBehindWhoseFirstCharacterACursorStands)
{
    const TestQuery query("abc def");

    EXPECT_EQ(query.getTokenIndexAt(0), INVALID);
    EXPECT_EQ(query.getTokenIndexAt(1), 0U);
    EXPECT_EQ(query.getTokenIndexAt(3), 0U);
    EXPECT_EQ(query.getTokenIndexAt(4), INVALID);
    EXPECT_EQ(query.getTokenIndexAt(5), 1U);
    EXPECT_EQ(query.getTokenIndexAt(7), 1U);
    EXPECT_EQ(query.getTokenIndexAt(8), INVALID);
    EXPECT_EQ(query.getTokenIndexAt(INVALID), INVALID);
    EXPECT_EQ(TestQuery().getTokenIndexAt(0), INVALID);
}

TEST(QueryTest, WhereTokensTouchTheEarlierOneHasTheCursor)
{
    const TestQuery query("abcdef", fixedTokens({token(0, 3), token(3, 3)}));

    EXPECT_EQ(query.getTokenIndexAt(3), 0U);
    EXPECT_EQ(query.getTokenIndexAt(4), 1U);
}

TEST(QueryTest, ATokenOfLengthZeroIsNeverFound)
{
    const TestQuery query("ab", fixedTokens({token(1, 0)}));

    for (std::size_t pos = 0; pos < 4; ++pos)
    {
        EXPECT_EQ(query.getTokenIndexAt(pos), INVALID);
    }
}

TEST(QueryTest, ATokenWhoseEndOverflowsIsSearchedByItsWrappedEnd)
{
    const TestQuery query("abcd", fixedTokens({token(1, HUGE_VALUE), token(2, HUGE_VALUE - 2)}));

    EXPECT_EQ(query.getTokenIndexAt(2), INVALID); // the first ends at 0
    EXPECT_EQ(query.getTokenIndexAt(3), 1U);
    EXPECT_EQ(query.getTokenIndexAt(HUGE_VALUE), 1U);
}

TEST(QueryTest, TokensOutOfOrderAreSearchedFromTheFirst)
{
    const TestQuery query("abcdef", fixedTokens({token(3, 3), token(0, 6)}));

    EXPECT_EQ(query.getTokenIndexAt(4), 0U);
    EXPECT_EQ(query.getTokenIndexAt(2), 1U);
}

TEST(QueryTest, ThePositionBeyondTheTokensIsTheirCount)
{
    const TestQuery two("abc  def");

    EXPECT_EQ(TestQuery().getTokenPos(3), 0U);
    EXPECT_EQ(two.getTokenPos(1), 5U);
    EXPECT_EQ(two.getTokenPos(2), 2U);
    EXPECT_EQ(two.getTokenPos(3), 2U);
    EXPECT_EQ(two.getTokenPos(INVALID), 2U);
}

TEST(QueryTest, AnIndexBeyondTheTokensHasNoLengthTypeOrText)
{
    const TestQuery query("abc def");

    for (const std::size_t index : {std::size_t{2}, std::size_t{3}, INVALID})
    {
        EXPECT_EQ(query.getToken(index), nullptr);
        EXPECT_EQ(query.getTokenLen(index), 0U);
        EXPECT_EQ(query.getTokenType(index), Query::invalidTokenType);
        EXPECT_EQ(query.getTokenString(index), "");
        EXPECT_EQ(query.getTokenValue(index), "");
    }
}

TEST(QueryTest, GivesWhatTheTokeniserRecorded)
{
    const TestQuery query("a \"b c\"", fixedTokens({token(0, 1, 4), {9, 2, 5, 3, 3}}));

    EXPECT_EQ(query.getTokenPos(1), 2U);
    EXPECT_EQ(query.getTokenLen(1), 5U);
    EXPECT_EQ(query.getTokenType(1), 9);
    EXPECT_EQ(query.getTokenString(1), "\"b c\"");
    EXPECT_EQ(query.getTokenValue(1), "b c");
    ASSERT_NE(query.getToken(1), nullptr);
    EXPECT_EQ(query.getToken(1)->valuePos, 3U);
}

TEST(QueryTest, TextOfARecordThatReachesBeyondTheEndIsCutThere)
{
    const TestQuery query("abc", fixedTokens({{0, 1, 9, 2, HUGE_VALUE}, {0, 3, 1, 3, 1}}));

    EXPECT_EQ(query.getTokenString(0), "bc");
    EXPECT_EQ(query.getTokenValue(0), "c");
    EXPECT_EQ(query.getTokenString(1), "");
    EXPECT_EQ(query.getTokenValue(1), "");
}

TEST(QueryTest, TextOfARecordThatStartsBeyondTheEndThrows)
{
    const TestQuery query("abc", fixedTokens({{0, 4, 0, HUGE_VALUE, 0}}));

    expectInvalidPosition([&] { return query.getTokenString(0); });
    expectInvalidPosition([&] { return query.getTokenValue(0); });
    expectInvalidPosition([&] { return query.getTokenValue(Query::Token{0, 0, 0, 4, 1}); });
}

TEST(QueryTest, TheValueOfARecordNeedNotBelongToAToken)
{
    const TestQuery query("abc");

    EXPECT_EQ(query.getTokenValue(Query::Token{7, 0, 0, 1, 9}), "bc");
}

TEST(QueryTest, SlotsAreCalledInTheOrderOfConnectionUntilTheyAreCut)
{
    TestQuery query;
    std::string calls;
    qua::Connection first = query.connectChanged([&] { calls += '1'; });
    const qua::Connection second = query.connectChanged([&] { calls += '2'; });
    {
        const qua::Connection third = query.connectChanged([&] { calls += '3'; });
        query.setQueryString("a");
    }
    query.setQueryString("b");
    first.disconnect();
    query.setQueryString("c");

    EXPECT_EQ(calls, "123122");
}

TEST(QueryTest, AnEmptySlotIsNotConnected)
{
    TestQuery query;
    const qua::Connection connection = query.connectChanged({});

    EXPECT_FALSE(connection.connected());
    EXPECT_TRUE(query.setQueryString("a"));
}

TEST(QueryTest, ConnectionsOutliveTheQueryInertAndTheirSlotsDoNot)
{
    auto captured = std::make_shared<int>(0);
    qua::Connection connection;
    {
        const TestQuery query;
        connection = query.connectChanged([captured] {});
        EXPECT_TRUE(connection.connected());
        EXPECT_EQ(captured.use_count(), 2);
    }
    EXPECT_FALSE(connection.connected());
    EXPECT_EQ(captured.use_count(), 1);
    connection.disconnect();
}

TEST(QueryTest, ASlotThatGoesWithTheQueryMayStillReadItAndConnect)
{
    struct LastLook
    {
        ~LastLook() { look(); }
        std::function<void()> look;
    };
    auto query = std::make_unique<TestQuery>("road");
    auto captured = std::make_shared<LastLook>();
    qua::Connection late;
    std::string seen;
    const Query& reached = *query;
    captured->look = [&]
    {
        seen = reached.getQueryString();
        late = reached.connectChanged([] {});
    };
    const qua::Connection connection = query->connectChanged([captured] {});
    captured.reset();

    query.reset();

    EXPECT_EQ(seen, "road");
    EXPECT_FALSE(late.connected());
}

} // namespace
