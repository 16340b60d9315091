#include "tern_common/query/query_controller.hpp"

#include "tern_common/assertion.hpp"
#include "tern_common/query/life_watch.hpp"

#include <utility>

using TernCommonDetail::LifeWatch;

namespace
{

/// Raises a flag for the length of a scope, unless its owner dies meanwhile.
class RaisedFlag
{
public:
    RaisedFlag(bool& flag, LifeWatch*& operations) : m_flag(flag), m_life(operations) { m_flag = true; }
    RaisedFlag(const RaisedFlag&) = delete;
    RaisedFlag& operator=(const RaisedFlag&) = delete;
    ~RaisedFlag()
    {
        if (!m_life.isOver())
        {
            m_flag = false; // kept: lowered even inside another such scope
        }
    }

private:
    bool& m_flag;
    const LifeWatch m_life;
};

} // namespace

IQueryEdit::~IQueryEdit() = default;

QueryController::QueryController() = default;

QueryController::~QueryController()
{
    LifeWatch::endAll(m_operations);
    m_currentTokenChanged.destroy();
    m_applied.destroy();
}

void QueryController::setEdit(IQueryEdit* edit)
{
    const std::size_t call = ++m_editsSet;
    const LifeWatch life(m_operations);
    const auto isOvertaken = [&] { return life.isOver() || m_editsSet != call; };

    m_editConnections.clear();
    m_edit = edit;
    if (edit == nullptr)
    {
        return;
    }
    syncEdit();
    if (isOvertaken())
    {
        return;
    }
    updateCurrentTokenValue();
    const auto keep = [&](qua::Connection connection)
    {
        if (!isOvertaken() && connection.connected())
        {
            m_editConnections.push_back(std::move(connection));
        }
    };
    if (!isOvertaken())
    {
        keep(edit->connectTextChanged([this] { onSourceTextChanged(); }));
    }
    if (!isOvertaken())
    {
        keep(edit->connectCursorPosChanged([this] { onSourceCursorPosChanged(); }));
    }
}

IQueryEdit* QueryController::edit() const
{
    return m_edit;
}

void QueryController::setQuery(std::unique_ptr<Query> query)
{
    const std::size_t call = ++m_queriesSet;
    const LifeWatch life(m_operations);
    const auto isOvertaken = [&] { return life.isOver() || m_queriesSet != call; };

    m_queryChangedConnection.disconnect();
    m_query.swap(query);
    query.reset(); // the new one is in place should the end of the old one call back in
    if (isOvertaken() || m_query == nullptr)
    {
        return;
    }
    syncEdit();
    if (isOvertaken())
    {
        return;
    }
    updateCurrentTokenValue();
    if (!isOvertaken())
    {
        m_queryChangedConnection = m_query->connectChanged([this] { syncEdit(); });
    }
}

Query* QueryController::query() const
{
    return m_query.get();
}

void QueryController::setApplyingStrategy(ApplyingStrategy strategy)
{
    m_applyingStrategy = strategy ? std::make_shared<const ApplyingStrategy>(std::move(strategy)) : nullptr;
}

bool QueryController::apply(const std::function<void()>& onApplied)
{
    const std::shared_ptr<const ApplyingStrategy> strategy = m_applyingStrategy; // alive while it runs
    if (strategy == nullptr || m_query == nullptr)
    {
        return false;
    }
    const LifeWatch life(m_operations);
    const std::string before = m_query->getQueryString();
    m_query->normalize();
    if (life.isOver() || m_query == nullptr)
    {
        return false;
    }
    const bool applied = (*strategy)(m_query.get(), onApplied);
    if (life.isOver() || m_query == nullptr)
    {
        return applied;
    }
    if (!applied)
    {
        const bool res = m_query->setQueryString(before);
        TERN_COMMON_ASSERT_ON_LINE(res, 76);
        return false;
    }
    finishApplying();
    return true;
}

void QueryController::finishApplying()
{
    const LifeWatch life(m_operations);
    const std::string applied = m_query->getQueryString();
    const std::string appliedBefore = std::exchange(m_appliedQueryString, applied);
    if (m_edit != nullptr)
    {
        m_edit->setCursorPos(static_cast<int>(applied.size()));
    }
    if (!life.isOver())
    {
        m_applied.emit(appliedBefore, applied);
    }
}

void QueryController::cancel()
{
    if (m_query != nullptr)
    {
        m_query->setQueryString(m_appliedQueryString);
    }
}

const std::string& QueryController::getCurrentTokenValue() const
{
    return m_currentTokenValue;
}

qua::Connection
QueryController::connectApplied(std::function<void(const std::string&, const std::string&)> slot) const
{
    return m_applied.connect(std::move(slot));
}

qua::Connection QueryController::connectCurrentTokenValueChanged(
    std::function<void(const QueryController&, std::size_t)> slot) const
{
    return m_currentTokenChanged.connect(std::move(slot));
}

void QueryController::onSourceTextChanged()
{
    if (m_syncingEdit || m_query == nullptr || m_edit == nullptr)
    {
        return;
    }
    const LifeWatch life(m_operations);
    const std::string& text = m_edit->text();
    if (life.isOver() || m_query == nullptr)
    {
        return;
    }
    const bool accepted = m_query->setQueryString(text);
    if (life.isOver())
    {
        return;
    }
    if (accepted)
    {
        updateCurrentTokenValue();
    }
    else
    {
        syncEdit();
    }
}

void QueryController::onSourceCursorPosChanged()
{
    updateCurrentTokenValue();
}

void QueryController::syncEdit()
{
    if (m_edit == nullptr || m_query == nullptr)
    {
        return;
    }
    const std::string text =
        m_query->getQueryString(); // the control may change the query while it reads this
    const RaisedFlag syncing(m_syncingEdit, m_operations);
    m_edit->setText(text);
}

void QueryController::updateCurrentTokenValue()
{
    std::size_t index = Query::invalidTokenIndex;
    std::string value;
    if (m_query != nullptr && m_edit != nullptr)
    {
        const LifeWatch life(m_operations);
        const std::size_t bindings = m_editsSet + m_queriesSet;
        const auto pos = static_cast<std::size_t>(m_edit->cursorPos()); // negative: beyond any text
        if (life.isOver() || m_editsSet + m_queriesSet != bindings)
        {
            return; // who bound anew has looked anew
        }
        index = m_query->getTokenIndexAt(pos);
        value = m_query->getTokenValue(index);
    }
    if (index == m_currentTokenIndex && value == m_currentTokenValue)
    {
        return;
    }
    m_currentTokenIndex = index;
    m_currentTokenValue = std::move(value);
    m_currentTokenChanged.emit(*this, index);
}
