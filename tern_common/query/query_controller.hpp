#pragma once

#include "qua/connection.hpp"
#include "tern_common/export.hpp"
#include "tern_common/query/i_query_edit.hpp"
#include "tern_common/query/lazy_signal.hpp"
#include "tern_common/query/query.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace TernCommonDetail
{
class LifeWatch;
}

/// Keeps a query and a text edit control in step, follows the token under the cursor, and applies the query
/// through the host's strategy. Owns the query; the control belongs to the host and must be detached with
/// setEdit(nullptr) before it dies.
///
/// Main thread only. Whatever is called on the way (listeners, the control, the strategy) may call back in,
/// replace the query, the control or the strategy, or destroy the controller. The call that is running then
/// goes on with what is set at that moment and ends early where that has left it nothing to do. Exceptions of
/// the control, the strategy, the tokeniser or a listener pass through.
class TERN_COMMON_API QueryController
{
public:
    /// Applies the query, as the host sees fit, and says whether that worked. It gets the `onApplied` of
    /// apply() to call at its own time, or not at all.
    using ApplyingStrategy = std::function<bool(const Query*, const std::function<void()>& onApplied)>;

    QueryController();
    QueryController(const QueryController&) = delete;
    QueryController& operator=(const QueryController&) = delete;
    /// Makes the connections of all listeners inert, then leaves the edit control, and destroys the query
    /// last.
    ~QueryController();

    /// Leaves the control bound before and binds @p edit, which shows the query's text from now on; null
    /// binds none.
    void setEdit(IQueryEdit* edit);
    IQueryEdit* edit() const;

    /// Destroys the query held before and shows the text of @p query in the edit control. Without a query
    /// the current token stays what it was.
    void setQuery(std::unique_ptr<Query> query);
    Query* query() const;

    /// An empty @p strategy removes the one set before. A strategy that is running lives until it returns.
    void setApplyingStrategy(ApplyingStrategy strategy);

    /// Normalises the query and hands it to the strategy with @p onApplied, which the controller itself never
    /// calls. A failed strategy gives the query back the text it had; a text that the language refuses by
    /// then is reported. After success the cursor stands at the end, and listeners of connectApplied() hear
    /// of it.
    ///
    /// False, with nothing done, without a strategy or a query; false too if the query goes away before the
    /// strategy is called. If the strategy throws, the query stays normalised.
    bool apply(const std::function<void()>& onApplied);
    /// Returns query and edit control to the text applied last, or the empty one, if the language still
    /// accepts it.
    void cancel();

    /// The value of the token under the cursor; empty outside all tokens.
    const std::string& getCurrentTokenValue() const;

    /// Calls @p slot with the texts applied before and now.
    [[nodiscard]] qua::Connection
    connectApplied(std::function<void(const std::string&, const std::string&)> slot) const;
    /// Calls @p slot when the cursor has come into another token or out of all, or the token under it has got
    /// another value, with the index of the token or Query::invalidTokenIndex.
    [[nodiscard]] qua::Connection
    connectCurrentTokenValueChanged(std::function<void(const QueryController&, std::size_t)> slot) const;

private:
    void onSourceTextChanged();
    void onSourceCursorPosChanged();
    void syncEdit();
    void updateCurrentTokenValue();
    void finishApplying();

    // In this order, since it is destroyed from the back: what reaches out goes first, the query last.
    std::unique_ptr<Query> m_query;
    IQueryEdit* m_edit = nullptr;
    std::shared_ptr<const ApplyingStrategy> m_applyingStrategy;
    std::string m_appliedQueryString;
    qua::Connection m_queryChangedConnection;
    std::vector<qua::Connection> m_editConnections;
    std::size_t m_currentTokenIndex = Query::invalidTokenIndex;
    std::string m_currentTokenValue;
    bool m_syncingEdit = false;
    mutable TernCommonDetail::LazySignal<void(const std::string&, const std::string&)> m_applied;
    mutable TernCommonDetail::LazySignal<void(const QueryController&, std::size_t)> m_currentTokenChanged;

    std::size_t m_editsSet = 0; // counted, to notice when a call has been overtaken by one from within
    std::size_t m_queriesSet = 0;
    TernCommonDetail::LifeWatch* m_operations = nullptr;
};
