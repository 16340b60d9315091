#include "kodo/fs/multi_file_system.hpp"

#include "kodo/fs/utils.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace fs = std::filesystem;
using Kodo::FS::MultiFileSystem;

namespace
{

using Texts = std::vector<std::string>;

class MultiFileSystemTest : public testing::Test
{
protected:
    MultiFileSystemTest()
    {
        m_disk.write("first/levels/a.level", "first");
        m_disk.write("first/levels/only first.level");
        m_disk.write("second/levels/a.level", "second");
        m_disk.write("second/levels/b.level");
        m_disk.write("outside/secret.level");
        EXPECT_TRUE(m_files.addRoot(onDisk("first")));
        EXPECT_TRUE(m_files.addRoot(onDisk("second/")));
    }

    std::string onDisk(std::string_view name) const { return (m_disk / name).string(); }

    std::string dissolve(const std::string& path) const
    {
        bool ok = false;
        std::string name = m_files.dissolveFilename(path, &ok);
        EXPECT_EQ(ok, !name.empty());
        EXPECT_EQ(m_files.dissolveFilename(path, nullptr), name);
        return name;
    }

    void expectUnreachable(const std::string& name) const
    {
        EXPECT_EQ(m_files.fileType(name), MultiFileSystem::FT_NOT_FOUND) << name;
        EXPECT_EQ(m_files.diskPath(name), "") << name;
        EXPECT_EQ(dissolve(name), "") << name;
        EXPECT_FALSE(m_files.exists(name)) << name;
        Texts names{"left over"};
        EXPECT_FALSE(m_files.readDirectory(names, name)) << name;
        EXPECT_TRUE(names.empty());
    }

    TemporaryDirectory m_disk;
    MultiFileSystem m_files;
};

} // namespace

TEST_F(MultiFileSystemTest, FilesAreTypeZeroAndDirectoriesTypeOne)
{
    EXPECT_EQ(m_files.fileType("levels/a.level"), 0);
    EXPECT_EQ(m_files.fileType("levels"), 1);
    EXPECT_EQ(m_files.fileType("levels/"), 1);
    EXPECT_EQ(m_files.fileType(""), 1);
    EXPECT_GT(m_files.fileType("levels/none"), 1);
}

TEST_F(MultiFileSystemTest, TheFirstRootThatHasANameWins)
{
    EXPECT_EQ(m_files.diskPath("levels/a.level"), onDisk("first/levels/a.level"));
    EXPECT_EQ(m_files.diskPath("levels/b.level"), onDisk("second/levels/b.level"));
}

TEST_F(MultiFileSystemTest, ADirectoryListsTheNamesOfAllRootsSortedAndOnce)
{
    Texts names{"left over"};
    EXPECT_TRUE(m_files.readDirectory(names, "levels/"));
    EXPECT_EQ(names, (Texts{"a.level", "b.level", "only first.level"}));
    EXPECT_FALSE(m_files.readDirectory(names, "levels/a.level"));
    EXPECT_TRUE(names.empty());
}

TEST_F(MultiFileSystemTest, BlankPartsOfANameDoNotCount)
{
    EXPECT_EQ(m_files.diskPath("./levels//./b.level"), onDisk("second/levels/b.level"));
    EXPECT_EQ(dissolve("./levels//./b.level"), "levels/b.level");
}

TEST_F(MultiFileSystemTest, NamesWithParentPartsLeadNowhere)
{
    expectUnreachable("../outside/secret.level");
    expectUnreachable("levels/../../outside/secret.level");
    expectUnreachable("levels/../levels/a.level");
    expectUnreachable("..");
}

TEST_F(MultiFileSystemTest, AbsolutePathsAreNoNamesAndOutsideTheRootsNothing)
{
    EXPECT_EQ(m_files.fileType(onDisk("first/levels/a.level")), MultiFileSystem::FT_NOT_FOUND);
    EXPECT_EQ(m_files.diskPath(onDisk("first/levels/a.level")), "");
    expectUnreachable(onDisk("outside/secret.level"));
    expectUnreachable(onDisk("first/../outside/secret.level"));
    expectUnreachable("/etc/passwd");
}

TEST_F(MultiFileSystemTest, ANeighbourWhoseNameBeginsLikeARootsIsOutside)
{
    expectUnreachable(m_disk.write("first-aid/a.level"));
}

TEST_F(MultiFileSystemTest, LinksOutOfARootLeadNowhereAndAreNotListed)
{
    fs::create_symlink(onDisk("outside/secret.level"), m_disk / "first/levels/link.level");
    fs::create_directory_symlink(onDisk("outside"), m_disk / "first/elsewhere");
    fs::create_directory_symlink("../..", m_disk / "first/levels/up");
    expectUnreachable("levels/link.level");
    expectUnreachable("elsewhere");
    expectUnreachable("elsewhere/secret.level");
    expectUnreachable("levels/up/outside/secret.level");
    expectUnreachable(onDisk("first/elsewhere/secret.level"));
    Texts names;
    EXPECT_TRUE(m_files.readDirectory(names, "levels"));
    EXPECT_EQ(names, (Texts{"a.level", "b.level", "only first.level"}));
}

