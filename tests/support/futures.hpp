#pragma once

#include <exception>
#include <future>
#include <string>

/// A future that is ready.
inline std::future<void> readyFuture()
{
    std::promise<void> promise;
    promise.set_value();
    return promise.get_future();
}

/// A ready future that holds an exception of type @p Exception.
template <class Exception>
std::future<void> failedFuture(const std::string& text)
{
    std::promise<void> promise;
    promise.set_exception(std::make_exception_ptr(Exception(text)));
    return promise.get_future();
}
