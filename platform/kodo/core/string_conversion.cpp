#include "kodo/core/string_conversion.hpp"

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace Kodo
{

namespace
{

namespace utf = boost::locale::utf;

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
            if constexpr (sizeof(From) > 1)
            {
                at = std::next(start); // the unit behind a lone surrogate is looked at on its own
            }
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
