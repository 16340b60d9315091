#pragma once

#include "tern_common/command_object.hpp"

#include <functional>
#include <string>

/// `log.info("text")` below a command tree's root, for as long as this object lives. Main thread only.
class LogCommands
{
public:
    /// @p root must outlive this object.
    LogCommands(CommandObject& root, std::function<void(const std::string& text)> write);
    LogCommands(const LogCommands&) = delete;
    LogCommands& operator=(const LogCommands&) = delete;
    ~LogCommands();

private:
    CommandObject& m_root;
    CommandObject m_object;
};
