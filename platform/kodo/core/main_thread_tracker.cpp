#include "kodo/core/main_thread_tracker.hpp"

#include <atomic>
#include <thread>

namespace Kodo
{

namespace
{
std::atomic<std::thread::id> mainThread{std::this_thread::get_id()};
} // namespace

bool MainThreadTracker::isCurrentThreadMain() noexcept
{
    return mainThread.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

void MainThreadTracker::setCurrentThreadMain() noexcept
{
    mainThread.store(std::this_thread::get_id(), std::memory_order_relaxed);
}

} // namespace Kodo
