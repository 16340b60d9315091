#pragma once

#include "kodo/core/assertion.hpp"

/// Reports a failed check of the editor with the file's path below the editor's root. Yields the checked
/// value, so that the fallback can stand at the check.
#define TERN_EDITOR_ASSERT(expression)                                                                       \
    KODO_ASSERT_AT(expression, #expression, ::Kodo::pathBelow(__FILE__, "editor"), __LINE__)
