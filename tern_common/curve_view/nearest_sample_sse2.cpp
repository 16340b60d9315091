#include "tern_common/curve_view/nearest_sample_blocks.hpp"

#if defined(TERN_COMMON_NEAREST_SSE2)

#include <emmintrin.h>

namespace
{

struct Sse2Lanes
{
    using Floats = __m128;
    static constexpr std::size_t WIDTH = 4;

    static TERN_COMMON_LANES_INLINE Floats all(float value) { return _mm_set1_ps(value); }
    static TERN_COMMON_LANES_INLINE Floats add(Floats a, Floats b) { return _mm_add_ps(a, b); }
    static TERN_COMMON_LANES_INLINE Floats subtract(Floats a, Floats b) { return _mm_sub_ps(a, b); }
    static TERN_COMMON_LANES_INLINE Floats multiply(Floats a, Floats b) { return _mm_mul_ps(a, b); }
    /// @p bound where @p value is not a number.
    static TERN_COMMON_LANES_INLINE Floats minimum(Floats value, Floats bound)
    {
        return _mm_min_ps(value, bound);
    }
    static TERN_COMMON_LANES_INLINE unsigned less(Floats a, Floats b)
    {
        return static_cast<unsigned>(_mm_movemask_ps(_mm_cmplt_ps(a, b)));
    }
    static TERN_COMMON_LANES_INLINE unsigned equal(Floats a, Floats b)
    {
        return static_cast<unsigned>(_mm_movemask_ps(_mm_cmpeq_ps(a, b)));
    }
    static TERN_COMMON_LANES_INLINE float leastLane(Floats values)
    {
        const Floats pairs = _mm_min_ps(values, _mm_movehl_ps(values, values));
        return _mm_cvtss_f32(_mm_min_ss(pairs, _mm_shuffle_ps(pairs, pairs, _MM_SHUFFLE(1, 1, 1, 1))));
    }
    static TERN_COMMON_LANES_INLINE void fetch(const char* bytes) { _mm_prefetch(bytes, _MM_HINT_T0); }
    /// Takes four points apart, x0 y0 z0 x1 | y1 z1 x2 y2 | z2 x3 y3 z3.
    static TERN_COMMON_LANES_INLINE void load(const float* numbers, Floats& x, Floats& y, Floats& z)
    {
        const Floats first = _mm_loadu_ps(numbers);
        const Floats second = _mm_loadu_ps(numbers + 4);
        const Floats third = _mm_loadu_ps(numbers + 8);
        const Floats x2y2x3y3 = _mm_shuffle_ps(second, third, _MM_SHUFFLE(2, 1, 3, 2));
        const Floats y0z0y1z1 = _mm_shuffle_ps(first, second, _MM_SHUFFLE(1, 0, 2, 1));
        x = _mm_shuffle_ps(first, x2y2x3y3, _MM_SHUFFLE(2, 0, 3, 0));
        y = _mm_shuffle_ps(y0z0y1z1, x2y2x3y3, _MM_SHUFFLE(3, 1, 2, 0));
        z = _mm_shuffle_ps(y0z0y1z1, third, _MM_SHUFFLE(3, 0, 3, 1));
    }
};

} // namespace

NearestSample sse2NearestSample(const Kodo::Vector3* points, std::size_t count, const Kodo::Ray& ray,
                                float minDistance)
{
    return nearestInBlocks<Sse2Lanes>(points, count, ray, minDistance);
}

#endif
