#pragma once

#include "kodo/export.hpp"

#include <cstdint>
#include <random>

namespace Kodo
{

/// Random numbers whose sequence for a seed is the same with every compiler and standard library: the 32-bit
/// Mersenne Twister of the standard, and a mapping to the range of our own. Not synchronised: threads that
/// share a generator share its sequence and take turns by themselves.
class KODO_API KodoRandom
{
public:
    static constexpr std::uint32_t DEFAULT_SEED = 5489;

    explicit KodoRandom(std::uint32_t seed = DEFAULT_SEED);

    /// The generator the process shares. It starts with the default seed, so that a run can be repeated; a
    /// host that wants another sequence each time seeds it with something that changes.
    static KodoRandom& instance();

    /// Starts the sequence of @p seed from its beginning.
    void seed(std::uint32_t seed);

    /// A uniform draw in [min, max], both ends included. It takes exactly one number n of 32 bits from the
    /// twister and gives, computed in double and then rounded to float,
    ///
    ///     min + (max - min) * (n / 4294967295)
    ///
    /// brought back to the nearer bound where rounding led outside. The bounds are finite; given in the wrong
    /// order they span the same range.
    float operator()(float min, float max);

private:
    std::mt19937 m_engine;
};

} // namespace Kodo
