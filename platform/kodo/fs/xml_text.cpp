#include "kodo/fs/xml_text.hpp"

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

void replace(FileContent& text, std::string_view bytes)
{
    FileContent copy = FileContent::ofSize(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.data.get());
    text = std::move(copy);
}

/// Half a unit at the end, and each lone surrogate, becomes U+FFFD.
void convertUtf16(FileContent& text, bool bigEndian)
{
    constexpr utf::code_point REPLACEMENT = 0xFFFD;
    std::vector<char16_t> units(text.size / 2);
    for (std::size_t i = 0; i < units.size(); ++i)
    {
        const auto first = static_cast<unsigned char>(text.data[2 * i]);
        const auto second = static_cast<unsigned char>(text.data[2 * i + 1]);
        units[i] = static_cast<char16_t>(bigEndian ? (first << 8U) | second : (second << 8U) | first);
    }
    std::string bytes;
    bytes.reserve(units.size());
    for (auto at = units.cbegin(); at != units.cend();)
    {
        const auto next = at + 1;
        utf::code_point character = utf::utf_traits<char16_t>::decode(at, units.cend());
        if (character == utf::illegal || character == utf::incomplete)
        {
            character = REPLACEMENT;
            at = next;
        }
        utf::utf_traits<char>::encode(character, std::back_inserter(bytes));
    }
    if (text.size % 2 != 0)
    {
        utf::utf_traits<char>::encode(REPLACEMENT, std::back_inserter(bytes));
    }
    replace(text, bytes);
}

void convertLatin1(FileContent& text)
{
    std::string bytes;
    bytes.reserve(text.size + text.size / 8);
    for (const char byte : text.view())
    {
        utf::utf_traits<char>::encode(static_cast<unsigned char>(byte), std::back_inserter(bytes));
    }
    replace(text, bytes);
}

/// What stands for `encoding` in the XML declaration; empty when nothing does.
std::string_view declaredEncoding(std::string_view text)
{
    if (!text.starts_with("<?xml"))
    {
        return {};
    }
    text = text.substr(0, text.find("?>"));
    const std::size_t key = text.find("encoding");
    const std::size_t open = text.find_first_of("\"'", key);
    if (key == std::string_view::npos || open == std::string_view::npos)
    {
        return {};
    }
    const std::size_t close = text.find(text[open], open + 1);
    return close == std::string_view::npos ? std::string_view() : text.substr(open + 1, close - open - 1);
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
    return {"The encoding " + std::string(encoding) + " is not known",
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
