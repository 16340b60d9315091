#pragma once

#include "vell/i_command_line_parser.hpp"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

/// A command line given by a test. Counts the questions for switches.
class ScriptedCommandLine final : public vell::ICommandLineParser
{
public:
    explicit ScriptedCommandLine(std::vector<std::string> arguments, std::vector<std::string> flags = {})
        : m_arguments(std::move(arguments)), m_flags(std::move(flags)),
          m_argc(static_cast<int>(m_arguments.size()))
    {
        for (std::string& argument : m_arguments)
        {
            m_argv.push_back(argument.data());
        }
        m_argv.push_back(nullptr);
    }

    const int& argc() const override { return m_argc; }
    char** argv() const override { return m_argv.data(); }
    bool getFlag(const char* name) const override
    {
        ++flagQuestions;
        return std::find(m_flags.begin(), m_flags.end(), name) != m_flags.end();
    }

    mutable int flagQuestions = 0;

private:
    std::vector<std::string> m_arguments;
    std::vector<std::string> m_flags;
    int m_argc;
    mutable std::vector<char*> m_argv;
};
