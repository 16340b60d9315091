#pragma once

#include "kodo/core/assertion.hpp"

/// Reports a failed check of this library with the file's path below the library's root, wherever the library
/// was built or installed. Yields the checked value, so that the fallback can stand at the check.
#define TERN_COMMON_ASSERT(expression) TERN_COMMON_ASSERT_AS(expression, #expression)
/// The same, reported as @p text: for checks whose wording is fixed while the code that makes them is not.
#define TERN_COMMON_ASSERT_AS(expression, text)                                                              \
    KODO_ASSERT_AT(expression, text, ::Kodo::pathBelow(__FILE__, "tern_common"), __LINE__)
/// The same, with a line that is fixed too: tools of the editors know these reports by it.
#define TERN_COMMON_ASSERT_ON_LINE(expression, line)                                                         \
    KODO_ASSERT_AT(expression, #expression, ::Kodo::pathBelow(__FILE__, "tern_common"), line)
