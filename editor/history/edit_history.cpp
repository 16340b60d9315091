#include "editor/history/edit_history.hpp"

#include <utility>

namespace
{

/// Several edits that are one step.
class CompositeEdit final : public EditHistory::IEdit
{
public:
    explicit CompositeEdit(std::vector<std::unique_ptr<IEdit>> edits) : m_edits(std::move(edits)) {}

    void undo() override
    {
        for (std::size_t i = m_edits.size(); i > 0; --i)
        {
            m_edits[i - 1]->undo();
        }
    }

    void redo() override
    {
        for (const std::unique_ptr<IEdit>& edit : m_edits)
        {
            edit->redo();
        }
    }

private:
    std::vector<std::unique_ptr<IEdit>> m_edits;
};

} // namespace

EditHistory::IEdit::~IEdit() = default;

bool EditHistory::IEdit::absorb(const IEdit&)
{
    return false;
}

bool EditHistory::IEdit::isNothing() const
{
    return false;
}

EditHistory::Step::Step(EditHistory& history) : m_history(history)
{
    m_history.open();
}

EditHistory::Step::~Step()
{
    m_history.close();
}

void EditHistory::Step::cancel()
{
    m_history.cancelOpen();
}

EditHistory::EditHistory() = default;
EditHistory::~EditHistory() = default;

void EditHistory::push(std::unique_ptr<IEdit> edit, bool interactive)
{
    ++m_changes;
    const Edits forgotten = std::exchange(m_undone, {});
    Edits& edits = m_depth > 0 ? m_open : m_done;
    const bool isAbsorbed = (m_depth > 0 || m_inSeries) && !edits.empty() && edits.back()->absorb(*edit);
    if (!isAbsorbed)
    {
        endSeries();
        edits.push_back(std::move(edit));
    }
    m_inSeries = interactive && m_depth == 0;
    if (isAbsorbed && !m_inSeries && edits.back()->isNothing())
    {
        edits.pop_back();
    }
    m_changed();
}

bool EditHistory::undo()
{
    return replay(m_done, m_undone, &IEdit::undo);
}

bool EditHistory::redo()
{
    return replay(m_undone, m_done, &IEdit::redo);
}

void EditHistory::clear()
{
    ++m_changes;
    m_inSeries = false;
    // What is forgotten may hold the last share of a curve: let it go when the lists are in order.
    const Edits done = std::exchange(m_done, {});
    const Edits undone = std::exchange(m_undone, {});
    const Edits open = std::exchange(m_open, {});
    m_changed();
}

qua::Connection EditHistory::connectChanged(std::function<void()> slot)
{
    return m_changed.connect(std::move(slot));
}

void EditHistory::open()
{
    ++m_depth;
    if (endSeries())
    {
        m_changed();
    }
}

void EditHistory::close()
{
    if (--m_depth > 0 || m_open.empty())
    {
        return;
    }
    Edits edits = std::exchange(m_open, {});
    if (edits.size() == 1)
    {
        push(std::move(edits.front()));
        return;
    }
    push(std::make_unique<CompositeEdit>(std::move(edits)));
}

void EditHistory::cancelOpen()
{
    try
    {
        CompositeEdit(std::exchange(m_open, {})).undo();
    }
    catch (...)
    {
        clear();
        throw;
    }
}

bool EditHistory::endSeries()
{
    const bool isNothing = m_inSeries && !m_done.empty() && m_done.back()->isNothing();
    if (isNothing)
    {
        m_done.pop_back();
    }
    m_inSeries = false;
    return isNothing;
}

bool EditHistory::replay(Edits& from, Edits& to, void (IEdit::*direction)())
{
    if (m_depth > 0 || m_isReplaying)
    {
        return false;
    }
    const bool isForgotten = endSeries();
    if (from.empty())
    {
        if (isForgotten)
        {
            m_changed();
        }
        return false;
    }
    std::unique_ptr<IEdit> edit = std::move(from.back());
    from.pop_back();
    const std::size_t changes = ++m_changes;
    m_isReplaying = true;
    try
    {
        (edit.get()->*direction)();
    }
    catch (...)
    {
        m_isReplaying = false;
        clear();
        throw;
    }
    m_isReplaying = false;
    if (m_changes == changes)
    {
        to.push_back(std::move(edit));
    }
    m_changed();
    return true;
}
