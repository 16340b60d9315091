#include "kodo/core/stack_tracker.hpp"

#include "kodo/core/string_conversion.hpp"

#include <array>
#include <atomic>
#include <charconv>
#include <cstddef>
#include <map>
#include <mutex>
#include <ostream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace Kodo
{

namespace
{

using Clock = std::chrono::steady_clock;

/// The record under way. Each thread's open scopes are indices into it.
class Recorder
{
public:
    static Recorder& instance()
    {
        static Recorder recorder;
        return recorder;
    }

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder() { active.store(false, std::memory_order_relaxed); } // scopes that close later find it off

    void start()
    {
        const std::lock_guard lock(m_mutex);
        m_scopes.clear();
        m_threads.clear();
        m_began = Clock::now();
        active.store(true, std::memory_order_relaxed);
    }

    std::vector<StackTracker::ScopeRecord> stop()
    {
        const std::lock_guard lock(m_mutex);
        active.store(false, std::memory_order_relaxed);
        for (auto& [id, thread] : m_threads)
        {
            while (!thread.open.empty())
            {
                close(thread);
            }
        }
        m_threads.clear();
        return std::exchange(m_scopes, {});
    }

    void push(const char* name, const char* file, int line)
    {
        const std::lock_guard lock(m_mutex);
        if (!active.load(std::memory_order_relaxed))
        {
            return;
        }
        Thread& thread = currentThread();
        StackTracker::ScopeRecord scope;
        scope.name = name;
        scope.file = file;
        scope.line = line;
        scope.depth = static_cast<int>(thread.open.size());
        scope.thread = thread.number;
        scope.start = Clock::now() - m_began;
        thread.open.push_back(m_scopes.size());
        m_scopes.push_back(std::move(scope));
    }

    void pop()
    {
        const std::lock_guard lock(m_mutex);
        if (!active.load(std::memory_order_relaxed))
        {
            return;
        }
        Thread& thread = currentThread();
        if (!thread.open.empty()) // else the scope was opened before recording began
        {
            close(thread);
        }
    }

    static inline std::atomic<bool> active{false};

private:
    Recorder() = default;

    struct Thread
    {
        std::uint32_t number = 0;
        std::vector<std::size_t> open;
    };

    Thread& currentThread()
    {
        const auto number = static_cast<std::uint32_t>(m_threads.size() + 1);
        return m_threads.try_emplace(std::this_thread::get_id(), Thread{number, {}}).first->second;
    }

    void close(Thread& thread)
    {
        StackTracker::ScopeRecord& scope = m_scopes[thread.open.back()];
        scope.duration = Clock::now() - m_began - scope.start;
        thread.open.pop_back();
    }

    std::mutex m_mutex;
    std::vector<StackTracker::ScopeRecord> m_scopes;
    std::map<std::thread::id, Thread> m_threads;
    Clock::time_point m_began;
};

/// Made when the library is loaded: made on first use it would be gone before the objects of a program that
/// ends while recording.
[[maybe_unused]] const Recorder& readyBeforeMain = Recorder::instance();

void appendJsonString(std::string& json, std::string_view text)
{
    constexpr std::string_view HEX = "0123456789abcdef";
    json += '"';
    for (const char c : wideToUtf8(utf8ToWide(text))) // JSON is well-formed UTF-8, a name is any bytes
    {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
        {
            json += '\\';
            json += c;
        }
        else if (byte < 0x20)
        {
            json += "\\u00";
            json += HEX[byte >> 4U];
            json += HEX[byte & 15U];
        }
        else
        {
            json += c;
        }
    }
    json += '"';
}

void appendMicroseconds(std::string& json, std::chrono::nanoseconds time)
{
    std::array<char, 64> text{};
    const double microseconds = std::chrono::duration<double, std::micro>(time).count();
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), microseconds, std::chars_format::fixed, 3);
    json.append(text.data(), end);
}

std::string eventOf(const StackTracker::ScopeRecord& scope)
{
    std::string json = R"({"ph":"X","pid":1,"tid":)" + std::to_string(scope.thread) + R"(,"name":)";
    appendJsonString(json, scope.name);
    json += R"(,"ts":)";
    appendMicroseconds(json, scope.start);
    json += R"(,"dur":)";
    appendMicroseconds(json, scope.duration);
    json += R"(,"args":{"file":)";
    appendJsonString(json, scope.file);
    return json + R"(,"line":)" + std::to_string(scope.line) + "}}";
}

/// Writes past the stream's format and locale: a grouped number is no JSON.
void write(std::ostream& out, std::string_view text)
{
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

} // namespace

void StackTracker::push(const char* name, const char* file, int line) noexcept
{
    if (Recorder::active.load(std::memory_order_relaxed))
    {
        Recorder::instance().push(name, file, line);
    }
}

void StackTracker::pop() noexcept
{
    if (Recorder::active.load(std::memory_order_relaxed))
    {
        Recorder::instance().pop();
    }
}

void StackTracker::startRecording()
{
    Recorder::instance().start();
}

bool StackTracker::isRecording() noexcept
{
    return Recorder::active.load(std::memory_order_relaxed);
}

std::vector<StackTracker::ScopeRecord> StackTracker::stopRecording()
{
    return Recorder::instance().stop();
}

void StackTracker::writeChromeTrace(std::ostream& out, const std::vector<ScopeRecord>& record)
{
    write(out, R"({"displayTimeUnit":"ns","traceEvents":[)");
    const char* separator = "\n";
    for (const ScopeRecord& scope : record)
    {
        write(out, separator + eventOf(scope));
        separator = ",\n";
    }
    write(out, "\n]}\n");
}

} // namespace Kodo
