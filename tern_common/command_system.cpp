#include "tern_common/command_system.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/string_conversion.hpp"
#include "tern_common/command_parser.hpp"
#include "tern_common/script_file.hpp"
#include "tern_common/script_origins.hpp"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cwctype>
#include <iterator>
#include <limits>
#include <optional>
#include <stdexcept>

namespace
{

// ASCII is classified the same in every locale, so that scripts, which are nearly all ASCII, need no call for
// it.
constexpr wchar_t ASCII_END = 0x80;

bool isBlank(wchar_t c)
{
    return c < ASCII_END ? c == L' ' || c == L'\t' : std::iswblank(static_cast<std::wint_t>(c)) != 0;
}

/// What iswdigit says: decimal digits are these ten in every locale.
bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

bool isLetter(wchar_t c)
{
    return c < ASCII_END ? (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z')
                         : std::iswalpha(static_cast<std::wint_t>(c)) != 0;
}

bool isNameCharacter(wchar_t c)
{
    return c < ASCII_END ? isLetter(c) || isDigit(c) || c == L'_'
                         : std::iswalnum(static_cast<std::wint_t>(c)) != 0;
}

/// Reports a mistake in a script line and yields false.
bool syntaxError(const char* text)
{
    Kodo::DebugMessageHelper(0, 5).message(text);
    return false;
}

constexpr const char* END_OF_LINE = "Unexpected end of line";
constexpr const char* WRONG_CHARACTER = "Unexpected character";

std::wstring_view textBetween(const wchar_t* first, const wchar_t* last)
{
    return {first, static_cast<std::size_t>(last - first)};
}

/// Reserves room for what a look ahead counted. A garbled line may promise more than it holds: no more than a
/// handful is believed.
template <class T>
void reserveCounted(std::vector<T>& items, std::ptrdiff_t count)
{
    constexpr std::ptrdiff_t BELIEVED = 16;
    items.reserve(static_cast<std::size_t>(std::min(count, BELIEVED)));
}

} // namespace

CommandParser::CommandParser(std::wstring_view line) noexcept
    : m_cursor(line.data()), m_end(line.data() + line.size())
{
}

void CommandParser::parse()
{
    skipBlanks();
    if (eol() || current() == L'#')
    {
        m_result = Result::EMPTY;
        return;
    }
    m_result = Result::FAILED;
    if (!parsePath() || !parseArgumentList())
    {
        return;
    }
    skipBlanks();
    if (!eol())
    {
        syntaxError("Parse command: unexpected character");
        return;
    }
    m_result = Result::PARSED;
}

void CommandParser::skipBlanks() noexcept
{
    m_cursor = std::find_if_not(m_cursor, m_end, isBlank);
}

bool CommandParser::parsePath()
{
    reservePath();
    do
    {
        if (eol())
        {
            return syntaxError(END_OF_LINE);
        }
        if (!isLetter(current()) && current() != L'_')
        {
            return syntaxError(WRONG_CHARACTER);
        }
        const wchar_t* const first = m_cursor;
        m_cursor = std::find_if_not(m_cursor, m_end, isNameCharacter);
        m_path.push_back(Kodo::wideToUtf8(textBetween(first, m_cursor)));
        skipBlanks();
        if (eol() || current() != L'.')
        {
            return true;
        }
        ++m_cursor;
        skipBlanks();
    } while (!eol());
    return true; // a dot ends the line: the argument list misses its parenthesis and says so
}

bool CommandParser::parseArgumentList()
{
    if (eol())
    {
        return syntaxError(END_OF_LINE);
    }
    if (current() != L'(')
    {
        return syntaxError(WRONG_CHARACTER);
    }
    ++m_cursor;
    skipBlanks();
    if (eol())
    {
        return syntaxError(END_OF_LINE);
    }
    if (current() != L')')
    {
        if (!parseArguments())
        {
            return false;
        }
        if (eol())
        {
            return syntaxError(END_OF_LINE);
        }
        if (current() != L')')
        {
            return syntaxError(WRONG_CHARACTER);
        }
    }
    ++m_cursor;
    return true;
}

bool CommandParser::parseArguments()
{
    reserveArguments();
    do
    {
        vell::Variant argument = parseArgument();
        if (argument.isVoid())
        {
            return false;
        }
        m_args.push_back(std::move(argument));
        skipBlanks();
        if (eol() || current() != L',')
        {
            return true;
        }
        ++m_cursor;
        skipBlanks();
    } while (!eol());
    return true; // a comma ends the line: the list misses its parenthesis and says so
}

vell::Variant CommandParser::parseArgument()
{
    if (eol())
    {
        syntaxError(END_OF_LINE);
        return {};
    }
    if (current() == L'"')
    {
        return parseString();
    }
    if (isDigit(current()))
    {
        return parseNumber();
    }
    if (isLetter(current()))
    {
        return parseConstant();
    }
    syntaxError(WRONG_CHARACTER);
    return {};
}

vell::Variant CommandParser::parseConstant()
{
    TERN_COMMON_ASSERT_AS(!eol() && isLetter(current()), "!eol() && std::iswalpha(current())");
    const wchar_t* const first = m_cursor;
    m_cursor = std::find_if_not(m_cursor, m_end, isLetter);
    const std::wstring_view word = textBetween(first, m_cursor);
    if (word == L"true")
    {
        return true;
    }
    if (word == L"false")
    {
        return false;
    }
    syntaxError("Unknown named constant");
    return {};
}

vell::Variant CommandParser::parseNumber()
{
    TERN_COMMON_ASSERT_AS(!eol() && isDigit(current()), "!eol() && std::iswdigit(current())");
    std::int64_t value = 0;
    for (; !eol() && isDigit(current()); ++m_cursor)
    {
        value = value * 10 + (current() - L'0');
        if (value > std::numeric_limits<std::int32_t>::max())
        {
            // Worded by hand: standard libraries differ in what stoi says.
            throw std::out_of_range("stoi argument out of range");
        }
    }
    return value;
}

vell::Variant CommandParser::parseString()
{
    TERN_COMMON_ASSERT(!eol() && current() == L'"');
    ++m_cursor;
    const wchar_t* const first = m_cursor;
    m_cursor = std::find(m_cursor, m_end, L'"');
    if (eol())
    {
        return {};
    }
    const wchar_t* const last = m_cursor++;
    return Kodo::wideToUtf8(textBetween(first, last));
}

void CommandParser::reservePath()
{
    const wchar_t* const list = std::find(m_cursor, m_end, L'(');
    reserveCounted(m_path, std::count(m_cursor, list, L'.') + 1);
}

void CommandParser::reserveArguments()
{
    std::ptrdiff_t commas = 0;
    bool quoted = false;
    for (const wchar_t* at = m_cursor; at != m_end && (quoted || *at != L')'); ++at)
    {
        quoted ^= *at == L'"';
        commas += static_cast<std::ptrdiff_t>(!quoted && *at == L',');
    }
    reserveCounted(m_args, commas + 1);
}

/// The root of a command system's tree, with the state of its built-in wait.
class RootObject final : public CommandObject
{
public:
    RootObject()
    {
        addCommand("wait", [this](int ticks) { return wait(ticks); });
    }
    RootObject(const RootObject&) = delete;
    RootObject& operator=(const RootObject&) = delete;
    ~RootObject() override = default;

