#pragma once

#include <cstddef>

/// The sum of an array, read from one end to the other with the widest lanes that the nearest sample is
/// looked for with on this processor: what it costs to see every number once.
float streamingSum(const float* numbers, std::size_t count);
