#pragma once

#include <string>

/// Where the resource tree keeps the definitions that have names to translate. Built when the library is
/// loaded: nothing that runs earlier may read them. Both end in a slash, so that a name is just appended.
namespace DefinitionDirectories
{

extern const std::string VEHICLES;
extern const std::string ARENAS;

} // namespace DefinitionDirectories
