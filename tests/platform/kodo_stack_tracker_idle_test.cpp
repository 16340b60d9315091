// A program of its own: it counts every allocation of the process.

#include "kodo/core/stack_tracker.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
std::atomic<long> allocations = 0;

void* allocate(std::size_t size)
{
    ++allocations;
    if (void* const block = std::malloc(size > 0 ? size : 1))
    {
        return block;
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

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete[](void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    std::free(block);
}

namespace
{

TEST(StackTrackerIdleTest, AScopeAllocatesWhileRecordingOnly)
{
    const long atFirst = allocations;
    {
        KODO_PROFILE_SCOPE("a name that is too long to be stored without an allocation");
    }
    EXPECT_EQ(allocations, atFirst);

    Kodo::StackTracker::startRecording();
    {
        KODO_PROFILE_SCOPE("a name that is too long to be stored without an allocation");
    }
    EXPECT_GT(allocations, atFirst) << "the count counts";
    Kodo::StackTracker::stopRecording();
}

} // namespace
