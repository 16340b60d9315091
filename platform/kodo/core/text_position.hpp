#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Kodo
{

/// A place in a file as messages name it: "name:line:column", both from 1 on, the column in characters of
/// UTF-8.
std::string textPosition(std::string_view name, std::string_view text, std::size_t offset);

} // namespace Kodo
