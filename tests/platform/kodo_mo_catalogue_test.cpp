#include "tests/platform/map_manager.hpp"
#include "tests/support/mo_file.hpp"
#include "tests/support/property.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/resource_tree.hpp"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

using namespace std::literals;

namespace
{

/// One catalogue as the domain "d", read through a resource map.
class Catalogue
{
public:
    explicit Catalogue(const std::string& bytes)
    {
        m_resources.write("map.json", R"({"language": "x", "catalogues": {"d": {"x": "x.mo"}}})");
        m_resources.write("x.mo", bytes);
    }
    explicit Catalogue(const MoFile& file) : Catalogue(file.bytes()) {}

    std::string find(std::string_view message) const { return std::string(m_manager.find("d", message)); }

private:
    ResourceTree m_resources;
    MapManager m_manager;
};

void expectFault(const std::string& bytes, const std::string& what)
{
    const Catalogue catalogue(bytes);
    const ExpectReports reports{"x.mo: " + what};
    EXPECT_EQ(catalogue.find("a"), "");
    EXPECT_EQ(catalogue.find("a"), "");
    EXPECT_EQ(catalogue.find(""), "");
}

/// Whole texts that a catalogue may have, so that no NUL.
rc::Gen<std::string> texts()
{
    return rc::gen::container<std::string>(rc::gen::distinctFrom(rc::gen::arbitrary<char>(), '\0'));
}

} // namespace

TEST(MoCatalogueTest, EitherByteOrderIsRead)
{
    for (const std::endian order : {std::endian::little, std::endian::big})
    {
        const Catalogue catalogue(MoFile({MoFile::header("UTF-8"), {"a", "A"}, {"b", "\xC3\xA4"}}, order));
        EXPECT_EQ(catalogue.find("a"), "A");
        EXPECT_EQ(catalogue.find("b"), "\xC3\xA4");
        EXPECT_EQ(catalogue.find("c"), "");
    }
}

TEST(MoCatalogueTest, TheHeaderIsNoMessage)
{
    EXPECT_EQ(Catalogue(MoFile({MoFile::header("UTF-8"), {"a", "A"}})).find(""), "");
}

TEST(MoCatalogueTest, AMessageWithPluralFormsIsFoundByItsSingularAndGivesTheFirstForm)
{
    const Catalogue catalogue(MoFile({{"a", "A"}, {"boat\0boats"s, "Boot\0Boote"s}, {"c", "C"}}));
    EXPECT_EQ(catalogue.find("boat"), "Boot");
    EXPECT_EQ(catalogue.find("boats"), "");
    EXPECT_EQ(catalogue.find("boat\0boats"sv), "");
    EXPECT_EQ(catalogue.find("a"), "A");
    EXPECT_EQ(catalogue.find("c"), "C");
}

TEST(MoCatalogueTest, AMessageWithAContextIsAnotherOne)
{
    const Catalogue catalogue(MoFile({{"menu\4open", "Öffnen"}, {"open", "offen"}, {"menu\4only", "nur"}}));
    EXPECT_EQ(catalogue.find("open"), "offen");
    EXPECT_EQ(catalogue.find("menu\4open"), "Öffnen");
    EXPECT_EQ(catalogue.find("only"), "");
}

TEST(MoCatalogueTest, NeitherOrderNorHashTableMatters)
{
    const MoFile unsorted({{"c", "C"}, {"a", "A"}, {"b", "B"}});
    std::string bytes = unsorted.bytes();
    bytes.replace(20, 8,
                  unsorted.number(0xFFFFFFF0) + unsorted.number(0xFFFFFFFF)); // a hash table beyond the end
    for (const Catalogue& catalogue : {Catalogue(unsorted), Catalogue(bytes)})
    {
        EXPECT_EQ(catalogue.find("a"), "A");
        EXPECT_EQ(catalogue.find("b"), "B");
        EXPECT_EQ(catalogue.find("c"), "C");
    }
}

