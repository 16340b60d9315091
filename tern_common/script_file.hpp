#pragma once

#include <fstream>
#include <string>
#include <string_view>
#include <vector>

/// Reads a command script line by line, through a wide file buffer's locale: the global one.
class ScriptFile
{
public:
    /// A file that cannot be opened has no lines.
    explicit ScriptFile(const std::wstring& path);
    ScriptFile(const ScriptFile&) = delete;
    ScriptFile& operator=(const ScriptFile&) = delete;

    /// Reads the next line without its end; false when there is none. What cannot be read ends the file.
    /// Memory that runs out is std::bad_alloc.
    bool readLine();
    /// The line read last; valid until the next is read.
    std::wstring_view line() const noexcept { return m_line; }

private:
    /// The characters that the buffer holds can be seen where they are, without a copy of each line.
    class Buffer : public std::wfilebuf
    {
    public:
        /// What is there to read, more of it brought in where need be; empty at the end of the file.
        std::wstring_view available();
        void consume(std::size_t count);
    };

    std::vector<wchar_t> m_memory; ///< of the buffer, and so before it
    Buffer m_buffer;
    std::wstring m_joined; ///< a line that began in an earlier block
    std::wstring_view m_line;
};
