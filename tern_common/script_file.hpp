#pragma once

#include <fstream>
#include <string>
#include <vector>

/// Reads a command script line by line, through the wide stream's locale.
class ScriptFile
{
public:
    /// A file that cannot be opened has no lines.
    explicit ScriptFile(const std::wstring& path);
    ScriptFile(const ScriptFile&) = delete;
    ScriptFile& operator=(const ScriptFile&) = delete;

    /// Reads the next line without its end; false when there is none.
    bool readLine();
    const std::wstring& line() const noexcept { return m_line; }

private:
    std::vector<wchar_t> m_buffer;
    std::wifstream m_stream;
    std::wstring m_line;
};
