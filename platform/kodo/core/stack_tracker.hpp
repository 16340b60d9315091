#pragma once

#include "kodo/export.hpp"

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace Kodo
{

/// Profiling scopes, nested within each thread. While nothing records, a scope costs an atomic load.
/// Every operation may be called from any thread.
class KODO_API StackTracker
{
public:
    /// A scope that was opened while recording, in the order of opening.
    struct ScopeRecord
    {
        std::string name;
        std::string file;
        int line = 0;
        int depth = 0;                    ///< recorded scopes of the same thread around this one
        std::uint32_t thread = 0;         ///< 1 for the first thread seen, and so on
        std::chrono::nanoseconds start{}; ///< since recording began
        /// Until the scope was closed, or recording ended with the scope still open.
        std::chrono::nanoseconds duration{};
    };

    StackTracker() = delete;

    /// Opens a scope on the calling thread. The texts are copied while recording: they may belong to a
    /// plug-in that is unloaded before the record is read.
    static void push(const char* name, const char* file, int line) noexcept;
    /// Closes the innermost scope of the calling thread. Without one, nothing happens.
    static void pop() noexcept;

    /// Starts a new record, dropping one that is under way.
    static void startRecording();
    static bool isRecording() noexcept;
    /// Ends the record and gives it; empty when none was under way.
    static std::vector<ScopeRecord> stopRecording();

    /// Writes the record as a trace that Chrome's about:tracing and Perfetto read (JSON, complete events,
    /// microseconds). Malformed UTF-8 in the texts becomes U+FFFD. The stream's format and locale do not
    /// matter; its error state tells whether all was written.
    static void writeChromeTrace(std::ostream& out, const std::vector<ScopeRecord>& record);
};

/// A profiling scope for the lifetime of this object.
class StackTrackerScope
{
public:
    StackTrackerScope(const char* name, const char* file, int line) noexcept
    {
        StackTracker::push(name, file, line);
    }
    StackTrackerScope(const StackTrackerScope&) = delete;
    StackTrackerScope& operator=(const StackTrackerScope&) = delete;
    ~StackTrackerScope() { StackTracker::pop(); }
};

} // namespace Kodo

/// Profiles the rest of the block it stands in under @p name. Blocks may hold several and nest.
#define KODO_PROFILE_SCOPE(name) KODO_PROFILE_SCOPE_ON_LINE(name, __LINE__)
#define KODO_PROFILE_SCOPE_ON_LINE(name, line) KODO_PROFILE_SCOPE_NAMED(name, line) // expands __LINE__
#define KODO_PROFILE_SCOPE_NAMED(name, line)                                                                 \
    const ::Kodo::StackTrackerScope kodoProfileScope##line(name, __FILE__, line)
