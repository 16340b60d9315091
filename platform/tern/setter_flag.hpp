#pragma once

#include <cstdint>

namespace tern
{

/// How a value is being set; a set of them is a qua::Flags.
enum class SetterFlag : std::uint32_t
{
    Interactive = 1, ///< one of many small steps, as while dragging
    NoUndo = 2       ///< not to be remembered for undo
};

} // namespace tern
