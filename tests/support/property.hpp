#pragma once

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

/// Properties over random input. RapidCheck prints the seed of every run; TERN_TEST_SEED repeats one.
/// Yields whether a seed was given.
bool takePropertySeedFromEnvironment();

namespace
{
/// Stands in every file with properties, so that the seed is taken before the first of them runs.
[[maybe_unused]] const bool propertySeedTaken = takePropertySeedFromEnvironment();
} // namespace
