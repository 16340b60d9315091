#pragma once

#include "tern_common/curve_view/nearest_sample.hpp"

// The vectorised kernels need a processor whose scalar arithmetic rounds as its vectors do: x86-64.
// Windows goes without the wider one: there GCC keeps 256-bit values on a stack that is aligned to 16 bytes.
#if defined(__x86_64__) || defined(_M_X64)
#define TERN_COMMON_NEAREST_SSE2
#if defined(__GNUC__) && !defined(_WIN32)
#define TERN_COMMON_NEAREST_AVX2
#endif
#endif

NearestSampleKernel::Function plainNearestSample;
NearestSampleKernel::Function sse2NearestSample;
NearestSampleKernel::Function avx2NearestSample;
