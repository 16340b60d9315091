#pragma once

#include "qua/signal.hpp"

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

namespace TernCommonDetail
{

/// A signal that is made when its first slot is connected: most objects that offer one are never listened to.
/// The pointer alone is atomic: whoever destroys the signal takes it away first, so that nobody who looks
/// afterwards finds one that is half gone.
template <class Signature>
class LazySignal
{
public:
    LazySignal() = default;
    LazySignal(const LazySignal&) = delete;
    LazySignal& operator=(const LazySignal&) = delete;
    ~LazySignal() { destroy(); }

    [[nodiscard]] qua::Connection connect(std::function<Signature> slot)
    {
        if (m_signal.load() == nullptr)
        {
            auto made = std::make_unique<qua::Signal<Signature>>();
            qua::Signal<Signature>* none = nullptr;
            if (m_signal.compare_exchange_strong(none, made.get()))
            {
                static_cast<void>(made.release()); // the pointer owns it now
            }
        }
        return m_signal.load()->connect(std::move(slot));
    }

    /// Calls the slots. One of them may destroy this object: nothing of it is touched after the first call.
    template <class... Args>
    void emit(Args&&... args) const
    {
        if (const qua::Signal<Signature>* const signal = m_signal.load())
        {
            (*signal)(std::forward<Args>(args)...);
        }
    }

    /// Makes every connection inert and releases the slots, which may even connect again as they go.
    void destroy() noexcept
    {
        while (const std::unique_ptr<qua::Signal<Signature>> taken{m_signal.exchange(nullptr)})
        {
        }
    }

private:
    std::atomic<qua::Signal<Signature>*> m_signal{nullptr};
};

} // namespace TernCommonDetail
