#include "qua/signal.hpp"

#include <boost/signals2/signal.hpp>

#include <mutex>

namespace qua
{

namespace Detail
{

/// One connected callable. Signals2 holds it for as long as the signal may call it; connections only refer to
/// it, so that nothing of the callable survives the signal.
class Slot
{
public:
    explicit Slot(std::function<void(const void*)> function) : m_function(std::move(function)) {}

    void setLink(boost::signals2::connection link) { m_link = std::move(link); }

    bool connected() const
    {
        const std::lock_guard lock(m_mutex);
        return !m_cut && m_link.connected();
    }

    void call(const void* arguments)
    {
        const std::lock_guard lock(m_mutex);
        if (m_cut)
        {
            return;
        }
        const Running running(*this);
        m_function(arguments);
    }

    void cut()
    {
        m_link.disconnect();
        std::function<void(const void*)>
            released; // destroyed unlocked: what it captured may cut further slots
        const std::lock_guard lock(m_mutex);
        m_cut = true;
        if (m_depth == 0)
        {
            released.swap(m_function);
        }
    }

private:
    /// A callable must not be destroyed while it runs: the outermost call releases one that was cut
    /// meanwhile.
    class Running
    {
    public:
        explicit Running(Slot& slot) : m_slot(slot) { ++m_slot.m_depth; }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;
        ~Running()
        {
            if (--m_slot.m_depth == 0 && m_slot.m_cut)
            {
                std::function<void(const void*)>().swap(m_slot.m_function);
            }
        }

    private:
        Slot& m_slot;
    };

    mutable std::recursive_mutex m_mutex;
    std::function<void(const void*)> m_function;
    boost::signals2::connection m_link;
    int m_depth = 0;
    bool m_cut = false;
};

} // namespace Detail

class SignalBase::Core
{
public:
    std::shared_ptr<Detail::Slot> connect(ErasedSlot function)
    {
        auto slot = std::make_shared<Detail::Slot>(std::move(function));
        slot->setLink(m_signal.connect([slot](const void* arguments) { slot->call(arguments); }));
        return slot;
    }

    void emit(const void* arguments) const { m_signal(arguments); }
    void disconnectAll() { m_signal.disconnect_all_slots(); }
    std::size_t slotCount() const { return m_signal.num_slots(); }

private:
    mutable boost::signals2::signal<void(const void*)> m_signal;
};

SignalBase::SignalBase() : m_core(std::make_shared<Core>()) {}

SignalBase::~SignalBase()
{
    m_core->disconnectAll();
}

std::size_t SignalBase::slotCount() const
{
    return m_core->slotCount();
}

Connection SignalBase::connectErased(ErasedSlot slot)
{
    return Connection(m_core->connect(std::move(slot)));
}

void SignalBase::emitErased(const void* arguments) const
{
    const std::shared_ptr<Core> core = m_core; // a slot may destroy this signal
    core->emit(arguments);
}

Connection::Connection() noexcept = default;

Connection::Connection(const std::shared_ptr<Detail::Slot>& slot) noexcept : m_slot(slot) {}

Connection::Connection(Connection&& other) noexcept = default;

Connection& Connection::operator=(Connection&& other) noexcept
{
    if (this != &other)
    {
        disconnect();
        m_slot = std::move(other.m_slot);
    }
    return *this;
}

Connection::~Connection()
{
    disconnect();
}

void Connection::disconnect() noexcept
{
    if (const std::shared_ptr<Detail::Slot> slot = std::exchange(m_slot, {}).lock())
    {
        slot->cut();
    }
}

bool Connection::connected() const noexcept
{
    const std::shared_ptr<Detail::Slot> slot = m_slot.lock();
    return slot && slot->connected();
}

} // namespace qua
