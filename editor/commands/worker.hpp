#pragma once

#include <functional>
#include <memory>

/// One thread that does the editor's slow work in order. Destruction waits for the work that is under way and
/// drops the rest.
class Worker
{
public:
    Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker();

    /// @p work must not throw.
    void post(std::function<void()> work);

private:
    class Pool;
    std::unique_ptr<Pool> m_pool;
};
