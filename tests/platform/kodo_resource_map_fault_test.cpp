// What is wrong with a resource map: one message each, and the rest works.

#include "kodo/loom/ui_resource_manager.hpp"

#include "kodo/loom/ui_resource_utils.hpp"
#include "tests/platform/map_manager.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/resource_tree.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Kodo::Loom::UiResourceManager;
using Kodo::Loom::UiResourceUtils::getTranslatedText;
using Manager = MapManager;
using Texts = std::vector<std::string>;

namespace
{

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

} // namespace

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
