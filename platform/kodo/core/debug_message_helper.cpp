#include "kodo/core/debug_message_helper.hpp"

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Kodo
{

namespace
{
/// Held while a sink is called. One for all: with one for each, sinks that report themselves would wait for
/// each other when two threads come to them in different order.
std::recursive_mutex sinkCalls;
} // namespace

class DebugMessageSink::Entry
{
public:
    Entry(Receiver receiver, int leastPriority)
        : m_receiver(std::move(receiver)), m_leastPriority(leastPriority)
    {
    }

    int leastPriority() const noexcept { return m_leastPriority; }

    void receive(const DebugMessage& message) noexcept
    {
        Receiver released; // destroyed unlocked: it may wait for a thread that reports
        const std::lock_guard lock(sinkCalls);
        if (m_removed || !m_receiver || (!message.critical && message.messagePriority < m_leastPriority))
        {
            return;
        }
        ++m_depth;
        try
        {
            m_receiver(message);
        }
        catch (...) // a report must not change what its caller does
        {
        }
        if (--m_depth == 0 && m_removed)
        {
            released.swap(m_receiver);
        }
    }

    void remove() noexcept
    {
        Receiver released;
        const std::lock_guard lock(sinkCalls);
        m_removed = true;
        if (m_depth == 0) // a callable that runs is released when its call returns
        {
            released.swap(m_receiver);
        }
    }

private:
    Receiver m_receiver;
    int m_leastPriority;
    int m_depth = 0;
    bool m_removed = false;
};

namespace
{

spdlog::level::level_enum levelOf(const DebugMessage& message)
{
    if (message.critical)
    {
        return spdlog::level::critical;
    }
    constexpr std::array LEVELS{spdlog::level::trace, spdlog::level::debug, spdlog::level::info,
                                spdlog::level::info,  spdlog::level::warn,  spdlog::level::err};
    return LEVELS[static_cast<std::size_t>(std::clamp(message.messagePriority, 0, 5))];
}

} // namespace

/// The sinks in force. Made when the library is loaded, so that whatever reports while it is loaded or
/// unloaded finds it.
class SinkRegistry
{
public:
    using Entries = std::vector<std::shared_ptr<DebugMessageSink::Entry>>;

    static SinkRegistry& instance()
    {
        static SinkRegistry registry;
        return registry;
    }

    void add(std::shared_ptr<DebugMessageSink::Entry> entry)
    {
        change([&entry](Entries& entries) { entries.push_back(std::move(entry)); });
    }

    void remove(const std::shared_ptr<DebugMessageSink::Entry>& entry)
    {
        change([&entry](Entries& entries) { std::erase(entries, entry); });
    }

    /// Whether a plain message of this priority would reach anyone.
    bool wants(int priority) const noexcept
    {
        return priority >= m_leastPriority.load(std::memory_order_relaxed);
    }

    void deliver(const DebugMessage& message)
    {
        const std::shared_ptr<const Entries> entries = current();
        if (entries->empty())
        {
            m_fallback.log(levelOf(message), spdlog::string_view_t(message.text.data(), message.text.size()));
        }
        for (const auto& entry : *entries)
        {
            entry->receive(message);
        }
    }

private:
    SinkRegistry()
        : m_entries(std::make_shared<const Entries>()),
          m_fallback("tern", std::make_shared<spdlog::sinks::stderr_sink_mt>())
    {
        m_fallback.set_level(spdlog::level::trace); // what is of interest is the sinks' to say
    }

    std::shared_ptr<const Entries> current() const
    {
        const std::lock_guard lock(m_mutex);
        return m_entries;
    }

    /// Replaces the list as a whole, so that a message on its way keeps the one it started with.
    void change(const std::function<void(Entries&)>& edit)
    {
        const std::lock_guard lock(m_mutex);
        auto entries = std::make_shared<Entries>(*m_entries);
        edit(*entries);
        int least = entries->empty() ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
        for (const auto& entry : *entries)
        {
            least = std::min(least, entry->leastPriority());
        }
        m_leastPriority.store(least, std::memory_order_relaxed);
        m_entries = std::move(entries);
    }

    mutable std::mutex m_mutex;
    std::shared_ptr<const Entries> m_entries;
    std::atomic<int> m_leastPriority{std::numeric_limits<int>::min()};
    spdlog::logger m_fallback;
};

namespace
{
[[maybe_unused]] const SinkRegistry& readyBeforeMain = SinkRegistry::instance();
} // namespace

DebugMessageSink::DebugMessageSink() noexcept = default;

DebugMessageSink::DebugMessageSink(Receiver receiver, int leastPriority)
    : m_entry(std::make_shared<Entry>(std::move(receiver), leastPriority))
{
    SinkRegistry::instance().add(m_entry);
}

DebugMessageSink::DebugMessageSink(DebugMessageSink&& other) noexcept = default;

DebugMessageSink& DebugMessageSink::operator=(DebugMessageSink&& other) noexcept
{
    if (this != &other)
    {
        remove();
        m_entry = std::move(other.m_entry);
    }
    return *this;
}

DebugMessageSink::~DebugMessageSink()
{
    remove();
}

void DebugMessageSink::remove() noexcept
{
    if (const std::shared_ptr<Entry> entry = std::exchange(m_entry, nullptr))
    {
        SinkRegistry::instance().remove(entry);
        entry->remove();
    }
}

DebugMessageHelper::DebugMessageHelper(int componentPriority, int messagePriority, const char* category,
                                       int source) noexcept
    : m_componentPriority(componentPriority), m_messagePriority(messagePriority), m_category(category),
      m_source(source)
{
}

void DebugMessageHelper::message(std::string_view text) const noexcept
{
    if (SinkRegistry::instance().wants(m_messagePriority))
    {
        deliver(text, false);
    }
}

void DebugMessageHelper::criticalMessage(const char* format, ...) const noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    std::array<char, 512> buffer{};
    const int length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    va_end(arguments);
    if (length >= 0 && static_cast<std::size_t>(length) < buffer.size())
    {
        deliver({buffer.data(), static_cast<std::size_t>(length)}, true);
    }
    else if (length >= 0)
    {
        std::string text(static_cast<std::size_t>(length), '\0');
        static_cast<void>(std::vsnprintf(text.data(), text.size() + 1, format, again));
        deliver(text, true);
    }
    else
    {
        deliver(format, true); // not formattable: the bare format says more than nothing
    }
    va_end(again);
}

void DebugMessageHelper::deliver(std::string_view text, bool critical) const noexcept
{
    DebugMessage message;
    message.text = text;
    message.category = m_category;
    message.componentPriority = m_componentPriority;
    message.messagePriority = m_messagePriority;
    message.source = m_source;
    message.critical = critical;
    SinkRegistry::instance().deliver(message);
}

} // namespace Kodo
