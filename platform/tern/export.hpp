#pragma once

#include "qua/symbol_visibility.hpp"

#if defined(TERN_BUILDING)
#define TERN_API QUA_SYMBOL_EXPORT
#else
#define TERN_API QUA_SYMBOL_IMPORT
#endif
