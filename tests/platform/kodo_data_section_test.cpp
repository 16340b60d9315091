#include "kodo/fs/data_section.hpp"

#include "tests/platform/section_texts.hpp"
#include "tests/support/allocation_hook.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <pugixml.hpp>

#include <cstdlib>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace std::literals;
using Kodo::DataSection;
using Section = Kodo::SmartPointer<DataSection>;

namespace
{

Section parse(const std::string& text)
{
    return DataSection::parse(text, "f.xml");
}

std::string valueOf(const std::string& text)
{
    const Section section = parse("<root><v>" + text + "</v></root>");
    return section ? section->readString("v", "none") : "no tree";
}

/// Lets the XML parser, which does not use operator new, run out of memory after some allocations.
class FailingParserMemory
{
public:
    explicit FailingParserMemory(std::size_t successes)
    {
        s_left = successes;
        pugi::set_memory_management_functions(
            [](std::size_t size) { return s_left-- == 0 ? (s_left = 0, nullptr) : std::malloc(size); },
            &std::free);
    }
    FailingParserMemory(const FailingParserMemory&) = delete;
    FailingParserMemory& operator=(const FailingParserMemory&) = delete;
    ~FailingParserMemory() { pugi::set_memory_management_functions(&std::malloc, &std::free); }

private:
    inline static std::size_t s_left = 0;
};

} // namespace

TEST(DataSectionTest, ChildrenComeInTheOrderOfTheFile)
{
    const Section section = parse("<list>\n  <b/>\n  <a> 1 </a>\n  <b> 2 </b>\n</list>\n");
    ASSERT_TRUE(section);
    EXPECT_EQ(section->sectionName(), "list");
    EXPECT_EQ(childNames(section), (std::vector{"b"s, "a"s, "b"s}));
    Kodo::DataSectionIterator at = section->begin();
    const Kodo::ConstDataSectionIterator& step = ++at;
    EXPECT_TRUE(step != section->end());
    EXPECT_EQ((*at)->asString(), "1");
    ++at;
    ++at;
    EXPECT_FALSE(at != section->end());
}

TEST(DataSectionTest, OnlyElementsAreChildren)
{
    const Section section =
        parse("<?xml version='1.0'?><!DOCTYPE list [<!ELEMENT a ANY>]><!-- c --><list with='attribute'>text"
              "<!-- <c/> --><?pi <d/>?><![CDATA[<e/>]]><a/></list><!-- end -->");
    ASSERT_TRUE(section);
    EXPECT_EQ(childNames(section), (std::vector{"a"s}));
    EXPECT_EQ(section->asString(), "text<e/>");
}

TEST(DataSectionTest, AConstantSectionIsWalkedThroughAsWell)
{
    const Kodo::SmartPointer<const DataSection> section = parse("<l><a>1</a><b>2</b></l>");
    std::string texts;
    for (const Kodo::SmartPointer<const DataSection>& child : *section)
    {
        texts += child->asString();
    }
    EXPECT_EQ(texts, "12");
}

TEST(DataSectionTest, TheDefaultStandsInForAMissingChildOnly)
{
    const Section section = parse("<l><empty/><blank> \t\r\n </blank><a>first</a><a>second</a></l>");
    EXPECT_EQ(section->readString("none", "default", 0), "default");
    EXPECT_EQ(section->readString("none"), "");
    EXPECT_EQ(section->readString("empty", "default", 0), "");
    EXPECT_EQ(section->readString("blank", "default", 0), "");
    EXPECT_EQ(section->readString("a", "default", 0), "first");
    EXPECT_EQ(section->readString("A", "default", 0), "default");
    EXPECT_EQ(section->readString("a", "default", -1), "first") << "no flag means anything here";
}

TEST(DataSectionTest, AKeyWithSlashesGoesDown)
{
    const Section section = parse("<l>own<a>x<b>y<c>z</c></b></a><a><b>other</b></a></l>");
    EXPECT_EQ(section->readString(""), "own");
    EXPECT_EQ(section->readString("a/b"), "y");
    EXPECT_EQ(section->readString("a/b/c"), "z");
    EXPECT_EQ(section->readString("a/"), "x");
    EXPECT_EQ(section->readString("a/c", "default"), "default");
    EXPECT_EQ(section->readString("/a", "default"), "default");
    EXPECT_EQ(section->readString("a//b", "default"), "default");
    EXPECT_EQ(section->readString(Kodo::BasicStringRef<char>("a/b/tail", 3)), "y");
}

