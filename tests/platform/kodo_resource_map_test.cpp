#include "kodo/loom/ui_resource_manager.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "kodo/loom/ui_resource_utils.hpp"
#include "tests/platform/map_manager.hpp"
#include "tests/support/allocation_hook.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/resource_tree.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using Kodo::Loom::UiResourceManager;
using Kodo::Loom::UiResourceUtils::currentLanguage;
using Kodo::Loom::UiResourceUtils::getTranslatedText;
using Kodo::Loom::UiResourceUtils::setCurrentLanguage;
using Manager = MapManager;
using Texts = std::vector<std::string>;

static_assert(std::has_virtual_destructor_v<UiResourceManager>);
static_assert(!std::is_copy_constructible_v<UiResourceManager>);
static_assert(std::is_same_v<decltype(&UiResourceManager::initialize), bool (UiResourceManager::*)()>);
static_assert(
    std::is_same_v<decltype(&UiResourceManager::resourceMapPath), const char* (UiResourceManager::*)()>);

namespace
{

const std::string LONG_TEXT = "a text that is too long to stand in a string itself";

class ResourceMapTest : public testing::Test
{
protected:
    ResourceMapTest()
    {
        m_resources.write("map.json", R"({
    "language": "de",
    "fallbacks": { "de": ["en"], "de_AT": ["de", "en"] },
    "catalogues": {
        "vehicles": { "de": "text/de/vehicles.mo", "en": "text/en/vehicles.mo", "fr": "text/fr/vehicles.mo" },
        "arenas": { "en": "text/en/arenas.mo" }
    }
})");
        m_resources.write("text/de/vehicles.mo", makeCatalogue({{"hauler", "Lastkran"}, {"empty", ""}}));
        m_resources.write("text/en/vehicles.mo", makeCatalogue({{"hauler", "Hauler"},
                                                                {"hauler ahoy", "Hauler!"},
                                                                {"tug", "Tug"},
                                                                {"empty", "Empty"},
                                                                {"long", LONG_TEXT}}));
        m_resources.write("text/fr/vehicles.mo", makeCatalogue({{"hauler", "Grue"}}));
        m_resources.write("text/en/arenas.mo", makeCatalogue({{"Open", "First"},
                                                              {"Open #2: all", "Second"},
                                                              {"bay-2.b/name", "Bay"},
                                                              {"with \xC3\xA4", "Umlaut"}}));
    }

    std::string translate(const std::string& key) const { return getTranslatedText(key, m_manager); }

    ResourceTree m_resources;
    Manager m_manager;
};

/// Any map and what is reported when it is read.
void expectReports(const std::string& map, const Texts& reports, bool isUsable)
{
    const ResourceTree resources;
    resources.write("map.json", map);
    Manager manager;
    CollectReports collected;
    EXPECT_EQ(manager.initialize(), isUsable) << map;
    EXPECT_EQ(manager.initialize(), isUsable) << map;
    EXPECT_EQ(getTranslatedText("#vehicles:hauler", manager), "#vehicles:hauler");
    EXPECT_EQ(collected.texts(), reports) << map;
}

/// Lets each allocation of a first translation fail in turn: of reading the map, its faults and a catalogue.
void expectFailuresLeaveNothingBehind(const std::string& key, const std::string& expected)
{
    bool failed = true;
    for (std::size_t successes = 0; failed; ++successes)
    {
        SCOPED_TRACE("at allocation " + std::to_string(successes));
        const std::size_t before = liveHeapBytes();
        failed = false;
        {
            const CollectReports reports;
            Manager manager;
            try
            {
                const FailingAllocation one(successes);
                EXPECT_EQ(getTranslatedText(key, manager), expected);
            }
            catch (const std::bad_alloc&)
            {
                failed = true;
            }
            EXPECT_EQ(getTranslatedText(key, manager), expected) << "what has failed is done again";
        }
        EXPECT_EQ(liveHeapBytes(), before);
        ASSERT_LT(successes, 5000U);
    }
}

} // namespace

