#pragma once

#include "kodo/export.hpp"

namespace Kodo
{

/// Which thread is the editor's main thread: the one that loaded this library, until the host names another.
class KODO_API MainThreadTracker
{
public:
    MainThreadTracker() = delete;

    static bool isCurrentThreadMain() noexcept;
    /// Makes the calling thread the main thread.
    static void setCurrentThreadMain() noexcept;
};

} // namespace Kodo
