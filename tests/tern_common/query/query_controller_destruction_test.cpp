#include "tests/tern_common/query/query_controller_fixture.hpp"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

TEST_F(QueryControllerTest, DestructionLeavesTheEditAndMakesConnectionsInert)
{
    FakeQueryEdit edit;
    qua::Connection applied;
    qua::Connection token;
    {
        QueryController controller;
        controller.setQuery(std::make_unique<TestQuery>("a"));
        controller.setEdit(&edit);
        applied = controller.connectApplied([](const std::string&, const std::string&) {});
        token = controller.connectCurrentTokenValueChanged([](const QueryController&, std::size_t) {});
        EXPECT_TRUE(applied.connected() && token.connected());
    }
    EXPECT_FALSE(applied.connected());
    EXPECT_FALSE(token.connected());
    EXPECT_EQ(edit.slotCount(), 0U);
    edit.enter("typed");
    EXPECT_EQ(edit.text(), "typed");
}

/// Writes its name into a log when it goes.
struct Witness
{
    Witness(std::string name, std::function<void(const std::string&)> tell)
        : m_name(std::move(name)), m_tell(std::move(tell))
    {
    }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;
    ~Witness() { m_tell(m_name); }

private:
    std::string m_name;
    std::function<void(const std::string&)> m_tell;
};

TEST_F(QueryControllerTest, DestroysTheTokenSignalThenTheAppliedSignalThenTheConnectionsAndTheQueryLast)
{
    Texts log;
    FakeQueryEdit edit;
    const auto tell = [&](const std::string& name)
    { log.push_back(name + (edit.slotCount() > 0 ? ", edit connected" : ", edit left")); };
    const auto witness = [&](const char* name) { return std::make_shared<Witness>(name, tell); };
    struct WitnessedQuery : TestQuery
    {
        explicit WitnessedQuery(std::shared_ptr<Witness> witness) : m_witness(std::move(witness)) {}
        std::shared_ptr<Witness> m_witness;
    };
    qua::Connection applied;
    qua::Connection token;
    {
        QueryController controller;
        controller.setQuery(std::make_unique<WitnessedQuery>(witness("query")));
        controller.setEdit(&edit);
        controller.setApplyingStrategy(
            [kept = witness("strategy")](const Query*, const std::function<void()>&)
            { return kept != nullptr; });
        applied =
            controller.connectApplied([kept = witness("applied")](const std::string&, const std::string&) {});
        token = controller.connectCurrentTokenValueChanged(
            [kept = witness("token")](const QueryController&, std::size_t) {});
    }
    EXPECT_EQ(log, (Texts{"token, edit connected", "applied, edit connected", "strategy, edit left",
                          "query, edit left"}));
}

TEST_F(QueryControllerTest, TheQueryIsCutBeforeItDiesWithTheController)
{
    struct LastWords : TestQuery
    {
        LastWords() = default;
        LastWords(const LastWords&) = delete;
        LastWords& operator=(const LastWords&) = delete;
        ~LastWords() override { setQueryString("cry"); }

    protected:
        bool tokenize(const std::string& text, std::vector<Token>& tokens) override
        {
            return splitWords(text, tokens);
        }
    };
    {
        QueryController controller;
        controller.setQuery(std::make_unique<LastWords>());
        controller.setEdit(&m_edit);
    }
    EXPECT_EQ(m_edit.writtenTexts(), Texts{""});
}

} // namespace
