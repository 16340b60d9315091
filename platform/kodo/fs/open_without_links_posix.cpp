#include "kodo/fs/open_without_links.hpp"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#if defined(__linux__) && __has_include(<linux/openat2.h>)
#include <atomic>
#include <linux/openat2.h>
#include <sys/syscall.h>
#endif

namespace Kodo::FS
{

#if defined(O_PATH)
const int OPEN_TO_ASK = O_PATH | O_CLOEXEC;
#else
const int OPEN_TO_ASK = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
#endif
const int OPEN_TO_READ = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

Descriptor::~Descriptor()
{
    if (m_number >= 0)
    {
        ::close(m_number);
    }
}

#if defined(SYS_openat2)

Opening openWithoutLinks(Descriptor& out, const std::string& path, int flags) noexcept
{
    static std::atomic<bool> isOffered{true};
    if (!isOffered.load(std::memory_order_relaxed))
    {
        return Opening::Unsure;
    }
    open_how how = {};
    how.flags = static_cast<unsigned>(flags);
    how.resolve = RESOLVE_NO_SYMLINKS;
    const auto opened = ::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how);
    if (opened >= 0)
    {
        out = Descriptor(static_cast<int>(opened));
        return Opening::Done;
    }
    if (errno == ENOSYS) // an older system
    {
        isOffered.store(false, std::memory_order_relaxed);
    }
    return errno == ENOENT || errno == ENOTDIR ? Opening::NotThere : Opening::Unsure;
}

#else

Opening openWithoutLinks(Descriptor&, const std::string&, int) noexcept
{
    return Opening::Unsure;
}

#endif

} // namespace Kodo::FS