TEST_F(ResourceMapTest, AKeyIsTranslatedByDomainAndMessage)
{
    EXPECT_EQ(translate("#vehicles:hauler"), "Lastkran");
    EXPECT_EQ(translate("#arenas:with \xC3\xA4"), "Umlaut");
}

TEST_F(ResourceMapTest, TextAroundTheReferenceStays)
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

TEST_F(ResourceMapTest, OfSeveralReferencesTheFirstIsTranslated)
{
    EXPECT_EQ(translate("#vehicles:hauler / #vehicles:tug"), "Lastkran / #vehicles:tug");
    EXPECT_EQ(translate("#vehicles:hauler/#vehicles:tug"), "Lastkran/#vehicles:tug");
    EXPECT_EQ(translate("#vehicles:unknown #vehicles:tug"), "#vehicles:unknown #vehicles:tug");
}

TEST_F(ResourceMapTest, AHashThatBeginsNoReferenceIsText)
{
    EXPECT_EQ(translate("Crane #2 (#vehicles:hauler)"), "Crane #2 (Lastkran)");
    EXPECT_EQ(translate("##vehicles:hauler"), "#Lastkran");
    EXPECT_EQ(translate("abc#def #vehicles:hauler #3"), "abc#def Lastkran #3");
    EXPECT_EQ(translate("a:b#vehicles:hauler"), "a:bLastkran");
}

TEST_F(ResourceMapTest, AMessageGoesToTheEndOfTheKeyWhereThereIsSuchAMessage)
{
    EXPECT_EQ(translate("#arenas:Open #2: all"), "Second");
    EXPECT_EQ(translate("the #arenas:Open #2: all"), "the Second");
    EXPECT_EQ(translate("#arenas:Open #2: al"), "First #2: al");
    EXPECT_EQ(translate("#arenas:Open #2: all "), "First #2: all ");
}

TEST_F(ResourceMapTest, NoPartOfANameIsAMessage)
{
    for (const std::string key : {"#vehicles:hauler_2", "#vehicles:hauler-2", "#vehicles:hauler.2",
                                  "#vehicles:hauler/2 x", "#vehicles:hauler\xC3\xA4", "#vehicles:2hauler x",
                                  "#vehicles: hauler", "#vehicles:(hauler)", "#vehicles:.hauler"})
    {
        EXPECT_EQ(translate(key), key);
    }
    EXPECT_EQ(translate("#arenas:bay-2.b/name, here"), "Bay, here");
}

TEST_F(ResourceMapTest, AKeyThatLeadsToNoTranslationComesBackAsItStands)
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

TEST_F(ResourceMapTest, FallbacksAreAskedInTheirOrder)
{
    EXPECT_EQ(translate("#vehicles:tug"), "Tug");
    EXPECT_EQ(translate("#vehicles:empty"), "Empty") << "an empty translation is none";
    EXPECT_TRUE(m_manager.setLanguage("de_AT"));
    EXPECT_EQ(translate("#vehicles:hauler"), "Lastkran");
    EXPECT_EQ(translate("#vehicles:tug"), "Tug");
    EXPECT_TRUE(m_manager.setLanguage("fr"));
    EXPECT_EQ(translate("#vehicles:hauler"), "Grue");
    EXPECT_EQ(translate("#vehicles:tug"), "#vehicles:tug") << "French names no fallback";
    EXPECT_TRUE(m_manager.setLanguage("de"));
    EXPECT_EQ(translate("#vehicles:hauler ahoy"), "Hauler!") << "a fallback's whole message before a name";
}

TEST_F(ResourceMapTest, TheLanguageOfAManagerIsSwitched)
{
    EXPECT_EQ(m_manager.language(), "de");
    EXPECT_EQ(m_manager.languages(), (Texts{"de", "de_AT", "en", "fr"}));
    EXPECT_TRUE(m_manager.setLanguage("en"));
    EXPECT_EQ(m_manager.language(), "en");
    EXPECT_EQ(translate("#vehicles:hauler"), "Hauler");
    EXPECT_FALSE(m_manager.setLanguage("it"));
    EXPECT_FALSE(m_manager.setLanguage(""));
    EXPECT_EQ(translate("#vehicles:hauler"), "Hauler");
}

