#pragma once

#include "editor/picture/picture_options.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// What the command line asks for: to open resources, to draw a palette, or to work on a level.
struct EditorOptions
{
    bool help = false;
    bool headless = false;

    std::string resources; ///< separated by commas; empty for none
    bool uniquePerApp = false;
    std::optional<std::filesystem::path> report;

    std::optional<std::size_t> colors;
    std::uint32_t seed = 0;
    std::vector<std::uint32_t> banned; ///< 0xRRGGBB

    std::optional<std::filesystem::path> picture; ///< of the colours or the level
    PictureSize size{1280, 720};
    CameraOption camera;

    std::optional<std::filesystem::path> level;
    std::vector<std::filesystem::path> scripts;
    std::optional<std::filesystem::path> save;
    std::optional<std::string> find;
    bool names = false;
    std::optional<std::string> language;
    std::optional<std::filesystem::path> project;
    std::optional<std::filesystem::path> trace;
    std::uint64_t maxTicks = 1000000;
};

/// A command line that does not make sense; the text says why.
class CommandLineError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Throws CommandLineError.
EditorOptions parseCommandLine(int argc, const char* const* argv);

/// What `--help` prints.
std::string helpText();
