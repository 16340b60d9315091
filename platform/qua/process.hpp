#pragma once

#include "qua/connection.hpp"
#include "qua/export.hpp"
#include "qua/flags.hpp"

#include <cstdint>
#include <functional>
#include <string>
#include <system_error>

namespace qua
{

/// A program to be started by its command line.
///
/// The line means the same on every system, and no shell reads it. Its arguments are split as Windows
/// programs split theirs: at blanks and tabs outside double quotes; a backslash is an ordinary character but
/// before a quote, where two stand for one and an odd one takes the quote's meaning away; two quotes within
/// quotes stand for one. Argument 0, the program, has a rule of its own:
/// - in quotes, it ends with them, and backslashes in it are ordinary characters;
/// - else it is the shortest beginning of the line, cut at a blank or at the end, that names a program. So an
///   unquoted path may contain blanks, unless a program stands at a shorter beginning of it.
/// A name without a directory is looked for where the system looks for programs; one with a relative
/// directory starts from this process's working directory.
///
/// Objects are not synchronised; different ones may be used in different threads at once.
class QUA_API Process
{
public:
    enum class Flag : std::uint32_t
    {
        KeepOutput = 1 ///< share this process's standard output and error; else both go to the null device
    };

    /// Starts nothing. @p workingDirectory is the new process's; a relative one starts from this process's.
    Process(const std::string& commandLine, const std::string& workingDirectory);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    /// Leaves a started process running.
    ~Process();

    const std::string& commandLine() const noexcept { return m_commandLine; }
    const std::string& workingDirectory() const noexcept { return m_workingDirectory; }

    /// Starts the program and lets go of it: it has a session of its own, outlives this process, leaves no
    /// zombie, reads from the null device, and gets the environment but no other handle or descriptor and no
    /// signal setting of this process. Returns once the program runs, or false when it cannot be started:
    /// no such program or directory, no permission, or a line that is longer than the system allows.
    ///
    /// May be called again, which starts another process.
    bool execDetached(Flags<Flag> flags);

    /// Why the last start failed; no error after one that succeeded.
    const std::error_code& error() const noexcept { return m_error; }

    /// Calls @p slot after every start that fails, in the thread that tried: for a log. What the slot throws
    /// is dropped, so that nobody's start fails differently because somebody watches.
    [[nodiscard]] static Connection connectStartFailed(std::function<void(const Process& process)> slot);

private:
    std::string m_commandLine;
    std::string m_workingDirectory;
    std::error_code m_error;
};

} // namespace qua
