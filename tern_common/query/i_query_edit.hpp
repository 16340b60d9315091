#pragma once

#include "qua/connection.hpp"
#include "tern_common/export.hpp"

#include <functional>
#include <string>

/// A text edit control as a QueryController sees it; the host supplies it. Texts are bytes, and so is the
/// cursor's position.
///
/// Changes that setText() and setCursorPos() make may be announced like those of the user. A control may
/// refuse or alter what it is given: its text() counts.
class TERN_COMMON_API IQueryEdit
{
public:
    IQueryEdit() = default;
    IQueryEdit(const IQueryEdit&) = delete;
    IQueryEdit& operator=(const IQueryEdit&) = delete;
    /// The control is the host's: a controller never destroys it.
    virtual ~IQueryEdit();

    virtual void setText(const std::string& text) = 0;
    virtual const std::string& text() const = 0;
    virtual void setCursorPos(int pos) = 0;
    virtual int cursorPos() const = 0;
    [[nodiscard]] virtual qua::Connection connectTextChanged(std::function<void()> slot) = 0;
    [[nodiscard]] virtual qua::Connection connectCursorPosChanged(std::function<void()> slot) = 0;
};
