#include "tests/support/allocation_hook.hpp"

#include <cstdlib>
#include <limits>
#include <new>

namespace
{

constexpr std::size_t NEVER = std::numeric_limits<std::size_t>::max();

thread_local std::size_t allocations = 0;
thread_local std::size_t failsAt = NEVER;

void* allocate(std::size_t size)
{
    if (allocations++ == failsAt)
    {
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size == 0 ? 1 : size))
    {
        return memory;
    }
    throw std::bad_alloc();
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

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

AllocationCount::AllocationCount() noexcept : m_before(allocations) {}

std::size_t AllocationCount::count() const noexcept
{
    return allocations - m_before;
}

FailingAllocation::FailingAllocation(std::size_t successes) noexcept
{
    failsAt = allocations + successes;
}

FailingAllocation::~FailingAllocation()
{
    failsAt = NEVER;
}