TEST_F(ResourceMapTest, TheCurrentLanguageIsThatOfManagersThatReadTheirMapFromThenOn)
{
    EXPECT_EQ(translate("#vehicles:hauler"), "Lastkran");
    setCurrentLanguage("en");
    EXPECT_EQ(currentLanguage(), "en");
    Manager later;
    EXPECT_EQ(getTranslatedText("#vehicles:hauler", later), "Hauler");
    EXPECT_EQ(translate("#vehicles:hauler"), "Lastkran");
    setCurrentLanguage("");
    Manager last;
    EXPECT_EQ(last.language(), "de");
}

TEST_F(ResourceMapTest, ACurrentLanguageThatTheMapDoesNotKnowIsReportedOnce)
{
    const ExpectReports reports{"map.json: there is no language \"it\""};
    setCurrentLanguage("it");
    EXPECT_EQ(translate("#vehicles:hauler"), "Lastkran");
    EXPECT_EQ(translate("#vehicles:hauler"), "Lastkran");
    setCurrentLanguage("");
}

TEST_F(ResourceMapTest, TheMapIsReadOnceAndByTheFirstKeyThatNeedsIt)
{
    m_resources.write("map.json", "no map yet");
    EXPECT_EQ(translate("hauler"), "hauler");
    m_resources.write("map.json",
                      R"({"language": "en", "catalogues": {"v": {"en": "text/en/vehicles.mo"}}})");
    EXPECT_EQ(translate("#v:hauler"), "Hauler");
    m_resources.write("map.json", "no map any more");
    EXPECT_TRUE(m_manager.initialize());
    EXPECT_EQ(translate("#v:hauler"), "Hauler");
}

TEST_F(ResourceMapTest, ACatalogueIsReadOnceAndByTheFirstMessageLookedForInIt)
{
    m_resources.write("text/fr/vehicles.mo", "no catalogue, and not needed");
    EXPECT_EQ(translate("#vehicles:hauler"), "Lastkran");
    m_resources.write("text/de/vehicles.mo", "not read again");
    EXPECT_TRUE(m_manager.setLanguage("en"));
    EXPECT_TRUE(m_manager.setLanguage("de"));
    EXPECT_EQ(translate("#vehicles:hauler"), "Lastkran");
}

TEST_F(ResourceMapTest, AMissingCatalogueIsReportedOnceAndTheFallbackSpeaks)
{
    const ExpectReports reports{"text/de/vehicles.mo: there is no such file"};
    std::filesystem::remove(m_resources.path() / "text/de/vehicles.mo");
    EXPECT_EQ(translate("#vehicles:hauler"), "Hauler");
    EXPECT_EQ(translate("#vehicles:hauler"), "Hauler");
    EXPECT_TRUE(m_manager.setLanguage("de_AT"));
    EXPECT_EQ(translate("#vehicles:hauler"), "Hauler") << "one file is read once for all languages";
}

TEST_F(ResourceMapTest, ATranslationAllocatesNothingButItsResult)
{
    const std::string keys[] = {
        "#vehicles:hauler", "#vehicles:long", "Old #vehicles:long", "(#vehicles:long)", "#vehicles:unknown",
        "#unknown:hauler",  "hauler"};
    for (const std::string& key : keys)
    {
        const std::string expected = translate(key);
        const AllocationCount forCopy;
        const std::string copy = expected;
        const std::size_t allowed = forCopy.count();
        const AllocationCount forTranslation;
        const std::string text = getTranslatedText(key, m_manager);
        EXPECT_EQ(forTranslation.count(), allowed) << key;
        EXPECT_EQ(text, copy);
    }
}

TEST_F(ResourceMapTest, WhereMemoryRunsOutNothingIsLeftBehindAndTheNextCallDoesItAgain)
{
    expectFailuresLeaveNothingBehind("the #vehicles:long, mark 2", "the " + LONG_TEXT + ", mark 2");
    m_resources.write("map.json",
                      "{\"language\": \"de\", \"catalogues\": {\"a name that stands on the heap\": 1}, "
                      "\"another one that stands on the heap\": [[[\"x\"]], {\"y\": [1]}]}");
    expectFailuresLeaveNothingBehind("#vehicles:hauler", "#vehicles:hauler");
    m_resources.write("map.json", "{\"language\": [\"a text that stands on the heap, and is cut off");
    expectFailuresLeaveNothingBehind("#vehicles:hauler", "#vehicles:hauler");
}

