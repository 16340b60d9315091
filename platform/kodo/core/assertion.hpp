#pragma once

#include "kodo/export.hpp"

#include <cstddef>
#include <string_view>

namespace Kodo
{

/// Reports a failed assertion on the critical channel and returns:
/// "ASSERTION FAILED: <expression>\r\n<path>(<line>)\r\n".
KODO_API void reportAssertion(const char* expression, const char* path, int line) noexcept;

/// The part of @p file, a path as the compiler gives it, below the last directory named @p root; all of it
/// when there is no such directory.
constexpr const char* pathBelow(const char* file, std::string_view root) noexcept
{
    const std::string_view path(file);
    const auto isSeparator = [](char c) { return c == '/' || c == '\\'; };
    for (std::size_t at = path.rfind(root); at != std::string_view::npos;
         at = at == 0 ? std::string_view::npos : path.rfind(root, at - 1))
    {
        const std::size_t end = at + root.size();
        if (end < path.size() && (at == 0 || isSeparator(path[at - 1])) && isSeparator(path[end]))
        {
            return file + end + 1;
        }
    }
    return file;
}

} // namespace Kodo

/// Reports @p expression when it is false and yields its value: the code carries on, and says how at the
/// check. The check is behaviour, so it is there in every build.
#define KODO_ASSERT(expression) KODO_ASSERT_AT(expression, #expression, __FILE__, __LINE__)
/// The same with the report's text, path and line given.
#define KODO_ASSERT_AT(expression, text, path, line)                                                         \
    ((expression) ? true : (::Kodo::reportAssertion(text, path, line), false))
