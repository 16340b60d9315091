#include "tern_common/query/query_controller.hpp"

#include "tests/support/fake_query_edit.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_query.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

static_assert(!std::is_copy_constructible_v<QueryController> && !std::is_copy_assignable_v<QueryController>);
static_assert(!std::is_move_constructible_v<QueryController> && !std::is_move_assignable_v<QueryController>);
static_assert(!std::is_polymorphic_v<QueryController>);
static_assert(std::is_abstract_v<IQueryEdit> && std::has_virtual_destructor_v<IQueryEdit>);

using Texts = std::vector<std::string>;
using Applied = std::vector<std::pair<std::string, std::string>>;

constexpr std::size_t INVALID = Query::invalidTokenIndex;

bool refuseAll(const std::string& /*text*/, std::vector<Query::Token>& /*tokens*/)
{
    return false;
}

bool refuseBangs(const std::string& text, std::vector<Query::Token>& tokens)
{
    return text.find('!') == std::string::npos && splitWords(text, tokens);
}

const std::function<void()>& ignoreApplied()
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

#if defined(__GXX_ABI_VERSION) && defined(__x86_64__)
template <class Member>
std::size_t slotOf(Member member)
{
    const auto parts = std::bit_cast<std::array<std::uintptr_t, 2>>(member);
    return (parts[0] - 1) / sizeof(void*) - 1; // the destructor takes the first two places
}

TEST(QueryEditInterfaceTest, OperationsStandInTheOrderOfTheHeader)
{
    EXPECT_EQ(slotOf(&IQueryEdit::setText), 1U);
    EXPECT_EQ(slotOf(&IQueryEdit::text), 2U);
    EXPECT_EQ(slotOf(&IQueryEdit::setCursorPos), 3U);
    EXPECT_EQ(slotOf(&IQueryEdit::cursorPos), 4U);
    EXPECT_EQ(slotOf(&IQueryEdit::connectTextChanged), 5U);
    EXPECT_EQ(slotOf(&IQueryEdit::connectCursorPosChanged), 6U);
}
#endif

TEST_F(QueryControllerTest, StartsWithNothing)
{
    EXPECT_EQ(m_controller.query(), nullptr);
    EXPECT_EQ(m_controller.edit(), nullptr);
    EXPECT_EQ(m_controller.getCurrentTokenValue(), "");
}

TEST_F(QueryControllerTest, WithoutAQueryNothingIsDoneAndNothingBreaks)
{
    applyAlways();
    m_controller.cancel();
    EXPECT_FALSE(m_controller.apply(ignoreApplied()));
    m_controller.setEdit(&m_edit);
    m_edit.enter("typed");
    m_controller.cancel();
    EXPECT_FALSE(m_controller.apply(ignoreApplied()));
    m_controller.setQuery(nullptr);

    EXPECT_EQ(m_edit.text(), "typed");
    EXPECT_TRUE(m_edit.writtenTexts().empty());
    EXPECT_TRUE(m_edit.placedCursors().empty());
}

TEST_F(QueryControllerTest, QueryAndEditMayComeInEitherOrder)
{
    FakeQueryEdit first("old");
    QueryController editFirst;
    editFirst.setEdit(&first);
    EXPECT_EQ(first.text(), "old");
    editFirst.setQuery(std::make_unique<TestQuery>("road"));
    EXPECT_EQ(first.writtenTexts(), Texts{"road"});
    EXPECT_EQ(editFirst.edit(), &first);

    FakeQueryEdit second("old");
    QueryController queryFirst;
    auto query = std::make_unique<TestQuery>("road");
    const Query* const raw = query.get();
    queryFirst.setQuery(std::move(query));
    queryFirst.setEdit(&second);
    EXPECT_EQ(second.writtenTexts(), Texts{"road"});
    EXPECT_EQ(queryFirst.query(), raw);
}

TEST_F(QueryControllerTest, AcceptedTypingReachesTheQueryAndIsWrittenBackOnce)
{
    const TestQuery& query = bind();
    int changes = 0;
    const qua::Connection connection = query.connectChanged([&] { ++changes; });

    m_edit.enter("road");

    EXPECT_EQ(query.getQueryString(), "road");
    EXPECT_EQ(m_edit.writtenTexts(), (Texts{"", "road"}));
    EXPECT_EQ(query.tokenizeCalls(), 1);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(m_currents, (std::vector<Current>{{0, "road"}}));
}

TEST_F(QueryControllerTest, RefusedTypingFallsBackToTheAcceptedText)
{
    const TestQuery& query = bind("road");
    m_edit.enter("road!");

    EXPECT_EQ(m_edit.text(), "road");
    EXPECT_EQ(query.getQueryString(), "road");
    EXPECT_EQ(m_edit.writtenTexts(), (Texts{"road", "road"}));
}

