// When the UI framework is asked, and for what.

#include "tern_common/localization/localization.hpp"

#include "tests/support/resource_tree.hpp"
#include "tests/tern_common/localization/scripted_framework.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace
{

using Keys = std::vector<std::string>;

class LocalizationCallsTest : public testing::Test
{
protected:
    LocalizationCallsTest()
    {
        m_tree.writeVehicles("ships", "<tug><userString>#v:tug</userString></tug>"
                                      "<plain><userString>Plain</userString></plain>"
                                      "<empty><userString>#v:empty</userString></empty>");
        m_tree.writeArena("01.xml", "<name>#a:bay</name>");
    }

    static std::string answer(const std::string& key)
    {
        return key == "#v:empty" || key == "nothing" ? std::string() : "<" + key + ">";
    }

    ResourceTree m_tree;
    ScriptedFramework m_framework{&answer};
};

TEST_F(LocalizationCallsTest, ConstructionAsksForEachUserStringOnce)
{
    Localization localization;
    EXPECT_EQ(m_framework.takeKeys(), (Keys{"#v:tug", "#v:empty", "#a:bay"}));
}

TEST_F(LocalizationCallsTest, ACachedTextIsGivenWithoutAskingTheFramework)
{
    Localization localization;
    m_framework.takeKeys();
    EXPECT_EQ(localization.translate("tug"), "<#v:tug>");
    EXPECT_EQ(localization.translate("01"), "<#a:bay>");
    EXPECT_EQ(m_framework.takeKeys(), Keys{});
}

TEST_F(LocalizationCallsTest, AMissingAndAnEmptyTextBothLeadToTheFramework)
{
    Localization localization;
    m_framework.takeKeys();
    EXPECT_EQ(localization.translate("empty"), "<empty>");
    EXPECT_EQ(localization.translate("absent"), "<absent>");
    EXPECT_EQ(localization.translate("plain"), "<plain>");
    EXPECT_EQ(localization.translate("nothing"), "") << "no fallback behind the framework's";
    EXPECT_EQ(m_framework.takeKeys(), (Keys{"empty", "absent", "plain", "nothing"}));
    EXPECT_EQ(localization.translate("absent"), "<absent>");
    EXPECT_EQ(m_framework.takeKeys(), Keys{"absent"}) << "nothing is remembered";
}

TEST_F(LocalizationCallsTest, TheCacheAloneAnswersWithoutTheFramework)
{
    Localization localization;
    m_framework.takeKeys();
    EXPECT_EQ(localization.translateByCache("tug"), "<#v:tug>");
    EXPECT_EQ(localization.translateByCache("empty"), "");
    EXPECT_EQ(localization.translateByCache("absent"), "");
    EXPECT_EQ(m_framework.takeKeys(), Keys{});
}

TEST_F(LocalizationCallsTest, TheFrameworkAloneAnswersWithoutTheCache)
{
    Localization localization;
    m_framework.takeKeys();
    EXPECT_EQ(localization.loomTranslate("tug"), "<tug>");
    EXPECT_EQ(m_framework.takeKeys(), Keys{"tug"});
}

TEST_F(LocalizationCallsTest, EveryCallComesWithTheObjectsOwnManager)
{
    Localization first;
    first.translate("absent");
    first.loomTranslate("tug");
    ASSERT_EQ(m_framework.managers().size(), 1U);
    EXPECT_NE(dynamic_cast<const Localization::ResourceManager*>(m_framework.managers().front()), nullptr);
    const Localization second;
    EXPECT_EQ(m_framework.managers().size(), 2U);
}

TEST_F(LocalizationCallsTest, WhatTheFrameworkThrowsLeavesConstructionAndLookups)
{
    int answers = 0;
    const auto throwing = [&answers](const std::string& key) -> std::string
    {
        if (++answers == 3)
        {
            throw std::runtime_error("out of words");
        }
        return key;
    };
    m_tree.writeArena("02.xml", "<name>#a:yard</name>");
    m_framework.answerWith(throwing);
    EXPECT_THROW(Localization(), std::runtime_error);
    EXPECT_EQ(m_framework.takeKeys(), (Keys{"#v:tug", "#v:empty", "#a:bay"})) << "and nothing after that";
    Localization localization;
    answers = 2;
    EXPECT_THROW(localization.translate("absent"), std::runtime_error);
    EXPECT_EQ(localization.translate("tug"), "#v:tug") << "the object is as it was";
}

} // namespace
