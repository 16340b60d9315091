#pragma once

#include "qua/symbol_visibility.hpp"

#if defined(QUA_BUILDING)
#define QUA_API QUA_SYMBOL_EXPORT
#else
#define QUA_API QUA_SYMBOL_IMPORT
#endif
