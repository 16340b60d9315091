#pragma once

#include "editor/level/level.hpp"

#include <cstddef>
#include <string>
#include <string_view>

/// How a session words what it says.
namespace SessionText
{

/// "1 curve", "2 curves".
std::string count(std::size_t number, const std::string& noun);

/// "2 curves with 5 points, 1 item".
std::string describe(const LevelData& level);

/// A report on one line: "ASSERTION FAILED: object at command_system.cpp(312)".
std::string onOneLine(std::string_view report);

} // namespace SessionText
