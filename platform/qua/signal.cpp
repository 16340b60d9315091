#include "qua/signal.hpp"

#include <boost/signals2/signal.hpp>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace qua
{

namespace Detail
{

/// One connected callable. Signals2 holds it for as long as the signal may call it; connections only refer to
/// it, so that nothing of the callable survives the signal.
///
/// No lock is held while the callable runs: slots that emit into each other from several threads would wait
/// for each other for ever. Whoever cuts the slot waits for the calls of other threads instead.
class Slot
{
public:
    using Function = std::function<void(const void*)>;

    explicit Slot(Function function) : m_function(std::move(function)) {}

    void setLink(boost::signals2::connection link) { m_link = std::move(link); }

    bool connected() const { return !m_cut && m_link.connected(); }

    void call(const void* arguments)
    {
        if (begin())
        {
            const Running running(*this);
            m_function(arguments);
        }
    }

    void cut()
    {
        m_link.disconnect();
        Function released; // destroyed unlocked: what it captured may cut further slots
        std::unique_lock lock(m_mutex);
        m_cut = true;
        m_returned.wait(lock, [this] { return onlyCalledHere(); });
        if (m_callers.empty()) // a callable must not be destroyed while it runs: else its call releases it
        {
            released.swap(m_function);
        }
    }

private:
    /// A call, from its beginning to its end. The last to end releases a callable that was cut meanwhile.
    class Running
    {
    public:
        explicit Running(Slot& slot) : m_slot(slot) {}
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;
        ~Running() { m_slot.end(); }

    private:
        Slot& m_slot;
    };

    bool begin()
    {
        const std::lock_guard lock(m_mutex);
        if (!m_cut)
        {
            m_callers.push_back(std::this_thread::get_id());
        }
        return !m_cut;
    }

    void end()
    {
        Function released;
        const std::lock_guard lock(m_mutex);
        m_callers.erase(std::find(m_callers.begin(), m_callers.end(), std::this_thread::get_id()));
        if (m_cut && m_callers.empty())
        {
            released.swap(m_function);
        }
        m_returned.notify_all();
    }

    bool onlyCalledHere() const
    {
        return std::all_of(m_callers.begin(), m_callers.end(),
                           [](std::thread::id caller) { return caller == std::this_thread::get_id(); });
    }

    std::mutex m_mutex;
    std::condition_variable m_returned;
    std::vector<std::thread::id> m_callers; ///< one for each call that runs
    Function m_function;                    ///< constant while a call runs
    boost::signals2::connection m_link;     ///< set before anyone but the signal knows this slot
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