TEST(DataSectionTest, ATextIsAllThatStandsInTheElementWithoutTheBlanksAround)
{
    EXPECT_EQ(valueOf(" #vehicles:hauler "), "#vehicles:hauler");
    EXPECT_EQ(valueOf("\n\ttwo  words\r\n"), "two  words");
    EXPECT_EQ(valueOf("#vehicles<!-- not this -->:hauler"), "#vehicles:hauler");
    EXPECT_EQ(valueOf("<?pi?>a<![CDATA[ <b> & ]]> c "), "a <b> &  c");
    EXPECT_EQ(valueOf("a<deeper>not this</deeper>b"), "ab");
    EXPECT_EQ(valueOf("a<!-- --> <!-- -->b <![CDATA[ ]]>c"), "ab  c");
    EXPECT_EQ(valueOf("a\r\nb\rc"), "a\nb\nc");
    EXPECT_EQ(valueOf("\xC2\xA0x"), "\xC2\xA0x") << "a space that does not break lines is text";
}

TEST(DataSectionTest, PredefinedEntitiesAndCharacterReferencesAreExpandedAndOthersStay)
{
    EXPECT_EQ(valueOf("&lt;&gt;&amp;&quot;&apos;&#65;&#x42;&#xE4;"), "<>&\"'AB\xC3\xA4");
    EXPECT_EQ(valueOf("&other; &nbsp; & &; &#x;"), "&other; &nbsp; & &; &#x;");
}

TEST(DataSectionTest, EntitiesOfADocumentTypeAreNotExpanded)
{
    std::string text = "<!DOCTYPE l [<!ENTITY a0 'ha'><!ENTITY file SYSTEM 'file:///etc/passwd'>";
    for (int i = 1; i < 30; ++i)
    {
        const std::string before = "&a" + std::to_string(i - 1) + ';';
        text += "<!ENTITY a" + std::to_string(i) + " '" + repeated(before, 10) + "'>";
    }
    const Section section = parse(text + "]><l><a>&a29;</a><file>&file;</file></l>");
    ASSERT_TRUE(section);
    EXPECT_EQ(section->readString("a"), "&a29;");
    EXPECT_EQ(section->readString("file"), "&file;");
}

TEST(DataSectionTest, AChildOutlivesTheSectionsItWasReachedThrough)
{
    Section child;
    Kodo::DataSectionIterator at;
    {
        const Section root = parse("<l><a><b>1</b><c>2</c></a></l>");
        at = root->begin();
        child = *(*at)->begin();
    }
    EXPECT_EQ(child->sectionName(), "b");
    EXPECT_EQ(child->asString(), "1");
    EXPECT_EQ((*at)->readString("c"), "2") << "so does an iterator";
}

TEST(DataSectionTest, TheLastSectionReleasesTheFile)
{
    const std::string text = "<l>" + std::string(1'000'000, 'x') + "<a/></l>";
    const std::size_t before = liveHeapBytes();
    Section section = parse(text);
    Section child = *section->begin();
    section = nullptr;
    EXPECT_GT(liveHeapBytes(), before + text.size());
    child = nullptr;
    EXPECT_EQ(liveHeapBytes(), before);
}

TEST(DataSectionTest, SteppingThroughChildrenAllocatesThemAndNothingElse)
{
    const Section section = parse("<l>" + repeated("<a><userString> #a:b </userString></a>", 100) + "</l>");
    const AllocationCount allocations;
    std::size_t length = 0;
    for (const Section& child : *section)
    {
        length += child->sectionName().size() + child->readString("userString", "", 0).size();
    }
    EXPECT_EQ(allocations.count(), 100U);
    EXPECT_EQ(length, 500U);
}

TEST(DataSectionTest, AnEmptySectionHasANameAndNothingElse)
{
    const Section section = DataSection::makeEmpty("new one");
    EXPECT_EQ(section->sectionName(), "new one");
    EXPECT_EQ(section->asString(), "");
    EXPECT_FALSE(section->begin() != section->end());
}

