#include "editor/history/edit_history.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace
{

/// Appends a letter to a text.
class Letter final : public EditHistory::IEdit
{
public:
    Letter(std::string& text, std::string letters) : m_text(text), m_letters(std::move(letters)) {}

    void undo() override { m_text.resize(m_text.size() - m_letters.size()); }
    void redo() override { m_text += m_letters; }
    /// Small letters go together with small letters behind them.
    bool absorb(const IEdit& next) override
    {
        const auto* const letter = dynamic_cast<const Letter*>(&next);
        if (letter == nullptr || letter->m_letters.front() < 'a' || m_letters.front() < 'a')
        {
            return false;
        }
        m_letters += letter->m_letters;
        return true;
    }
    bool isNothing() const override { return m_letters.ends_with('!'); }

private:
    std::string& m_text;
    std::string m_letters;
};

/// Calls a function when it is undone, as a listener would be called.
class Reacting final : public EditHistory::IEdit
{
public:
    explicit Reacting(std::function<void()> react) : m_react(std::move(react)) {}
    void undo() override { m_react(); }
    void redo() override {}

private:
    std::function<void()> m_react;
};

class EditHistoryTest : public testing::Test
{
protected:
    void type(char letter, bool interactive = false)
    {
        m_text += letter;
        m_history.push(std::make_unique<Letter>(m_text, std::string(1, letter)), interactive);
    }

    std::string m_text;
    EditHistory m_history;
};

TEST_F(EditHistoryTest, UndoesTheLastEditFirstAndRedoesInOrder)
{
    type('A');
    type('B');
    EXPECT_TRUE(m_history.undo());
    EXPECT_EQ(m_text, "A");
    EXPECT_TRUE(m_history.undo());
    EXPECT_FALSE(m_history.undo());
    EXPECT_EQ(m_text, "");
    EXPECT_TRUE(m_history.redo());
    EXPECT_TRUE(m_history.redo());
    EXPECT_FALSE(m_history.redo());
    EXPECT_EQ(m_text, "AB");
}

TEST_F(EditHistoryTest, AnEditForgetsWhatCouldBeRedone)
{
    type('A');
    m_history.undo();
    type('B');
    EXPECT_EQ(m_history.redoCount(), 0U);
    EXPECT_FALSE(m_history.redo());
    EXPECT_EQ(m_text, "B");
}

TEST_F(EditHistoryTest, AStepIsUndoneAsAWholeInMirrorOrder)
{
    type('A');
    {
        const EditHistory::Step outer(m_history);
        type('B');
        {
            const EditHistory::Step inner(m_history);
            type('C');
        }
        EXPECT_FALSE(m_history.undo()) << "a step is open";
        type('D');
    }
    EXPECT_EQ(m_history.undoCount(), 2U);
    m_history.undo();
    EXPECT_EQ(m_text, "A");
    m_history.redo();
    EXPECT_EQ(m_text, "ABCD");
}

TEST_F(EditHistoryTest, AStepWithoutAnEditIsNone)
{
    type('A');
    m_history.undo();
    {
        const EditHistory::Step step(m_history);
    }
    EXPECT_EQ(m_history.undoCount(), 0U);
    EXPECT_EQ(m_history.redoCount(), 1U);
}

TEST_F(EditHistoryTest, ACancelledStepIsTakenBackAndForgotten)
{
    type('A');
    {
        EditHistory::Step step(m_history);
        type('B');
        type('C');
        step.cancel();
        EXPECT_EQ(m_text, "A");
        type('D');
    }
    EXPECT_EQ(m_history.undoCount(), 2U);
    m_history.undo();
    EXPECT_EQ(m_text, "A");
}

TEST_F(EditHistoryTest, InteractiveEditsThatGoTogetherAreOneStepUntilOneEndsThem)
{
    type('a', true);
    type('b', true);
    type('c');
    type('d');
    EXPECT_EQ(m_history.undoCount(), 2U);
    m_history.undo();
    EXPECT_EQ(m_text, "abc");
    m_history.undo();
    EXPECT_EQ(m_text, "");
}

TEST_F(EditHistoryTest, AnotherEditOrAnUndoEndsASeries)
{
    type('a', true);
    type('B', true);
    type('c', true);
    EXPECT_EQ(m_history.undoCount(), 3U);
    m_history.undo();
    m_history.undo();
    type('d');
    EXPECT_EQ(m_history.undoCount(), 2U);
    m_history.undo();
    EXPECT_EQ(m_text, "a");
}

TEST_F(EditHistoryTest, ASeriesThatComesToNothingIsForgotten)
{
    type('a', true);
    type('!', true);
    EXPECT_EQ(m_history.undoCount(), 2U) << "a mark does not go with letters";
    m_history.clear();
    m_text = "x";
    type('a', true);
    m_text += "b!";
    m_history.push(std::make_unique<Letter>(m_text, "b!"));
    EXPECT_EQ(m_history.undoCount(), 0U);
}

TEST_F(EditHistoryTest, ASeriesThatCameToNothingIsForgottenWhateverEndsIt)
{
    const auto comeToNothing = [this]
    {
        m_history.clear();
        type('A');
        type('a', true);
        m_text += "b!";
        m_history.push(std::make_unique<Letter>(m_text, "b!"), true);
    };
    comeToNothing();
    type('B');
    EXPECT_EQ(m_history.undoCount(), 2U) << "another edit";
    comeToNothing();
    {
        const EditHistory::Step step(m_history);
    }
    EXPECT_EQ(m_history.undoCount(), 1U) << "a step";
    comeToNothing();
    EXPECT_TRUE(m_history.undo());
    EXPECT_EQ(m_history.undoCount(), 0U) << "an undo, which is of what was before";
    EXPECT_EQ(m_history.redoCount(), 1U);
}

TEST_F(EditHistoryTest, AnEditMadeDuringAnUndoIsRememberedInsteadOfWhatWasUndone)
{
    m_history.push(std::make_unique<Reacting>([this] { type('R'); }));
    EXPECT_TRUE(m_history.undo());
    EXPECT_EQ(m_history.undoCount(), 1U);
    EXPECT_EQ(m_history.redoCount(), 0U);
    m_history.undo();
    EXPECT_EQ(m_text, "");
}

TEST_F(EditHistoryTest, NothingElseIsUndoneOrRedoneDuringAnUndo)
{
    type('A');
    m_history.push(std::make_unique<Reacting>(
        [this]
        {
            EXPECT_FALSE(m_history.undo());
            EXPECT_FALSE(m_history.redo());
        }));
    EXPECT_TRUE(m_history.undo());
    EXPECT_EQ(m_text, "A");
    EXPECT_EQ(m_history.undoCount(), 1U);
    EXPECT_EQ(m_history.redoCount(), 1U);
    EXPECT_TRUE(m_history.undo());
}

TEST_F(EditHistoryTest, AnUndoThatThrowsForgetsEverything)
{
    type('A');
    m_history.push(std::make_unique<Reacting>([] { throw std::runtime_error("listener"); }));
    EXPECT_THROW(m_history.undo(), std::runtime_error);
    EXPECT_FALSE(m_history.undo());
    EXPECT_FALSE(m_history.redo());
    EXPECT_EQ(m_text, "A");
    type('B');
    EXPECT_TRUE(m_history.undo());
}

TEST_F(EditHistoryTest, ACancelThatThrowsForgetsEverything)
{
    type('A');
    EditHistory::Step step(m_history);
    type('B');
    m_history.push(std::make_unique<Reacting>([] { throw std::runtime_error("listener"); }));
    EXPECT_THROW(step.cancel(), std::runtime_error);
    EXPECT_EQ(m_history.undoCount(), 0U);
    step.cancel();
    EXPECT_EQ(m_text, "AB");
}

TEST_F(EditHistoryTest, SaysWhenItHasChanged)
{
    int times = 0;
    const qua::Connection connection = m_history.connectChanged([&times] { ++times; });
    type('A');
    EXPECT_EQ(times, 1);
    m_history.undo();
    EXPECT_EQ(times, 2);
    m_history.redo();
    EXPECT_EQ(times, 3);
    m_history.clear();
    EXPECT_EQ(times, 4);
    m_history.undo();
    EXPECT_EQ(times, 4);
    type('a', true);
    m_text += "b!";
    m_history.push(std::make_unique<Letter>(m_text, "b!"), true);
    EXPECT_EQ(times, 6);
    EXPECT_FALSE(m_history.undo());
    EXPECT_EQ(times, 7) << "the series that came to nothing is gone";
}

} // namespace
