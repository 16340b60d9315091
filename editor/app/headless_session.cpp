#include "editor/app/headless_session.hpp"

#include "editor/app/find_items.hpp"
#include "editor/app/output_files.hpp"
#include "editor/app/session_text.hpp"
#include "editor/files/atomic_file.hpp"
#include "editor/files/file_error.hpp"
#include "editor/level/level_file.hpp"
#include "editor/level/track_curve.hpp"
#include "editor/picture/level_picture.hpp"
#include "editor/render/gl_error.hpp"
#include "kodo/core/kodo_random.hpp"
#include "kodo/core/main_thread_tracker.hpp"
#include "kodo/core/stack_tracker.hpp"
#include "kodo/core/string_conversion.hpp"

#include <fstream>
#include <new>
#include <ostream>
#include <sstream>

namespace fs = std::filesystem;
using SessionText::count;

HeadlessSession::HeadlessSession(const EditorOptions& options, std::ostream& out, std::ostream& errors)
    : m_options(options), m_out(out), m_errors(errors), m_commands(m_system.rootObject(), m_level),
      m_logCommands(m_system.rootObject(), [this](const std::string& text) { sayInfo(text); }),
      m_names(options, out),
      m_nameCommands(
          m_system.rootObject(), [this](const std::string& language) { m_names.setLanguage(language); },
          [this](const std::string& key)
          {
              announce();
              m_names.show(key);
          }),
      m_sink([this](const Kodo::DebugMessage& message) { receive(message); })
{
}

int HeadlessSession::run()
{
    if (m_options.trace)
    {
        Kodo::StackTracker::startRecording();
    }
    if (const auto mistake = findOutputMistake(m_options))
    {
        complain(*mistake);
        return 1;
    }
    if (openLevel())
    {
        queueScripts();
        tickUntilDone();
        findMatchingItems();
        listNames();
        drawPicture();
        saveLevel();
        summarize();
    }
    if (m_options.trace)
    {
        std::ostringstream trace;
        Kodo::StackTracker::writeChromeTrace(trace, Kodo::StackTracker::stopRecording());
        std::ofstream file(*m_options.trace, std::ios::binary);
        if (!(file << trace.str()).flush())
        {
            complain(displayName(*m_options.trace) + ": the trace cannot be written");
        }
    }
    return m_complaints == 0 ? 0 : 1;
}

bool HeadlessSession::openLevel()
{
    KODO_PROFILE_SCOPE("HeadlessSession::openLevel");
    try
    {
        m_level.replace(readDocument(*m_options.level));
    }
    catch (const FileError& error)
    {
        complain(error.what());
        return false;
    }
    m_out << displayName(*m_options.level) << ": " << SessionText::describe(m_level.data()) << '\n';
    return true;
}

void HeadlessSession::queueScripts()
{
    KODO_PROFILE_SCOPE("HeadlessSession::queueScripts");
    for (const fs::path& script : m_options.scripts)
    {
        queueScript(script);
    }
}

void HeadlessSession::queueScript(const fs::path& script)
{
    const std::wstring wideName = Kodo::utf8ToWide(displayName(script));
    try
    {
        m_scripts.add(script);
        if (Kodo::wideToUtf8(wideName) != displayName(script))
        {
            throw FileError(script, "the name of a script must be UTF-8");
        }
    }
    catch (const FileError& error)
    {
        complain(error.what());
        return;
    }
    const std::size_t queuedBefore = m_system.queuedCommandCount();
    const std::size_t complaintsBefore = m_complaints;
    m_isParsing = true;
    try
    {
        m_system.parseScriptFile(wideName);
    }
    catch (const std::exception& error)
    {
        complain(m_scripts.describe(m_system.parsedLine()) + ": " + error.what());
    }
    m_isParsing = false;
    const std::size_t queued = m_system.queuedCommandCount() - queuedBefore;
    m_queued += queued;
    m_notAnnounced = m_system.queuedCommandCount();
    if (queued == 0 && m_complaints == complaintsBefore && m_scripts.holdsCommand(m_system.parsedLine()))
    {
        // The parser drops a script with such a line in silence.
        complain(m_scripts.describe(m_system.parsedLine()) + ": a text without its closing quote");
    }
    m_out << displayName(script) << ": "
          << (m_complaints == complaintsBefore ? count(queued, "command") : "not run: a line is wrong")
          << '\n';
}

void HeadlessSession::tickUntilDone()
{
    m_isTicking = true;
    while (!m_system.isIdle() && m_ticks < m_options.maxTicks)
    {
        tick();
    }
    static_cast<void>(m_commands.level()); // what the last command brought comes in its name
    m_isTicking = false;
    if (!m_system.isIdle())
    {
        const std::string where =
            m_started == 0 ? "before the first command" : "at " + m_scripts.describe(m_system.startedLine());
        complain("gave up after " + count(m_ticks, "tick") + " " + where + " (" +
                 count(m_system.queuedCommandCount(), "command") + " not started)");
    }
}