TEST(DataSectionTest, SectionsMayBeReadFromSeveralThreads)
{
    const Section section = parse("<l>" + repeated("<a><b>x</b></a>", 200) + "</l>");
    const auto read = [&section]
    {
        for (const Section& child : *section)
        {
            EXPECT_EQ(child->readString("b"), "x");
        }
    };
    std::thread other(read);
    read();
    other.join();
}

TEST(DataSectionFaultTest, WhatIsNotWellFormedIsOneMessageAndNoTree)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", "f.xml:1:1: No element"},
        {" \n <!-- only --> \n", "f.xml:3:1: No element"},
        {"text", "f.xml:1:1: Text outside of the root element"},
        {"<l/>text", "f.xml:1:5: Text outside of the root element"},
        {"<l/>\r\n\r\n  text", "f.xml:3:3: Text outside of the root element"},
        {"<l/>\n<m/>", "f.xml:2:2: A second root element"},
        {"<l>\n  <a></b>\n</l>", "f.xml:2:8: Start-end tags mismatch"},
        {"<l><a/>", "f.xml:1:7: Start-end tags mismatch"},
        {"<l><a", "f.xml:1:5: Error parsing start element tag"},
        {"<l a=>", "f.xml:1:6: Error parsing element attribute"},
        {"<l><!-- open", "f.xml:1:12: Error parsing comment"},
        {"<l><![CDATA[ open", "f.xml:1:13: Error parsing CDATA section"},
        {"\xEF\xBB\xBF<\xC3\xA4\xC3\xB6></l>", "f.xml:1:7: Start-end tags mismatch"},
        {"<l>a\0b</l>"s, "f.xml:1:5: A NUL in the text"},
        {"<l/>\0"s, "f.xml:1:5: A NUL in the text"},
    };
    for (const auto& [text, message] : cases)
    {
        CollectReports reports;
        EXPECT_FALSE(parse(text)) << text;
        EXPECT_EQ(reports.texts(), std::vector{message}) << text;
    }
}

TEST(DataSectionFaultTest, AFaultIsReportedWithPriorityFive)
{
    ExpectReports reports{"f.xml:1:1: No element"};
    parse("");
    EXPECT_EQ(reports.reports().at(0).priority, 5);
    EXPECT_FALSE(reports.reports().at(0).critical);
}

