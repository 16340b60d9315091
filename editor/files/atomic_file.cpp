#include "editor/files/atomic_file.hpp"

#include "editor/files/file_error.hpp"

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace
{

[[noreturn]] void fail(const fs::path& file, const char* what, int code)
{
    throw FileError(file,
                    std::string("cannot be saved: ") + what + ": " + std::system_category().message(code));
}

/// Removes a file that has not become the real one.
class Leftover
{
public:
    explicit Leftover(fs::path path) : m_path(std::move(path)) {}
    Leftover(const Leftover&) = delete;
    Leftover& operator=(const Leftover&) = delete;
    ~Leftover()
    {
        std::error_code ignored;
        if (!m_path.empty())
        {
            fs::remove(m_path, ignored);
        }
    }
    void keep() noexcept { m_path.clear(); }

private:
    fs::path m_path;
};

#if defined(_WIN32)

void replaceTarget(const fs::path& target, std::string_view bytes)
{
    const fs::path beside = target.parent_path() / (L".tern_save." + std::to_wstring(GetCurrentProcessId()));
    const HANDLE handle =
        CreateFileW(beside.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
    {
        fail(target, "creating a file beside it", static_cast<int>(GetLastError()));
    }
    Leftover leftover(beside);
    DWORD error = 0;
    while (error == 0 && !bytes.empty())
    {
        const auto chunk = static_cast<DWORD>(bytes.size() < 0x10000000 ? bytes.size() : 0x10000000);
        DWORD written = 0;
        error = WriteFile(handle, bytes.data(), chunk, &written, nullptr) != 0 ? 0 : GetLastError();
        bytes.remove_prefix(written);
    }
    if (error == 0 && FlushFileBuffers(handle) == 0)
    {
        error = GetLastError();
    }
    CloseHandle(handle);
    if (error != 0)
    {
        fail(target, "writing", static_cast<int>(error));
    }
    if (MoveFileExW(beside.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0)
    {
        fail(target, "renaming", static_cast<int>(GetLastError()));
    }
    leftover.keep();
}

#else

/// A file descriptor, closed at the end of its scope.
class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_descriptor >= 0)
        {
            ::close(m_descriptor);
        }
    }
    int get() const noexcept { return m_descriptor; }

    /// Closes it now: the last moment at which a network file system may say that writing failed.
    bool close() noexcept { return ::close(std::exchange(m_descriptor, -1)) == 0; }

private:
    int m_descriptor;
};

void replaceTarget(const fs::path& target, std::string_view bytes)
{
    // A file that cannot be written in place is protected, though its directory may let it be replaced.
    if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0 && errno != ENOENT)
    {
        fail(target, "writing", errno);
    }
    fs::path directory = target.parent_path();
    directory = directory.empty() ? fs::path(".") : directory;
    // Not named after the file, whose own name may be as long as the system allows.
    std::string beside = (directory / ".tern_save.XXXXXX").string();

    Descriptor file(::mkostemp(beside.data(), O_CLOEXEC));
    if (file.get() < 0)
    {
        fail(target, "creating a file beside it", errno);
    }
    Leftover leftover(beside);
    struct stat status = {};
    mode_t mode = 0;
    if (::stat(target.c_str(), &status) == 0)
    {
        mode = status.st_mode & 07777U;
    }
    else
    {
        mode = ::umask(0); // there is no way to ask but to set it
        ::umask(mode);
        mode = 0666U & ~mode;
    }
    if (::fchmod(file.get(), mode) != 0)
    {
        fail(target, "setting permissions", errno);
    }
    while (!bytes.empty())
    {
        const ssize_t written = ::write(file.get(), bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
        {
            fail(target, "writing", errno);
        }
        bytes.remove_prefix(static_cast<std::size_t>(written < 0 ? 0 : written));
    }
    if (::fsync(file.get()) != 0 || !file.close())
    {
        fail(target, "writing", errno);
    }
    if (::rename(beside.c_str(), target.c_str()) != 0)
    {
        fail(target, "renaming", errno);
    }
    leftover.keep();
    // The new name is on the disk when the directory is; where that cannot be had, the file is whole all the
    // same.
    const Descriptor opened(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.get() >= 0)
    {
        ::fsync(opened.get());
    }
}

#endif

/// Where a write to @p file ends: links are followed, the last one to a file that need not be there.
fs::path followLinks(const fs::path& file)
{
    constexpr int MOST_LINKS = 40;
    fs::path target = file;
    std::error_code error;
    for (int links = 0; fs::is_symlink(fs::symlink_status(target, error)); ++links)
    {
        const fs::path next = fs::read_symlink(target, error);
        if (error || links == MOST_LINKS)
        {
            throw FileError(file, "cannot be saved: its links lead nowhere");
        }
        target = target.parent_path() / next;
    }
    return target;
}

} // namespace

void replaceFile(const fs::path& file, std::string_view bytes)
{
    const fs::path target = followLinks(file);
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (target.filename().empty() || fs::is_directory(status))
    {
        throw FileError(file, "cannot be saved: this is no file's name");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) // a device's node would give way to the file
    {
        throw FileError(file, "cannot be saved: this is no regular file");
    }
    replaceTarget(target, bytes);
}
