#pragma once

#include "vell/variant.hpp"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Parses one line of a command script: names separated by dots, the last one a command's, and its arguments.
///
///     line      = blanks [ "#" ... | command blanks ]
///     command   = name *( blanks "." blanks name ) blanks "(" blanks [ arguments ] ")"
///     name      = ( letter | "_" ) *( letter | digit | "_" )
///     arguments = argument blanks *( "," blanks argument blanks )
///     argument  = 1*digit | "true" | "false" | <"> *( any but <"> ) <">
///
/// The first mistake is reported as a message of priority 5, but for a string without its closing quote,
/// which fails in silence. Letters, digits and blanks are what the C library's wide classification says.
class CommandParser
{
public:
    enum class Result
    {
        EMPTY,  ///< a blank line or a comment
        FAILED, ///< a mistake in the line
        PARSED
    };

    /// Memory for what is parsed, to be handed from line to line.
    struct Storage
    {
        std::vector<std::string> path;
        std::vector<vell::Variant> args;
    };

    /// The text of @p line is not copied and must outlive the parser.
    explicit CommandParser(std::wstring_view line, Storage storage = Storage()) noexcept;

    bool eol() const noexcept { return m_cursor == m_end; }
    /// The character at the cursor, which is not at the end.
    wchar_t current() const noexcept { return *m_cursor; }

    /// Parses the line, once. A number above 2147483647 throws std::out_of_range.
    void parse();

    Result result() const noexcept { return m_result; }
    /// The names in order, as UTF-8; complete when the result is PARSED, and then not empty. May be moved
    /// from.
    std::vector<std::string>& path() noexcept { return m_storage.path; }
    const std::vector<std::string>& path() const noexcept { return m_storage.path; }
    std::vector<vell::Variant>& args() noexcept { return m_storage.args; }
    const std::vector<vell::Variant>& args() const noexcept { return m_storage.args; }

    /// Gives the memory back; the parser is used up.
    Storage takeStorage() noexcept { return std::move(m_storage); }

private:
    void skipBlanks() noexcept;
    bool parsePath();
    void takeName();
    bool parseArgumentList();
    bool parseArguments();
    /// These append the argument; false when there is none.
    bool parseArgument();
    bool parseConstant();
    bool parseNumber();
    bool parseString();

    const wchar_t* m_cursor;
    const wchar_t* m_end;
    Storage m_storage;
    Result m_result = Result::EMPTY;
};
