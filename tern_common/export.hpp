#pragma once

#include "qua/symbol_visibility.hpp"

#if defined(TERN_COMMON_BUILDING)
#define TERN_COMMON_API QUA_SYMBOL_EXPORT
#else
#define TERN_COMMON_API QUA_SYMBOL_IMPORT
#endif
