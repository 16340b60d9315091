#include "tern_common/localization/localization.hpp"

#include "kodo/fs/multi_file_system.hpp"
#include "kodo/loom/ui_resource_utils.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/resource_tree.hpp"

#include <gtest/gtest.h>

#include <string>

namespace
{

/// A tree with a catalogue, and definitions that each test adds.
class LocalizationTest : public testing::Test
{
protected:
    LocalizationTest()
    {
        m_tree.writeCatalogue("v", {{"crane", "Quay crane"},
                                    {"tug", "Harbour tug"},
                                    {"bay", "Lighthouse bay"},
                                    {"a b.c:d/e", "odd"}});
    }

    static std::string vehicle(const std::string& tag, const std::string& userString)
    {
        return "<" + tag + "><userString>" + userString + "</userString><tier>1</tier></" + tag + ">";
    }

    static std::string arena(const std::string& name) { return "<size>1</size><name>" + name + "</name>"; }

    static bool isCached(const Localization& localization, const std::string& key)
    {
        return !localization.translateByCache(key).empty();
    }

    ResourceTree m_tree;
};

TEST_F(LocalizationTest, WithoutDefinitionsEverythingIsTheFrameworksAffair)
{
    for (const bool empty : {false, true})
    {
        if (empty)
        {
            m_tree.makeDirectory("scripts/item_defs/vehicles");
            m_tree.makeDirectory("scripts/arena_defs");
        }
        Localization localization;
        EXPECT_EQ(localization.translate("#v:crane"), "Quay crane");
        EXPECT_EQ(localization.translate("crane"), "crane");
        EXPECT_EQ(localization.translateByCache("#v:crane"), "");
        EXPECT_EQ(localization.translateByCache(""), "");
    }
}

TEST_F(LocalizationTest, VehiclesOfEveryGroupAreCachedByTheirTags)
{
    m_tree.writeVehicles("cranes", vehicle("quay_crane", "#v:crane"));
    m_tree.writeVehicles("ships", vehicle("tug", "#v:tug") + vehicle("ferry", "#v:tug"));
    Localization localization;
    EXPECT_EQ(localization.translateByCache("quay_crane"), "Quay crane");
    EXPECT_EQ(localization.translateByCache("tug"), "Harbour tug");
    EXPECT_EQ(localization.translate("ferry"), "Harbour tug");
    EXPECT_EQ(localization.loomTranslate("tug"), "tug") << "the cache is not asked here";
    for (const char* key : {"root", "userString", "tier", "cranes", "list", "#v:tug", "Tug", "tu", "tug "})
    {
        EXPECT_FALSE(isCached(localization, key)) << key;
    }
}

TEST_F(LocalizationTest, AVehicleNeedsAUserStringWithAHash)
{
    m_tree.writeVehicles("ships", "<missing><tier>1</tier></missing><empty><userString/></empty>" +
                                      vehicle("blank", "  ") + vehicle("plain", "Harbour tug") +
                                      vehicle("deep", "<more><userString>#v:tug</userString></more>") +
                                      "<attribute userString='#v:tug'/>" + vehicle("tug", "#v:tug"));
    Localization localization;
    for (const char* key : {"missing", "empty", "blank", "plain", "deep", "attribute"})
    {
        EXPECT_FALSE(isCached(localization, key)) << key;
        EXPECT_EQ(localization.translate(key), key);
    }
    EXPECT_TRUE(isCached(localization, "tug"));
}

TEST_F(LocalizationTest, AHashCountsWhereverItStands)
{
    m_tree.writeVehicles("ships", vehicle("middle", "old #v:tug") + vehicle("last", "tug#") +
                                      vehicle("only", "#") + vehicle("entity", "&#35;v:tug") +
                                      vehicle("section", "<![CDATA[#v:tug]]>"));
    Localization localization;
    EXPECT_EQ(localization.translateByCache("middle"), "old Harbour tug");
    EXPECT_EQ(localization.translateByCache("last"), "tug#");
    EXPECT_EQ(localization.translateByCache("only"), "#");
    EXPECT_EQ(localization.translateByCache("entity"), "Harbour tug");
    EXPECT_EQ(localization.translateByCache("section"), "Harbour tug");
}

TEST_F(LocalizationTest, WhatTheFrameworkCannotTranslateIsCachedAsItGivesIt)
{
    m_tree.writeVehicles("ships", vehicle("barge", "#v:barge") + vehicle("raft", "#absent:raft"));
    Localization localization;
    EXPECT_EQ(localization.translateByCache("barge"), "#v:barge");
    EXPECT_EQ(localization.translateByCache("raft"), "#absent:raft");
}

TEST_F(LocalizationTest, OfTwoVehiclesWithOneTagTheLastThatIsReadCounts)
{
    m_tree.writeVehicles("a", vehicle("tug", "#v:crane"));
    m_tree.writeVehicles("b", vehicle("tug", "#v:bay") + vehicle("tug", "#v:tug"));
    m_tree.writeVehicles("c", vehicle("tug", "no key"));
    EXPECT_EQ(Localization().translateByCache("tug"), "Harbour tug");
}

TEST_F(LocalizationTest, OnlyDirectoriesAreGroups)
{
    m_tree.writeVehicles("ships", vehicle("tug", "#v:tug"));
    m_tree.write("scripts/item_defs/vehicles/list.xml", "<root>" + vehicle("stray", "#v:tug") + "</root>");
    m_tree.makeDirectory("scripts/item_defs/vehicles/empty");
    m_tree.write("scripts/item_defs/vehicles/other/list.XML.txt", "<root/>");
    m_tree.writeVehicles("ships/nested", vehicle("nested", "#v:tug"));
    Localization localization;
    EXPECT_TRUE(isCached(localization, "tug"));
    EXPECT_FALSE(isCached(localization, "stray"));
    EXPECT_FALSE(isCached(localization, "nested"));
}

TEST_F(LocalizationTest, AVehiclesDirectoryThatIsAFileIsSkipped)
{
    m_tree.write("scripts/item_defs/vehicles", "x");
    m_tree.writeArena("01.xml", arena("#v:bay"));
    EXPECT_EQ(Localization().translateByCache("01"), "Lighthouse bay");
}

TEST_F(LocalizationTest, ArenasAreCachedByTheBaseNamesOfTheirFiles)
{
    m_tree.writeArena("01_example.xml", arena("#v:bay"));
    m_tree.writeArena("a.b.xml", arena("the #v:bay"));
    m_tree.writeArena("no_extension", arena("#v:bay"));
    m_tree.writeArena("plain.xml", arena("Bay"));
    m_tree.writeArena("nameless.xml", "<size>1</size>");
    m_tree.writeArena("deep.xml", "<more>" + arena("#v:bay") + "</more>");
    Localization localization;
    EXPECT_EQ(localization.translateByCache("01_example"), "Lighthouse bay");
    EXPECT_EQ(localization.translateByCache("a.b"), "the Lighthouse bay");
    EXPECT_EQ(localization.translateByCache("no_extension"), "Lighthouse bay");
    for (const char* key : {"plain", "nameless", "deep", "01_example.xml", "scripts/arena_defs/01_example",
                            "scripts/arena_defs/01_example.xml", "a", "b", "a.b.xml"})
    {
        EXPECT_FALSE(isCached(localization, key)) << key;
    }
}

TEST_F(LocalizationTest, OnlyOrdinaryFilesAreArenas)
{
    m_tree.writeArena("01.xml", arena("#v:bay"));
    m_tree.writeArena("directory.xml/inner.xml", arena("#v:bay"));
    Localization localization;
    EXPECT_TRUE(isCached(localization, "01"));
    EXPECT_FALSE(isCached(localization, "directory"));
    EXPECT_FALSE(isCached(localization, "inner"));
}

TEST_F(LocalizationTest, AnArenaWinsOverAVehicleOfItsName)
{
    m_tree.writeVehicles("ships", vehicle("shared", "#v:tug") + vehicle("kept", "#v:tug"));
    m_tree.writeArena("shared.xml", arena("#v:bay"));
    m_tree.writeArena("kept.xml", arena("no key"));
    Localization localization;
    EXPECT_EQ(localization.translate("shared"), "Lighthouse bay");
    EXPECT_EQ(localization.translate("kept"), "Harbour tug");
}

TEST_F(LocalizationTest, OfTwoArenasWithOneBaseNameTheLastInTheDirectoryCounts)
{
    m_tree.writeArena("01.xml", arena("#v:bay"));
    m_tree.writeArena("01.yaml", arena("#v:tug"));
    EXPECT_EQ(Localization().translate("01"), "Harbour tug");
}

TEST_F(LocalizationTest, ACachedTextComesBeforeTheFrameworks)
{
    m_tree.writeArena("#v:crane.xml", arena("#v:bay")); // a base name that is a key of the catalogue
    Localization localization;
    EXPECT_EQ(localization.translate("#v:crane"), "Lighthouse bay");
    EXPECT_EQ(localization.loomTranslate("#v:crane"), "Quay crane");
}

TEST_F(LocalizationTest, AnUnknownKeyIsNotRemembered)
{
    Localization localization;
    EXPECT_EQ(localization.translateByCache("#v:crane"), "");
    EXPECT_EQ(localization.translate("#v:crane"), "Quay crane");
    EXPECT_EQ(localization.loomTranslate("#v:crane"), "Quay crane");
    EXPECT_EQ(localization.translateByCache("#v:crane"), "");
}

TEST_F(LocalizationTest, TheCacheNeverChangesAfterwards)
{
    m_tree.writeVehicles("ships", vehicle("tug", "#v:tug"));
    Localization before;
    m_tree.writeVehicles("ships", vehicle("tug", "#v:crane") + vehicle("late", "#v:tug"));
    EXPECT_EQ(before.translate("tug"), "Harbour tug");
    EXPECT_EQ(before.translate("late"), "late");
    EXPECT_EQ(Localization().translate("tug"), "Quay crane");
    EXPECT_EQ(Localization().translate("late"), "Harbour tug");
}

TEST_F(LocalizationTest, KeysAreAnyBytes)
{
    m_tree.writeVehicles("ships", vehicle("\xCE\xB1\xCE\xB2", "#v:tug") + vehicle("odd", "#v:a b.c:d/e"));
    Localization localization;
    EXPECT_EQ(localization.translate("\xCE\xB1\xCE\xB2"), "Harbour tug");
    EXPECT_EQ(localization.translate("odd"), "odd");
    for (const std::string& key : {std::string(), std::string("a\0b", 3), std::string("\xFF\xFE"),
                                   std::string(100'000, 'x'), std::string("#"), std::string("##:"),
                                   std::string("#v:"), std::string("#:crane"), std::string("../v:crane")})
    {
        EXPECT_EQ(localization.translate(key), key);
    }
}

TEST_F(LocalizationTest, ABrokenDefinitionFileIsOneReportAndHarmsNoOther)
{
    m_tree.writeVehicles("a", vehicle("first", "#v:tug"));
    m_tree.write("scripts/item_defs/vehicles/b/list.xml",
                 "<root>" + vehicle("broken", "#v:tug") + "<open></root>");
    m_tree.writeVehicles("c", vehicle("last", "#v:tug"));
    m_tree.writeArena("1.xml", arena("#v:bay"));
    m_tree.write("scripts/arena_defs/2.xml", "");
    m_tree.write("scripts/arena_defs/3.xml", "<root><name>#v:bay</name>");
    m_tree.writeArena("4.xml", arena("#v:bay"));
    const CollectReports reports;
    Localization localization;
    EXPECT_EQ(reports.texts().size(), 3U) << testing::PrintToString(reports.texts());
    for (const char* key : {"first", "last", "1", "4"})
    {
        EXPECT_TRUE(isCached(localization, key)) << key;
    }
    for (const char* key : {"broken", "open", "2", "3"})
    {
        EXPECT_FALSE(isCached(localization, key)) << key;
    }
}

TEST_F(LocalizationTest, WhatIsNoDefinitionFileIsSkippedWithOneReportThatNamesItAndHarmsNoOther)
{
    m_tree.writeVehicles("a", vehicle("first", "#v:tug"));
    m_tree.makeDirectory("scripts/item_defs/vehicles/b/list.xml");
    m_tree.writeVehicles("c", vehicle("large", "#v:tug"));
    std::filesystem::resize_file(m_tree.path() / "scripts/item_defs/vehicles/c/list.xml", 100'000'000);
    std::string deep;
    std::string ends;
    for (int i = 0; i < 10'000; ++i)
    {
        deep += "<a>\n";
        ends += "</a>";
    }
    m_tree.writeVehicles("d", vehicle("beside", "#v:tug") + deep + ends);
    m_tree.writeVehicles("e", vehicle("last", "#v:tug"));
    m_tree.makeDirectory("scripts/arena_defs/1.xml"); // an entry of the wrong kind: silent
    m_tree.writeArena("2.xml", arena("#v:bay"));
    const ExpectReports reports{
        "scripts/item_defs/vehicles/b/list.xml: this is a directory",
        "scripts/item_defs/vehicles/c/list.xml: the file is larger than 67108864 bytes",
        "scripts/item_defs/vehicles/d/list.xml:1000:2: Elements are nested deeper than 1000"};
    Localization localization;
    for (const char* key : {"first", "last", "2"})
    {
        EXPECT_TRUE(isCached(localization, key)) << key;
    }
    for (const char* key : {"large", "beside", "a", "1"})
    {
        EXPECT_FALSE(isCached(localization, key)) << key;
    }
}

TEST_F(LocalizationTest, DeepNestingEntitiesAndManyChildrenAreTakenAsTheyCome)
{
    constexpr int DEPTH = 200;
    std::string deep = "#v:tug";
    for (int i = 0; i < DEPTH; ++i)
    {
        deep = "<userString>" + deep + "</userString>";
    }
    std::string many;
    for (int i = 0; i < 2000; ++i)
    {
        many += vehicle("v" + std::to_string(i), "#v:tug");
    }
    m_tree.writeVehicles("deep", "<nested>" + deep + "</nested>" + vehicle("flat", "#v:tug"));
    m_tree.writeVehicles("many", many);
    m_tree.writeVehicles("text", "loose text" + vehicle("beside", "&lt;#v:tug") + "<!-- <gone/> -->");
    Localization localization;
    EXPECT_FALSE(isCached(localization, "nested"));
    EXPECT_EQ(localization.translate("flat"), "Harbour tug");
    EXPECT_EQ(localization.translate("v1999"), "Harbour tug");
    EXPECT_EQ(localization.translate("beside"), "<Harbour tug");
    EXPECT_FALSE(isCached(localization, "gone"));
    EXPECT_FALSE(isCached(localization, ""));
}

TEST_F(LocalizationTest, NothingOutsideTheRootsIsRead)
{
    const TemporaryDirectory outside;
    outside.write("ships/list.xml", "<root>" + vehicle("outside", "#v:tug") + "</root>");
    m_tree.makeDirectory("scripts/item_defs/vehicles");
    std::filesystem::create_directory_symlink(outside / "ships",
                                              m_tree.path() / "scripts/item_defs/vehicles/link");
    m_tree.writeVehicles("..dots..", vehicle("dots", "#v:tug"));
    Localization localization;
    EXPECT_FALSE(isCached(localization, "outside"));
    EXPECT_TRUE(isCached(localization, "dots"));
}

TEST_F(LocalizationTest, DefinitionsOfAllRootsAreRead)
{
    m_tree.writeVehicles("ships", vehicle("tug", "#v:tug"));
    const TemporaryDirectory second;
    second.write("scripts/item_defs/vehicles/ships/list.xml",
                 "<root>" + vehicle("hidden", "#v:tug") + "</root>");
    second.write("scripts/item_defs/vehicles/cranes/list.xml",
                 "<root>" + vehicle("crane", "#v:crane") + "</root>");
    ASSERT_TRUE(Kodo::FS::fileSystem().addRoot(second.path().string()));
    Localization localization;
    EXPECT_TRUE(isCached(localization, "tug"));
    EXPECT_TRUE(isCached(localization, "crane"));
    EXPECT_FALSE(isCached(localization, "hidden")) << "its file is behind the first root's";
}

TEST_F(LocalizationTest, WithoutFileSystemRootsThereIsNothing)
{
    Kodo::FS::fileSystem().clearRoots();
    const CollectReports reports; // of the resource map that is missing
    Localization localization;
    EXPECT_EQ(localization.translate("#v:tug"), "#v:tug");
}

TEST_F(LocalizationTest, TheResourceMapIsReadWhenItIsFirstNeeded)
{
    m_tree.write("gui/canopy/res_map.json", "no map");
    m_tree.writeVehicles("ships", vehicle("plain", "tug"));
    Localization localization; // silent: nothing to translate, and the manager is not initialised
    const CollectReports reports;
    EXPECT_EQ(localization.translate("#v:tug"), "#v:tug");
    EXPECT_EQ(reports.texts().size(), 1U) << testing::PrintToString(reports.texts());
}

TEST_F(LocalizationTest, SeveralObjectsLiveSideBySide)
{
    m_tree.writeVehicles("ships", vehicle("tug", "#v:tug"));
    Localization first;
    {
        Localization second;
        EXPECT_EQ(second.translate("tug"), first.translate("tug"));
    }
    ILocalization& asInterface = first;
    EXPECT_EQ(asInterface.translate("tug"), "Harbour tug");
    const Localization& reader = first;
    EXPECT_EQ(reader.loomTranslate("#v:crane"), "Quay crane");
}

} // namespace
