#include "tern_common/curve_view/nearest_sample_blocks.hpp"

#if defined(TERN_COMMON_NEAREST_AVX2)

#include <immintrin.h>

namespace
{

struct Avx2Lanes
{
    using Floats = __m256;
    static constexpr std::size_t WIDTH = 8;

    static TERN_COMMON_LANES_INLINE Floats all(float value) { return _mm256_set1_ps(value); }
    static TERN_COMMON_LANES_INLINE Floats add(Floats a, Floats b) { return _mm256_add_ps(a, b); }
    static TERN_COMMON_LANES_INLINE Floats subtract(Floats a, Floats b) { return _mm256_sub_ps(a, b); }
    static TERN_COMMON_LANES_INLINE Floats multiply(Floats a, Floats b) { return _mm256_mul_ps(a, b); }
    /// @p bound where @p value is not a number.
    static TERN_COMMON_LANES_INLINE Floats minimum(Floats value, Floats bound)
    {
        return _mm256_min_ps(value, bound);
    }
    static TERN_COMMON_LANES_INLINE unsigned less(Floats a, Floats b)
    {
        return static_cast<unsigned>(_mm256_movemask_ps(_mm256_cmp_ps(a, b, _CMP_LT_OQ)));
    }
    static TERN_COMMON_LANES_INLINE unsigned equal(Floats a, Floats b)
    {
        return static_cast<unsigned>(_mm256_movemask_ps(_mm256_cmp_ps(a, b, _CMP_EQ_OQ)));
    }
    static TERN_COMMON_LANES_INLINE float leastLane(Floats values)
    {
        const __m128 halves = _mm_min_ps(_mm256_castps256_ps128(values), _mm256_extractf128_ps(values, 1));
        const __m128 pairs = _mm_min_ps(halves, _mm_movehl_ps(halves, halves));
        return _mm_cvtss_f32(_mm_min_ss(pairs, _mm_shuffle_ps(pairs, pairs, _MM_SHUFFLE(1, 1, 1, 1))));
    }
    static TERN_COMMON_LANES_INLINE void fetch(const char* bytes) { _mm_prefetch(bytes, _MM_HINT_T0); }
    /// Takes eight points apart as two groups of four, x0 y0 z0 x1 | y1 z1 x2 y2 | z2 x3 y3 z3.
    static TERN_COMMON_LANES_INLINE void load(const float* numbers, Floats& x, Floats& y, Floats& z)
    {
        const Floats first = halves(numbers, numbers + 12);
        const Floats second = halves(numbers + 4, numbers + 16);
        const Floats third = halves(numbers + 8, numbers + 20);
        const Floats x2y2x3y3 = _mm256_shuffle_ps(second, third, _MM_SHUFFLE(2, 1, 3, 2));
        const Floats y0z0y1z1 = _mm256_shuffle_ps(first, second, _MM_SHUFFLE(1, 0, 2, 1));
        x = _mm256_shuffle_ps(first, x2y2x3y3, _MM_SHUFFLE(2, 0, 3, 0));
        y = _mm256_shuffle_ps(y0z0y1z1, x2y2x3y3, _MM_SHUFFLE(3, 1, 2, 0));
        z = _mm256_shuffle_ps(y0z0y1z1, third, _MM_SHUFFLE(3, 0, 3, 1));
    }

private:
    static TERN_COMMON_LANES_INLINE Floats halves(const float* low, const float* high)
    {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(low)), _mm_loadu_ps(high), 1);
    }
};

} // namespace

NearestSample avx2NearestSample(const Kodo::Vector3* points, std::size_t count, const Kodo::Ray& ray,
                                float minDistance)
{
    return nearestInBlocks<Avx2Lanes>(points, count, ray, minDistance);
}

#endif