    /// Fulfils the wait whose last tick has passed.
    void countDown()
    {
        if (!m_waitPromise.has_value())
        {
            return;
        }
        if (m_waitCounter == 0)
        {
            m_waitPromise->set_value();
            m_waitPromise.reset();
        }
        else
        {
            --m_waitCounter;
        }
    }

private:
    std::future<void> wait(int ticks)
    {
        TERN_COMMON_ASSERT(!m_waitPromise.has_value());
        m_waitCounter = static_cast<std::uint32_t>(ticks);
        return m_waitPromise.emplace().get_future();
    }

    std::optional<std::promise<void>> m_waitPromise;
    std::uint32_t m_waitCounter = 0; // unsigned: a negative wait counts through the whole 32-bit range
};

CommandSystem::CommandSystem()
    : m_root(std::make_unique<RootObject>()), m_origins(std::make_unique<ScriptOrigins>())
{
}

CommandSystem::~CommandSystem() = default;

CommandObject& CommandSystem::rootObject() noexcept
{
    return *m_root;
}

CommandSystem::QueuedCommand CommandSystem::takeCommand(CommandParser& parser)
{
    TERN_COMMON_ASSERT(parser.result() == CommandParser::Result::PARSED);
    std::vector<std::string>& path = parser.path();
    TERN_COMMON_ASSERT(!path.empty());

    // Vectors of just the size needed: they may wait in the queue for long, and there may be many.
    QueuedCommand command;
    command.args = std::move(parser.args());
    command.args.shrink_to_fit();
    command.path.assign(std::move_iterator(path.begin()), std::move_iterator(path.end() - 1));
    command.name = std::move(path.back());
    return command;
}

void CommandSystem::parseScriptFile(const std::wstring& path)
{
    ScriptFile file(path);
    m_parsed = {std::make_shared<const std::wstring>(path), 0};
    std::deque<QueuedCommand> commands;
    ScriptOrigins origins;
    while (file.readLine())
    {
        ++m_parsed.second;
        CommandParser parser(file.line());
        parser.parse();
        if (parser.result() == CommandParser::Result::EMPTY)
        {
            continue;
        }
        if (parser.result() == CommandParser::Result::FAILED)
        {
            return;
        }
        commands.push_back(takeCommand(parser));
        origins.push(m_parsed.first, m_parsed.second);
    }
    if (m_queue.empty())
    {
        m_queue.swap(commands);
    }
    else
    {
        m_queue.insert(m_queue.end(), std::move_iterator(commands.begin()),
                       std::move_iterator(commands.end()));
    }
    m_origins->append(std::move(origins));
}

void CommandSystem::tick()
{
    m_root->countDown();
    if (m_starting)
    {
        return;
    }
    if (m_current.valid())
    {
        if (m_current.wait_for(std::chrono::nanoseconds(1)) != std::future_status::ready)
        {
            return;
        }
        m_current.get();
    }
    if (m_queue.empty())
    {
        return;
    }
    const QueuedCommand queued = std::move(m_queue.front());
    m_queue.pop_front();
    m_started = m_origins->pop();
    start(queued);
}

void CommandSystem::start(const QueuedCommand& queued)
{
    CommandObject* object = m_root.get();
    for (const std::string& name : queued.path)
    {
        object = object->findChild(name);
        if (!TERN_COMMON_ASSERT(object))
        {
            return;
        }
    }
    const std::shared_ptr<const Command> command = object->shareCommand(queued.name);
    if (!TERN_COMMON_ASSERT(command))
    {
        return;
    }
    struct Starting
    {
        explicit Starting(bool& flag) : m_flag(flag) { m_flag = true; }
        Starting(const Starting&) = delete;
        Starting& operator=(const Starting&) = delete;
        ~Starting() { m_flag = false; }
        bool& m_flag;
    };
    const Starting starting(m_starting);
    m_current = command->invoke(queued.args.size(), queued.args.data());
}

bool CommandSystem::isIdle() const noexcept
{
    return m_queue.empty() && !m_current.valid();
}

std::size_t CommandSystem::queuedCommandCount() const noexcept
{
    return m_queue.size();
}

ScriptLine CommandSystem::startedLine() const
{
    return toScriptLine(m_started);
}

ScriptLine CommandSystem::parsedLine() const
{
    return toScriptLine(m_parsed);
}

ScriptLine CommandSystem::toScriptLine(const Origin& origin)
{
    return origin.first ? ScriptLine{*origin.first, origin.second} : ScriptLine{};
}
