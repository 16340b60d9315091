#include "kodo/fs/utils.hpp"

#include "kodo/fs/data_section.hpp"
#include "kodo/fs/multi_file_system.hpp"
#include "tests/platform/section_texts.hpp"
#include "tests/support/allocation_hook.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

using namespace std::literals;
using Kodo::DataSection;
using Section = Kodo::SmartPointer<DataSection>;

namespace
{

class OpenSectionTest : public testing::Test
{
protected:
    OpenSectionTest() { EXPECT_TRUE(Kodo::FS::fileSystem().addRoot((m_disk / "root").string())); }
    OpenSectionTest(const OpenSectionTest&) = delete;
    OpenSectionTest& operator=(const OpenSectionTest&) = delete;
    ~OpenSectionTest() override { Kodo::FS::fileSystem().clearRoots(); }

    static Section open(const std::string& name)
    {
        return Kodo::FS::Utils::openSection(name, false, nullptr);
    }

    struct Root : TemporaryDirectory
    {
        Root() { write("root/list.xml", "<list><a>1</a></list>"); }
    } m_disk;
};

} // namespace

TEST_F(OpenSectionTest, AFileOfTheSharedFileSystemIsOpened)
{
    m_disk.write("root/a/b.xml", "<b/>");
    EXPECT_EQ(open("list.xml")->readString("a"), "1");
    EXPECT_EQ(open("./a//b.xml")->sectionName(), "b");
    EXPECT_EQ(open("a/b.xml/")->sectionName(), "b") << "blank parts of a name don't count";
    EXPECT_EQ(Kodo::FS::Utils::openSection("list.xml")->sectionName(), "list");
}