TEST_F(MultiFileSystemTest, LinksWithinARootWork)
{
    fs::create_symlink("a.level", m_disk / "first/levels/current.level");
    EXPECT_EQ(m_files.fileType("levels/current.level"), MultiFileSystem::FT_FILE);
    EXPECT_EQ(dissolve("levels/current.level"), "levels/current.level");
    EXPECT_EQ(dissolve(onDisk("first/levels/current.level")), "levels/current.level");
}

TEST_F(MultiFileSystemTest, LinksThatLeadInACircleLeadNowhere)
{
    fs::create_symlink("round", m_disk / "first/round");
    expectUnreachable("round");
}

TEST_F(MultiFileSystemTest, NamesWithANulLeadNowhere)
{
    expectUnreachable(std::string("levels/a.level\0.txt", 19));
    expectUnreachable(onDisk("first/levels/a.level") + std::string("\0x", 2));
    EXPECT_FALSE(m_files.addRoot(onDisk("first") + std::string("\0", 1)));
}

TEST_F(MultiFileSystemTest, NamesAreBytes)
{
    for (const std::string name : {"blank name.level", "quote\".level", "comma,.level",
                                   "\xC3\xA4\xE6\xBC\xA2.level", "\xFF\xFE\x80.level", "back\\slash.level"})
    {
        const std::string path = m_disk.write("second/" + name);
        EXPECT_EQ(m_files.fileType(name), MultiFileSystem::FT_FILE) << name;
        EXPECT_EQ(dissolve(path), name);
    }
}

TEST_F(MultiFileSystemTest, AnOverlongNameLeadsNowhere)
{
    expectUnreachable(std::string(100'000, 'a'));
    std::string deep;
    for (int i = 0; i < 10'000; ++i)
    {
        deep += "a/";
    }
    expectUnreachable(deep);
}

TEST_F(MultiFileSystemTest, AnAbsolutePathBelowARootDissolvesToTheRest)
{
    EXPECT_EQ(dissolve(onDisk("first/levels/a.level")), "levels/a.level");
    EXPECT_EQ(dissolve(onDisk("second//levels/./b.level")), "levels/b.level");
    EXPECT_EQ(dissolve(onDisk("first/levels/../levels/a.level")), "levels/a.level");
    EXPECT_EQ(dissolve(onDisk("first/levels")), "levels");
    EXPECT_EQ(dissolve(onDisk("first/levels/none")), "");
    EXPECT_EQ(dissolve(onDisk("first")), "") << "the tree itself has no name";
}

TEST_F(MultiFileSystemTest, AFileHiddenByARootInFrontExistsButHasNoName)
{
    EXPECT_TRUE(m_files.exists(onDisk("second/levels/a.level")));
    EXPECT_EQ(dissolve(onDisk("second/levels/a.level")), "");
}

TEST_F(MultiFileSystemTest, ARootMayBeReachedThroughALink)
{
    fs::create_directory_symlink(onDisk("first"), m_disk / "alias");
    MultiFileSystem files;
    ASSERT_TRUE(files.addRoot(onDisk("alias")));
    EXPECT_EQ(files.dissolveFilename(onDisk("alias/levels/a.level"), nullptr), "levels/a.level");
    EXPECT_EQ(files.dissolveFilename(onDisk("first/levels/a.level"), nullptr), "levels/a.level");
    EXPECT_EQ(dissolve(onDisk("alias/levels/a.level")), "levels/a.level");
}

TEST_F(MultiFileSystemTest, ARootMustBeADirectory)
{
    EXPECT_FALSE(m_files.addRoot(onDisk("none")));
    EXPECT_FALSE(m_files.addRoot(onDisk("first/levels/a.level")));
    EXPECT_FALSE(m_files.addRoot(""));
}

TEST_F(MultiFileSystemTest, WithoutRootsThereIsNothing)
{
    m_files.clearRoots();
    expectUnreachable("levels/a.level");
    expectUnreachable("");
}

TEST_F(MultiFileSystemTest, RootsMayBeAddedWhileOthersRead)
{
    std::atomic<bool> done{false};
    std::thread reading(
        [this, &done]
        {
            while (!done)
            {
                EXPECT_EQ(m_files.fileType("levels/a.level"), MultiFileSystem::FT_FILE);
            }
        });
    for (int i = 0; i < 50; ++i)
    {
        EXPECT_TRUE(m_files.addRoot(onDisk("outside")));
    }
    done = true;
    reading.join();
    EXPECT_EQ(m_files.fileType("secret.level"), MultiFileSystem::FT_FILE);
}

TEST(FileSystemUtilsTest, FileExistsAsksTheSharedFileSystem)
{
    const TemporaryDirectory disk;
    const std::string file = disk.write("a b.level");
    EXPECT_FALSE(Kodo::FS::Utils::fileExists("a b.level"));
    ASSERT_TRUE(Kodo::FS::fileSystem().addRoot(disk.path().string()));
    EXPECT_TRUE(Kodo::FS::Utils::fileExists("a b.level"));
    EXPECT_TRUE(Kodo::FS::Utils::fileExists(file));
    EXPECT_FALSE(Kodo::FS::Utils::fileExists("/etc/passwd"));
    Kodo::FS::fileSystem().clearRoots();
}

TEST(FileSystemUtilsTest, AppPathIsThisExecutable)
{
    const fs::path path = Kodo::FS::Utils::appPath();
    EXPECT_TRUE(path.is_absolute());
    EXPECT_TRUE(fs::equivalent(path, "/proc/self/exe"));
}
