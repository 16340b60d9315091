#include "tests/support/allocation_hook.hpp"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

namespace
{

constexpr std::size_t NEVER = std::numeric_limits<std::size_t>::max();

thread_local std::size_t allocations = 0;
thread_local std::size_t failsAt = NEVER;
thread_local std::size_t live = 0;
thread_local std::size_t peak = 0;

// The size asked for stands in front of each block, in a header that keeps the strictest common alignment.
constexpr std::size_t HEADER = alignof(std::max_align_t);

void* allocate(std::size_t size)
{
    if (allocations++ == failsAt)
    {
        throw std::bad_alloc();
    }
    void* const block = std::malloc(size + HEADER);
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    *static_cast<std::size_t*>(block) = size;
    live += size;
    peak = std::max(peak, live);
    return static_cast<char*>(block) + HEADER;
}

void release(void* memory) noexcept
{
    if (memory != nullptr)
    {
        void* const block = static_cast<char*>(memory) - HEADER;
        live -= *static_cast<std::size_t*>(block);
        std::free(block);
    }
}

} // namespace

void* operator new(std::size_t size)
{
    return allocate(size);
}

void* operator new[](std::size_t size)
{
    return allocate(size);
}

// What comes from these goes through the operators below, whoever else brings forms of these.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try
    {
        return allocate(size);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept
{
    return operator new(size, tag);
}

void operator delete(void* memory) noexcept
{
    release(memory);
}

void operator delete[](void* memory) noexcept
{
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    release(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    release(memory);
}

AllocationCount::AllocationCount() noexcept : m_before(allocations) {}

std::size_t AllocationCount::count() const noexcept
{
    return allocations - m_before;
}

std::size_t liveHeapBytes() noexcept
{
    return live;
}

HeapPeak::HeapPeak() noexcept : m_before(live)
{
    peak = live;
}

std::size_t HeapPeak::bytes() const noexcept
{
    return peak - m_before;
}

FailingAllocation::FailingAllocation(std::size_t successes) noexcept
{
    failsAt = allocations + successes;
}

FailingAllocation::~FailingAllocation()
{
    failsAt = NEVER;
}
