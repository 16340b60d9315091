#pragma once

#include <future>
#include <utility>

/// Does @p work and gives a future that is ready, with what it threw.
template <class Work>
std::future<void> finished(Work&& work)
{
    std::promise<void> promise;
    try
    {
        std::forward<Work>(work)();
        promise.set_value();
    }
    catch (...)
    {
        promise.set_exception(std::current_exception());
    }
    return promise.get_future();
}
