#pragma once

#include <algorithm>
#include <string_view>

/// Comparisons in which the letters of ASCII are equal in either case and all other bytes only to themselves,
/// whatever the locale.
namespace AsciiCase
{

inline char lower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool equalCharacters(char a, char b) noexcept
{
    return lower(a) == lower(b);
}

inline bool equal(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), equalCharacters);
}

inline bool contains(std::string_view text, std::string_view part)
{
    return std::search(text.begin(), text.end(), part.begin(), part.end(), equalCharacters) != text.end() ||
           part.empty();
}

inline bool startsWith(std::string_view text, std::string_view prefix)
{
    return equal(text.substr(0, prefix.size()), prefix);
}

} // namespace AsciiCase