TEST_F(ResourceMapTest, AnySeveralThreadsMayTranslateAndSwitch)
{
    std::atomic<int> failures{0};
    const auto speak = [this, &failures]
    {
        for (int i = 0; i < 2000; ++i)
        {
            const std::string text = translate("#vehicles:hauler");
            failures += text == "Lastkran" || text == "Hauler" ? 0 : 1;
            failures += translate("#vehicles:tug") == "Tug" ? 0 : 1;
        }
    };
    std::thread first(speak);
    std::thread second(speak);
    for (int i = 0; i < 500; ++i)
    {
        EXPECT_TRUE(m_manager.setLanguage(i % 2 == 0 ? "en" : "de"));
    }
    first.join();
    second.join();
    EXPECT_EQ(failures, 0);
}

TEST_F(ResourceMapTest, AReceiverOfReportsMayTranslate)
{
    m_resources.write("text/de/vehicles.mo", "broken");
    const ExpectReports reports{"text/de/vehicles.mo: the catalogue is cut off"};
    std::string heard;
    const Kodo::DebugMessageSink sink([this, &heard](const Kodo::DebugMessage&)
                                      { heard = translate("#vehicles:hauler"); });
    EXPECT_EQ(translate("#vehicles:hauler"), "Hauler");
    EXPECT_EQ(heard, "Hauler");
}

TEST(ResourceMapFaultTest, AMapThatIsNoJsonIsOneMessageWithItsPlace)
{
    expectReports(
        "",
        {"map.json:1:1: syntax error while parsing value - unexpected end of input; expected '[', '{', "
         "or a literal"},
        false);
    expectReports(
        "{\n  \"language\": \"de\",\n  \"\xC3\xA4\": nope\n}",
        {"map.json:3:9: syntax error while parsing value - invalid literal; last read: '\"\xC3\xA4\": no'"},
        false);
}

TEST(ResourceMapFaultTest, ANumberBeyondAllNumbersIsAFaultAsAnyOther)
{
    expectReports("{\n  \"x\": 1e999\n}", {"map.json:2:12: number overflow parsing '1e999'"}, false);
}

TEST(ResourceMapFaultTest, AMapDoesNotEndAtANul)
{
    expectReports(std::string("{}\n\0{", 5), {"map.json:2:1: a NUL in the text"}, false);
}

TEST(ResourceMapFaultTest, AMapWithoutItsMainMembersIsNone)
{
    expectReports("[]", {"map.json: the resource map is no object"}, false);
    expectReports("{}", {"map.json: /language is no text"}, false);
    expectReports(R"({"language": 1, "catalogues": {}})", {"map.json: /language is no text"}, false);
    expectReports(R"({"language": "de"})", {"map.json: /catalogues is no object"}, false);
    expectReports(R"({"language": "de", "catalogues": []})", {"map.json: /catalogues is no object"}, false);
}

TEST(ResourceMapFaultTest, AWrongEntryIsIgnoredAndReported)
{
    expectReports(
        R"({"language": "de", "catalogues": {"a:b": {}, "": {}, "v": 1, "w": {"de": 1, "": "x", "en": "y"}},
                      "fallbacks": {"de": ["en", "fr", 1], "": ["en"], "it": "en"}, "extra": 0})",
        {"map.json: /catalogues/ cannot stand in a key; it is ignored",
         "map.json: /catalogues/a:b cannot stand in a key; it is ignored",
         "map.json: /catalogues/v is no object; it is ignored",
         "map.json: /catalogues/w/ names no language; it is ignored",
         "map.json: /catalogues/w/de is no text; it is ignored",
         "map.json: /extra is not known; it is ignored",
         "map.json: /fallbacks/ is no list for a language; it is ignored",
         "map.json: /fallbacks/de/1 is \"fr\", which has no catalogue; it is ignored",
         "map.json: /fallbacks/de/2 is no text; it is ignored",
         "map.json: /fallbacks/it is no list for a language; it is ignored"},
        true);
    expectReports(R"({"language": "de", "catalogues": {"v": {"en": "x"}}, "fallbacks": []})",
                  {"map.json: /fallbacks is no object; it is ignored",
                   "map.json: /language is \"de\", which has no catalogue"},
                  true);
}

