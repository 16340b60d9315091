#pragma once

#include "editor/app/editor_options.hpp"

#include <iosfwd>

/// Opens the resources of the command line, files below the working directory, in this process, and starts a
/// new editor process for those that are left. @p program is the process's argument 0. What happens is
/// written to
/// @p out, what goes wrong to @p errors. Gives the program's exit code, 0 or 1.
int runOpenSession(const EditorOptions& options, const char* program, std::ostream& out,
                   std::ostream& errors);
