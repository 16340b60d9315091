// What becomes of keys.

#include "kodo/loom/ui_resource_utils.hpp"
#include "tests/platform/map_manager.hpp"
#include "tests/support/property.hpp"
#include "tests/support/resource_tree.hpp"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <map>
#include <regex>
#include <string>
#include <utility>
#include <vector>

using Kodo::Loom::UiResourceUtils::getTranslatedText;

namespace
{

class TranslatedTextTest : public testing::Test
{
protected:
    TranslatedTextTest()
    {
        m_resources.write("map.json", R"({"language": "de", "catalogues": {"vehicles": {"de": "vehicles.mo"},
            "arenas": {"de": "arenas.mo"}}})");
        m_resources.write("vehicles.mo", makeCatalogue({{"hauler", "Lastkran"}, {"tug", "Schlepper"}}));
        m_resources.write(
            "arenas.mo",
            makeCatalogue({{"Open", "First"}, {"Open #2: all", "Second"}, {"bay-2.b/name", "Bay"}}));
    }

    std::string translate(const std::string& key) const { return getTranslatedText(key, m_manager); }

    ResourceTree m_resources;
    MapManager m_manager;
};

} // namespace

TEST_F(TranslatedTextTest, TextAroundTheReferenceStays)
{
    const std::pair<std::string, std::string> cases[] = {
        {"Old #vehicles:hauler", "Old Lastkran"},
        {":#vehicles:hauler", ":Lastkran"},
        {"#vehicles:hauler ", "Lastkran "},
        {"Old #vehicles:hauler, mark 2", "Old Lastkran, mark 2"},
        {"(#vehicles:hauler)", "(Lastkran)"},
        {"\"#vehicles:hauler\"", "\"Lastkran\""},
        {"See #vehicles:hauler.", "See Lastkran."},
        {"#vehicles:hauler...", "Lastkran..."},
        {"#vehicles:hauler: new", "Lastkran: new"},
        {"#vehicles:hauler\n#", "Lastkran\n#"},
        {std::string("\0#vehicles:hauler\0", 18), std::string("\0Lastkran\0", 10)},
    };
    for (const auto& [key, text] : cases)
    {
        EXPECT_EQ(translate(key), text);
    }
}

TEST_F(TranslatedTextTest, OfSeveralReferencesTheFirstIsTranslated)
{
    EXPECT_EQ(translate("#vehicles:hauler / #vehicles:tug"), "Lastkran / #vehicles:tug");
    EXPECT_EQ(translate("#vehicles:hauler/#vehicles:tug"), "Lastkran/#vehicles:tug");
    EXPECT_EQ(translate("#vehicles:unknown #vehicles:tug"), "#vehicles:unknown #vehicles:tug");
}

TEST_F(TranslatedTextTest, AHashThatBeginsNoReferenceIsText)
{
    EXPECT_EQ(translate("Crane #2 (#vehicles:hauler)"), "Crane #2 (Lastkran)");
    EXPECT_EQ(translate("##vehicles:hauler"), "#Lastkran");
    EXPECT_EQ(translate("abc#def #vehicles:hauler #3"), "abc#def Lastkran #3");
    EXPECT_EQ(translate("a:b#vehicles:hauler"), "a:bLastkran");
}

TEST_F(TranslatedTextTest, AMessageGoesToTheEndOfTheKeyWhereThereIsSuchAMessage)
{
    EXPECT_EQ(translate("#arenas:Open #2: all"), "Second");
    EXPECT_EQ(translate("the #arenas:Open #2: all"), "the Second");
    EXPECT_EQ(translate("#arenas:Open #2: al"), "First #2: al");
    EXPECT_EQ(translate("#arenas:Open #2: all "), "First #2: all ");
}

TEST_F(TranslatedTextTest, NoPartOfANameIsAMessage)
{
    for (const std::string key : {"#vehicles:hauler_2", "#vehicles:hauler-2", "#vehicles:hauler.2",
                                  "#vehicles:hauler/2 x", "#vehicles:hauler\xC3\xA4", "#vehicles:2hauler x",
                                  "#vehicles: hauler", "#vehicles:(hauler)", "#vehicles:.hauler"})
    {
        EXPECT_EQ(translate(key), key);
    }
    EXPECT_EQ(translate("#arenas:bay-2.b/name, here"), "Bay, here");
}

TEST_F(TranslatedTextTest, AKeyThatLeadsToNoTranslationComesBackAsItStands)
{
    for (const std::string key :
         {"", "hauler", "abc#def", "#", "#:", "#vehicles", "#vehicles:", "#:hauler", "#unknown:hauler",
          "#vehicles:unknown", "vehicles:hauler", "vehicles:hauler#", "#vehicles #:hauler",
          "# vehicles:hauler", "#Vehicles:hauler", "#vehicles:Hauler", "front #vehicles:unknown behind",
          "#vehicles:hau", "#vehicles:haulers"})
    {
        EXPECT_EQ(translate(key), key);
    }
}

RC_GTEST_PROP(TranslatedTextProperty, AnyTextIsTranslatedAsAPatternHasIt, ())
{
    const std::map<std::string, std::string> texts{
        {"a", "A"}, {"b.a", "BA"}, {"a: b", "sentence"}, {"-a", "dash"}, {"\xC3\xA4", "umlaut"}};
    const ResourceTree resources;
    resources.write("map.json", R"({"language": "x", "catalogues": {"d": {"x": "x.mo"}}})");
    resources.write("x.mo", makeCatalogue(texts));
    const MapManager manager;
    const auto pieces = rc::gen::element<std::string>("#", ":", "#d:", "#d:", "d", "a", "a", "b.a", "a: b",
                                                      "-a", "\xC3\xA4", " ", ".", "-", "/", "_", "(", "\n");
    std::string key;
    for (const std::string& piece : *rc::gen::container<std::vector<std::string>>(pieces))
    {
        key += piece;
    }
    std::string expected = key;
    static const std::regex REFERENCE("#([^#:]*):([^]*)");
    static const std::regex NAME("[\\w./\x80-\xFF-]*[\\w\x80-\xFF]");
    std::smatch reference;
    if (std::regex_search(key, reference, REFERENCE) && reference[1] == "d")
    {
        const std::string rest = reference[2];
        std::smatch name;
        const bool hasName = std::regex_search(rest, name, NAME, std::regex_constants::match_continuous);
        const auto whole = texts.find(rest);
        const auto named = texts.find(hasName ? name.str() : "");
        if (whole != texts.end())
        {
            expected = reference.prefix().str() + whole->second;
        }
        else if (named != texts.end())
        {
            expected = reference.prefix().str() + named->second + name.suffix().str();
        }
    }
    RC_ASSERT(getTranslatedText(key, manager) == expected);
}
