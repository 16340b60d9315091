#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program where an invariant of a fuzz target does not hold, in every build.
#define FUZZ_CHECK(condition)                                                                                \
    ((condition) ? void()                                                                                    \
                 : (std::fprintf(stderr, "broken: %s at line %d\n", #condition, __LINE__), std::abort()))
