#include "tern_common/command_object.hpp"

#include <iterator>

Command::WrapperBase::~WrapperBase() = default;

Command::Command(std::unique_ptr<WrapperBase> wrapper) noexcept : m_wrapper(std::move(wrapper)) {}
Command::Command(Command&& other) noexcept = default;
Command& Command::operator=(Command&& other) noexcept = default;
Command::~Command() = default;

std::size_t Command::argc() const
{
    return m_wrapper->argc();
}

std::future<void> Command::invoke(std::size_t argc, const vell::Variant* argv) const
{
    TERN_COMMON_ASSERT(argc == this->argc());
    return m_wrapper->invoke(argc, argv);
}

CommandObject::CommandObject() = default;
CommandObject::CommandObject(const CommandObject& other) = default;
CommandObject& CommandObject::operator=(const CommandObject& other) = default;
CommandObject::~CommandObject() = default;

void CommandObject::addChild(std::string name, CommandObject* object)
{
    TERN_COMMON_ASSERT(object);
    TERN_COMMON_ASSERT(m_children.find(name) == std::end(m_children));
    m_children.try_emplace(std::move(name), object);
}

void CommandObject::removeChild(const std::string& name)
{
    TERN_COMMON_ASSERT(m_children.find(name) != std::end(m_children));
    m_children.erase(name);
}

CommandObject* CommandObject::findChild(const std::string& name)
{
    const auto found = m_children.find(name);
    return found == m_children.end() ? nullptr : found->second;
}

const Command* CommandObject::findCommand(const std::string& name) const
{
    const auto found = m_commands.find(name);
    return found == m_commands.end() ? nullptr : found->second.get();
}

std::shared_ptr<const Command> CommandObject::shareCommand(const std::string& name) const
{
    const auto found = m_commands.find(name);
    return found == m_commands.end() ? nullptr : found->second;
}
