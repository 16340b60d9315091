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
        m_resources.write("text/en/arenas.mo", makeCatalogue({{"bay", "Bay"}, {"with \xC3\xA4", "Umlaut"}}));
    }

    std::string translate(const std::string& key) const { return getTranslatedText(key, m_manager); }

    ResourceTree m_resources;
    Manager m_manager;
};

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
