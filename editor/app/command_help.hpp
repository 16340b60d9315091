#pragma once

#include <string>

/// The commands that scripts have, a line each, with what each does.
std::string commandHelp();
