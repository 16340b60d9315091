#include "tern_common/query/query_controller.hpp"

#include "tests/support/fake_query_edit.hpp"
#include "tests/support/random_seed.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_query.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Texts = std::vector<std::string>;

constexpr const char* LONG_TEXT = "a text that is too long to be stored without the heap";

const std::function<void()>& ignoreApplied()
{
    static const std::function<void()> ignore = [] {};
    return ignore;
}

/// A controller that a test may destroy at any time, bound to a query of words and an edit control.
class QueryControllerReentrancyTest : public testing::Test
{
protected:
    QueryControllerReentrancyTest()
    {
        m_controller->setQuery(std::make_unique<TestQuery>("one two"));
        m_controller->setEdit(&m_edit);
    }

    Query& query() { return *m_controller->query(); }
    void replaceQuery(const std::string& text) { m_controller->setQuery(std::make_unique<TestQuery>(text)); }
    /// Calls @p action in the middle of the next setText().
    void onceDuringSetText(std::function<void()> action)
    {
        m_edit.duringSetText = [this, action = std::move(action)]
        {
            const auto once = std::exchange(m_edit.duringSetText, {});
            action();
        };
    }
    void destroyController() { m_controller.reset(); }
    bool apply() { return m_controller->apply(ignoreApplied()); }

    FakeQueryEdit m_edit;
    FakeQueryEdit m_otherEdit;
    std::unique_ptr<QueryController> m_controller = std::make_unique<QueryController>();
};

TEST_F(QueryControllerReentrancyTest, TheTextWrittenOutlivesAQueryReplacedMeanwhile)
{
    onceDuringSetText([this] { replaceQuery("new"); });

    query().setQueryString(LONG_TEXT);

    EXPECT_EQ(m_edit.writtenTexts(), (Texts{"one two", "new", LONG_TEXT}));
    EXPECT_EQ(query().getQueryString(), "new");
}

TEST_F(QueryControllerReentrancyTest, AnInnerWriteEndsTheDeafnessOfTheOuterOne)
{
    onceDuringSetText([this] { m_edit.enter("unheard"); });
    query().setQueryString("outer");
    EXPECT_EQ(query().getQueryString(), "outer");

    onceDuringSetText(
        [this]
        {
            query().setQueryString("inner");
            m_edit.enter("heard");
        });
    query().setQueryString("outer again");
    EXPECT_EQ(query().getQueryString(), "heard");
}

TEST_F(QueryControllerReentrancyTest, AListenerMayTidyWhatTheUserTypes)
{
    const qua::Connection connection = query().connectChanged(
        [this]
        {
            if (query().getQueryString() == "tyop")
            {
                query().setQueryString("typo");
            }
        });

    m_edit.enter("tyop");

    EXPECT_EQ(query().getQueryString(), "typo");
    EXPECT_EQ(m_edit.text(), "typo");
    EXPECT_EQ(m_controller->getCurrentTokenValue(), "typo");
}

TEST_F(QueryControllerReentrancyTest, TheCursorMayMoveWhileTheControllerWrites)
{
    std::vector<std::string> values;
    m_edit.moveCursor(7);
    const qua::Connection connection = m_controller->connectCurrentTokenValueChanged(
        [&](const QueryController& controller, std::size_t)
        { values.push_back(controller.getCurrentTokenValue()); });

    query().setQueryString("tw"); // the cursor falls back to 2, announced in the middle of setText()

    EXPECT_EQ(values, Texts{"tw"});
}

TEST_F(QueryControllerReentrancyTest, AnEditBoundFromWithinTheBindingOfAnotherStaysBound)
{
    m_controller->setEdit(nullptr);
    onceDuringSetText([this] { m_controller->setEdit(&m_otherEdit); });

    m_controller->setEdit(&m_edit);

    EXPECT_EQ(m_controller->edit(), &m_otherEdit);
    EXPECT_EQ(m_edit.slotCount(), 0U);
    EXPECT_EQ(m_otherEdit.slotCount(), 2U);
}

TEST_F(QueryControllerReentrancyTest, AnEditBoundAgainFromWithinIsConnectedOnce)
{
    m_controller->setEdit(nullptr);
    onceDuringSetText([this] { m_controller->setEdit(&m_edit); });

    m_controller->setEdit(&m_edit);

    EXPECT_EQ(m_edit.slotCount(), 2U);
}

TEST_F(QueryControllerReentrancyTest, AQuerySetFromWithinTheSettingOfAnotherStaysAndIsFollowed)
{
    onceDuringSetText([this] { replaceQuery("inner"); });

    replaceQuery("outer");

    EXPECT_EQ(query().getQueryString(), "inner");
    const std::size_t written = m_edit.writtenTexts().size();
    query().setQueryString("next");
    EXPECT_EQ(m_edit.writtenTexts().size(), written + 1); // one connection, not two
}

