#pragma once

#include <cstddef>

/// Allocations by operator new in the calling thread since this object was made. For programs that are linked
/// with tern_test_allocation.
class AllocationCount
{
public:
    AllocationCount() noexcept;
    std::size_t count() const noexcept;

private:
    std::size_t m_before;
};

/// The bytes that the calling thread took by operator new and has not given back, as asked for.
std::size_t liveHeapBytes() noexcept;

/// The most bytes that the calling thread has held at a time since this object was made, beyond those that it
/// held then. One at a time.
class HeapPeak
{
public:
    HeapPeak() noexcept;
    std::size_t bytes() const noexcept;

private:
    std::size_t m_before;
};

/// Makes one allocation of the calling thread fail: the one after @p successes that work. The others, before
/// and after, go on as usual.
class FailingAllocation
{
public:
    explicit FailingAllocation(std::size_t successes) noexcept;
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation();
};
