#pragma once

#include "qua/signal.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

/// What has been edited, for undo and redo. An edit is pushed when it has been done. Main thread only.
///
/// An edit that a listener makes while a step is undone or redone is a new edit like any other: the step
/// cannot be redone (or undone) then. What a listener throws leaves undo(), redo() and Step::cancel(), and
/// everything is forgotten: nobody knows how far the step has come.
class EditHistory
{
public:
    /// One edit and its inverse. Each is called in turn, on data as the other left it.
    class IEdit
    {
    public:
        virtual ~IEdit();
        virtual void undo() = 0;
        virtual void redo() = 0;
        /// Takes in @p next, which was done directly after this, so that one undo takes back both. False when
        /// they don't go together; neither has changed then.
        virtual bool absorb(const IEdit& next);
        /// Whether undoing it would change nothing.
        virtual bool isNothing() const;
    };

    /// All edits pushed in its scope are one step. Steps nest: the outermost one counts. The history must
    /// outlive it.
    class [[nodiscard]] Step
    {
    public:
        explicit Step(EditHistory& history);
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;
        ~Step();
        /// Takes back what has been edited since the outermost step began, and forgets it.
        void cancel();

    private:
        EditHistory& m_history;
    };

    EditHistory();
    EditHistory(const EditHistory&) = delete;
    EditHistory& operator=(const EditHistory&) = delete;
    ~EditHistory();

    /// Remembers @p edit and forgets what could be redone. An @p interactive edit is one of many small ones:
    /// the edit pushed directly after it may be absorbed, and ends the series unless it is interactive too.
    void push(std::unique_ptr<IEdit> edit, bool interactive = false);

    /// False when there is nothing to undo or redo, or a step is open or just being undone or redone.
    bool undo();
    bool redo();
    std::size_t undoCount() const noexcept { return m_done.size(); }
    std::size_t redoCount() const noexcept { return m_undone.size(); }
    /// Forgets everything; nothing is undone. What has been edited in an open step is forgotten too.
    void clear();

    /// The counts may have changed.
    [[nodiscard]] qua::Connection connectChanged(std::function<void()> slot);

private:
    using Edits = std::vector<std::unique_ptr<IEdit>>;

    void open();
    void close();
    void cancelOpen();
    /// Forgets a series that has come to nothing; whether it had.
    bool endSeries();
    /// Moves the last step of @p from to @p to, replaying it on the way.
    bool replay(Edits& from, Edits& to, void (IEdit::*direction)());

    Edits m_done;
    Edits m_undone;
    Edits m_open;            ///< of the step that is open
    std::size_t m_depth = 0; ///< of open steps
    bool m_inSeries = false; ///< the last edit was interactive
    bool m_isReplaying = false;
    std::size_t m_changes = 0; ///< counts what happened to the lists
    qua::Signal<void()> m_changed;
};
