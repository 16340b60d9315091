// Localization across a library boundary: the program knows the interface alone and is not linked with the
// library, which comes and goes with the plug-in that lends its object.

#include "tern_common/localization/i_localization.hpp"

#include "kodo/fs/multi_file_system.hpp"
#include "tests/support/plugin.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/resource_tree.hpp"

#include <gtest/gtest.h>

#include <string>

namespace
{

class LocalizationBoundaryTest : public testing::Test
{
protected:
    LocalizationBoundaryTest()
    {
        m_tree.writeCatalogue("v", {{"tug", "Harbour tug"}, {"bay", "Lighthouse bay"}});
        m_tree.writeVehicles("ships", "<tug><userString>#v:tug</userString></tug>");
        m_tree.writeArena("01.xml", "<name>#v:bay</name>");
    }

    ResourceTree m_tree;
};

TEST_F(LocalizationBoundaryTest, TheLibraryIsLoadedTranslatesAndIsGoneAgain)
{
    for (int cycle = 0; cycle < 100; ++cycle)
    {
        {
            const Plugin plugin(TERN_LOCALIZATION_PLUGIN);
            ASSERT_TRUE(isMapped(TERN_COMMON_LIBRARY));
            ILocalization* const localization = plugin.entry<ILocalization*()>("lendLocalization")();
            ASSERT_EQ(localization->translate("tug"), "Harbour tug");
            ASSERT_EQ(localization->translate("01"), "Lighthouse bay");
            ASSERT_EQ(localization->translate("#v:bay"), "Lighthouse bay");
            ASSERT_EQ(localization->translate("absent"), "absent");
            ASSERT_EQ(plugin.entry<int(const char*)>("isCached")("tug"), 1);
            ASSERT_EQ(plugin.entry<int(const char*)>("isCached")("#v:bay"), 0);
            plugin.entry<void()>("takeLocalizationBack")();
        }
        ASSERT_FALSE(isMapped(TERN_LOCALIZATION_PLUGIN)) << "in cycle " << cycle;
        ASSERT_FALSE(isMapped(TERN_COMMON_LIBRARY)) << "in cycle " << cycle;
    }
}

TEST_F(LocalizationBoundaryTest, TheLibraryLooksWhereEachLoadedProcessHasItsFilesNow)
{
    for (const bool withRoot : {true, false, true})
    {
        const Plugin plugin(TERN_LOCALIZATION_PLUGIN);
        const CollectReports reports; // of the resource map that is not there
        if (!withRoot)
        {
            Kodo::FS::fileSystem().clearRoots();
        }
        ILocalization* const localization = plugin.entry<ILocalization*()>("lendLocalization")();
        EXPECT_EQ(localization->translate("tug"), withRoot ? "Harbour tug" : "tug");
        plugin.entry<void()>("takeLocalizationBack")();
        if (!withRoot)
        {
            ASSERT_TRUE(Kodo::FS::fileSystem().addRoot(m_tree.path().string()));
        }
    }
}

TEST_F(LocalizationBoundaryTest, ThePluginsObjectsGoWithIt)
{
    {
        const Plugin plugin(TERN_LOCALIZATION_PLUGIN);
        plugin.entry<ILocalization*()>("lendLocalization")(); // destroyed when the plug-in is unloaded
    }
    EXPECT_FALSE(isMapped(TERN_LOCALIZATION_PLUGIN));
    EXPECT_FALSE(isMapped(TERN_COMMON_LIBRARY));
}

} // namespace