TEST(ResourceMapFaultTest, ACatalogueWithoutAFileIsIgnoredAndReported)
{
    expectReports(R"({"language": "de", "catalogues": {"vehicles": {"de": ""}}})",
                  {"map.json: /catalogues/vehicles/de names no file; it is ignored",
                   "map.json: /language is \"de\", which has no catalogue"},
                  true);
}

TEST(ResourceMapFaultTest, AFaultInALongTextIsAShortMessage)
{
    const ResourceTree resources;
    resources.write("map.json", "{\"language\": \"" + std::string(1'000'000, 'x'));
    const CollectReports reports;
    EXPECT_FALSE(Manager().initialize());
    ASSERT_EQ(reports.texts().size(), 1U);
    const std::string text = reports.texts().front();
    EXPECT_TRUE(text.starts_with("map.json:1:1000015: syntax error while parsing value - invalid string: "
                                 "missing closing quote; last read: '\"xxx"))
        << text.substr(0, 200);
    EXPECT_LT(text.size(), 300U);
}

TEST(ResourceMapFaultTest, AFaultInALongNameIsAShortMessage)
{
    const std::string name(1'000'000, 'x');
    const std::string cut = name.substr(0, 200) + "...";
    expectReports(R"({"language": ")" + name +
                      R"(", "catalogues": {"v": {"en": "x"}}, "fallbacks": {"en": [")" + name + "\"]}, \"" +
                      name + "\": 1}",
                  {"map.json: /fallbacks/en/0 is \"" + cut + "\", which has no catalogue; it is ignored",
                   "map.json: /" + name.substr(0, 199) + "... is not known; it is ignored",
                   "map.json: /language is \"" + cut + "\", which has no catalogue"},
                  true);
}

TEST(ResourceMapFaultTest, OfMembersWithOneNameTheLastCounts)
{
    const ResourceTree resources;
    resources.write("a.mo", makeCatalogue({{"a", "A"}}));
    resources.write("map.json", R"({"catalogues": {"w": {"en": "w.mo"}}, "language": "de", "language": "en",
        "catalogues": {"v": 1, "v": {"en": "none.mo", "en": "a.mo"}}})");
    const Manager manager;
    EXPECT_EQ(getTranslatedText("#v:a", manager), "A");
    EXPECT_EQ(getTranslatedText("#w:a", manager), "#w:a");
}

TEST(ResourceMapFaultTest, WhatLiesDeeperThanAMapGoesIsIgnored)
{
    expectReports(R"({"language": "de", "catalogues": {"v": {"de": {"language": "en"}, "en": [["x"]]}},
                      "fallbacks": {"de": [["en"], {"language": "fr"}]}})",
                  {"map.json: /catalogues/v/de is no text; it is ignored",
                   "map.json: /catalogues/v/en is no text; it is ignored",
                   "map.json: /fallbacks/de/0 is no text; it is ignored",
                   "map.json: /fallbacks/de/1 is no text; it is ignored"},
                  true);
}

TEST(ResourceMapFaultTest, FallbacksMayNameEachOther)
{
    const ResourceTree resources;
    resources.write("de.mo", makeCatalogue({{"a", "A"}}));
    resources.write("en.mo", makeCatalogue({{"b", "B"}}));
    resources.write("map.json", R"({"language": "de", "catalogues": {"v": {"de": "de.mo", "en": "en.mo"}},
        "fallbacks": {"de": ["en", "de", "en"], "en": ["de", "en"]}})");
    Manager manager;
    for (const char* language : {"de", "en"})
    {
        EXPECT_TRUE(manager.setLanguage(language));
        EXPECT_EQ(getTranslatedText("#v:a", manager), "A");
        EXPECT_EQ(getTranslatedText("#v:b", manager), "B");
        EXPECT_EQ(getTranslatedText("#v:c", manager), "#v:c");
    }
}

