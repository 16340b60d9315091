#include "qua/signal.hpp"

#include "tests/support/property.hpp"

#include <functional>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

namespace
{

/// What a slot does when it is called, or what is done to the signal from outside.
struct Action
{
    enum class Kind
    {
        Connect,
        Cut,
        Emit,
        Destroy
    };
    Kind kind;
    unsigned
        target; ///< the script of the slot to connect, or the connection to cut; taken modulo their number
};

void showValue(const Action& action, std::ostream& out)
{
    constexpr const char* NAMES[] = {"connect ", "cut ", "emit ", "destroy "};
    out << NAMES[static_cast<int>(action.kind)] << action.target;
}

/// The promise of qua::Signal, spelled out over a plain list: an emission takes a copy of the list and calls
/// whatever in it is still connected when its turn comes.
class ListSignal
{
    struct Entry
    {
        std::function<void(int)> function;
        int depth = 0;
        bool connected = true;

        void cut()
        {
            connected = false;
            if (depth == 0)
            {
                function = nullptr;
            }
        }
    };

public:
    class Connection
    {
    public:
        explicit Connection(const std::shared_ptr<Entry>& entry) : m_entry(entry) {}
        void disconnect()
        {
            if (const auto entry = m_entry.lock())
            {
                entry->cut();
            }
        }
        bool connected() const
        {
            const auto entry = m_entry.lock();
            return entry && entry->connected;
        }

    private:
        std::weak_ptr<Entry> m_entry;
    };

    ListSignal() = default;
    ListSignal(const ListSignal&) = delete;
    ListSignal& operator=(const ListSignal&) = delete;
    ~ListSignal()
    {
        for (const auto& entry : m_entries)
        {
            entry->cut();
        }
    }

    Connection connect(std::function<void(int)> function)
    {
        m_entries.push_back(std::make_shared<Entry>());
        m_entries.back()->function = std::move(function);
        return Connection(m_entries.back());
    }

    void operator()(int depth) const
    {
        const std::vector<std::shared_ptr<Entry>> entries = m_entries; // a slot may destroy this signal
        for (const auto& entry : entries)
        {
            if (entry->connected)
            {
                ++entry->depth;
                entry->function(depth);
                if (--entry->depth == 0 && !entry->connected)
                {
                    entry->function = nullptr;
                }
            }
        }
    }

    std::size_t slotCount() const
    {
        std::size_t count = 0;
        for (const auto& entry : m_entries)
        {
            count += entry->connected ? 1U : 0U;
        }
        return count;
    }

private:
    std::vector<std::shared_ptr<Entry>> m_entries;
};

/// Plays one script on a signal and writes down all that can be seen of it.
template <class SignalUnderTest>
class Play
{
public:
    explicit Play(std::vector<std::vector<Action>> scripts) : m_scripts(std::move(scripts)) {}

    std::vector<std::size_t> run(const std::vector<Action>& fromOutside)
    {
        for (const Action& action : fromOutside)
        {
            perform(action, 0);
            m_log.push_back(m_signal ? m_signal->slotCount() : 0);
            m_log.push_back(static_cast<std::size_t>(m_token.use_count())); // callables that are alive
            for (const auto& connection : m_connections)
            {
                m_log.push_back(connection.connected() ? 1 : 0);
            }
        }
        return m_log;
    }

private:
    static constexpr std::size_t MOST_CALLS = 300;
    static constexpr std::size_t MOST_SLOTS = 12;
    static constexpr int MOST_DEPTH = 4;

    void perform(const Action& action, int depth)
    {
        switch (action.kind)
        {
        case Action::Kind::Connect:
            connect(action.target % m_scripts.size());
            break;
        case Action::Kind::Cut:
            if (!m_connections.empty())
            {
                m_connections[action.target % m_connections.size()].disconnect();
            }
            break;
        case Action::Kind::Emit:
            if (m_signal && depth < MOST_DEPTH && m_calls < MOST_CALLS)
            {
                (*m_signal)(depth);
            }
            break;
        case Action::Kind::Destroy:
            if (action.target % 8 == 0) // seldom: nothing happens afterwards
            {
                m_signal.reset();
            }
            break;
        }
    }

    void connect(std::size_t script)
    {
        if (!m_signal || m_connections.size() >= MOST_SLOTS)
        {
            return;
        }
        const std::size_t number = m_connections.size();
        m_connections.push_back(m_signal->connect(
            [this, script, number, token = m_token](int depth)
            {
                ++m_calls;
                m_log.push_back(1000 + number * 10 + static_cast<std::size_t>(depth));
                for (const Action& action : m_scripts[script])
                {
                    perform(action, depth + 1);
                }
            }));
    }

    std::vector<std::vector<Action>> m_scripts;
    std::vector<std::size_t> m_log;
    std::size_t m_calls = 0;
    std::shared_ptr<int> m_token = std::make_shared<int>(0);
    std::unique_ptr<SignalUnderTest> m_signal = std::make_unique<SignalUnderTest>();
    std::vector<decltype(m_signal->connect(nullptr))> m_connections;
};

rc::Gen<Action> anyAction()
{
    using Kind = Action::Kind;
    return rc::gen::construct<Action>(
        rc::gen::weightedElement<Kind>(
            {{4, Kind::Connect}, {4, Kind::Cut}, {5, Kind::Emit}, {1, Kind::Destroy}}),
        rc::gen::inRange(0U, 24U));
}

RC_GTEST_PROP(SignalModelTest, BehavesAsAPlainListUnderReentrantSlots, ())
{
    const auto anyActions = rc::gen::container<std::vector<Action>>(anyAction());
    auto scripts = *rc::gen::container<std::vector<std::vector<Action>>>(anyActions);
    scripts.emplace_back(); // at least one slot that does nothing
    auto fromOutside = *anyActions;
    fromOutside.push_back({Action::Kind::Emit, 0});

    const auto expected = Play<ListSignal>(scripts).run(fromOutside);
    const auto actual = Play<qua::Signal<void(int)>>(scripts).run(fromOutside);

    RC_ASSERT(actual == expected);
}

} // namespace
