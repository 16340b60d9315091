#include "tern_common/script_file.hpp"

#include "kodo/core/string_conversion.hpp"

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <locale>

namespace
{

using NarrowToWide = std::codecvt<wchar_t, char, std::mbstate_t>;

/// Widens each byte to one character, a block at a time. The classic locale's own conversion gives up at the
/// first byte above 0x7F on some systems, as if the file ended there, and converts byte by byte.
class ByteWidening final : public NarrowToWide
{
protected:
    result do_in(std::mbstate_t&, const char* from, const char* fromEnd, const char*& fromNext, wchar_t* to,
                 wchar_t* toEnd, wchar_t*& toNext) const override
    {
        const std::ptrdiff_t count = std::min(fromEnd - from, toEnd - to);
        toNext =
            std::transform(from, from + count, to,
                           [](char byte) { return static_cast<wchar_t>(static_cast<unsigned char>(byte)); });
        fromNext = from + count;
        return fromNext == fromEnd ? ok : partial;
    }

    int do_length(std::mbstate_t&, const char* from, const char* fromEnd, std::size_t most) const override
    {
        return static_cast<int>(std::min(static_cast<std::size_t>(fromEnd - from), most));
    }

    int do_encoding() const noexcept override { return 1; }
    int do_max_length() const noexcept override { return 1; }
    bool do_always_noconv() const noexcept override { return false; }
};

bool convertsAsClassic(const std::locale& locale)
{
    return &std::use_facet<NarrowToWide>(locale) == &std::use_facet<NarrowToWide>(std::locale::classic());
}

} // namespace

ScriptFile::ScriptFile(const std::wstring& path) : m_buffer(16384)
{
    if (path.find(L'\0') != std::wstring::npos)
    {
        m_stream.setstate(std::ios_base::failbit); // no file has such a name: opening would cut it short
        return;
    }
    if (convertsAsClassic(m_stream.getloc()))
    {
        m_stream.imbue(std::locale(m_stream.getloc(), new ByteWidening));
    }
    m_stream.rdbuf()->pubsetbuf(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
#if defined(_WIN32)
    m_stream.open(std::filesystem::path(path), std::ios_base::in);
#else
    // Not through std::filesystem::path: its conversion from wide text depends on the locale, and throws.
    m_stream.open(Kodo::wideToUtf8(path), std::ios_base::in);
#endif
}

bool ScriptFile::readLine()
{
    if (!std::getline(m_stream, m_line))
    {
        return false;
    }
#if !defined(_WIN32) // where text mode translates line ends, the CR of a CR LF is gone already
    const bool endedByLineFeed = !m_stream.eof();
    if (endedByLineFeed && !m_line.empty() && m_line.back() == L'\r')
    {
        m_line.pop_back();
    }
#endif
    return true;
}
