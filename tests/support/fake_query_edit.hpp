#pragma once

#include "qua/signal.hpp"
#include "tern_common/query/i_query_edit.hpp"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// A text edit control without a window. Like a real one it announces changes made by the program as it does
/// the user's, and moves its cursor, announced in the middle of setText(), when the text gets too short for
/// it.
class FakeQueryEdit : public IQueryEdit
{
public:
    FakeQueryEdit() = default;
    explicit FakeQueryEdit(std::string text) : m_text(std::move(text)) {}

    void setText(const std::string& text) override
    {
        m_text = text;
        if (m_cursor > static_cast<int>(m_text.size()))
        {
            moveCursor(static_cast<int>(m_text.size()));
        }
        if (duringSetText)
        {
            duringSetText();
        }
        m_writtenTexts.push_back(text); // the argument must have outlived the calls
        m_textChanged();
    }
    const std::string& text() const override
    {
        callOnceDuringRead();
        return m_text;
    }
    void setCursorPos(int pos) override
    {
        m_placedCursors.push_back(pos);
        moveCursor(std::clamp(pos, 0, static_cast<int>(m_text.size())));
    }
    int cursorPos() const override
    {
        callOnceDuringRead();
        return m_cursor;
    }
    qua::Connection connectTextChanged(std::function<void()> slot) override
    {
        return givesInertConnections ? qua::Connection() : m_textChanged.connect(std::move(slot));
    }
    qua::Connection connectCursorPosChanged(std::function<void()> slot) override
    {
        return givesInertConnections ? qua::Connection() : m_cursorChanged.connect(std::move(slot));
    }

    /// The user replaces the whole text; the cursor ends up behind it.
    void enter(const std::string& text)
    {
        m_text = text;
        m_cursor = static_cast<int>(text.size());
        m_textChanged();
        m_cursorChanged();
    }
    /// The user types @p text at the cursor.
    void type(const std::string& text)
    {
        m_text.insert(static_cast<std::size_t>(m_cursor), text);
        m_cursor += static_cast<int>(text.size());
        m_textChanged();
        m_cursorChanged();
    }
    /// The user overwrites the text; the cursor stays where it is and is not announced.
    void overwrite(const std::string& text)
    {
        m_text = text;
        m_textChanged();
    }
    /// The user moves the cursor. No check: what a broken control says is told on.
    void moveCursor(int pos)
    {
        if (std::exchange(m_cursor, pos) != pos)
        {
            m_cursorChanged();
        }
    }

    /// The arguments of setText() and setCursorPos() so far.
    const std::vector<std::string>& writtenTexts() const noexcept { return m_writtenTexts; }
    const std::vector<int>& placedCursors() const noexcept { return m_placedCursors; }
    std::size_t slotCount() const { return m_textChanged.slotCount() + m_cursorChanged.slotCount(); }

    std::function<void()> duringSetText; ///< called when the text is new and its change not yet announced
    mutable std::function<void()> onceDuringRead; ///< called, one time, by text() or cursorPos()
    bool givesInertConnections = false;

private:
    void callOnceDuringRead() const
    {
        if (const auto once = std::exchange(onceDuringRead, {}))
        {
            once();
        }
    }

    std::string m_text;
    int m_cursor = 0;
    std::vector<std::string> m_writtenTexts;
    std::vector<int> m_placedCursors;
    qua::Signal<void()> m_textChanged;
    qua::Signal<void()> m_cursorChanged;
};