TEST_F(OpenSectionTest, WhereNothingIsTheSectionIsNullInSilence)
{
    m_disk.write("outside.xml", "<a/>");
    std::filesystem::create_symlink(m_disk / "outside.xml", m_disk / "root/out.xml");
    for (const std::string& name :
         {"none.xml"s, "list.xml/below.xml"s, "out.xml"s, std::string(100'000, 'a')})
    {
        EXPECT_FALSE(open(name)) << name;
    }
}

TEST_F(OpenSectionTest, ADirectoryInTheFilesPlaceIsOneMessage)
{
    m_disk.write("root/dir.xml/inside.xml", "<a/>");
    const ExpectReports reports{"dir.xml: this is a directory", "dir.xml: this is a directory"};
    EXPECT_FALSE(open("dir.xml"));
    EXPECT_FALSE(Kodo::FS::Utils::openSection("dir.xml", true, nullptr)) << "a new one would hide it";
}

TEST_F(OpenSectionTest, ANameThatMayLeadOutOfTheRootsIsOneMessage)
{
    m_disk.write("root/dir/inside.xml", "<a/>");
    m_disk.write("outside.xml", "<a/>");
    for (const std::string& name : {"../outside.xml"s, "dir/../list.xml"s, "/etc/passwd"s,
                                    (m_disk / "root/list.xml").string(), "list.xml\0"s})
    {
        for (const bool makeNew : {false, true})
        {
            const ExpectReports reports{name + ": the name leads out of the file system's roots"};
            EXPECT_FALSE(Kodo::FS::Utils::openSection(name, makeNew, nullptr)) << name;
        }
    }
}

TEST_F(OpenSectionTest, LinksWithinTheRootAreFollowed)
{
    std::filesystem::create_symlink("list.xml", m_disk / "root/link.xml");
    EXPECT_EQ(open("link.xml")->sectionName(), "list");
}

#if !defined(_WIN32)
TEST_F(OpenSectionTest, APipeIsNotWaitedFor)
{
    ASSERT_EQ(::mkfifo((m_disk / "root/pipe.xml").c_str(), 0600), 0);
    const ExpectReports reports{"pipe.xml: this is no ordinary file"};
    EXPECT_FALSE(open("pipe.xml"));
}
#endif

TEST_F(OpenSectionTest, AMalformedFileIsOneMessageWithItsPlace)
{
    m_disk.write("root/defs/bad.xml", "<l>\r\n  <a>&amp;&amp;&amp;</a>\r\n  <b></c>\r\n</l>");
    m_disk.write("root/defs/empty.xml", "");
    const ExpectReports reports{"defs/bad.xml:3:8: Start-end tags mismatch",
                                "defs/empty.xml:1:1: No element"};
    EXPECT_FALSE(open("defs/bad.xml"));
    EXPECT_FALSE(open("defs/empty.xml"));
}

TEST_F(OpenSectionTest, AFileOfSixtyMegabytesIsRead)
{
    constexpr std::size_t SIZE = 60'000'000;
    m_disk.write("root/large.xml", "<l><a>" + std::string(SIZE, 'x') + "</a></l>");
    const Section section = open("large.xml");
    ASSERT_TRUE(section);
    EXPECT_EQ(section->readString("a").size(), SIZE);
}

TEST_F(OpenSectionTest, AFileTakesLessThanThreeTimesItsSizeWhateverItIsWrittenIn)
{
    constexpr std::size_t SIZE = 4'000'000;
    const std::string blanks(SIZE, ' ');
    std::string wide = "\xFF\xFE<\0l\0>\0"s;
    wide += repeated("\x42\x30", SIZE / 2) + "<\0/\0l\0>\0"s; // three bytes each in UTF-8
    m_disk.write("root/plain.xml", "<l>" + blanks + "</l>");
    m_disk.write("root/latin.xml", "<?xml version='1.0' encoding='latin1'?><l>" + blanks + "</l>");
    m_disk.write("root/wide.xml", wide);
    for (const char* name : {"plain.xml", "latin.xml", "wide.xml"})
    {
        const HeapPeak peak;
        EXPECT_TRUE(open(name)) << name;
        EXPECT_GT(peak.bytes(), SIZE) << name;
        EXPECT_LT(peak.bytes(), 3 * SIZE) << name;
    }
}

TEST_F(OpenSectionTest, AFileBeyondTheLimitIsRefusedUnread)
{
    const auto path = m_disk.write("root/huge.xml");
    std::filesystem::resize_file(path, DataSection::MAX_FILE_SIZE + 1);
    const ExpectReports reports{"huge.xml: the file is larger than 67108864 bytes"};
    EXPECT_FALSE(open("huge.xml"));
}

TEST_F(OpenSectionTest, ANewSectionStandsInForWhatIsNotThere)
{
    const Section section = Kodo::FS::Utils::openSection("defs/new.one.xml", true, nullptr);
    ASSERT_TRUE(section);
    EXPECT_EQ(section->sectionName(), "new.one");
    EXPECT_FALSE(Kodo::FS::fileSystem().exists("defs/new.one.xml")) << "nothing is written";
    EXPECT_EQ(Kodo::FS::Utils::openSection("list.xml", true, nullptr)->readString("a"), "1");
    const ExpectReports reports{": this is a directory"};
    EXPECT_FALSE(Kodo::FS::Utils::openSection("", true, nullptr)) << "the tree itself is there";
}

TEST_F(OpenSectionTest, ACreatorMakesTheNewSection)
{
    class Creator : public Kodo::DataSectionCreator
    {
    public:
        Section create(const std::string& name) override
        {
            return DataSection::parse("<" + name + "><made/></" + name + ">", "f.xml");
        }
    } creator;
    EXPECT_EQ(childNames(Kodo::FS::Utils::openSection("defs/new.xml", true, &creator)),
              (std::vector{"made"s}));
    EXPECT_FALSE(Kodo::FS::Utils::openSection("defs/new.xml", false, &creator)) << "none was asked for";
}

TEST_F(OpenSectionTest, TheTextOfASectionIsGivenInUtf8AndOfWhatIsNoneNothing)
{
    using Kodo::FS::Utils::readSectionText;
    m_disk.write("root/latin.xml", "<?xml version='1.0' encoding='latin1'?><l>\xE4 &amp;</l>");
    m_disk.write("root/wide.xml", "<\0l\0/\0>\0"sv);
    m_disk.write("root/open.xml", "<l>");
    m_disk.write("root/tail.xml", "<l/>tail");
    std::string text;
    EXPECT_TRUE(readSectionText(text, "latin.xml"));
    EXPECT_EQ(text, "<?xml version='1.0' encoding='latin1'?><l>\xC3\xA4 &amp;</l>");
    EXPECT_TRUE(readSectionText(text, "wide.xml"));
    EXPECT_EQ(text, "<l/>");
    for (const char* none : {"open.xml", "tail.xml", "none.xml", "", "../root/latin.xml"}) // in silence
    {
        text = "before";
        EXPECT_FALSE(readSectionText(text, none)) << none;
        EXPECT_EQ(text, "");
    }
}

TEST(RemoveExtensionTest, TakesTheLastExtensionOfTheFilesName)
{
    const std::pair<std::string, std::string> cases[] = {
        {"01_example.xml", "01_example"},
        {"a.b.xml", "a.b"},
        {"dir.d/file", "dir.d/file"},
        {"dir.d/file.xml", "dir.d/file"},
        {".hidden", ".hidden"},
        {".hidden.xml", ".hidden"},
        {"dir/.hidden", "dir/.hidden"},
        {"..", ".."},
        {"a/..", "a/.."},
        {"..xml", "..xml"},
        {"", ""},
        {".", "."},
        {"file.", "file"},
        {"dir.d/", "dir.d/"},
        {"no extension", "no extension"},
    };
    for (const auto& [path, expected] : cases)
    {
        EXPECT_EQ(Kodo::FS::Utils::removeExtension(path).toString(), expected) << path;
    }
}

TEST(RemoveExtensionTest, RefersToTheTextItIsGiven)
{
    const std::string path = "a.xml";
    EXPECT_EQ(Kodo::FS::Utils::removeExtension(path).data(), path.data());
}
