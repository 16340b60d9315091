#include "qua/signal.hpp"

#include <boost/signals2/signal.hpp>

#include <atomic>
#include <mutex>
#include <utility>

namespace qua
{

namespace Detail
{

/// One connected callable. Signals2 holds it for as long as the signal may call it; connections only refer to
/// it, so that nothing of the callable survives the signal.
class Slot
{
public:
    using Function = std::function<void(const void*)>;

    explicit Slot(Function function) : m_function(std::move(function)) {}

    void setLink(boost::signals2::connection link) { m_link = std::move(link); }

    /// Takes no lock: the answer does not wait for a call that runs.
    bool connected() const { return !m_cut && m_link.connected(); }

    void call(const void* arguments)
    {
        Function released; // destroyed unlocked: what it captured may cut further slots
        const std::lock_guard lock(m_mutex);
        if (m_cut)
        {
            return;
        }
        const Running running(*this, released);
        m_function(arguments);
    }

    void cut()
    {
        m_link.disconnect();
        Function released; // destroyed unlocked, as above
        const std::lock_guard lock(m_mutex);
        m_cut = true;
        if (m_depth == 0)
        {
            released.swap(m_function);
        }
    }

private:
    /// A callable must not be destroyed while it runs: the outermost call hands one that was cut meanwhile
    /// to whoever releases it.
    class Running
    {
    public:
        Running(Slot& slot, Function& released) : m_slot(slot), m_released(released) { ++m_slot.m_depth; }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;
        ~Running()
        {
            if (--m_slot.m_depth == 0 && m_slot.m_cut)
            {
                m_released.swap(m_slot.m_function);
            }
        }

    private:
        Slot& m_slot;
        Function& m_released;
    };

    std::recursive_mutex m_mutex; ///< held while the callable runs
    Function m_function;
    boost::signals2::connection m_link; ///< set before anyone but the signal knows this slot
    int m_depth = 0;
    std::atomic<bool> m_cut = false;
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
