#pragma once

#include "editor/app/editor_options.hpp"
#include "editor/app/name_desk.hpp"
#include "editor/app/script_book.hpp"
#include "editor/commands/level_commands.hpp"
#include "editor/commands/log_commands.hpp"
#include "editor/commands/name_commands.hpp"
#include "editor/level/level.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "tern_common/command_system.hpp"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

/// The editor without a window: opens a level, runs scripts on it and says what it does. Main thread only.
class HeadlessSession
{
public:
    /// What happens is written to @p out, what goes wrong to @p errors; both must outlive the session.
    HeadlessSession(const EditorOptions& options, std::ostream& out, std::ostream& errors);

    /// Does all that the options ask for and gives the program's exit code, 0 or 1.
    int run();

private:
    bool openLevel();
    void queueScripts();
    void queueScript(const std::filesystem::path& script);
    void tickUntilDone();
    void tick();
    void sayInfo(const std::string& text);
    /// Says which command was started, once, before anything that it leads to is said.
    void announce();
    void findMatchingItems();
    void listNames();
    void drawPicture();
    void saveLevel();
    void summarize();

    void receive(const Kodo::DebugMessage& message);
    void complain(const std::string& text);

    const EditorOptions& m_options;
    std::ostream& m_out;
    std::ostream& m_errors;
    ScriptBook m_scripts;
    Level m_level;
    CommandSystem m_system;
    LevelCommands m_commands;
    LogCommands m_logCommands;
    NameDesk m_names;
    NameCommands m_nameCommands;
    MainThreadQueue m_foreignReports;
    Kodo::DebugMessageSink m_sink;
    bool m_isParsing = false;
    bool m_isTicking = false; ///< else no script's line is to blame
    std::uint64_t m_ticks = 0;
    std::size_t m_queued = 0;
    std::size_t m_notAnnounced = 0; ///< queued commands that have not been said to be started
    std::size_t m_started = 0;
    std::size_t m_complaints = 0;
};
