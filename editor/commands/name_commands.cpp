#include "editor/commands/name_commands.hpp"

#include "editor/commands/finished.hpp"

NameCommands::NameCommands(CommandObject& root, Action setLanguage, Action show) : m_root(root)
{
    m_object.addCommand("language", [setLanguage = std::move(setLanguage)](const std::string& language)
                        { return finished([&] { setLanguage(language); }); });
    m_object.addCommand("show", [show = std::move(show)](const std::string& key)
                        { return finished([&] { show(key); }); });
    m_root.addChild("names", &m_object);
}

NameCommands::~NameCommands()
{
    m_root.removeChild("names");
}
