#include "tests/support/allocation_count.hpp"

#include <cstdlib>
#include <new>

namespace
{

thread_local AllocationCount taken;
thread_local std::size_t live = 0;

// The size asked for stands in front of each block, in a header that keeps the strictest common alignment.
constexpr std::size_t HEADER = alignof(std::max_align_t);

void* allocate(std::size_t size)
{
    void* const block = std::malloc(size + HEADER);
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    *static_cast<std::size_t*>(block) = size;
    ++taken.calls;
    taken.bytes += size;
    live += size;
    return static_cast<char*>(block) + HEADER;
}

void release(void* pointer) noexcept
{
    if (pointer != nullptr)
    {
        void* const block = static_cast<char*>(pointer) - HEADER;
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

void operator delete(void* pointer) noexcept
{
    release(pointer);
}

void operator delete[](void* pointer) noexcept
{
    release(pointer);
}

void operator delete(void* pointer, std::size_t) noexcept
{
    release(pointer);
}

void operator delete[](void* pointer, std::size_t) noexcept
{
    release(pointer);
}

AllocationCount AllocationCount::now() noexcept
{
    return taken;
}

std::size_t liveHeapBytes() noexcept
{
    return live;
}