TEST_F(QueryControllerReentrancyTest, TheQueryMayBeReplacedByAListenerOfItsChange)
{
    const qua::Connection connection = query().connectChanged([this] { replaceQuery("new"); });

    m_edit.enter("typed");

    EXPECT_EQ(query().getQueryString(), "new");
    EXPECT_EQ(m_edit.text(), "new");
    EXPECT_FALSE(connection.connected());
}

TEST_F(QueryControllerReentrancyTest, TheEditMayBeDetachedByAListenerOfAChange)
{
    const qua::Connection connection = query().connectChanged([this] { m_controller->setEdit(nullptr); });

    m_edit.enter("typed");

    EXPECT_EQ(query().getQueryString(), "typed");
    EXPECT_EQ(m_edit.slotCount(), 0U);
    EXPECT_EQ(m_controller->getCurrentTokenValue(), "");
}

TEST_F(QueryControllerReentrancyTest, AQueryReplacedWhileItIsNormalisedIsAppliedAsItIs)
{
    query().setQueryString("a   b");
    const qua::Connection connection = query().connectChanged([this] { replaceQuery("c   d"); });
    std::string applied;
    m_controller->setApplyingStrategy(
        [&](const Query* query, const std::function<void()>&)
        {
            applied = query->getQueryString();
            return true;
        });

    EXPECT_TRUE(apply());

    EXPECT_EQ(applied, "c   d");
}

TEST_F(QueryControllerReentrancyTest, AQueryTakenAwayWhileItIsNormalisedIsNotApplied)
{
    query().setQueryString("a   b");
    const qua::Connection connection = query().connectChanged([this] { m_controller->setQuery(nullptr); });
    int calls = 0;
    m_controller->setApplyingStrategy([&](const Query*, const std::function<void()>&)
                                      { return ++calls > 0; });

    EXPECT_FALSE(apply());

    EXPECT_EQ(calls, 0);
}

TEST_F(QueryControllerReentrancyTest, AStrategyMayTakeTheQueryAwayWhateverItReturns)
{
    int announced = 0;
    const qua::Connection connection =
        m_controller->connectApplied([&](const std::string&, const std::string&) { ++announced; });
    for (const bool result : {true, false})
    {
        replaceQuery("a");
        m_controller->setApplyingStrategy(
            [&](const Query*, const std::function<void()>&)
            {
                m_controller->setQuery(nullptr);
                return result;
            });
        EXPECT_EQ(apply(), result);
    }
    EXPECT_EQ(announced, 0);
}

TEST_F(QueryControllerReentrancyTest, AStrategyMayReplaceItself)
{
    auto state = std::make_shared<std::string>(LONG_TEXT);
    const std::weak_ptr<std::string> watched = state;
    m_controller->setApplyingStrategy(
        [this, state = std::move(state)](const Query*, const std::function<void()>&)
        {
            m_controller->setApplyingStrategy({});
            return *state == LONG_TEXT;
        });

    EXPECT_TRUE(apply());

    EXPECT_TRUE(watched.expired());
    EXPECT_FALSE(apply());
}

TEST_F(QueryControllerReentrancyTest, AStrategyMayApplyFurther)
{
    int depth = 0;
    std::vector<std::pair<std::string, std::string>> applied;
    const qua::Connection connection = m_controller->connectApplied(
        [&](const std::string& before, const std::string& now) { applied.emplace_back(before, now); });
    m_controller->setApplyingStrategy([&](const Query*, const std::function<void()>&)
                                      { return ++depth == 2 || apply(); });

    EXPECT_TRUE(apply());

    EXPECT_EQ(applied,
              (std::vector<std::pair<std::string, std::string>>{{"", "one two "}, {"one two ", "one two "}}));
}

TEST_F(QueryControllerReentrancyTest, TheTextsOfAnApplicationOutliveFurtherOnes)
{
    m_controller->setApplyingStrategy([](const Query*, const std::function<void()>&) { return true; });
    query().setQueryString(LONG_TEXT);
    bool again = true;
    std::vector<std::pair<std::string, std::string>> applied;
    const qua::Connection first = m_controller->connectApplied(
        [&](const std::string&, const std::string&)
        {
            if (std::exchange(again, false))
            {
                query().setQueryString("x");
                apply();
            }
        });
    const qua::Connection second = m_controller->connectApplied(
        [&](const std::string& before, const std::string& now) { applied.emplace_back(before, now); });

    apply();

    const std::string longText = std::string(LONG_TEXT).append(" ");
    EXPECT_EQ(applied, (std::vector<std::pair<std::string, std::string>>{{longText, "x "}, {"", longText}}));
}

TEST_F(QueryControllerReentrancyTest, TheControllerMayBeDestroyedWhileItWrites)
{
    onceDuringSetText([this] { destroyController(); });
    query().setQueryString("new");
    EXPECT_EQ(m_edit.slotCount(), 0U);
}

