#include "tern_common/localization/definition_directories.hpp"

const std::string DefinitionDirectories::VEHICLES = "scripts/item_defs/vehicles/";
const std::string DefinitionDirectories::ARENAS = "scripts/arena_defs/";
