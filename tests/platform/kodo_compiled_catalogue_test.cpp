// Catalogues as msgfmt compiles them, in either byte order, with and without a hash table.

#include "kodo/loom/ui_resource_utils.hpp"
#include "tests/platform/map_manager.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/resource_tree.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace
{

class CompiledCatalogueTest : public testing::TestWithParam<std::string>
{
protected:
    CompiledCatalogueTest()
    {
        m_tree.write("words.mo", compiled());
        m_tree.write("map.json", R"({"language": "de", "catalogues": {"words": {"de": "words.mo"}}})");
    }

    static std::string compiled()
    {
        return readFile(std::string(TERN_TEST_CATALOGUES) + "/words_" + GetParam() + ".mo");
    }
    std::string translate(const std::string& key) const
    {
        return Kodo::Loom::UiResourceUtils::getTranslatedText(key, m_manager);
    }

    ResourceTree m_tree;
    MapManager m_manager;
};

} // namespace

TEST_P(CompiledCatalogueTest, IsInTheOrderThatItsNameSays)
{
    EXPECT_EQ(compiled().substr(0, 4),
              GetParam().starts_with("big") ? "\x95\x04\x12\xDE" : "\xDE\x12\x04\x95");
}

TEST_P(CompiledCatalogueTest, EntriesWithContextsAndPluralFormsDoNotDisturbPlainOnes)
{
    const std::pair<std::string, std::string> cases[] = {
        {"open", "offen"},        {"boat", "Boot"},
        {"cranes", "Kräne"},      {"two lines\nand a \"quoted\" end", "zwei Zeilen\nund ein „Ende“"},
        {"menu\4open", "Öffnen"}, {"toy\4boat", "Schiffchen"},
    };
    for (const auto& [message, text] : cases)
    {
        EXPECT_EQ(translate("#words:" + message), text);
    }
}

TEST_P(CompiledCatalogueTest, WhatIsNoPlainEntryWithATextIsNotFound)
{
    for (const char* message : {"only", "boats", "crane", "quay", "pier", "gone", "toy", "menu", "two lines"})
    {
        const std::string key = std::string("#words:") + message;
        EXPECT_EQ(translate(key), key);
    }
}

TEST_P(CompiledCatalogueTest, IsRefusedWhereverItIsCutOff)
{
    const std::string whole = compiled();
    for (std::size_t size = 0; size < whole.size(); ++size)
    {
        m_tree.write("words.mo", whole.substr(0, size));
        const MapManager manager;
        const CollectReports reports;
        EXPECT_EQ(Kodo::Loom::UiResourceUtils::getTranslatedText("#words:open", manager), "#words:open");
        EXPECT_EQ(reports.texts().size(), 1U) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(Msgfmt, CompiledCatalogueTest,
                         testing::Values("little", "big", "little_unhashed", "big_unhashed"),
                         [](const auto& order) { return order.param; });
