#include "kodo/core/kodo_random.hpp"

#include <algorithm>

namespace Kodo
{

KodoRandom::KodoRandom(std::uint32_t seed) : m_engine(seed) {}

KodoRandom& KodoRandom::instance()
{
    static KodoRandom shared;
    return shared;
}

void KodoRandom::seed(std::uint32_t seed)
{
    m_engine.seed(seed);
}

float KodoRandom::operator()(float min, float max)
{
    // std::uniform_real_distribution would do, were its draws not each library's own choice.
    constexpr double LARGEST = 4294967295.0;
    const double fraction = static_cast<double>(m_engine() & 0xFFFFFFFFU) / LARGEST;
    const double from = min;
    const double drawn = from + (static_cast<double>(max) - from) * fraction;
    return std::clamp(static_cast<float>(drawn), std::min(min, max), std::max(min, max));
}

} // namespace Kodo
