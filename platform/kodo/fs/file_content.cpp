#include "kodo/fs/file_content.hpp"

#include "kodo/fs/multi_file_system.hpp"
#include "kodo/fs/native_path.hpp"

#if defined(_WIN32)
#include <filesystem>
#include <fstream>
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace Kodo::FS
{

namespace
{

#if defined(_WIN32)

FileReading readFromDisk(FileContent& out, const std::string& path, std::size_t limit)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(toNative(path), error))
    {
        return FileReading::NoFile;
    }
    std::ifstream file(toNative(path), std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    if (!file || size < 0)
    {
        return FileReading::Failed;
    }
    if (static_cast<std::uintmax_t>(size) > limit)
    {
        return FileReading::TooLarge;
    }
    out = FileContent::ofSize(static_cast<std::size_t>(size));
    file.seekg(0);
    file.read(out.data.get(), size);
    return file.gcount() == size ? FileReading::Done : FileReading::Failed;
}

#else

class Descriptor
{
public:
    /// Without waiting, as for the other end of a pipe: what is no ordinary file is not read anyway.
    explicit Descriptor(const std::string& path) noexcept
        : m_number(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK))
    {
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_number >= 0)
        {
            ::close(m_number);
        }
    }

    int number() const noexcept { return m_number; }

private:
    int m_number;
};

FileReading readFromDisk(FileContent& out, const std::string& path, std::size_t limit)
{
    const Descriptor file(path);
    struct stat status = {};
    if (file.number() < 0)
    {
        return errno == EACCES || errno == EMFILE || errno == ENFILE ? FileReading::Failed
                                                                     : FileReading::NoFile;
    }
    if (::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode))
    {
        return FileReading::NoFile;
    }
    if (static_cast<std::uintmax_t>(status.st_size) > limit)
    {
        return FileReading::TooLarge;
    }
    out = FileContent::ofSize(static_cast<std::size_t>(status.st_size));
    std::size_t done = 0;
    while (done < out.size)
    {
        const ::ssize_t count = ::read(file.number(), out.data.get() + done, out.size - done);
        if (count < 0 && errno == EINTR)
        {
            continue;
        }
        if (count <= 0) // shorter than it was a moment ago counts as unreadable
        {
            return FileReading::Failed;
        }
        done += static_cast<std::size_t>(count);
    }
    return FileReading::Done;
}

#endif

} // namespace

FileContent FileContent::ofSize(std::size_t size)
{
    FileContent content{std::make_unique_for_overwrite<char[]>(size + 1), size};
    content.data[size] = '\0';
    return content;
}

FileReading readFile(FileContent& out, const std::string& name, std::size_t limit)
{
    const std::string path = fileSystem().diskPath(name);
    return path.empty() ? FileReading::NoFile : readFromDisk(out, path, limit);
}

std::string describe(FileReading failure, std::size_t limit)
{
    switch (failure)
    {
    case FileReading::NoFile:
        return "there is no such file";
    case FileReading::TooLarge:
        return "the file is larger than " + std::to_string(limit) + " bytes";
    default:
        return "the file cannot be read";
    }
}

} // namespace Kodo::FS
