#pragma once

#include "tern_common/command_object.hpp"
#include "tern_common/export.hpp"
#include "vell/variant.hpp"

#include <cstddef>
#include <deque>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class CommandParser;
class RootObject;
class ScriptOrigins;

/// A line of a command script; line 0 means none.
struct ScriptLine
{
    std::wstring script; ///< as it was given to parseScriptFile()
    std::size_t line = 0;
};

/// Runs command scripts against a tree of commands, one command after another: each starts when the one
/// before it has fulfilled its future, and no more than one a tick. Driven from the main thread; a command's
/// future may be fulfilled on any thread.
class TERN_COMMON_API CommandSystem
{
public:
    /// The root has one command, `wait(ticks)`.
    CommandSystem();
    CommandSystem(const CommandSystem&) = delete;
    CommandSystem& operator=(const CommandSystem&) = delete;
    /// Drops the future that is waited for and every command not yet run. Children of the root are not
    /// touched.
    ~CommandSystem();

    /// Where the host adds its objects and commands.
    CommandObject& rootObject() noexcept;

    /// Queues the commands of a script file behind those queued already: all of them, or none when a line is
    /// wrong. A wrong line is reported; a file that cannot be opened queues nothing, in silence. A number
    /// above 2147483647 throws std::out_of_range.
    ///
    /// The file is read with the global C++ locale; under the classic one each byte becomes one character.
    /// Lines end with LF or CR LF.
    void parseScriptFile(const std::wstring& path);

    /// Counts down a running wait; then, if the command started last is done, takes its result and starts the
    /// next one. Rethrows what a command throws or stores in its future; that command is over then, and the
    /// next tick goes on with the queue. A command that cannot be found is reported and skipped.
    ///
    /// Called from within a command, a tick starts nothing: that command has not finished. A command must not
    /// destroy the system that runs it.
    void tick();

    /// True when nothing is queued and nothing is waited for.
    bool isIdle() const noexcept;
    std::size_t queuedCommandCount() const noexcept;

    /// Where the command that was started last stands; it is the running one until the system is idle or
    /// starts the next. Set before the command is looked up, so that its reports can be placed.
    ScriptLine startedLine() const;
    /// The line that parseScriptFile() looked at last.
    ScriptLine parsedLine() const;

private:
    struct QueuedCommand
    {
        std::vector<vell::Variant> args;
        std::vector<std::string> path;
        std::string name;
    };

    using Origin = std::pair<std::shared_ptr<const std::wstring>, std::size_t>;

    static void takeCommand(CommandParser& parser, QueuedCommand& command);
    void append(std::deque<QueuedCommand>&& commands, ScriptOrigins&& origins);
    void start(const QueuedCommand& queued);
    static ScriptLine toScriptLine(const Origin& origin);

    std::unique_ptr<RootObject> m_root;
    std::deque<QueuedCommand> m_queue;
    std::future<void> m_current;
    bool m_starting = false;
    std::unique_ptr<ScriptOrigins> m_origins;
    Origin m_started;
    Origin m_parsed;
};
