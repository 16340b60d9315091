#pragma once

#include "kodo/export.hpp"

#include <string>
#include <string_view>

namespace Kodo
{

/// Converts wide text (UTF-16 or UTF-32, as wide as wchar_t is) to UTF-8. Each unit that is no character or
/// part of one, such as a lone surrogate, becomes U+FFFD.
KODO_API std::string wideToUtf8(std::wstring_view text);

/// Converts UTF-8 to wide text. Each malformed sequence becomes one U+FFFD: the longest piece that a
/// character could begin with, else a single byte. What stands behind it is read on its own.
KODO_API std::wstring utf8ToWide(std::string_view text);

} // namespace Kodo
