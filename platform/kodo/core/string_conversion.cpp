#include "kodo/core/string_conversion.hpp"

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <type_traits>

namespace Kodo
{

namespace
{

namespace utf = boost::locale::utf;

/// How many units at the start of @p text, where no character can be read, are replaced together.
std::ptrdiff_t malformedLength(std::wstring_view)
{
    return 1; // the unit behind a lone surrogate is looked at on its own
}

std::ptrdiff_t malformedLength(std::string_view text)
{
    const auto byteAt = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned lead = byteAt(0);
    const std::size_t announced = lead < 0xC2 || lead > 0xF4 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::size_t length = 1;
    // Of some leads the second byte has a range of its own: others give overlong forms, surrogates or values
    // beyond the last character.
    unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    while (length < announced && length < text.size() && byteAt(length) >= lowest &&
           byteAt(length) <= highest)
    {
        ++length;
        lowest = 0x80;
        highest = 0xBF;
    }
    return static_cast<std::ptrdiff_t>(length);
}

template <class To, class From>
std::basic_string<To> convert(std::basic_string_view<From> text)
{
    constexpr utf::code_point REPLACEMENT = 0xFFFD;
    std::basic_string<To> result;
    result.reserve(text.size());
    for (auto at = text.begin(); at != text.end();)
    {
        const auto start = at;
        utf::code_point character = utf::utf_traits<From>::decode(at, text.end());
        if (character == utf::illegal || character == utf::incomplete)
        {
            character = REPLACEMENT;
            at = start + malformedLength(text.substr(static_cast<std::size_t>(start - text.begin())));
        }
        utf::utf_traits<To>::encode(character, std::back_inserter(result));
    }
    return result;
}

bool isAscii(wchar_t character)
{
    return static_cast<std::make_unsigned_t<wchar_t>>(character) < 0x80;
}

} // namespace

std::string wideToUtf8(std::wstring_view text)
{
    return std::all_of(text.begin(), text.end(), isAscii) ? std::string(text.begin(), text.end())
                                                          : convert<char>(text);
}

std::wstring utf8ToWide(std::string_view text)
{
    return convert<wchar_t>(text);
}

} // namespace Kodo
