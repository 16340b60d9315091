#pragma once

#include "tern_common/query/query_controller.hpp"
#include "tests/support/fake_query_edit.hpp"
#include "tests/support/test_query.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using Texts = std::vector<std::string>;
using Applied = std::vector<std::pair<std::string, std::string>>;

inline constexpr std::size_t INVALID = Query::invalidTokenIndex;

inline bool refuseAll(const std::string& /*text*/, std::vector<Query::Token>& /*tokens*/)
{
    return false;
}

inline bool refuseBangs(const std::string& text, std::vector<Query::Token>& tokens)
{
    return text.find('!') == std::string::npos && splitWords(text, tokens);
}

inline const std::function<void()>& ignoreApplied()
{
    static const std::function<void()> ignore = [] {};
    return ignore;
}

/// A controller with a query and an edit control, and a log of the current token.
class QueryControllerTest : public testing::Test
{
protected:
    /// The current token's index and value as they were announced.
    struct Current
    {
        std::size_t index;
        std::string value;
        bool operator==(const Current&) const = default;
    };

    TestQuery& bind(const std::string& text = "", Tokenizer tokenizer = refuseBangs)
    {
        auto query = std::make_unique<TestQuery>(text, std::move(tokenizer));
        TestQuery& bound = *query;
        m_controller.setQuery(std::move(query));
        m_controller.setEdit(&m_edit);
        m_tokenConnection = m_controller.connectCurrentTokenValueChanged(
            [this](const QueryController& controller, std::size_t index)
            {
                EXPECT_EQ(&controller, &m_controller);
                m_currents.push_back({index, controller.getCurrentTokenValue()});
            });
        return bound;
    }

    void applyAlways()
    {
        m_controller.setApplyingStrategy([](const Query*, const std::function<void()>&) { return true; });
    }

    FakeQueryEdit m_edit;
    QueryController m_controller;
    std::vector<Current> m_currents;
    qua::Connection m_tokenConnection;
};