void HeadlessSession::tick()
{
    KODO_PROFILE_SCOPE("HeadlessSession::tick");
    m_foreignReports.drain();
    ++m_ticks;
    try
    {
        m_system.tick();
    }
    catch (const std::exception& error)
    {
        announce();
        complain(m_scripts.describe(m_system.startedLine()) + ": " + error.what());
    }
    catch (...)
    {
        announce();
        complain(m_scripts.describe(m_system.startedLine()) + ": an exception of unknown type");
    }
    announce();
}

void HeadlessSession::sayInfo(const std::string& text)
{
    announce();
    m_out << "info: " << text << '\n';
}

void HeadlessSession::announce()
{
    if (m_system.queuedCommandCount() < m_notAnnounced)
    {
        ++m_started;
        m_out << "tick " << m_ticks << ": " << m_scripts.describe(m_system.startedLine()) << '\n';
    }
    m_notAnnounced = m_system.queuedCommandCount();
}

void HeadlessSession::findMatchingItems()
{
    if (!m_options.find)
    {
        return;
    }
    KODO_PROFILE_SCOPE("HeadlessSession::findMatchingItems");
    FilterQuery query;
    if (!query.setQueryString(*m_options.find))
    {
        complain("--find: the query holds a control character");
        return;
    }
    for (const FilterMark& mark : query.marks())
    {
        complain("--find: " + describe(mark));
    }
    const LevelData level = m_commands.level().data();
    const std::vector<std::size_t> found = findItems(level, query);
    for (const std::size_t index : found)
    {
        m_out << "found: " << describe(level.items[index]) << '\n';
    }
    m_out << "found " << found.size() << " of " << count(level.items.size(), "item") << '\n';
}

void HeadlessSession::listNames()
{
    if (!m_options.names)
    {
        return;
    }
    KODO_PROFILE_SCOPE("HeadlessSession::listNames");
    try
    {
        m_names.list(m_commands.level().data());
    }
    catch (const NamesError& error)
    {
        complain(error.what());
    }
}

void HeadlessSession::drawPicture()
{
    if (!m_options.picture)
    {
        return;
    }
    KODO_PROFILE_SCOPE("HeadlessSession::drawPicture");
    const std::string name = displayName(*m_options.picture);
    try
    {
        Kodo::KodoRandom::instance().seed(m_options.seed); // the same picture every time
        const RgbPicture picture = drawLevel(m_commands.level(), m_options.camera, m_options.size);
        const std::string png = formatPng(picture);
        if (png.empty())
        {
            complain(name + ": not drawn: there is no PNG of such a picture");
            return;
        }
        replaceFile(*m_options.picture, png);
        m_out << name << ": drawn, " << picture.width << "x" << picture.height << " pixels\n";
    }
    catch (const GlError& error)
    {
        complain(name + ": not drawn: " + error.what());
    }
    catch (const std::bad_alloc&) // what the scripts did is saved all the same
    {
        complain(name + ": not drawn: not enough memory");
    }
    catch (const FileError& error)
    {
        complain(error.what());
    }
}

void HeadlessSession::saveLevel()
{
    if (!m_options.save)
    {
        return;
    }
    KODO_PROFILE_SCOPE("HeadlessSession::saveLevel");
    m_foreignReports.drain();
    const LevelData level = m_commands.level().data();
    std::error_code ignored;
    if (m_complaints != 0 && fs::equivalent(*m_options.save, *m_options.level, ignored))
    {
        // Half of what was asked for must not take the place of the original.
        complain(displayName(*m_options.save) +
                 ": not saved over the level it came from: " + count(m_complaints, "report"));
        return;
    }
    try
    {
        writeLevelFile(*m_options.save, level);
        m_out << displayName(*m_options.save) << ": saved\n";
    }
    catch (const FileError& error)
    {
        complain(error.what());
    }
}

void HeadlessSession::summarize()
{
    m_foreignReports.drain();
    m_out << "done: " << m_started << " of " << count(m_queued, "command") << " started in "
          << count(m_ticks, "tick") << ", " << count(m_complaints, "report") << "; "
          << SessionText::describe(m_commands.level().data()) << '\n';
}

void HeadlessSession::receive(const Kodo::DebugMessage& message)
{
    if (!Kodo::MainThreadTracker::isCurrentThreadMain())
    {
        m_foreignReports.post([this, text = SessionText::onOneLine(message.text)] { complain(text); });
        return;
    }
    if (!m_names.isNews(message.text))
    {
        return;
    }
    if (!m_isParsing)
    {
        announce();
    }
    const ScriptLine line = m_isParsing   ? m_system.parsedLine()
                            : m_isTicking ? m_system.startedLine()
                                          : ScriptLine();
    complain((line.line == 0 ? std::string() : m_scripts.describe(line) + ": ") +
             SessionText::onOneLine(message.text));
}

void HeadlessSession::complain(const std::string& text)
{
    ++m_complaints;
    m_out.flush(); // so that both streams read in order where they end in one place
    m_errors << "error: " << text << '\n';
}
