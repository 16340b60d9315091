#pragma once

#include <cstdint>

/// The seed of a random test: TERN_TEST_SEED from the environment where set, else a fresh one. Printed, so
/// that a failure can be played again.
std::uint64_t randomSeed();
