#include "kodo/core/stack_tracker.hpp"

#include <atomic>
#include <cstddef>
#include <map>
#include <mutex>
#include <ostream>
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

void writeJsonString(std::ostream& out, std::string_view text)
{
    constexpr std::string_view HEX = "0123456789abcdef";
    out << '"';
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
        {
            out << '\\' << c;
        }
        else if (byte < 0x20)
        {
            out << "\\u00" << HEX[byte >> 4U] << HEX[byte & 15U];
        }
        else
        {
            out << c;
        }
    }
    out << '"';
}

double microseconds(std::chrono::nanoseconds time)
{
    return std::chrono::duration<double, std::micro>(time).count();
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
    const std::ios_base::fmtflags flags = out.flags();
    const std::streamsize precision = out.precision();
    out << std::fixed;
    out.precision(3);
    out << "{\"displayTimeUnit\":\"ns\",\"traceEvents\":[";
    const char* separator = "\n";
    for (const ScopeRecord& scope : record)
    {
        out << separator << "{\"ph\":\"X\",\"pid\":1,\"tid\":" << scope.thread << ",\"name\":";
        writeJsonString(out, scope.name);
        out << ",\"ts\":" << microseconds(scope.start) << ",\"dur\":" << microseconds(scope.duration)
            << ",\"args\":{\"file\":";
        writeJsonString(out, scope.file);
        out << ",\"line\":" << scope.line << "}}";
        separator = ",\n";
    }
    out << "\n]}\n";
    out.flags(flags);
    out.precision(precision);
}

} // namespace Kodo
