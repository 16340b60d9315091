#pragma once

#include "kodo/export.hpp"

#include <functional>
#include <memory>
#include <string_view>

namespace Kodo
{

/// One message as a sink sees it; the texts are valid during the call.
struct DebugMessage
{
    std::string_view text;
    std::string_view category;
    int componentPriority = 0;
    int messagePriority = 0; ///< larger is more urgent
    int source = 0;
    bool critical = false;
};

/// A receiver of messages, registered for as long as this object lives. Sinks are called one at a time,
/// whichever threads report; one may report itself, and may remove itself from within a call, but must not
/// wait for a thread that reports. After removal it is not running in any thread and its callable is
/// destroyed. It must not throw: what it throws is dropped, the message with it.
class KODO_API DebugMessageSink
{
public:
    using Receiver = std::function<void(const DebugMessage&)>;

    DebugMessageSink() noexcept;
    /// Receives messages of priority @p leastPriority and above, critical ones always.
    explicit DebugMessageSink(Receiver receiver, int leastPriority = 0);
    DebugMessageSink(DebugMessageSink&& other) noexcept;
    DebugMessageSink& operator=(DebugMessageSink&& other) noexcept;
    ~DebugMessageSink();

    void remove() noexcept;

private:
    class Entry;
    friend class DebugMessageHelper;
    friend class SinkRegistry;

    std::shared_ptr<Entry> m_entry;
};

/// The one channel for what users of the editor should know: runtime problems as messages, failed contracts
/// as critical messages. While no sink is registered, messages go to standard error through spdlog. Ready
/// before main, usable from every thread, and without an effect on the caller's control flow.
class KODO_API DebugMessageHelper
{
public:
    static constexpr int CRITICAL_PRIORITY = 10;

    /// @p category must outlive the helper.
    explicit DebugMessageHelper(int componentPriority = 0, int messagePriority = 0, const char* category = "",
                                int source = 0) noexcept;

    void message(std::string_view text) const noexcept;

    /// Formats as printf does.
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    void
    criticalMessage(const char* format, ...) const noexcept;

private:
    void deliver(std::string_view text, bool critical) const noexcept;

    int m_componentPriority;
    int m_messagePriority;
    const char* m_category;
    int m_source;
};

} // namespace Kodo
