#pragma once

#include "vell/i_command_line_parser.hpp"

/// The command line that main() was given; refers to its arguments.
class CommandLineParser final : public vell::ICommandLineParser
{
public:
    CommandLineParser(int argc, char** argv) noexcept : m_argc(argc), m_argv(argv) {}

    const int& argc() const override { return m_argc; }
    char** argv() const override { return m_argv; }
    /// Whether one of the arguments behind argument 0 is @p name, to the letter.
    bool getFlag(const char* name) const override;

private:
    int m_argc;
    char** m_argv;
};
