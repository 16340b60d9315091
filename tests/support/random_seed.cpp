#include "tests/support/random_seed.hpp"

#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

std::uint64_t randomSeed()
{
    const char* const given = std::getenv("TERN_TEST_SEED");
    const std::uint64_t seed = given != nullptr ? std::stoull(given) : std::random_device()();
    std::cout << "TERN_TEST_SEED=" << seed << '\n';
    return seed;
}
