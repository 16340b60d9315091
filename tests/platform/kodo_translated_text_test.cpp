// What becomes of keys.

#include "kodo/loom/ui_resource_utils.hpp"
#include "tests/platform/map_manager.hpp"
#include "tests/support/property.hpp"
#include "tests/support/resource_tree.hpp"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
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

bool isName(const std::string& text)
{
    const std::string others = "# :(\n"; // all that a test's keys have besides
    return !text.empty() && text.find_first_of(others) == std::string::npos &&
           std::string(".-/").find(text.back()) == std::string::npos;
}

/// What becomes of a key whose one domain is "d", tried out: each place for a reference, each length of a
/// name.
std::string readPlainly(const std::string& key, const std::function<std::string(const std::string&)>& textOf)
{
    std::size_t mark = 0;
    while (mark < key.size() &&
           (key[mark] != '#' || key[std::min(key.find_first_of("#:", mark + 1), key.size())] != ':'))
    {
        ++mark;
    }
    if (key.compare(mark, 3, "#d:") != 0)
    {
        return key;
    }
    const std::string front = key.substr(0, mark);
    const std::string rest = key.substr(mark + 3);
    if (const std::string text = textOf(rest); !text.empty())
    {
        return front + text;
    }
    std::size_t length = rest.size();
    while (length > 0 && !isName(rest.substr(0, length)))
    {
        --length;
    }
    const std::string text = textOf(rest.substr(0, length));
    return text.empty() ? key : front + text + rest.substr(length);
}

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

RC_GTEST_PROP(TranslatedTextProperty, AnyTextIsTranslatedAsAPlainReadingHasIt, ())
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
    const auto textOf = [&texts](const std::string& message)
    {
        const auto found = texts.find(message);
        return found == texts.end() ? std::string() : found->second;
    };
    RC_ASSERT(getTranslatedText(key, manager) == readPlainly(key, textOf));
}
