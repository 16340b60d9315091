#include "qua/descriptors.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/resource.h>
#include <unistd.h>

#if defined(__linux__)
#include <sys/syscall.h>
#endif

namespace qua::Detail
{

namespace
{

constexpr int FIRST_FREE = STDERR_FILENO + 1;

/// Moves a descriptor above the standard streams: a process that was started without them gets their numbers.
int moveUp(int& descriptor) noexcept
{
    if (descriptor >= FIRST_FREE)
    {
        return 0;
    }
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, FIRST_FREE);
    if (moved < 0)
    {
        return errno;
    }
    ::close(descriptor);
    descriptor = moved;
    return 0;
}

int openPipe(std::array<int, 2>& ends) noexcept
{
#if defined(__linux__)
    return ::pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno;
#else
    if (::pipe(ends.data()) != 0)
    {
        return errno;
    }
    ::fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    return 0;
#endif
}

} // namespace

int highestDescriptor() noexcept
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
    {
        return 1023;
    }
    constexpr auto MOST = static_cast<rlim_t>(std::numeric_limits<int>::max());
    return static_cast<int>(std::min(limit.rlim_max, MOST)) - 1; // the soft limit may have been lowered since
}

void closeOnExecFrom(int first, int highest) noexcept
{
#if defined(SYS_close_range)
    constexpr unsigned MARK_ONLY = 4; // CLOSE_RANGE_CLOEXEC, which not every system's headers know
    if (::syscall(SYS_close_range, static_cast<unsigned>(first), ~0U, MARK_ONLY) == 0)
    {
        return;
    }
#endif
    closeOnExecOneByOne(first, highest);
}

void closeOnExecOneByOne(int first, int highest) noexcept
{
    for (int descriptor = first; descriptor <= highest; ++descriptor)
    {
        const int flags = ::fcntl(descriptor, F_GETFD);
        if (flags >= 0)
        {
            ::fcntl(descriptor, F_SETFD, flags | FD_CLOEXEC);
        }
    }
}

ReportPipe::~ReportPipe()
{
    closeWriteEnd();
    if (m_readEnd >= 0)
    {
        ::close(m_readEnd);
    }
}

int ReportPipe::open() noexcept
{
    std::array<int, 2> ends{-1, -1};
    if (const int error = openPipe(ends); error != 0)
    {
        return error;
    }
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    const int error = moveUp(m_readEnd);
    return error != 0 ? error : moveUp(m_writeEnd);
}

void ReportPipe::closeWriteEnd() noexcept
{
    if (m_writeEnd >= 0)
    {
        ::close(m_writeEnd);
        m_writeEnd = -1;
    }
}

int ReportPipe::read() const noexcept
{
    int error = 0;
    ssize_t count = 0;
    do
    {
        count = ::read(m_readEnd, &error, sizeof error);
    } while (count < 0 && errno == EINTR);
    return count == sizeof error ? error : 0;
}

} // namespace qua::Detail
