#pragma once

#include "editor/app/editor_options.hpp"

#include <optional>
#include <string>

/// What a run would destroy: it would write over its own level or script, other than by saving the level, or
/// write two things to one file. Nothing where all is well.
std::optional<std::string> findOutputMistake(const EditorOptions& options);