TEST(MoCatalogueTest, OfTwoTextsForAMessageTheFirstHolds)
{
    EXPECT_EQ(Catalogue(MoFile({{"a", "first"}, {"a", "second"}})).find("a"), "first");
    EXPECT_EQ(Catalogue(MoFile({{"a", ""}, {"a", "second"}})).find("a"), "second");
}

TEST(MoCatalogueTest, ACatalogueMayBeEmpty)
{
    EXPECT_EQ(Catalogue(MoFile(MoFile::Entries())).find("a"), "");
    EXPECT_EQ(Catalogue(MoFile(MoFile::Entries{MoFile::header("UTF-8")})).find("a"), "");
}

TEST(MoCatalogueTest, MessagesThatDifferAnywhereAreTold)
{
    MoFile::Entries entries;
    for (std::size_t length = 1; length <= 40; ++length)
    {
        for (std::size_t at = 0; at < length; ++at)
        {
            std::string message(length, 'x');
            message[at] = 'y';
            entries.emplace_back(message, std::to_string(length) + "/" + std::to_string(at));
        }
    }
    const Catalogue catalogue{MoFile(entries)};
    for (const auto& [message, text] : entries)
    {
        EXPECT_EQ(catalogue.find(message), text);
    }
    EXPECT_EQ(catalogue.find(std::string(20, 'x')), "");
}

TEST(MoCatalogueTest, CharsetsThatAreUtf8ArePassedThrough)
{
    for (const std::string charset : {"UTF-8", "utf-8", "utf8", "US-ASCII", "ASCII", "CHARSET", ""})
    {
        EXPECT_EQ(Catalogue(MoFile({MoFile::header(charset), {"a", "\xC3\xA4"}})).find("a"), "\xC3\xA4")
            << charset;
    }
    EXPECT_EQ(Catalogue(MoFile({{"", "no content type"}, {"a", "\xC3\xA4"}})).find("a"), "\xC3\xA4");
}

TEST(MoCatalogueTest, Latin1IsConverted)
{
    for (const std::string charset : {"ISO-8859-1", "iso-8859-1; x", "latin1"})
    {
        const Catalogue catalogue(MoFile({MoFile::header(charset),
                                          {"\xE4", "\xF6"
                                                   "ffnen"},
                                          {"b", "plain"}}));
        EXPECT_EQ(catalogue.find("\xC3\xA4"), "\xC3\xB6"
                                              "ffnen")
            << charset;
        EXPECT_EQ(catalogue.find("b"), "plain");
    }
}

TEST(MoCatalogueFaultTest, OtherCharsetsAreRefused)
{
    expectFault(MoFile({MoFile::header("KOI8-R"), {"a", "\xC1"}}).bytes(),
                "the catalogue is written in koi8-r, not in UTF-8");
    expectFault(MoFile({MoFile::header(std::string(1'000'000, 'x')), {"a", "A"}}).bytes(),
                "the catalogue is written in " + std::string(40, 'x') + "..., not in UTF-8");
}

TEST(MoCatalogueFaultTest, WhatIsNoCatalogueIsRefused)
{
    expectFault("", "the catalogue is cut off");
    expectFault("msgid \"a\" msgstr \"A\" and more", "this is no catalogue of messages");
    std::string later = MoFile(MoFile::Entries{{"a", "A"}}).bytes();
    later[6] = 2;
    expectFault(later, "the catalogue has a format of a later time");
}

TEST(MoCatalogueFaultTest, TablesMustLieWithinTheFileAndApart)
{
    const MoFile file({{"a", "A"}, {"b", "B"}});
    const auto changed = [&file](std::size_t at, std::uint32_t value)
    {
        std::string bytes = file.bytes();
        return bytes.replace(at, 4, file.number(value));
    };
    constexpr const char* CUT_OFF = "a table of the catalogue is cut off";
    expectFault(changed(8, 0xFFFFFFFF), CUT_OFF); // so many entries
    expectFault(changed(8, 0x20000000), CUT_OFF); // their size is 0 in 32 bits
    expectFault(changed(12, 0xFFFFFFF8), CUT_OFF);
    expectFault(changed(16, static_cast<std::uint32_t>(file.bytes().size()) - 15), CUT_OFF);
    expectFault(changed(12, 0), CUT_OFF); // in the header
    expectFault(changed(16, 28), "the tables of the catalogue overlap");
    expectFault(changed(16, 40), "the tables of the catalogue overlap");
}