TEST(DataSectionFaultTest, WantOfMemoryIsNoFaultOfTheFile)
{
    const std::string text = "<l>" + repeated("<a>text</a>", 5'000) + "</l>"; // several of the parser's pages
    std::size_t failures = 0;
    for (bool done = false; !done; ++failures)
    {
        const FailingParserMemory memory(failures);
        try
        {
            EXPECT_EQ(childNames(parse(text)).size(), 5'000U);
            done = true;
        }
        catch (const std::bad_alloc&)
        {
        }
    }
    EXPECT_GT(failures, 5U);
}

TEST(DataSectionTest, ElementsMayStandWithinOneAnotherUpToTheLimit)
{
    constexpr std::size_t DEPTH = DataSection::MAX_DEPTH;
    const std::string column =
        repeated("<a>", DEPTH - 1) + "<!--> not counted --><a>x</a><a>y</a>" + repeated("</a>", DEPTH - 1);
    Section section = parse("<l>" + repeated("<b/>", 2 * DEPTH) + "</l>");
    EXPECT_EQ(childNames(section).size(), 2 * DEPTH) << "side by side is not within";
    section = parse(column);
    for (std::size_t i = 1; i < DEPTH; ++i)
    {
        ASSERT_TRUE(section);
        section = *section->begin();
    }
    EXPECT_EQ(section->asString(), "x");
}

TEST(DataSectionFaultTest, NestingBeyondTheLimitIsAFaultWhereItIsPassedAndNeedsNoStack)
{
    constexpr std::size_t LIMIT = DataSection::MAX_DEPTH;
    for (const std::size_t depth : {LIMIT + 1, std::size_t{10'000}, std::size_t{1'000'000}})
    {
        const std::string before = "<b>" + repeated("<a>", LIMIT - 2) + "<c/>\n";
        const std::string deep =
            before + repeated("<a>", depth - LIMIT + 1) + repeated("</a>", depth - 1) + "</b>";
        const ExpectReports reports{"f.xml:2:5: Elements are nested deeper than 1000",
                                    "f.xml:1:" + std::to_string(3 * depth) + ": Start-end tags mismatch"};
        EXPECT_FALSE(parse(deep));
        EXPECT_FALSE(parse(repeated("<a>", depth)));
    }
}

TEST(DataSectionEncodingTest, AByteOrderMarkIsNoText)
{
    EXPECT_EQ(parse("\xEF\xBB\xBF<l>\xC3\xA4</l>")->asString(), "\xC3\xA4");
    EXPECT_EQ(parse("\xEF\xBB\xBF<?xml version='1.0' encoding='koi8-r'?><l>\xC3\xA4</l>")->asString(),
              "\xC3\xA4");
}

TEST(DataSectionEncodingTest, Utf16IsKnownByItsMarkOrItsZeros)
{
    const std::u16string text = u"<l>\u00E4\U0001F600\n</l>";
    for (const bool isBigEndian : {false, true})
    {
        for (const bool hasMark : {false, true})
        {
            std::string bytes;
            for (const char16_t unit : (hasMark ? u"\uFEFF" : u"") + text)
            {
                const auto high = static_cast<char>(unit >> 8U);
                const auto low = static_cast<char>(unit & 0xFFU);
                bytes += isBigEndian ? std::string{high, low} : std::string{low, high};
            }
            const Section section = parse(bytes);
            ASSERT_TRUE(section);
            EXPECT_EQ(section->asString(), "\xC3\xA4\xF0\x9F\x98\x80");
            const ExpectReports reports{"f.xml:1:5: Start-end tags mismatch"};
            EXPECT_FALSE(parse(bytes.substr(0, bytes.find(isBigEndian ? "\0\n"s : "\n\0"s))));
        }
    }
}

TEST(DataSectionEncodingTest, LoneSurrogatesAndHalfUnitsAreReplaced)
{
    EXPECT_EQ(parse("<\0l\0>\0\0\xD8<\0/\0l\0>\0"s)->asString(), "\xEF\xBF\xBD");
    const ExpectReports reports{"f.xml:1:5: Text outside of the root element"};
    EXPECT_FALSE(parse("<\0l\0/\0>\0x"s));
}

TEST(DataSectionEncodingTest, ADeclaredEncodingIsConvertedOrRefused)
{
    const auto declared = [](const std::string& encoding)
    { return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?><l>\xE4</l>"; };
    EXPECT_EQ(parse(declared("ISO-8859-1"))->asString(), "\xC3\xA4");
    EXPECT_EQ(parse(declared("latin1"))->asString(), "\xC3\xA4");
    EXPECT_EQ(parse(declared("utf-8"))->asString(), "\xE4") << "bytes that are no UTF-8 pass as they are";
    EXPECT_EQ(parse(declared("UTF-16"))->asString(), "\xE4") << "in single bytes it cannot be";
    const ExpectReports reports{"f.xml:1:31: The encoding windows-1251 is not known",
                                "f.xml:1:31: The encoding " + std::string(40, 'e') + "... is not known"};
    EXPECT_FALSE(parse(declared("windows-1251")));
    EXPECT_FALSE(parse(declared(std::string(1'000'000, 'e')))) << "a short message even then";
}

TEST(DataSectionEncodingTest, OnlyADeclarationDeclaresAnEncoding)
{
    for (const std::string front :
         {"<?xml-stylesheet href='encoding.xsl' type='text/xsl'?>",
          "<?xml version='1.0' x='encoding' y='koi8-r'?>", "<?xml version='1.0' x-encoding='koi8-r'?>",
          "<!-- <?xml encoding='koi8-r'?> -->", "<?xml version='1.0' encoding?>",
          "<?xml version='1.0' encoding = \t'utf-8'?>"})
    {
        EXPECT_TRUE(parse(front + "<l/>")) << front;
    }
    const ExpectReports reports{"f.xml:2:4: The encoding koi8-r is not known"};
    EXPECT_FALSE(parse("<?xml version='1.0'\tencoding \r\n= 'koi8-r'?><l/>"));
}
