#pragma once

#include "qua/symbol_visibility.hpp"

#if defined(KODO_BUILDING)
#define KODO_API QUA_SYMBOL_EXPORT
#else
#define KODO_API QUA_SYMBOL_IMPORT
#endif
