#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Kodo
{

/// A place in a file as messages name it: "name:line:column", both from 1 on, the column in characters of
/// UTF-8.
std::string textPosition(std::string_view name, std::string_view text, std::size_t offset);

/// What a file says, to be repeated in a message: of a longer text the first @p limit bytes and "...",
/// without a part of a character at the end.
std::string shortened(std::string_view text, std::size_t limit);

} // namespace Kodo
