#include "tern_common/command_parser.hpp"

#include "kodo/core/assertion.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/string_conversion.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cwctype>
#include <limits>
#include <stdexcept>

/// The parser's reports name the command system, as whose part its users know it.
#define PARSER_ASSERT(expression, text) KODO_ASSERT_AT(expression, text, "command_system.cpp", __LINE__)

namespace
{

// What a character may do in a line; a character is of several classes.
constexpr unsigned char BLANK = 1;
constexpr unsigned char DIGIT = 2;
constexpr unsigned char LETTER = 4;
constexpr unsigned char NAME_START = 8;
constexpr unsigned char NAME = 16;

constexpr std::size_t ASCII_SIZE = 0x80;

/// ASCII is classified the same in every locale, so that scripts, which are nearly all ASCII, need no call
/// for it.
constexpr std::array<unsigned char, ASCII_SIZE> ASCII_CLASSES = []
{
    std::array<unsigned char, ASCII_SIZE> classes{};
    classes[' '] = classes['\t'] = BLANK;
    classes['_'] = NAME_START | NAME;
    for (std::size_t digit = '0'; digit <= '9'; ++digit)
    {
        classes[digit] = DIGIT | NAME;
    }
    for (std::size_t letter = 'A'; letter <= 'Z'; ++letter)
    {
        classes[letter] = classes[letter - 'A' + 'a'] = LETTER | NAME_START | NAME;
    }
    return classes;
}();

/// What the C library's wide classification says of a character beyond ASCII; decimal digits are ASCII alone.
unsigned char classifyWide(wchar_t c)
{
    const auto wide = static_cast<std::wint_t>(c);
    return static_cast<unsigned char>((std::iswblank(wide) != 0 ? BLANK : 0) |
                                      (std::iswalpha(wide) != 0 ? LETTER | NAME_START : 0) |
                                      (std::iswalnum(wide) != 0 ? NAME : 0));
}

bool isAscii(wchar_t c)
{
    return static_cast<std::size_t>(c) < ASCII_SIZE;
}

bool isOf(unsigned char kind, wchar_t c)
{
    return ((isAscii(c) ? ASCII_CLASSES[static_cast<std::size_t>(c)] : classifyWide(c)) & kind) != 0;
}

/// The end of the run of characters of a class that starts at @p at.
const wchar_t* endOfRun(unsigned char kind, const wchar_t* at, const wchar_t* end)
{
    while (at != end && isOf(kind, *at))
    {
        ++at;
    }
    return at;
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

} // namespace

CommandParser::CommandParser(std::wstring_view line, Storage storage) noexcept
    : m_cursor(line.data()), m_end(line.data() + line.size()), m_storage(std::move(storage))
{
    m_storage.path.clear();
    m_storage.args.clear();
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
    m_cursor = endOfRun(BLANK, m_cursor, m_end);
}

bool CommandParser::parsePath()
{
    do
    {
        if (eol())
        {
            return syntaxError(END_OF_LINE);
        }
        if (!isOf(NAME_START, current()))
        {
            return syntaxError(WRONG_CHARACTER);
        }
        takeName();
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

void CommandParser::takeName()
{
    const wchar_t* const first = m_cursor;
    bool ascii = true;
    for (; !eol() && isOf(NAME, current()); ++m_cursor)
    {
        ascii &= isAscii(current());
    }
    const std::wstring_view name = textBetween(first, m_cursor);
    if (ascii) // and nearly all names are: narrowed where they are stored, as a move right behind costs as
               // much again
    {
        m_storage.path.emplace_back(name.begin(), name.end());
    }
    else
    {
        m_storage.path.push_back(Kodo::wideToUtf8(name));
    }
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
    do
    {
        if (!parseArgument())
        {
            return false;
        }
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

bool CommandParser::parseArgument()
{
    if (eol())
    {
        return syntaxError(END_OF_LINE);
    }
    if (current() == L'"')
    {
        return parseString();
    }
    if (isOf(DIGIT, current()))
    {
        return parseNumber();
    }
    if (isOf(LETTER, current()))
    {
        return parseConstant();
    }
    return syntaxError(WRONG_CHARACTER);
}

bool CommandParser::parseConstant()
{
    PARSER_ASSERT(!eol() && isOf(LETTER, current()), "!eol() && std::iswalpha(current())");
    const wchar_t* const first = m_cursor;
    m_cursor = endOfRun(LETTER, m_cursor, m_end);
    const std::wstring_view word = textBetween(first, m_cursor);
    const bool value = word == L"true";
    if (!value && word != L"false")
    {
        return syntaxError("Unknown named constant");
    }
    m_storage.args.emplace_back(value);
    return true;
}

bool CommandParser::parseNumber()
{
    PARSER_ASSERT(!eol() && isOf(DIGIT, current()), "!eol() && std::iswdigit(current())");
    std::int64_t value = 0;
    for (; !eol() && isOf(DIGIT, current()); ++m_cursor)
    {
        value = value * 10 + (current() - L'0');
        if (value > std::numeric_limits<std::int32_t>::max())
        {
            // Worded by hand: standard libraries differ in what stoi says.
            throw std::out_of_range("stoi argument out of range");
        }
    }
    m_storage.args.emplace_back(value);
    return true;
}

bool CommandParser::parseString()
{
    PARSER_ASSERT(!eol() && current() == L'"', "!eol() && current() == L'\"'");
    ++m_cursor;
    const wchar_t* const first = m_cursor;
    m_cursor = std::find(m_cursor, m_end, L'"');
    if (eol())
    {
        return false; // in silence
    }
    const std::wstring_view text = textBetween(first, m_cursor);
    if (std::all_of(text.begin(), text.end(), isAscii))
    {
        m_storage.args.emplace_back(std::in_place_type<std::string>, text.begin(), text.end());
    }
    else
    {
        m_storage.args.emplace_back(Kodo::wideToUtf8(text));
    }
    ++m_cursor;
    return true;
}
