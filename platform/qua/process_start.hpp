#pragma once

#include <string>
#include <system_error>

namespace qua::Detail
{

/// The system's part of Process::execDetached(). The texts contain no NUL.
std::error_code startDetached(const std::string& commandLine, const std::string& workingDirectory,
                              bool keepOutput);

} // namespace qua::Detail
