#include "tests/tern_common/query/query_controller_fixture.hpp"

#include "tests/support/reports.hpp"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
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

} // namespace
