#include "qua/command_line.hpp"

#include <algorithm>

namespace qua::Detail
{

namespace
{

constexpr std::string_view BLANKS = " \t";

/// No system takes a longer path.
#if defined(_WIN32)
constexpr std::size_t LONGEST_PROGRAM = 32767;
#else
constexpr std::size_t LONGEST_PROGRAM = 4095;
#endif

bool isBlank(char c)
{
    return BLANKS.find(c) != std::string_view::npos;
}

/// Reads one argument from a text that starts with it and takes it off the text.
std::string takeArgument(std::string_view& text)
{
    std::string argument;
    bool quoted = false;
    while (!text.empty() && (quoted || !isBlank(text.front())))
    {
        const std::size_t backslashes = std::min(text.find_first_not_of('\\'), text.size());
        text.remove_prefix(backslashes);
        if (text.empty() || text.front() != '"')
        {
            argument.append(backslashes, '\\');
            const std::size_t ordinary = std::min(text.find_first_of("\\\" \t"), text.size());
            argument += text.substr(0, ordinary);
            text.remove_prefix(ordinary);
            if (quoted && !text.empty() && isBlank(text.front()))
            {
                argument += text.front();
                text.remove_prefix(1);
            }
            continue;
        }
        argument.append(backslashes / 2, '\\');
        text.remove_prefix(1);
        if (backslashes % 2 != 0)
        {
            argument += '"';
        }
        else if (quoted && text.starts_with('"'))
        {
            argument += '"'; // the doubled quote stands for itself, and the quoted text goes on
            text.remove_prefix(1);
        }
        else
        {
            quoted = !quoted;
        }
    }
    return argument;
}

} // namespace

std::vector<std::string> splitArguments(std::string_view text)
{
    std::vector<std::string> arguments;
    for (;;)
    {
        text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
        if (text.empty())
        {
            return arguments;
        }
        arguments.push_back(takeArgument(text));
    }
}

std::optional<ProgramCandidates::Candidate> ProgramCandidates::next()
{
    if (m_done || m_line.empty())
    {
        return std::nullopt;
    }
    if (m_line.front() == '"')
    {
        m_done = true;
        return quoted();
    }
    std::size_t end = m_line.find_first_of(BLANKS, m_from);
    while (end != std::string_view::npos && (end == 0 || isBlank(m_line[end - 1])))
    {
        end = m_line.find_first_of(BLANKS, end + 1); // a run of blanks is cut at its beginning alone
    }
    end = std::min(end, m_line.size());
    m_from = end + 1;
    m_done = end == m_line.size();
    if (end > LONGEST_PROGRAM || isBlank(m_line[end - 1]))
    {
        m_done = true;
        return std::nullopt;
    }
    return Candidate{std::string(m_line.substr(0, end)), end};
}

std::optional<ProgramCandidates::Candidate> ProgramCandidates::quoted()
{
    // Quotes only switch blanks on and off here, and backslashes mean nothing: paths are full of them.
    Candidate candidate;
    bool quoted = false;
    for (; candidate.argumentsAt < m_line.size(); ++candidate.argumentsAt)
    {
        const char c = m_line[candidate.argumentsAt];
        if (c == '"')
        {
            quoted = !quoted;
        }
        else if (!quoted && isBlank(c))
        {
            break;
        }
        else
        {
            candidate.program += c;
        }
    }
    return candidate;
}

} // namespace qua::Detail
