#pragma once

#include "qua/export.hpp"

#include <memory>

namespace qua
{

namespace Detail
{
class Slot;
}

/// A slot's place in a signal, owned. Dropping or disconnecting it takes the slot out of the signal and
/// releases the slot's callable at once; a slot that cuts its own connection is released when its call
/// returns.
///
/// A connection whose signal is gone is inert. disconnect() waits for calls of the slot that are running in
/// other threads, so afterwards the slot's code may be unmapped; slots that run in two threads must not cut
/// each other. connected() never waits. A connection itself is not synchronised.
class QUA_API Connection
{
public:
    Connection() noexcept;
    Connection(Connection&& other) noexcept;
    /// Disconnects what this object held before.
    Connection& operator=(Connection&& other) noexcept;
    ~Connection();

    void disconnect() noexcept;
    bool connected() const noexcept;

private:
    friend class SignalBase;
    explicit Connection(const std::shared_ptr<Detail::Slot>& slot) noexcept;

    std::weak_ptr<Detail::Slot> m_slot;
};

} // namespace qua