TEST_F(QueryControllerTest, AcceptedTypingIsLookedAtThoughTheCursorStays)
{
    bind("ab");
    m_edit.moveCursor(1);

    m_edit.overwrite("cd");
    m_edit.overwrite("!");

    EXPECT_EQ(m_currents, (std::vector<Current>{{0, "ab"}, {0, "cd"}}));
}

TEST_F(QueryControllerTest, AChangeOfTheQueryByCodeDoesNotLookForTheCurrentToken)
{
    TestQuery& query = bind("ab");
    m_edit.moveCursor(1);

    query.setQueryString("cd");

    EXPECT_EQ(m_edit.text(), "cd");
    EXPECT_EQ(m_controller.getCurrentTokenValue(), "ab");
    EXPECT_EQ(m_currents, (std::vector<Current>{{0, "ab"}}));
    m_edit.moveCursor(2);
    EXPECT_EQ(m_currents, (std::vector<Current>{{0, "ab"}, {0, "cd"}}));
}

TEST_F(QueryControllerTest, ChangesOfTheQueryReachTheEdit)
{
    TestQuery& query = bind("road");

    query.insertToken(0, "long");

    EXPECT_EQ(m_edit.text(), "long road");
    EXPECT_EQ(query.tokenizeCalls(), 2);
}

TEST_F(QueryControllerTest, ACursorInFrontOfATokenIsOutsideAndOneCharacterOnInside)
{
    bind("ab cd");

    m_edit.moveCursor(4);
    m_edit.moveCursor(5);
    m_edit.moveCursor(3);
    m_edit.moveCursor(2);
    m_edit.moveCursor(1);
    m_edit.moveCursor(0);

    EXPECT_EQ(m_currents, (std::vector<Current>{{1, "cd"}, {INVALID, ""}, {0, "ab"}, {INVALID, ""}}));
}

TEST_F(QueryControllerTest, AValueThatChangesUnderTheCursorIsAnnouncedWithTheSameIndex)
{
    bind();

    m_edit.type("a");
    m_edit.type("b");

    EXPECT_EQ(m_currents, (std::vector<Current>{{0, "a"}, {0, "ab"}}));
    EXPECT_EQ(m_controller.getCurrentTokenValue(), "ab");
}

TEST_F(QueryControllerTest, AnIndexThatChangesWithTheSameValueIsAnnounced)
{
    bind("a a");

    m_edit.moveCursor(1);
    m_edit.moveCursor(3);

    EXPECT_EQ(m_currents, (std::vector<Current>{{0, "a"}, {1, "a"}}));
}

TEST_F(QueryControllerTest, ANegativeCursorIsBeyondEveryToken)
{
    bind("ab");
    m_edit.moveCursor(1);
    m_edit.moveCursor(-1);

    EXPECT_EQ(m_currents, (std::vector<Current>{{0, "ab"}, {INVALID, ""}}));
}

TEST_F(QueryControllerTest, ANegativeCursorIsWidenedWithItsSign)
{
    bind("ab", fixedTokens({{0, 1, static_cast<std::size_t>(-3), 0, 2}})); // ends two bytes before the wrap
    m_edit.moveCursor(-2);
    EXPECT_EQ(m_controller.getCurrentTokenValue(), "ab");
    m_edit.moveCursor(-1);
    EXPECT_EQ(m_controller.getCurrentTokenValue(), "");
}

TEST_F(QueryControllerTest, BindingAnEditLooksForTheTokenUnderItsCursor)
{
    bind("ab cd");
    FakeQueryEdit other("some longer text");
    other.moveCursor(5);

    m_controller.setEdit(&other);

    EXPECT_EQ(m_currents, (std::vector<Current>{{1, "cd"}}));
}

/// Notes what the controller asks of it, and the connections that it has when it is asked.
class LoggingEdit : public FakeQueryEdit
{
public:
    void setText(const std::string& text) override
    {
        log("setText");
        FakeQueryEdit::setText(text);
    }
    int cursorPos() const override
    {
        log("cursorPos");
        return FakeQueryEdit::cursorPos();
    }
    qua::Connection connectTextChanged(std::function<void()> slot) override
    {
        log("connectTextChanged");
        return FakeQueryEdit::connectTextChanged(std::move(slot));
    }
    qua::Connection connectCursorPosChanged(std::function<void()> slot) override
    {
        log("connectCursorPosChanged");
        return FakeQueryEdit::connectCursorPosChanged(std::move(slot));
    }

    Texts takeLog() { return std::exchange(m_log, {}); }

private:
    void log(const char* call) const { m_log.push_back(call + (" " + std::to_string(slotCount()))); }

    mutable Texts m_log;
};