TEST_F(QueryControllerReentrancyTest, TheQueryMayBeTakenAwayByAnEditThatIsRead)
{
    const auto takeAway = [this] { m_controller->setQuery(nullptr); };
    m_edit.onceDuringRead = takeAway;
    m_edit.enter("typed"); // text()
    EXPECT_EQ(m_edit.text(), "typed");

    replaceQuery("one two");
    m_edit.moveCursor(1);
    EXPECT_EQ(m_controller->getCurrentTokenValue(), "one");
    m_edit.onceDuringRead = takeAway;
    m_edit.moveCursor(6); // cursorPos()
    EXPECT_EQ(m_controller->query(), nullptr);
    EXPECT_EQ(m_controller->getCurrentTokenValue(), "one"); // as without a query
}

TEST_F(QueryControllerReentrancyTest, TheControllerMayBeDestroyedByAnEditThatIsRead)
{
    m_edit.onceDuringRead = [this] { destroyController(); };
    m_edit.enter("typed");
    EXPECT_EQ(m_controller, nullptr);

    m_controller = std::make_unique<QueryController>();
    replaceQuery("one two");
    m_edit.onceDuringRead = [this] { destroyController(); };
    m_controller->setEdit(&m_edit);
    EXPECT_EQ(m_controller, nullptr);
    EXPECT_EQ(m_edit.slotCount(), 0U);
}

TEST_F(QueryControllerReentrancyTest, TheControllerMayBeDestroyedByWhatTheUserTypes)
{
    const qua::Connection connection = query().connectChanged([this] { destroyController(); });
    m_edit.enter("typed");
    EXPECT_EQ(m_edit.text(), "typed");
}

TEST_F(QueryControllerReentrancyTest, TheControllerMayBeDestroyedWhileRefusedTypingIsTakenBack)
{
    const auto refuse = [](const std::string& text, std::vector<Query::Token>&) { return text.empty(); };
    m_controller->setQuery(std::make_unique<TestQuery>(refuse));
    onceDuringSetText([this] { destroyController(); });
    m_edit.enter("typed");
    EXPECT_EQ(m_controller, nullptr);
    EXPECT_EQ(m_edit.text(), "");
}

TEST_F(QueryControllerReentrancyTest, TheControllerMayBeDestroyedWhileItBinds)
{
    onceDuringSetText([this] { destroyController(); });
    m_controller->setEdit(&m_edit);
    EXPECT_EQ(m_edit.slotCount(), 0U);

    m_controller = std::make_unique<QueryController>();
    m_controller->setEdit(&m_edit);
    onceDuringSetText([this] { destroyController(); });
    replaceQuery("new");
    EXPECT_EQ(m_edit.slotCount(), 0U);
}

TEST_F(QueryControllerReentrancyTest, TheControllerMayBeDestroyedByAListenerOfTheCurrentToken)
{
    int later = 0;
    const qua::Connection first = m_controller->connectCurrentTokenValueChanged(
        [this](const QueryController&, std::size_t) { destroyController(); });
    const qua::Connection second =
        m_controller->connectCurrentTokenValueChanged([&](const QueryController&, std::size_t) { ++later; });

    m_edit.moveCursor(1);

    EXPECT_EQ(m_controller, nullptr);
    EXPECT_EQ(later, 0);
}

TEST_F(QueryControllerReentrancyTest, TheControllerMayBeDestroyedInEveryStepOfApplying)
{
    const auto succeed = [](const Query*, const std::function<void()>&) { return true; };
    const auto restart = [this, succeed]
    {
        m_controller = std::make_unique<QueryController>();
        replaceQuery("a   b");
        m_controller->setEdit(&m_edit);
        m_edit.moveCursor(0);
        m_controller->setApplyingStrategy(succeed);
    };

    restart();
    const qua::Connection changed = query().connectChanged([this] { destroyController(); });
    EXPECT_FALSE(apply());

    for (const bool result : {true, false})
    {
        restart();
        m_controller->setApplyingStrategy(
            [this, result](const Query*, const std::function<void()>&)
            {
                destroyController();
                return result;
            });
        EXPECT_EQ(apply(), result);
    }

    restart();
    m_edit.moveCursor(1);
    const qua::Connection token = m_controller->connectCurrentTokenValueChanged(
        [this](const QueryController&, std::size_t) { destroyController(); }); // when the cursor is placed
    EXPECT_TRUE(apply());
    EXPECT_EQ(m_controller, nullptr);

    restart();
    const qua::Connection applied = m_controller->connectApplied(
        [this](const std::string&, const std::string& now)
        {
            destroyController();
            EXPECT_EQ(now, "a b ");
        });
    EXPECT_TRUE(apply());
    EXPECT_EQ(m_controller, nullptr);
}

TEST_F(QueryControllerReentrancyTest, TheControllerMayBeDestroyedByCancelling)
{
    const qua::Connection connection = query().connectChanged([this] { destroyController(); });
    m_controller->cancel();
    EXPECT_EQ(m_controller, nullptr);
}

} // namespace
