#include "kodo/fs/file_content.hpp"

#include "kodo/fs/multi_file_system.hpp"
#include "kodo/fs/native_path.hpp"
#include "kodo/fs/open_without_links.hpp"

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

FileReading readOpened(FileContent& out, const Descriptor& file, std::size_t limit)
{
    struct stat status = {};
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

FileReading readFromDisk(FileContent& out, const std::string& path, std::size_t limit)
{
    const Descriptor file(::open(path.c_str(), OPEN_TO_READ));
    if (!file)
    {
        const bool isGone = errno == ENOENT || errno == ENOTDIR || errno == ENXIO;
        return isGone ? FileReading::NoFile : FileReading::Failed;
    }
    return readOpened(out, file, limit);
}

#endif

} // namespace

FileReading readFile(FileContent& out, const std::string& name, std::size_t limit)
{
#if !defined(_WIN32)
    Descriptor file;
    const Opening opening = fileSystem().openPlain(file, name, OPEN_TO_READ);
    if (opening != Opening::Unsure)
    {
        return opening == Opening::Done ? readOpened(out, file, limit) : FileReading::NoFile;
    }
#endif
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