TEST_F(QueryControllerTest, AnEditIsLeftThenWrittenThenLookedAtThenConnected)
{
    LoggingEdit edit;
    QueryController controller;
    controller.setEdit(&edit);
    EXPECT_EQ(edit.takeLog(), (Texts{"connectTextChanged 0", "connectCursorPosChanged 1"}));
    controller.setQuery(std::make_unique<TestQuery>("ab"));
    EXPECT_EQ(edit.takeLog(), (Texts{"setText 2", "cursorPos 2"}));

    controller.setEdit(&edit);

    EXPECT_EQ(edit.takeLog(),
              (Texts{"setText 0", "cursorPos 0", "connectTextChanged 0", "connectCursorPosChanged 1"}));
}

TEST_F(QueryControllerTest, DetachingTheEditKeepsQueryAndCurrentTokenUntilTheNextLook)
{
    TestQuery& query = bind("ab");
    m_edit.moveCursor(1);

    m_controller.setEdit(nullptr);

    EXPECT_EQ(m_controller.edit(), nullptr);
    EXPECT_EQ(m_controller.query(), &query);
    EXPECT_EQ(m_edit.slotCount(), 0U);
    EXPECT_EQ(m_controller.getCurrentTokenValue(), "ab");
    m_edit.enter("typed");
    query.setQueryString("cd");
    EXPECT_EQ(query.getQueryString(), "cd");
    EXPECT_EQ(m_edit.text(), "typed");

    m_controller.setQuery(std::make_unique<TestQuery>("ef"));
    EXPECT_EQ(m_currents, (std::vector<Current>{{0, "ab"}, {INVALID, ""}}));
}

TEST_F(QueryControllerTest, ANewEditTakesTheOldOnesPlace)
{
    bind("ab");
    FakeQueryEdit other;

    m_controller.setEdit(&other);

    EXPECT_EQ(m_edit.slotCount(), 0U);
    EXPECT_EQ(other.slotCount(), 2U);
    other.enter("cd");
    EXPECT_EQ(m_controller.query()->getQueryString(), "cd");
    EXPECT_EQ(m_edit.text(), "ab");
}

TEST_F(QueryControllerTest, BindingTheSameEditAgainConnectsItOnce)
{
    bind("ab");

    m_controller.setEdit(&m_edit);

    EXPECT_EQ(m_edit.slotCount(), 2U);
    EXPECT_EQ(m_edit.writtenTexts(), (Texts{"ab", "ab"}));
}

TEST_F(QueryControllerTest, AnEditThatGivesNoConnectionsIsWrittenToAllTheSame)
{
    m_edit.givesInertConnections = true;
    TestQuery& query = bind("ab");

    query.setQueryString("cd");
    EXPECT_EQ(m_edit.text(), "cd");
    m_edit.enter("typed");
    EXPECT_EQ(query.getQueryString(), "cd");
}

TEST_F(QueryControllerTest, ReplacingTheQueryCutsTheOldOneBeforeItDies)
{
    struct LastChange : TestQuery
    {
        explicit LastChange(std::string& log) : m_log(log) { setQueryString("old"); }
        LastChange(const LastChange&) = delete;
        LastChange& operator=(const LastChange&) = delete;
        ~LastChange() override
        {
            m_log += "destroyed";
            setQueryString("cry"); // nobody hears it
        }
        std::string& m_log;

    protected:
        bool tokenize(const std::string& text, std::vector<Token>& tokens) override
        {
            return splitWords(text, tokens);
        }
    };
    std::string log;
    m_controller.setQuery(std::make_unique<LastChange>(log));
    m_controller.setEdit(&m_edit);

    m_controller.setQuery(std::make_unique<TestQuery>("new"));

    EXPECT_EQ(log, "destroyed");
    EXPECT_EQ(m_edit.writtenTexts(), (Texts{"old", "new"}));
}

TEST_F(QueryControllerTest, WithoutAQueryTheCurrentTokenStaysWhatItWas)
{
    bind("ab");
    m_edit.moveCursor(1);

    m_controller.setQuery(nullptr);

    EXPECT_EQ(m_controller.query(), nullptr);
    EXPECT_EQ(m_controller.getCurrentTokenValue(), "ab");
    EXPECT_EQ(m_currents.size(), 1U);
    EXPECT_EQ(m_edit.text(), "ab");
    m_edit.moveCursor(0);
    EXPECT_EQ(m_controller.getCurrentTokenValue(), "");
}

TEST_F(QueryControllerTest, SettingAQueryDoesNotForgetWhatWasApplied)
{
    bind("ab");
    applyAlways();
    m_controller.apply(ignoreApplied());

    m_controller.setQuery(std::make_unique<TestQuery>("cd"));
    m_controller.cancel();

    EXPECT_EQ(m_controller.query()->getQueryString(), "ab ");
}

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
