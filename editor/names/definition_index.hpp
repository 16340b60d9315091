#pragma once

#include <cstddef>
#include <map>
#include <string>

/// A name as a definition file has it, and where.
struct Definition
{
    std::string name;     ///< as the file has it, before any translation
    std::string file;     ///< in the shared file system
    std::size_t line = 0; ///< of the element that defines it, counted from 1
};

/// The vehicles' and arenas' definitions of the shared file system, by the keys under which `Localization`
/// caches their names: it keeps neither files nor lines. Of several definitions of one key the one that
/// counts there stands here. A definition whose name needs no translation is listed as well, unless one of
/// that key is translated. Files that cannot be read are left out: opening them has been reported by then.
std::map<std::string, Definition> readDefinitions();
