#pragma once

#include "qua/symbol_visibility.hpp"

#if defined(VELL_BUILDING)
#define VELL_API QUA_SYMBOL_EXPORT
#else
#define VELL_API QUA_SYMBOL_IMPORT
#endif
