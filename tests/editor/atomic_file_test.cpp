#include "editor/files/atomic_file.hpp"

#include "editor/files/file_error.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#if !defined(_WIN32)
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace
{

std::size_t fileCount(const fs::path& directory)
{
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

TEST(AtomicFileTest, ReplacesAFileAndLeavesNothingBeside)
{
    const TemporaryDirectory directory;
    const fs::path file = directory.write("a", "before, and longer");
    replaceFile(file, "after");
    EXPECT_EQ(readFile(file), "after");
    EXPECT_EQ(fileCount(directory.path()), 1U);
}

TEST(AtomicFileTest, MakesAFileThatWasNotThere)
{
    const TemporaryDirectory directory;
    replaceFile(directory.path() / "new", std::string(3000000, 'x'));
    EXPECT_EQ(readFile(directory.path() / "new"), std::string(3000000, 'x'));
}

TEST(AtomicFileTest, KeepsTheFilesPermissions)
{
    const TemporaryDirectory directory;
    const fs::path file = directory.write("a", "before");
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    replaceFile(file, "after");
    EXPECT_EQ(fs::status(file).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

TEST(AtomicFileTest, WritesThroughASymbolicLink)
{
    const TemporaryDirectory directory;
    const fs::path file = directory.write("real", "before");
    fs::create_symlink("real", directory.path() / "link");
    replaceFile(directory.path() / "link", "after");
    EXPECT_TRUE(fs::is_symlink(directory.path() / "link"));
    EXPECT_EQ(readFile(file), "after");
}

TEST(AtomicFileTest, RefusesWhatIsNoFile)
{
    const TemporaryDirectory directory;
    EXPECT_THROW(replaceFile(directory.path(), "x"), FileError);
    EXPECT_THROW(replaceFile(directory.path() / "absent" / "a", "x"), FileError);
    EXPECT_THROW(replaceFile("", "x"), FileError);
}

TEST(AtomicFileTest, WritesThroughALinkWhoseTargetIsNotThereYet)
{
    const TemporaryDirectory directory;
    fs::create_symlink("real", directory.path() / "middle");
    fs::create_symlink("middle", directory.path() / "link");
    replaceFile(directory.path() / "link", "after");
    EXPECT_TRUE(fs::is_symlink(directory.path() / "link"));
    EXPECT_TRUE(fs::is_symlink(directory.path() / "middle"));
    EXPECT_EQ(readFile(directory.path() / "real"), "after");
}

TEST(AtomicFileTest, RefusesALinkToItself)
{
    const TemporaryDirectory directory;
    fs::create_symlink("link", directory.path() / "link");
    EXPECT_THROW(replaceFile(directory.path() / "link", "x"), FileError);
    EXPECT_TRUE(fs::is_symlink(directory.path() / "link"));
}

#if !defined(_WIN32)
TEST(AtomicFileTest, AFilesNameMayBeAsLongAsTheSystemAllows)
{
    const TemporaryDirectory directory;
    const fs::path file = directory.path() / std::string(255, 'n');
    replaceFile(file, "text");
    EXPECT_EQ(readFile(file), "text");
}

TEST(AtomicFileTest, APipeOrADeviceIsNotReplaced)
{
    const TemporaryDirectory directory;
    const fs::path pipe = directory.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THROW(replaceFile(pipe, "x"), FileError);
    EXPECT_TRUE(fs::is_fifo(pipe));
    fs::create_symlink(pipe, directory.path() / "link");
    EXPECT_THROW(replaceFile(directory.path() / "link", "x"), FileError);
    EXPECT_TRUE(fs::is_fifo(pipe));
    EXPECT_EQ(fileCount(directory.path()), 2U);
}

TEST(AtomicFileTest, OnlyARegularFileIsRead)
{
    const TemporaryDirectory directory;
    const fs::path pipe = directory.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THROW(readWholeFile(pipe), FileError); // without waiting for someone to write into it
    EXPECT_THROW(readWholeFile("/dev/zero"), FileError);
    EXPECT_THROW(readWholeFile(directory.path()), FileError);
}

/// Takes root's rights from the process: root may write to what is protected, too.
class AsNobody
{
public:
    AsNobody() : m_before(::geteuid())
    {
        constexpr uid_t NOBODY = 65534;
        m_isChanged = m_before == 0 && ::seteuid(NOBODY) == 0;
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;
    ~AsNobody()
    {
        if (m_isChanged && ::seteuid(m_before) != 0)
        {
            std::abort();
        }
    }

private:
    uid_t m_before;
    bool m_isChanged = false;
};

TEST(AtomicFileTest, AWriteProtectedFileIsNotReplaced)
{
    const TemporaryDirectory directory;
    fs::permissions(directory.path(), fs::perms::all);
    const fs::path file = directory.write("a", "before");
    fs::permissions(file, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    {
        const AsNobody nobody;
        if (::geteuid() == 0 || ::faccessat(AT_FDCWD, directory.path().c_str(), W_OK, AT_EACCESS) != 0)
        {
            GTEST_SKIP() << "there is no user here to whom the directory is open and the file is not";
        }
        EXPECT_THROW(replaceFile(file, "after"), FileError);
        replaceFile(directory.path() / "b", "new");
    }
    EXPECT_EQ(readFile(file), "before");
    EXPECT_EQ(fileCount(directory.path()), 2U);
}

TEST(AtomicFileTest, AFullDiskLeavesTheOldFile)
{
    const TemporaryDirectory directory;
    const fs::path file = directory.write("a", "before");
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small = {1000, limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THROW(replaceFile(file, std::string(5000, 'x')), FileError);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(readFile(file), "before");
    EXPECT_EQ(fileCount(directory.path()), 1U);
}
#endif

} // namespace
