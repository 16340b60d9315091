#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qua::Detail
{

/// Splits what follows argument 0 as the C runtime of Windows does.
std::vector<std::string> splitArguments(std::string_view text);

/// The programs that a command line may mean, in the order in which they are to be tried.
class ProgramCandidates
{
public:
    struct Candidate
    {
        std::string program;
        std::size_t argumentsAt = 0; ///< where in the line the arguments begin
    };

    /// The text of @p line is not copied and must outlive this object.
    explicit ProgramCandidates(std::string_view line) noexcept : m_line(line) {}

    std::optional<Candidate> next();

private:
    std::optional<Candidate> quoted();

    std::string_view m_line;
    std::size_t m_from = 0;
    bool m_done = false;
};

} // namespace qua::Detail
