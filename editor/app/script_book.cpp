#include "editor/app/script_book.hpp"

#include "editor/files/file_error.hpp"
#include "kodo/core/string_conversion.hpp"

#include <algorithm>
#include <sstream>

void ScriptBook::add(const std::filesystem::path& script)
{
    const std::string bytes = readWholeFile(script);
    const std::string valid = Kodo::wideToUtf8(Kodo::utf8ToWide(bytes));
    if (valid != bytes)
    {
        const auto wrong = std::mismatch(bytes.begin(), bytes.end(), valid.begin(), valid.end()).first;
        throw FileError(script, positionAt(bytes, static_cast<std::size_t>(wrong - bytes.begin())),
                        "a script must be UTF-8");
    }
    std::istringstream text(bytes);
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
    {
        if (line.ends_with('\r'))
        {
            line.pop_back();
        }
        lines.push_back(line);
    }
    m_lines[Kodo::utf8ToWide(displayName(script))] = std::move(lines);
}

std::string ScriptBook::describe(const ScriptLine& line) const
{
    std::string text = Kodo::wideToUtf8(line.script) + ":" + std::to_string(line.line);
    if (const std::string* source = find(line))
    {
        const std::size_t first = source->find_first_not_of(" \t");
        text += ": " + (first == std::string::npos ? std::string() : source->substr(first));
    }
    return text;
}

bool ScriptBook::holdsCommand(const ScriptLine& line) const
{
    const std::string* const text = find(line);
    const std::size_t first = text == nullptr ? std::string::npos : text->find_first_not_of(" \t");
    return first != std::string::npos && (*text)[first] != '#';
}

const std::string* ScriptBook::find(const ScriptLine& line) const
{
    const auto script = m_lines.find(line.script);
    return script == m_lines.end() || line.line == 0 || line.line > script->second.size()
               ? nullptr
               : &script->second[line.line - 1];
}
