#pragma once

#include "tern_common/command_object.hpp"

#include <functional>
#include <string>

/// `names.language("name")` and `names.show("key")` below a command tree's root, for as long as this object
/// lives. Main thread only.
class NameCommands
{
public:
    using Action = std::function<void(const std::string& text)>;

    /// @p root must outlive this object. What an action throws, its command's future stores.
    NameCommands(CommandObject& root, Action setLanguage, Action show);
    NameCommands(const NameCommands&) = delete;
    NameCommands& operator=(const NameCommands&) = delete;
    ~NameCommands();

private:
    CommandObject& m_root;
    CommandObject m_object;
};
