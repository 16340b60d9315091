// Compares the parser with a second one of another kind: a table of states and character classes.

#include "tern_common/command_parser.hpp"

#include "kodo/core/string_conversion.hpp"
#include "tests/support/random_seed.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace
{

using Argument = std::variant<bool, std::int64_t, std::string>;

/// All that a line leads to.
struct Outcome
{
    CommandParser::Result result = CommandParser::Result::EMPTY;
    std::vector<std::string> messages;
    std::string exception;
    std::vector<std::string> path;
    std::vector<Argument> args;

    bool operator==(const Outcome&) const = default;
};

Outcome parse(const std::wstring& line)
{
    const CollectReports reports;
    Outcome outcome;
    CommandParser parser(line);
    try
    {
        parser.parse();
    }
    catch (const std::exception& error)
    {
        outcome.exception = error.what();
        return outcome;
    }
    outcome.result = parser.result();
    outcome.messages = reports.texts();
    if (outcome.result == CommandParser::Result::PARSED)
    {
        outcome.path = parser.path();
        for (const vell::Variant& argument : parser.args())
        {
            if (const bool* flag = argument.peek<bool>())
            {
                outcome.args.emplace_back(*flag);
            }
            else if (const auto* number = argument.peek<std::int64_t>())
            {
                outcome.args.emplace_back(*number);
            }
            else
            {
                outcome.args.emplace_back(argument.cast<std::string>());
            }
        }
    }
    return outcome;
}

/// The grammar as a finite automaton. Character classes: b blank, a letter, 0 digit, _ . ( ) , " #
/// themselves, $ end of line, ? anything else.
class TableParser
{
public:
    Outcome parse(const std::wstring& line)
    {
        m_outcome = {};
        m_state = Start;
        for (const wchar_t c : line)
        {
            if (!step(classOf(c), c))
            {
                return m_outcome;
            }
        }
        step('$', L'\0');
        return m_outcome;
    }

private:
    enum State
    {
        Start,
        Name,
        AfterName,
        AfterDot,
        AfterOpen,
        Number,
        Constant,
        Text,
        AfterArgument,
        AfterComma,
        Done
    };

    static char classOf(wchar_t c)
    {
        if (c == L' ' || c == L'\t')
        {
            return 'b';
        }
        if ((c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z'))
        {
            return 'a';
        }
        if (c >= L'0' && c <= L'9')
        {
            return '0';
        }
        return std::wstring_view(L"_.(),\"#").find(c) != std::wstring_view::npos ? static_cast<char>(c) : '?';
    }

    bool finish(CommandParser::Result result, const char* message = nullptr)
    {
        m_outcome.result = result;
        if (message != nullptr)
        {
            m_outcome.messages.emplace_back(message);
        }
        if (result != CommandParser::Result::PARSED)
        {
            m_outcome.path.clear();
            m_outcome.args.clear();
        }
        return false;
    }

    bool fail(char kind)
    {
        return finish(CommandParser::Result::FAILED,
                      kind == '$' ? "Unexpected end of line" : "Unexpected character");
    }

    bool go(State state)
    {
        m_state = state;
        return true;
    }

    bool beginName(wchar_t c)
    {
        m_token.assign(1, c);
        return go(Name);
    }

    bool beginArgument(char kind, wchar_t c)
    {
        m_token.assign(1, c);
        switch (kind)
        {
        case '"':
            m_token.clear();
            return go(Text);
        case '0':
            return go(Number);
        case 'a':
            return go(Constant);
        default:
            return fail(kind);
        }
    }

    bool endNumber()
    {
        const std::size_t first = m_token.find_first_not_of(L'0');
        const std::wstring digits = first == std::wstring::npos ? L"0" : m_token.substr(first);
        if (digits.size() > 10 || (digits.size() == 10 && digits > L"2147483647"))
        {
            m_outcome = {};
            m_outcome.exception = "stoi argument out of range";
            return false;
        }
        m_outcome.args.emplace_back(static_cast<std::int64_t>(std::stoll(digits)));
        return true;
    }

    bool endConstant()
    {
        if (m_token != L"true" && m_token != L"false")
        {
            return finish(CommandParser::Result::FAILED, "Unknown named constant");
        }
        m_outcome.args.emplace_back(m_token == L"true");
        return true;
    }

    bool step(char kind, wchar_t c)
    {
        switch (m_state)
        {
        case Start:
            if (kind == 'b')
            {
                return true;
            }
            if (kind == '$' || kind == '#')
            {
                return finish(CommandParser::Result::EMPTY);
            }
            return kind == 'a' || kind == '_' ? beginName(c) : fail(kind);
        case Name:
            if (kind == 'a' || kind == '0' || kind == '_')
            {
                m_token.push_back(c);
                return true;
            }
            m_outcome.path.push_back(Kodo::wideToUtf8(m_token));
            m_state = AfterName;
            return step(kind, c);
        case AfterName:
            return kind == 'b' || (kind == '.' && go(AfterDot)) || (kind == '(' && go(AfterOpen)) ||
                   (kind != '.' && kind != '(' && fail(kind));
        case AfterDot:
            return kind == 'b' || (kind == 'a' || kind == '_' ? beginName(c) : fail(kind));
        case AfterOpen:
            return kind == 'b' || (kind == ')' ? go(Done) : beginArgument(kind, c));
        case Number:
            if (kind == '0')
            {
                m_token.push_back(c);
                return true;
            }
            m_state = AfterArgument;
            return endNumber() && step(kind, c);
        case Constant:
            if (kind == 'a')
            {
                m_token.push_back(c);
                return true;
            }
            m_state = AfterArgument;
            return endConstant() && step(kind, c);
        case Text:
            if (kind == '$')
            {
                return finish(CommandParser::Result::FAILED);
            }
            if (kind == '"')
            {
                m_outcome.args.emplace_back(Kodo::wideToUtf8(m_token));
                return go(AfterArgument);
            }
            m_token.push_back(c);
            return true;
        case AfterArgument:
            return kind == 'b' || (kind == ',' && go(AfterComma)) || (kind == ')' && go(Done)) ||
                   (kind != ',' && kind != ')' && fail(kind));
        case AfterComma:
            return kind == 'b' || beginArgument(kind, c);
        case Done:
            if (kind == 'b')
            {
                return true;
            }
            return kind == '$' ? finish(CommandParser::Result::PARSED)
                               : finish(CommandParser::Result::FAILED, "Parse command: unexpected character");
        }
        return false;
    }

    State m_state = Start;
    std::wstring m_token;
    Outcome m_outcome;
};

/// Random lines near the grammar: pieces of valid commands, then a few edits.
class LineGenerator
{
public:
    explicit LineGenerator(std::uint64_t seed) : m_random(seed) {}

    std::wstring line()
    {
        std::wstring line = blanks() + name();
        for (unsigned more = pick(3); more > 0; --more)
        {
            line += blanks() + L"." + blanks() + name();
        }
        line += blanks() + L"(" + blanks();
        for (unsigned more = pick(4); more > 0; --more)
        {
            line += argument() + blanks() + (more > 1 ? L"," : L"") + blanks();
        }
        line += L")" + blanks();
        for (unsigned edits = pick(2) == 0 ? 0 : pick(3); edits > 0; --edits)
        {
            edit(line);
        }
        return line;
    }

private:
    unsigned pick(unsigned count) { return static_cast<unsigned>(m_random() % count); }

    template <std::size_t Size>
    std::wstring oneOf(const std::array<const wchar_t*, Size>& choices)
    {
        return choices[pick(Size)];
    }

    std::wstring blanks() { return oneOf(std::array{L"", L"", L" ", L"\t "}); }
    std::wstring name() { return oneOf(std::array{L"a", L"_", L"Obj", L"cmd_2", L"x9y", L"true"}); }
    std::wstring argument()
    {
        return oneOf(std::array{L"0", L"12", L"2147483647", L"2147483648", L"0000000000000009", L"true",
                                L"false", L"True", L"\"\"", L"\"a b\"", L"\"\u00e9,)(\"", L"\"#\"",
                                L"99999999999999999999999"});
    }

    void edit(std::wstring& line)
    {
        constexpr std::wstring_view ALPHABET = L"ab_T09 \t.,()\"#-+\r\n\u00e9;";
        const std::size_t at = line.empty() ? 0 : m_random() % line.size();
        const wchar_t c = ALPHABET[pick(static_cast<unsigned>(ALPHABET.size()))];
        switch (pick(4))
        {
        case 0:
            line.insert(at, 1, c);
            break;
        case 1:
            line.erase(at, 1);
            break;
        case 2:
            line.resize(at);
            break;
        default:
            line.insert(at, 1, pick(8) == 0 ? L'\0' : c);
            break;
        }
    }

    std::mt19937_64 m_random;
};

TEST(CommandParserModelTest, AgreesWithTheGrammarAsATable)
{
    LineGenerator generator(randomSeed());
    TableParser table;
    std::map<std::string, int> seen;
    for (int i = 0; i < 200000; ++i)
    {
        const std::wstring line = generator.line();
        const Outcome expected = table.parse(line);
        ASSERT_TRUE(parse(line) == expected) << testing::PrintToString(line);
        ++seen[std::to_string(static_cast<int>(expected.result)) +
               (expected.messages.empty() ? expected.exception : expected.messages.front())];
    }
    // The lines reached every way a line can end, so that agreement means something.
    for (const char* outcome :
         {"0", "1", "1Unexpected character", "1Unexpected end of line", "1Unknown named constant",
          "1Parse command: unexpected character", "2", "0stoi argument out of range"})
    {
        EXPECT_GT(seen[outcome], 100) << outcome;
    }
}

} // namespace
