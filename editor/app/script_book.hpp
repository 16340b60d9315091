#pragma once

#include "tern_common/command_system.hpp"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// The texts of the scripts that were queued, to show the line a command came from.
class ScriptBook
{
public:
    /// Reads the script's lines. Throws FileError where it cannot be read or is not UTF-8, which the command
    /// system keeps silent.
    void add(const std::filesystem::path& script);

    /// "script:line: text", as much of it as is known.
    std::string describe(const ScriptLine& line) const;

    /// Whether a command should stand on this line: it is neither blank nor a comment.
    bool holdsCommand(const ScriptLine& line) const;

private:
    const std::string* find(const ScriptLine& line) const;

    std::map<std::wstring, std::vector<std::string>> m_lines;
};
