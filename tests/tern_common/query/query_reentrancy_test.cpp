#include "tern_common/query/query.hpp"

#include "tests/support/reports.hpp"
#include "tests/support/test_query.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

TEST(QueryReentrancyTest, ASlotMayEditTheQueryAgain)
{
    TestQuery query;
    std::vector<std::string> heard;
    const qua::Connection editor = query.connectChanged(
        [&]
        {
            if (query.tokenCount(0) < 3)
            {
                EXPECT_TRUE(query.insertToken(query.tokenCount(0), "more"));
            }
        });
    const qua::Connection listener = query.connectChanged([&] { heard.push_back(query.getQueryString()); });

    EXPECT_TRUE(query.setQueryString("a"));

    EXPECT_EQ(query.getQueryString(), "a more more ");
    EXPECT_EQ(heard, (std::vector<std::string>{"a more more ", "a more more ", "a more more "}));
}

TEST(QueryReentrancyTest, TheArgumentMayBeReplacedByASlot)
{
    TestQuery query;
    auto argument = std::make_unique<std::string>("a text too long to be stored without the heap");
    const std::string expected = *argument;
    const qua::Connection connection = query.connectChanged(
        [&]
        {
            argument.reset();
            EXPECT_EQ(query.getQueryString(), expected);
        });

    EXPECT_TRUE(query.setQueryString(*argument));

    EXPECT_EQ(query.getQueryString(), expected);
}

TEST(QueryReentrancyTest, TheArgumentMayBeReplacedByTheTokeniser)
{
    auto argument = std::make_unique<std::string>("a text too long to be stored without the heap");
    const std::string expected = *argument;
    TestQuery query;
    query.setTokenizer(
        [&](const std::string& text, std::vector<Query::Token>& tokens)
        {
            argument.reset();
            return splitWords(text, tokens);
        });

    EXPECT_TRUE(query.setQueryString(*argument));

    EXPECT_EQ(query.getQueryString(), expected);
}

TEST(QueryReentrancyTest, TheTextInUseByACallerMayBeReplacedThroughIt)
{
    TestQuery query("a b");
    const qua::Connection connection =
        query.connectChanged([&] { query.setQueryString("a text too long to be stored without the heap"); });

    EXPECT_TRUE(query.insertToken(0, query.getQueryString()));

    EXPECT_EQ(query.getQueryString(), "a text too long to be stored without the heap");
}

TEST(QueryReentrancyTest, ASlotThatEditsBetweenTheStepsOfNormalisingIsFollowed)
{
    TestQuery query("a a");
    bool edited = false;
    const qua::Connection connection = query.connectChanged(
        [&]
        {
            if (!std::exchange(edited, true))
            {
                query.setQueryString("x    y");
            }
        });

    query.normalize();

    EXPECT_EQ(query.getQueryString(), "x y ");
}

/// Runs @p edit on a query that a slot destroys when it hears of the change.
void destroyDuring(const std::string& text, const std::function<void(TestQuery&)>& edit)
{
    auto query = std::make_unique<TestQuery>(text);
    int laterCalls = 0;
    const qua::Connection destroyer = query->connectChanged([&] { query.reset(); });
    const qua::Connection later = query->connectChanged([&] { ++laterCalls; });

    edit(*query);

    EXPECT_EQ(query, nullptr);
    EXPECT_EQ(laterCalls, 0);
    EXPECT_FALSE(destroyer.connected());
    EXPECT_FALSE(later.connected());
}

TEST(QueryReentrancyTest, ASlotMayDestroyTheQueryDuringEveryEdit)
{
    destroyDuring("a", [](TestQuery& query) { EXPECT_TRUE(query.setQueryString("b")); });
    destroyDuring("a", [](TestQuery& query) { EXPECT_TRUE(query.insertToken(0, "b")); });
    destroyDuring("a", [](TestQuery& query) { EXPECT_TRUE(query.insertTokenString(0, "b")); });
    destroyDuring("a", [](TestQuery& query) { EXPECT_TRUE(query.removeToken(0)); });
    destroyDuring("a", [](TestQuery& query) { EXPECT_TRUE(query.replaceToken(0, "b")); });
    destroyDuring("a a", [](TestQuery& query) { query.removeDublicates(); });
    destroyDuring("a", [](TestQuery& query) { query.normalizeSpaces(); });
}

TEST(QueryReentrancyTest, ASlotMayDestroyTheQueryInEitherStepOfNormalising)
{
    destroyDuring("a a", [](TestQuery& query) { query.normalize(); });
    destroyDuring("a   b", [](TestQuery& query) { query.normalize(); });
}

TEST(QueryReentrancyTest, ASlotMayDestroyTheQueryDuringNestedNormalising)
{
    auto query = std::make_unique<TestQuery>("a a");
    int depth = 0;
    const qua::Connection connection = query->connectChanged(
        [&]
        {
            if (++depth == 1)
            {
                query->setQueryString("b b b"); // heard at depth 2
            }
            else if (depth == 2)
            {
                query->normalize(); // heard at depth 3
            }
            else
            {
                query.reset();
            }
        });

    query->normalize();

    EXPECT_EQ(query, nullptr);
    EXPECT_EQ(depth, 3);
}

TEST(QueryReentrancyTest, ASlotMayCutItselfAndOthers)
{
    TestQuery query;
    int calls = 0;
    qua::Connection second;
    qua::Connection first = query.connectChanged(
        [&]
        {
            ++calls;
            second.disconnect();
            first.disconnect();
        });
    second = query.connectChanged([&] { ++calls; });

    query.setQueryString("a");
    query.setQueryString("b");

    EXPECT_EQ(calls, 1);
}

TEST(QueryReentrancyTest, ASlotConnectedByASlotIsCalledFromTheNextChangeOn)
{
    TestQuery query;
    int calls = 0;
    std::vector<qua::Connection> added;
    const qua::Connection connection =
        query.connectChanged([&] { added.push_back(query.connectChanged([&] { ++calls; })); });

    query.setQueryString("a");
    EXPECT_EQ(calls, 0);
    query.setQueryString("b");
    EXPECT_EQ(calls, 1);
}

TEST(QueryReentrancyTest, AnExceptionOfASlotLeavesACompleteQuery)
{
    TestQuery query("a a  b");
    const qua::Connection connection = query.connectChanged([] { throw std::runtime_error("no"); });

    EXPECT_THROW(query.normalize(), std::runtime_error);

    EXPECT_EQ(query.getQueryString(), "a b");
    EXPECT_EQ(query.tokenCount(0), 2U);
}

} // namespace
