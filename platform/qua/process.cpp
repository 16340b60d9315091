#include "qua/process.hpp"

#include "qua/process_start.hpp"
#include "qua/signal.hpp"

namespace qua
{

namespace
{

Signal<void(const Process&)>& startFailed()
{
    static Signal<void(const Process&)> signal;
    return signal;
}

void announceFailure(const Process& process) noexcept
{
    try
    {
        startFailed()(process);
    }
    catch (...) // the caller of a start that failed goes on as if nobody had watched
    {
    }
}

} // namespace

Process::Process(const std::string& commandLine, const std::string& workingDirectory)
    : m_commandLine(commandLine), m_workingDirectory(workingDirectory)
{
}

Process::~Process() = default;

bool Process::execDetached(Flags<Flag> flags)
{
    const bool cutShort =
        m_commandLine.find('\0') != std::string::npos || m_workingDirectory.find('\0') != std::string::npos;
    m_error =
        cutShort ? std::make_error_code(std::errc::invalid_argument) // systems would read up to the NUL
                 : Detail::startDetached(m_commandLine, m_workingDirectory, flags.contains(Flag::KeepOutput));
    if (m_error)
    {
        announceFailure(*this);
    }
    return !m_error;
}

Connection Process::connectStartFailed(std::function<void(const Process&)> slot)
{
    return startFailed().connect(std::move(slot));
}

} // namespace qua
