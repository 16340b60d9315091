#include "benchmarks/streaming_sum.hpp"

#include "tern_common/curve_view/nearest_sample.hpp"

#include <cstring>
#include <numeric>

#if defined(__x86_64__) && !defined(_WIN32)
#include <immintrin.h>
#endif

namespace
{

// Two sums side by side, as the kernels keep two minima: an addition waits for the last but one.
#if defined(__x86_64__) && !defined(_WIN32)
__attribute__((target("avx2"))) float avx2Sum(const float* numbers, std::size_t count)
{
    __m256 even = _mm256_setzero_ps();
    __m256 odd = _mm256_setzero_ps();
    std::size_t index = 0;
    for (; index + 16 <= count; index += 16)
    {
        even = _mm256_add_ps(even, _mm256_loadu_ps(numbers + index));
        odd = _mm256_add_ps(odd, _mm256_loadu_ps(numbers + index + 8));
    }
    float lanes[8];
    _mm256_storeu_ps(lanes, _mm256_add_ps(even, odd));
    float sum = 0;
    for (const float lane : lanes)
    {
        sum += lane;
    }
    for (; index < count; ++index)
    {
        sum += numbers[index];
    }
    return sum;
}
#endif

/// Two sums of four lanes, which compilers for any processor with vectors of 128 bits vectorise.
float narrowSum(const float* numbers, std::size_t count)
{
    float sums[8] = {};
    std::size_t index = 0;
    for (; index + 8 <= count; index += 8)
    {
        for (std::size_t lane = 0; lane < 8; ++lane)
        {
            sums[lane] += numbers[index + lane];
        }
    }
    return std::accumulate(numbers + index, numbers + count, std::accumulate(sums, sums + 8, 0.0F));
}

} // namespace

float streamingSum(const float* numbers, std::size_t count)
{
#if defined(__x86_64__) && !defined(_WIN32)
    if (std::strcmp(nearestSampleKernels().front().name, "AVX2") == 0)
    {
        return avx2Sum(numbers, count);
    }
#endif
    return narrowSum(numbers, count);
}
