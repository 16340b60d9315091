#include "kodo/fs/xml_text.hpp"

#include "kodo/core/text_position.hpp"

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace Kodo::FS
{

namespace
{

using namespace std::literals;
namespace utf = boost::locale::utf;

constexpr std::string_view BLANKS = " \t\r\n";
constexpr std::size_t LONGEST_NAME = 40; ///< of an encoding, in a message

/// How many bytes of UTF-8 a unit of UTF-16 needs at most; half of a pair may stand alone.
std::size_t bytesFor(char16_t unit) noexcept
{
    return unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
}

std::vector<char16_t> unitsOf(std::string_view bytes, bool bigEndian)
{
    std::vector<char16_t> units(bytes.size() / 2);
    for (std::size_t i = 0; i < units.size(); ++i)
    {
        const auto first = static_cast<unsigned char>(bytes[2 * i]);
        const auto second = static_cast<unsigned char>(bytes[2 * i + 1]);
        units[i] = static_cast<char16_t>(bigEndian ? (first << 8U) | second : (second << 8U) | first);
    }
    return units;
}

void setEnd(FileContent& text, const char* end)
{
    text.size = static_cast<std::size_t>(end - text.data.get());
    text.data[text.size] = '\0';
}

/// Half a unit at the end, and each lone surrogate, becomes U+FFFD.
void convertUtf16(FileContent& text, bool bigEndian)
{
    constexpr utf::code_point REPLACEMENT = 0xFFFD;
    const std::vector<char16_t> units = unitsOf(text.view(), bigEndian);
    const bool endsInHalf = text.size % 2 != 0;
    std::size_t size = endsInHalf ? 3 : 0;
    for (const char16_t unit : units)
    {
        size += bytesFor(unit);
    }
    text = {}; // files may be large
    text = FileContent::ofSize(size);
    char* out = text.data.get();
    for (auto at = units.cbegin(); at != units.cend();)
    {
        const auto next = at + 1;
        utf::code_point character = utf::utf_traits<char16_t>::decode(at, units.cend());
        if (character == utf::illegal || character == utf::incomplete)
        {
            character = REPLACEMENT;
            at = next;
        }
        out = utf::utf_traits<char>::encode(character, out);
    }
    setEnd(text, endsInHalf ? utf::utf_traits<char>::encode(REPLACEMENT, out) : out);
}

void convertLatin1(FileContent& text)
{
    const auto beyondAscii =
        std::count_if(text.view().begin(), text.view().end(),
                      [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; });
    FileContent converted = FileContent::ofSize(text.size + static_cast<std::size_t>(beyondAscii));
    char* out = converted.data.get();
    for (const char byte : text.view())
    {
        out = utf::utf_traits<char>::encode(static_cast<unsigned char>(byte), out);
    }
    text = std::move(converted);
}

void skipBlanks(std::string_view& text) noexcept
{
    text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
}

/// What stands for `encoding` in the XML declaration; empty when nothing does.
std::string_view declaredEncoding(std::string_view text)
{
    constexpr std::string_view BEGIN = "<?xml";
    if (!text.starts_with(BEGIN))
    {
        return {};
    }
    text = text.substr(BEGIN.size(), text.find("?>") - BEGIN.size());
    // Blanks, a name, "=", and a value in quotes, as often as there are.
    while (!text.empty() && BLANKS.find(text.front()) != std::string_view::npos)
    {
        skipBlanks(text);
        const std::string_view name = text.substr(0, text.find_first_of(" \t\r\n="));
        text.remove_prefix(name.size());
        skipBlanks(text);
        text.remove_prefix(text.starts_with('=') ? 1 : 0);
        skipBlanks(text);
        const std::size_t close = text.empty() ? std::string_view::npos : text.find(text.front(), 1);
        if (close == std::string_view::npos || (text.front() != '"' && text.front() != '\''))
        {
            return {};
        }
        if (name == "encoding")
        {
            return text.substr(1, close - 1);
        }
        text.remove_prefix(close + 1);
    }
    return {};
}

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names)
{
    std::string upper(name);
    for (char& character : upper)
    {
        character =
            character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
    }
    return std::find(names.begin(), names.end(), upper) != names.end();
}

TextFault convertDeclared(FileContent& text)
{
    const std::string_view encoding = declaredEncoding(text.view());
    // A file that says it is UTF-16 in single bytes was written by a tool that stores UTF-8 and kept the
    // line.
    if (encoding.empty() || isOneOf(encoding, {"UTF-8", "UTF8", "US-ASCII", "ASCII", "UTF-16"}))
    {
        return {};
    }
    if (isOneOf(encoding, {"ISO-8859-1", "LATIN1", "LATIN-1"}))
    {
        convertLatin1(text);
        return {};
    }
    return {"The encoding " + shortened(encoding, LONGEST_NAME) + " is not known",
            static_cast<std::size_t>(encoding.data() - text.data.get())};
}

} // namespace

TextFault makeUtf8(FileContent& text)
{
    const std::string_view bytes = text.view();
    TextFault fault;
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("<\0"sv))
    {
        convertUtf16(text, false);
    }
    else if (bytes.starts_with("\xFE\xFF") || bytes.starts_with("\0<"sv))
    {
        convertUtf16(text, true);
    }
    else
    {
        fault = convertDeclared(text); // behind a byte order mark of UTF-8 there is nothing to declare
    }
    if (const void* nul = std::memchr(text.data.get(), '\0', text.size); nul != nullptr && !fault)
    {
        fault = {"A NUL in the text",
                 static_cast<std::size_t>(static_cast<const char*>(nul) - text.data.get())};
    }
    return fault;
}

} // namespace Kodo::FS
