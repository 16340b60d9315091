#pragma once

/// How a library of this code base offers a symbol, and how its users take it.
/// Each library's export.hpp chooses between the two.
#if defined(_WIN32)
#define QUA_SYMBOL_EXPORT __declspec(dllexport)
#define QUA_SYMBOL_IMPORT __declspec(dllimport)
#else
#define QUA_SYMBOL_EXPORT __attribute__((visibility("default")))
#define QUA_SYMBOL_IMPORT __attribute__((visibility("default")))
#endif
