#include "tests/tern_common/query/query_controller_fixture.hpp"

#include "tests/support/reports.hpp"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

TEST_F(QueryControllerTest, ApplyingWithoutAStrategyDoesNothing)
{
    const TestQuery& query = bind("a   a");

    EXPECT_FALSE(m_controller.apply(ignoreApplied()));
    applyAlways();
    m_controller.setApplyingStrategy({});
    EXPECT_FALSE(m_controller.apply(ignoreApplied()));

    EXPECT_EQ(query.getQueryString(), "a   a");
    EXPECT_TRUE(m_edit.placedCursors().empty());
}

TEST_F(QueryControllerTest, TheStrategyGetsTheNormalisedQueryAndTheCallback)
{
    TestQuery& query = bind("b  a  b");
    int called = 0;
    std::string seen;
    m_controller.setApplyingStrategy(
        [&](const Query* applied, const std::function<void()>& onApplied)
        {
            EXPECT_EQ(applied, &query);
            seen = applied->getQueryString();
            EXPECT_EQ(called, 0);
            onApplied();
            return true;
        });

    EXPECT_TRUE(m_controller.apply([&] { ++called; }));

    EXPECT_EQ(seen, "b a ");
    EXPECT_EQ(called, 1);
}

TEST_F(QueryControllerTest, TheControllerItselfNeverCallsTheCallback)
{
    bind("a");
    applyAlways();
    int called = 0;

    EXPECT_TRUE(m_controller.apply([&] { ++called; }));
    EXPECT_TRUE(m_controller.apply({}));

    EXPECT_EQ(called, 0);
}

TEST_F(QueryControllerTest, AStrategyKeepsItsStateFromCallToCall)
{
    bind("a");
    m_controller.setApplyingStrategy([calls = 0](const Query*, const std::function<void()>&) mutable
                                     { return ++calls == 2; });

    EXPECT_FALSE(m_controller.apply(ignoreApplied()));
    EXPECT_TRUE(m_controller.apply(ignoreApplied()));
}

TEST_F(QueryControllerTest, AFailedStrategyGivesTheUserTheirTextBack)
{
    const TestQuery& query = bind("a   b  a");
    Applied applied;
    const qua::Connection connection = m_controller.connectApplied(
        [&](const std::string& before, const std::string& now) { applied.emplace_back(before, now); });
    m_controller.setApplyingStrategy([](const Query*, const std::function<void()>&) { return false; });

    EXPECT_FALSE(m_controller.apply(ignoreApplied()));

    EXPECT_EQ(query.getQueryString(), "a   b  a");
    EXPECT_EQ(m_edit.text(), "a   b  a");
    EXPECT_TRUE(applied.empty());
    EXPECT_TRUE(m_edit.placedCursors().empty());
    m_controller.cancel();
    EXPECT_EQ(query.getQueryString(), ""); // nothing was applied
}

TEST_F(QueryControllerTest, ATextThatCannotBeGivenBackIsReported)
{
    TestQuery& query = bind("a   b");
    m_controller.setApplyingStrategy(
        [&](const Query*, const std::function<void()>&)
        {
            query.setTokenizer(refuseAll);
            return false;
        });
    ExpectReports reports{"res"};

    EXPECT_FALSE(m_controller.apply(ignoreApplied()));

    EXPECT_EQ(query.getQueryString(), "a b ");
    ASSERT_EQ(reports.reports().size(), 1U);
    EXPECT_EQ(reports.reports()[0].whole, "ASSERTION FAILED: res\r\nquery/query_controller.cpp(76)\r\n");
    EXPECT_TRUE(reports.reports()[0].critical);
}

