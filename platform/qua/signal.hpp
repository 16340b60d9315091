#pragma once

#include "qua/connection.hpp"
#include "qua/export.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <tuple>
#include <utility>

namespace qua
{

/// The part of a signal that does not depend on its signature. It lives in the qua library alone, so that no
/// body of it is left in a plug-in that connected a slot and has been unmapped since.
class QUA_API SignalBase
{
public:
    SignalBase(const SignalBase&) = delete;
    SignalBase& operator=(const SignalBase&) = delete;

    /// Slots that are connected now.
    std::size_t slotCount() const;

protected:
    using ErasedSlot = std::function<void(const void* arguments)>;

    SignalBase();
    ~SignalBase();

    Connection connectErased(ErasedSlot slot);
    void emitErased(const void* arguments) const;

private:
    class Core;
    std::shared_ptr<Core> m_core;
};

template <class Signature>
class Signal;

/// A list of slots called in the order in which they were connected. Connecting, cutting and emitting are
/// safe against each other from any thread. Slots run without a lock: where several threads emit, they may
/// call one slot at the same time.
///
/// During an emission a slot may cut its own connection or another one (a slot cut before its turn is not
/// called), connect further slots (called from the next emission on), emit again, or destroy the signal (the
/// slots behind it are not called). An exception out of a slot leaves the emission through its caller.
template <class... Args>
class Signal<void(Args...)> : public SignalBase
{
public:
    Signal() = default;

    /// An empty @p slot is not connected: the connection returned is inert.
    [[nodiscard]] Connection connect(std::function<void(Args...)> slot)
    {
        if (!slot)
        {
            return {};
        }
        return connectErased([slot = std::move(slot)](const void* arguments)
                             { std::apply(slot, *static_cast<const std::tuple<Args&...>*>(arguments)); });
    }

    void operator()(Args... args) const
    {
        const std::tuple<Args&...> arguments{args...};
        emitErased(&arguments);
    }
};

} // namespace qua
