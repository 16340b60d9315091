#include "tern_common/script_file.hpp"

#include "kodo/core/string_conversion.hpp"

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <ios>
#include <locale>

namespace
{

using NarrowToWide = std::codecvt<wchar_t, char, std::mbstate_t>;

/// Widens each byte to one character, a block at a time. The classic locale's own conversion gives up at the
/// first byte above 0x7F on some systems, as if the file ended there, and converts byte by byte.
class ByteWidening final : public NarrowToWide
{
public:
    /// Owned by no locale: one that cannot be made for lack of memory would leave the facet behind.
    ByteWidening() : NarrowToWide(1) {}
    ~ByteWidening() override = default;

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

std::wstring_view ScriptFile::Buffer::available()
{
    if (gptr() == egptr() && traits_type::eq_int_type(underflow(), traits_type::eof()))
    {
        return {};
    }
    return {gptr(), static_cast<std::size_t>(egptr() - gptr())};
}

void ScriptFile::Buffer::consume(std::size_t count)
{
    setg(eback(), gptr() + count, egptr());
}

ScriptFile::ScriptFile(const std::wstring& path) : m_memory(16384)
{
    if (path.find(L'\0') != std::wstring::npos)
    {
        return; // no file has such a name: opening would cut it short
    }
    const std::locale locale = m_buffer.getloc();
    if (convertsAsClassic(locale))
    {
        static ByteWidening widening;
        m_buffer.pubimbue(std::locale(locale, &widening));
    }
    m_buffer.pubsetbuf(m_memory.data(), static_cast<std::streamsize>(m_memory.size()));
#if defined(_WIN32)
    m_buffer.open(std::filesystem::path(path), std::ios_base::in);
#else
    // Not through std::filesystem::path: its conversion from wide text depends on the locale, and throws.
    m_buffer.open(Kodo::wideToUtf8(path), std::ios_base::in);
#endif
}

bool ScriptFile::readLine()
try
{
    m_joined.clear();
    for (;;)
    {
        const std::wstring_view available = m_buffer.available();
        if (available.empty())
        {
            m_line = m_joined;
            return !m_line.empty();
        }
        const std::size_t end = available.find(L'\n');
        const std::wstring_view part = available.substr(0, end);
        if (end == std::wstring_view::npos)
        {
            m_joined.append(part);
            m_buffer.consume(part.size());
            continue;
        }
        m_buffer.consume(end + 1);
        m_line = m_joined.empty() ? part : std::wstring_view(m_joined.append(part));
#if !defined(_WIN32) // where text mode translates line ends, the CR of a CR LF is gone already
        if (m_line.ends_with(L'\r'))
        {
            m_line.remove_suffix(1);
        }
#endif
        return true;
    }
}
catch (const std::ios_base::failure&) // as of a directory, which opens like a file
{
    return false;
}