TEST(ResourceMapFaultTest, AMapOfManyLanguagesIsReadInTimeThatGrowsWithItsSize)
{
    constexpr int COUNT = 50'000; // a look at all pairs of them would go on for minutes
    std::string domains;
    std::string fallbacks;
    for (int i = 0; i < COUNT; ++i)
    {
        const std::string name = std::to_string(i);
        domains += (i > 0 ? ",\"d" : "\"d") + name + "\":{\"l" + name + "\":\"x.mo\"}";
        fallbacks += (i > 0 ? ",\"l" : "\"l") + std::to_string(COUNT - 1);
        fallbacks += '"';
    }
    const ResourceTree resources;
    resources.write("map.json", R"({"language": "l0", "catalogues": {)" + domains +
                                    R"(}, "fallbacks": {"l0": [)" + fallbacks + "]}}");
    Manager manager;
    EXPECT_TRUE(manager.initialize());
    EXPECT_EQ(manager.languages().size(), static_cast<std::size_t>(COUNT));
}

TEST(ResourceMapFaultTest, AMapNestedWithoutEndNeedsNoStack)
{
    const std::string deep(1'000'000, '[');
    const ResourceTree resources;
    resources.write("map.json", R"({"language": "de", "catalogues": {}, "x": )" + deep +
                                    std::string(deep.size(), ']') + "}");
    const ExpectReports reports{"map.json: /x is not known; it is ignored",
                                "map.json: /language is \"de\", which has no catalogue"};
    EXPECT_TRUE(Manager().initialize());
}

TEST(ResourceMapFaultTest, AMissingMapIsReportedOnce)
{
    const ResourceTree resources;
    Manager manager;
    const ExpectReports reports{"map.json: there is no such file"};
    EXPECT_EQ(getTranslatedText("#vehicles:hauler", manager), "#vehicles:hauler");
    EXPECT_EQ(getTranslatedText("#vehicles:hauler", manager), "#vehicles:hauler");
    EXPECT_FALSE(manager.initialize());
    EXPECT_EQ(manager.language(), "");
    EXPECT_TRUE(manager.languages().empty());
    EXPECT_FALSE(manager.setLanguage("de"));
}

TEST(ResourceMapFaultTest, AManagerMayNameNoMap)
{
    UiResourceManager manager;
    const ExpectReports reports{"There is no resource map: the resource manager names none"};
    EXPECT_FALSE(manager.initialize());
    EXPECT_EQ(getTranslatedText("#vehicles:hauler", manager), "#vehicles:hauler");
}

TEST(ResourceMapFaultTest, AMapThatIsADirectoryOrTooLargeIsNone)
{
    const ResourceTree resources;
    std::filesystem::create_directory(resources.path() / "map.json");
    {
        const ExpectReports reports{"map.json: there is no such file"};
        EXPECT_FALSE(Manager().initialize());
    }
    std::filesystem::remove(resources.path() / "map.json");
    resources.write("map.json", "{");
    std::filesystem::resize_file(resources.path() / "map.json", 16 * 1024 * 1024 + 1);
    const ExpectReports reports{"map.json: the file is larger than 16777216 bytes"};
    EXPECT_FALSE(Manager().initialize());
}

TEST(ResourceMapFaultTest, CataloguesOutsideOfTheFileSystemAreNotRead)
{
    const ResourceTree resources;
    resources.write("map.json",
                    R"({"language": "de", "catalogues": {"v": {"de": "../x.mo"}, "w": {"de": "/x.mo"}}})");
    Manager manager;
    const ExpectReports reports{"../x.mo: there is no such file", "/x.mo: there is no such file"};
    EXPECT_EQ(getTranslatedText("#v:a", manager), "#v:a");
    EXPECT_EQ(getTranslatedText("#w:a", manager), "#w:a");
}
