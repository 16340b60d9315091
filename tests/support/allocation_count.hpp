#pragma once

#include <cstddef>

/// Counts what the calling thread takes from operator new. For test programs that are linked with
/// tern_test_allocation, which replaces the global operators.
struct AllocationCount
{
    std::size_t calls = 0;
    std::size_t bytes = 0; ///< as asked for

    /// Since the thread began.
    static AllocationCount now() noexcept;

    friend AllocationCount operator-(AllocationCount a, AllocationCount b) noexcept
    {
        return {a.calls - b.calls, a.bytes - b.bytes};
    }
};

/// The bytes the calling thread took from operator new and has not given back.
std::size_t liveHeapBytes() noexcept;
