#include "tern_common/command_system.hpp"

#include "tern_common/command_parser.hpp"
#include "tern_common/script_file.hpp"
#include "tern_common/script_origins.hpp"

#include <chrono>
#include <cstdint>
#include <iterator>
#include <optional>

/// The root of a command system's tree, with the state of its built-in wait.
class RootObject final : public CommandObject
{
public:
    RootObject()
    {
        addCommand("wait", [this](int ticks) { return wait(ticks); });
    }
    RootObject(const RootObject&) = delete;
    RootObject& operator=(const RootObject&) = delete;
    ~RootObject() override = default;

    /// Fulfils the wait whose last tick has passed.
    void countDown()
    {
        if (!m_waitPromise.has_value())
        {
            return;
        }
        if (m_waitCounter == 0)
        {
            m_waitPromise->set_value();
            m_waitPromise.reset();
        }
        else
        {
            --m_waitCounter;
        }
    }

private:
    std::future<void> wait(int ticks)
    {
        TERN_COMMON_ASSERT(!m_waitPromise.has_value());
        m_waitCounter = static_cast<std::uint32_t>(ticks);
        return m_waitPromise.emplace().get_future();
    }

    std::optional<std::promise<void>> m_waitPromise;
    std::uint32_t m_waitCounter = 0; // unsigned: a negative wait counts through the whole 32-bit range
};

CommandSystem::CommandSystem()
    : m_root(std::make_unique<RootObject>()), m_origins(std::make_unique<ScriptOrigins>())
{
}

CommandSystem::~CommandSystem() = default;

CommandObject& CommandSystem::rootObject() noexcept
{
    return *m_root;
}

void CommandSystem::takeCommand(CommandParser& parser, QueuedCommand& command)
{
    TERN_COMMON_ASSERT(parser.result() == CommandParser::Result::PARSED);
    std::vector<std::string>& path = parser.path();
    TERN_COMMON_ASSERT(!path.empty());

    // Moved into vectors of just the size needed: they may wait in the queue for long, and there may be many.
    command.args.assign(std::move_iterator(parser.args().begin()), std::move_iterator(parser.args().end()));
    command.name = std::move(path.back());
    path.pop_back();
    command.path.assign(std::move_iterator(path.begin()), std::move_iterator(path.end()));
}

void CommandSystem::parseScriptFile(const std::wstring& path)
{
    ScriptFile file(path);
    m_parsed = {std::make_shared<const std::wstring>(path), 0};
    std::deque<QueuedCommand> commands;
    ScriptOrigins origins;
    CommandParser::Storage storage;
    while (file.readLine())
    {
        ++m_parsed.second;
        CommandParser parser(file.line(), std::move(storage));
        parser.parse();
        if (parser.result() == CommandParser::Result::FAILED)
        {
            return;
        }
        if (parser.result() != CommandParser::Result::EMPTY)
        {
            takeCommand(parser, commands.emplace_back());
            origins.push(m_parsed.first, m_parsed.second);
        }
        storage = parser.takeStorage();
    }
    append(std::move(commands), std::move(origins));
}

void CommandSystem::append(std::deque<QueuedCommand>&& commands, ScriptOrigins&& origins)
{
    const std::size_t queuedBefore = m_queue.size();
    if (queuedBefore == 0)
    {
        m_queue.swap(commands);
    }
    else
    {
        m_queue.insert(m_queue.end(), std::move_iterator(commands.begin()),
                       std::move_iterator(commands.end()));
    }
    try
    {
        m_origins->append(std::move(origins));
    }
    catch (...) // all of a file's commands or none, also when memory runs out
    {
        m_queue.resize(queuedBefore);
        throw;
    }
}

void CommandSystem::tick()
{
    m_root->countDown();
    if (m_starting)
    {
        return;
    }
    if (m_current.valid())
    {
        if (m_current.wait_for(std::chrono::nanoseconds(1)) != std::future_status::ready)
        {
            return;
        }
        m_current.get();
    }
    if (m_queue.empty())
    {
        return;
    }
    const QueuedCommand queued = std::move(m_queue.front());
    m_queue.pop_front();
    m_started = m_origins->pop();
    start(queued);
}

void CommandSystem::start(const QueuedCommand& queued)
{
    CommandObject* object = m_root.get();
    for (const std::string& name : queued.path)
    {
        object = object->findChild(name);
        if (!TERN_COMMON_ASSERT(object))
        {
            return;
        }
    }
    const std::shared_ptr<const Command> command = object->shareCommand(queued.name);
    if (!TERN_COMMON_ASSERT(command))
    {
        return;
    }
    struct Starting
    {
        explicit Starting(bool& flag) : m_flag(flag) { m_flag = true; }
        Starting(const Starting&) = delete;
        Starting& operator=(const Starting&) = delete;
        ~Starting() { m_flag = false; }
        bool& m_flag;
    };
    const Starting starting(m_starting);
    m_current = command->invoke(queued.args.size(), queued.args.data());
}

bool CommandSystem::isIdle() const noexcept
{
    return m_queue.empty() && !m_current.valid();
}

std::size_t CommandSystem::queuedCommandCount() const noexcept
{
    return m_queue.size();
}

ScriptLine CommandSystem::startedLine() const
{
    return toScriptLine(m_started);
}

ScriptLine CommandSystem::parsedLine() const
{
    return toScriptLine(m_parsed);
}

ScriptLine CommandSystem::toScriptLine(const Origin& origin)
{
    return origin.first ? ScriptLine{*origin.first, origin.second} : ScriptLine{};
}