TEST_F(QueryControllerTest, SuccessiveApplicationsTellTheTextBeforeAndNow)
{
    bind();
    applyAlways();
    Applied applied;
    const qua::Connection connection = m_controller.connectApplied(
        [&](const std::string& before, const std::string& now) { applied.emplace_back(before, now); });

    m_edit.enter("a");
    EXPECT_TRUE(m_controller.apply(ignoreApplied()));
    m_edit.enter("b ");
    EXPECT_TRUE(m_controller.apply(ignoreApplied()));
    EXPECT_TRUE(m_controller.apply(ignoreApplied()));

    EXPECT_EQ(applied, (Applied{{"", "a "}, {"a ", "b "}, {"b ", "b "}}));
    EXPECT_EQ(m_edit.placedCursors(), (std::vector<int>{2, 2, 2}));
}

TEST_F(QueryControllerTest, TheCursorIsPlacedBeforeTheApplicationIsAnnounced)
{
    bind("ab");
    applyAlways();
    std::vector<int> placed;
    const qua::Connection connection = m_controller.connectApplied([&](const std::string&, const std::string&)
                                                                   { placed = m_edit.placedCursors(); });

    m_controller.apply(ignoreApplied());

    EXPECT_EQ(placed, std::vector<int>{3});
}

TEST_F(QueryControllerTest, AppliesWithoutAnEdit)
{
    const TestQuery& query = bind("a");
    m_controller.setEdit(nullptr);
    applyAlways();

    EXPECT_TRUE(m_controller.apply(ignoreApplied()));

    EXPECT_EQ(query.getQueryString(), "a ");
}

TEST_F(QueryControllerTest, CancellingReturnsToWhatWasAppliedLast)
{
    const TestQuery& query = bind("a");
    applyAlways();
    m_controller.apply(ignoreApplied());
    m_edit.enter("something else");

    m_controller.cancel();

    EXPECT_EQ(query.getQueryString(), "a ");
    EXPECT_EQ(m_edit.text(), "a ");
}

TEST_F(QueryControllerTest, CancellingBeforeAnyApplicationEmptiesTheQuery)
{
    const TestQuery& query = bind("a");

    m_controller.cancel();

    EXPECT_EQ(query.getQueryString(), "");
    EXPECT_EQ(m_edit.text(), "");
}

TEST_F(QueryControllerTest, ACancellationThatTheLanguageRefusesChangesNothing)
{
    TestQuery& query = bind("a");
    query.setTokenizer(refuseAll);

    m_controller.cancel();

    EXPECT_EQ(query.getQueryString(), "a");
    EXPECT_EQ(m_edit.writtenTexts(), Texts{"a"});
}

TEST_F(QueryControllerTest, NormalisingGoesThroughTheQuerysOwnTidying)
{
    struct Shouting : TestQuery
    {
        void normalize() override
        {
            TestQuery::normalize();
            setQueryString(getQueryString() + "LOUD ");
        }
    };
    m_controller.setQuery(std::make_unique<Shouting>());
    applyAlways();
    std::string now;
    const qua::Connection connection =
        m_controller.connectApplied([&](const std::string&, const std::string& text) { now = text; });

    m_controller.query()->setQueryString("a");
    EXPECT_TRUE(m_controller.apply(ignoreApplied()));

    EXPECT_EQ(now, "a LOUD ");
}

TEST_F(QueryControllerTest, AnExceptionOfTheEditLeavesTheControllerListening)
{
    TestQuery& query = bind("a");
    m_edit.duringSetText = [] { throw std::runtime_error("no text today"); };
    EXPECT_THROW(query.setQueryString("b"), std::runtime_error);
    m_edit.duringSetText = {};

    m_edit.enter("c"); // not taken for the controller's own writing

    EXPECT_EQ(query.getQueryString(), "c");
}

TEST_F(QueryControllerTest, AnExceptionOfTheStrategyPassesAndLeavesTheQueryNormalised)
{
    const TestQuery& query = bind("a   b");
    m_controller.setApplyingStrategy([](const Query*, const std::function<void()>&) -> bool
                                     { throw std::runtime_error("cannot"); });

    EXPECT_THROW(m_controller.apply(ignoreApplied()), std::runtime_error);

    EXPECT_EQ(query.getQueryString(), "a b ");
}

} // namespace
