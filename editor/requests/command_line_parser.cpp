#include "editor/requests/command_line_parser.hpp"

#include <string_view>

bool CommandLineParser::getFlag(const char* name) const
{
    for (int i = 1; i < m_argc; ++i)
    {
        if (std::string_view(m_argv[i]) == name)
        {
            return true;
        }
    }
    return false;
}
