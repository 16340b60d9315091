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

/// Everything that is called back does something at random, to the controller that calls it or to what it
/// holds; now and then that destroys the controller. The sanitizers watch.
class QueryControllerStormTest : public testing::Test
{
protected:
    static constexpr int STORMS = 3'000;
    static constexpr int ACTIONS_PER_STORM = 30;
    static constexpr int DEEPEST = 4;

    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(m_random() % bound); }

    std::string randomText()
    {
        static constexpr std::array<const char*, 7> TEXTS{"",  "a",   "a a a b", "  x   y ",
                                                          "!", "a a", LONG_TEXT};
        return TEXTS[below(TEXTS.size())];
    }

    std::unique_ptr<Query> randomQuery()
    {
        auto query = std::make_unique<TestQuery>(
            [](const std::string& text, std::vector<Query::Token>& tokens)
            { return text.find('!') == std::string::npos && splitWords(text, tokens); });
        query->setQueryString(randomText());
        m_connections.push_back(query->connectChanged([this] { disturb(); }));
        return query;
    }

    IQueryEdit* randomEdit()
    {
        const std::size_t which = below(m_edits.size() + 1);
        return which < m_edits.size() ? &m_edits[which] : nullptr;
    }

    /// What the host does when it is called in the middle of something.
    void disturb()
    {
        if (m_depth < DEEPEST && below(2) == 0)
        {
            act(below(200) == 0);
        }
    }

    void act(bool destroy)
    {
        ++m_depth;
        ++m_actions;
        if (destroy)
        {
            m_controller.reset();
        }
        else if (m_controller != nullptr)
        {
            actOn(*m_controller);
        }
        --m_depth;
    }

    void actOn(QueryController& controller)
    {
        switch (below(8))
        {
        case 0:
            controller.setQuery(below(5) == 0 ? nullptr : randomQuery());
            break;
        case 1:
            controller.setEdit(randomEdit());
            break;
        case 2:
            controller.apply(ignoreApplied());
            break;
        case 3:
            controller.cancel();
            break;
        case 4:
            controller.setApplyingStrategy(
                [this](const Query*, const std::function<void()>&)
                {
                    disturb();
                    return below(2) == 0;
                });
            break;
        case 5:
            m_edits[below(m_edits.size())].moveCursor(static_cast<int>(below(12)));
            break;
        case 6:
            if (Query* const query = controller.query())
            {
                query->setQueryString(randomText());
            }
            break;
        default:
            m_edits[below(m_edits.size())].enter(randomText());
        }
    }

    void start()
    {
        m_connections.clear();
        m_controller = std::make_unique<QueryController>();
        m_connections.push_back(
            m_controller->connectApplied([this](const std::string&, const std::string&) { disturb(); }));
        m_connections.push_back(m_controller->connectCurrentTokenValueChanged(
            [this](const QueryController&, std::size_t) { disturb(); }));
        for (FakeQueryEdit& edit : m_edits)
        {
            edit.duringSetText = [this] { disturb(); };
        }
    }

    /// After the storm: each edit is connected as it should be, and typing works.
    void expectCalm()
    {
        m_connections.clear();
        for (FakeQueryEdit& edit : m_edits)
        {
            edit.duringSetText = {};
            const bool bound = m_controller != nullptr && m_controller->edit() == &edit;
            ASSERT_EQ(edit.slotCount(), bound ? 2U : 0U);
            if (bound && m_controller->query() != nullptr)
            {
                edit.enter("calm");
                ASSERT_EQ(m_controller->query()->getQueryString(), "calm");
                ASSERT_EQ(edit.text(), "calm");
                ASSERT_EQ(m_controller->getCurrentTokenValue(), "calm");
            }
        }
    }

    std::mt19937_64 m_random{randomSeed()};
    std::array<FakeQueryEdit, 2> m_edits;
    std::unique_ptr<QueryController> m_controller;
    std::vector<qua::Connection> m_connections;
    int m_depth = 0;
    std::size_t m_actions = 0;
};

TEST_F(QueryControllerStormTest, WhateverIsDoneFromWithinCallsTheControllerStaysConsistent)
{
    const CollectReports reports; // a text that is refused when it is given back is reported, rightly
    for (int storm = 0; storm < STORMS; ++storm)
    {
        start();
        for (int action = 0; action < ACTIONS_PER_STORM; ++action)
        {
            act(false);
        }
        expectCalm();
        ASSERT_FALSE(HasFailure()) << "in storm " << storm;
        m_controller.reset();
    }
    EXPECT_GT(m_actions, STORMS * ACTIONS_PER_STORM * 5U / 4U) << "little was done from within";
}

} // namespace
