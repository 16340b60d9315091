#include "qua/process_start.hpp"

#include "qua/command_line.hpp"
#include "qua/descriptors.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <pthread.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ; // NOLINT(readability-redundant-declaration): only some systems' headers have it

namespace qua::Detail
{

namespace
{

std::error_code systemError(int number)
{
    return {number, std::generic_category()};
}

/// 0 for a file that may be run, else the error number.
int checkRunnable(const std::string& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
    {
        return errno;
    }
    if (!S_ISREG(status.st_mode))
    {
        return EACCES;
    }
    return ::access(path.c_str(), X_OK) == 0 ? 0 : errno;
}

/// The absolute path of what @p program names, empty with @p error set when that is nothing to run.
std::string locate(const std::string& program, int& error)
{
    error = ENOENT;
    if (program.find('/') != std::string::npos)
    {
        error = checkRunnable(program);
        std::error_code
            ignored; // absolute, since the new process has changed directory when it needs the path
        return error == 0 ? std::filesystem::absolute(program, ignored).string() : std::string();
    }
    const char* const path = std::getenv("PATH");
    std::string_view directories = path == nullptr ? "/bin:/usr/bin" : path;
    while (!program.empty() && !directories.empty())
    {
        const std::string_view directory = directories.substr(0, directories.find(':'));
        directories.remove_prefix(std::min(directory.size() + 1, directories.size()));
        std::string candidate = std::string(directory) + '/' + program;
        if (directory.starts_with('/') && checkRunnable(candidate) == 0)
        {
            error = 0;
            return candidate;
        }
    }
    return {};
}

/// All that the new process needs, made before the fork: afterwards there is no memory to be had.
struct Launch
{
    std::string file;
    std::vector<std::string> arguments;
    std::vector<char*> argv;
    const char* directory = nullptr;
    bool keepOutput = false;
    int highestDescriptor = 0;
};

std::error_code prepare(Launch& launch, const std::string& commandLine)
{
    int firstError = ENOENT;
    bool isFirst = true;
    ProgramCandidates candidates(commandLine);
    while (auto candidate = candidates.next())
    {
        int error = 0;
        launch.file = locate(candidate->program, error);
        if (error == 0)
        {
            launch.arguments = splitArguments(std::string_view(commandLine).substr(candidate->argumentsAt));
            launch.arguments.insert(launch.arguments.begin(), std::move(candidate->program));
            for (std::string& argument : launch.arguments)
            {
                launch.argv.push_back(argument.data());
            }
            launch.argv.push_back(nullptr);
            return {};
        }
        firstError = isFirst || firstError == ENOENT ? error : firstError;
        isFirst = false;
    }
    return systemError(firstError);
}

/// Blocks every signal in this thread, so that no handler of this process runs in a forked child.
class SignalsBlocked
{
public:
    SignalsBlocked() noexcept
    {
        sigset_t all;
        sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

private:
    sigset_t m_before{};
};

// From here to startDetached(): code of the forked children. Other threads may have held any lock at the
// fork, so nothing but async-signal-safe calls.

[[noreturn]] void failChild(int reportTo, int error)
{
    const auto written = ::write(reportTo, &error, sizeof error);
    ::_exit(written == sizeof error ? 127 : 126);
}

void resetSignals()
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    for (int number = 1; number < NSIG; ++number)
    {
        ::sigaction(number, &action, nullptr); // fails for the few that are never handled
    }
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

bool redirectStandardStreams(bool keepOutput)
{
    const int null = ::open("/dev/null", O_RDWR);
    if (null < 0)
    {
        return false;
    }
    const int last = keepOutput ? STDIN_FILENO : STDERR_FILENO;
    for (int stream = STDIN_FILENO; stream <= last; ++stream)
    {
        if (::dup2(null, stream) < 0)
        {
            return false;
        }
    }
    if (null > STDERR_FILENO)
    {
        ::close(null);
    }
    return true;
}

[[noreturn]] void becomeProgram(const Launch& launch, int reportTo)
{
    resetSignals();
    if (::chdir(launch.directory) == 0 && redirectStandardStreams(launch.keepOutput))
    {
        closeOnExecFrom(STDERR_FILENO + 1, launch.highestDescriptor);
        ::execve(launch.file.c_str(), launch.argv.data(), environ);
    }
    failChild(reportTo, errno);
}

/// The child between this process and the new one: it ends at once, so that the new one is nobody's child
/// here.
[[noreturn]] void becomeForker(const Launch& launch, int reportTo)
{
    if (::setsid() < 0)
    {
        failChild(reportTo, errno);
    }
#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 34)
    const pid_t grandchild = ::_Fork(); // without the fork handlers, which may wait for a lock
#else
    const pid_t grandchild = ::fork();
#endif
    if (grandchild < 0)
    {
        failChild(reportTo, errno);
    }
    if (grandchild == 0)
    {
        becomeProgram(launch, reportTo);
    }
    ::_exit(0);
}

} // namespace

std::error_code startDetached(const std::string& commandLine, const std::string& workingDirectory,
                              bool keepOutput)
{
    Launch launch;
    if (const std::error_code error = prepare(launch, commandLine))
    {
        return error;
    }
    launch.directory = workingDirectory.c_str();
    launch.keepOutput = keepOutput;
    launch.highestDescriptor = highestDescriptor();

    ReportPipe report;
    if (const int error = report.open(); error != 0)
    {
        return systemError(error);
    }
    pid_t forker = -1;
    int error = 0;
    {
        const SignalsBlocked blocked;
        forker = ::fork();
        error = errno;
        if (forker == 0)
        {
            becomeForker(launch, report.writeEnd());
        }
    }
    if (forker < 0)
    {
        return systemError(error);
    }
    report.closeWriteEnd();
    while (::waitpid(forker, nullptr, 0) < 0 && errno == EINTR) // else reaped already by the host
    {
    }
    return systemError(report.read());
}

} // namespace qua::Detail
