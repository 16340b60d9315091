#pragma once

#include "vell/variant.hpp"

#include <deque>
#include <string>
#include <vector>

/// A queued command of the very types the command system queues.
struct NarrowCommand
{
    std::vector<vell::Variant> args;
    std::vector<std::string> path;
    std::string name;
};

/// The yardstick for reading scripts: the same grammar over narrow characters, written by hand for one pass
/// over a file that read() brought in as a whole. Empty when a line is wrong or the file cannot be read.
std::deque<NarrowCommand> parseNarrowScript(const char* fileName);
