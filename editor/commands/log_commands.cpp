#include "editor/commands/log_commands.hpp"

#include "editor/commands/finished.hpp"

LogCommands::LogCommands(CommandObject& root, std::function<void(const std::string&)> write) : m_root(root)
{
    m_object.addCommand("info", [write = std::move(write)](const std::string& text)
                        { return finished([&] { write(text); }); });
    m_root.addChild("log", &m_object);
}

LogCommands::~LogCommands()
{
    m_root.removeChild("log");
}
