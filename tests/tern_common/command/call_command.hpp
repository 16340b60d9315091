#pragma once

#include "tern_common/command_object.hpp"

#include <future>
#include <string>
#include <vector>

/// Calls the command @p name of @p object, which must be there, with @p arguments.
inline std::future<void> call(const CommandObject& object, const std::string& name,
                              const std::vector<vell::Variant>& arguments = {})
{
    return object.findCommand(name)->invoke(arguments.size(), arguments.data());
}