TEST(MoCatalogueFaultTest, TextsMustLieWithinTheFileAndEndThere)
{
    const MoFile file({{"a", "A"}, {"b", "B"}});
    const auto changed = [&file](std::size_t at, std::uint32_t value)
    {
        std::string bytes = file.bytes();
        return bytes.replace(at, 4, file.number(value));
    };
    constexpr const char* CUT_OFF = "a text of the catalogue is cut off";
    expectFault(changed(28, 0xFFFFFFFF), CUT_OFF);
    expectFault(changed(28, 0), CUT_OFF); // no NUL behind
    expectFault(changed(32, 0xFFFFFFFF), CUT_OFF);
    expectFault(changed(56, static_cast<std::uint32_t>(file.bytes().size())), CUT_OFF);
}

TEST(MoCatalogueFaultTest, TextsMustLieBehindTheHeaderAndApartFromTheTables)
{
    const MoFile file({{"a", "A"}, {"b", "B"}});
    for (const std::size_t entry : {28U, 36U, 44U, 52U}) // of the messages, then of their texts
    {
        for (const std::uint32_t at : {4U, 10U, 29U, 38U, 46U, 59U})
        {
            std::string bytes = file.bytes();
            bytes.replace(entry, 8, file.number(1) + file.number(at)); // a NUL is among a number's bytes
            bytes[at + 1] = '\0';
            expectFault(bytes, "the texts of the catalogue overlap");
        }
    }
}

TEST(MoCatalogueFaultTest, TextsThatShareTheirBytesWithoutEndAreRefused)
{
    const MoFile plain(MoFile::Entries(1000, {"a", "A"}));
    std::string bytes = plain.bytes();
    const auto begin = static_cast<std::uint32_t>(bytes.size());
    bytes += std::string(1000, 'x') + '\0';
    for (std::size_t i = 0; i < 2000; ++i)
    {
        bytes.replace(28 + 8 * i, 8, plain.number(1000) + plain.number(begin));
    }
    expectFault(bytes, "the texts of the catalogue overlap");
}

TEST(MoCatalogueTest, SomeTextsMayShareTheirBytes)
{
    const MoFile file({{"anchor", "A"}, {"b", "B"}});
    std::string bytes = file.bytes();
    bytes.replace(36, 8, file.number(4) + file.number(28 + 32 + 2)); // the end of the other message
    const Catalogue catalogue(bytes);
    EXPECT_EQ(catalogue.find("anchor"), "A");
    EXPECT_EQ(catalogue.find("chor"), "B");
}

TEST(MoCatalogueFaultTest, EveryCutOffCatalogueIsRefused)
{
    const std::string bytes = MoFile({MoFile::header("UTF-8"), {"a", "A"}, {"boat\0boats"s, "B"}}).bytes();
    for (std::size_t size = 0; size < bytes.size(); ++size)
    {
        const Catalogue catalogue(bytes.substr(0, size));
        const CollectReports reports;
        EXPECT_EQ(catalogue.find("a"), "");
        EXPECT_EQ(reports.texts().size(), 1U) << size;
    }
}

RC_GTEST_PROP(MoCatalogueProperty, EveryMessageIsFoundAndNoOther, ())
{
    auto entries = *rc::gen::container<std::map<std::string, std::string>>(texts(), texts());
    entries.erase("");
    const auto order = *rc::gen::element(std::endian::little, std::endian::big);
    const Catalogue catalogue{MoFile({entries.begin(), entries.end()}, order)};
    for (const auto& [message, text] : entries)
    {
        RC_ASSERT(catalogue.find(message) == text);
    }
    const std::string other = *texts();
    const auto known = entries.find(other);
    RC_ASSERT(catalogue.find(other) == (known != entries.end() ? known->second : ""));
}
