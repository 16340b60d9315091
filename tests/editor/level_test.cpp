#include "editor/level/level.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace
{

/// A level whose signals are noted: "+road", "-road".
class LevelTest : public testing::Test
{
protected:
    Level m_level;
    std::vector<std::string> m_events;
    qua::Connection m_added =
        m_level.connectCurveAdded([this](const std::string& name) { m_events.push_back("+" + name); });
    qua::Connection m_removed =
        m_level.connectCurveRemoved([this](const std::string& name) { m_events.push_back("-" + name); });
};

TEST_F(LevelTest, AnnouncesCurvesThatComeAndGo)
{
    m_level.addCurve("road");
    m_level.addCurve("rail");
    m_level.removeCurve("road");
    EXPECT_EQ(m_events, (std::vector<std::string>{"+road", "+rail", "-road"}));
    EXPECT_EQ(m_level.findCurve("road"), nullptr);
    ASSERT_NE(m_level.findCurve("rail"), nullptr);
}

TEST_F(LevelTest, ReplacingAnnouncesEveryCurve)
{
    m_level.addCurve("old");
    LevelData data;
    data.curves = {{"a", false, {}}, {"b", true, {{1, 2, 3}}}};
    m_level.replace(data);
    EXPECT_EQ(m_events, (std::vector<std::string>{"+old", "-old", "+a", "+b"}));
    EXPECT_EQ(m_level.data(), data);
}

TEST_F(LevelTest, RefusesNamesThatScriptsCannotSay)
{
    for (const char* name : {"", "a b", "1a", "a-b", "caf\xC3\xA9", "a.b"})
    {
        EXPECT_THROW(m_level.addCurve(name), LevelError) << name;
    }
    m_level.addCurve("_1");
    EXPECT_THROW(m_level.addCurve("_1"), LevelError);
    EXPECT_EQ(m_level.curves().size(), 1U);
}

TEST_F(LevelTest, AnEditOfACurveThatIsNotThereChangesNothing)
{
    EXPECT_THROW(m_level.removeCurve("road"), LevelError);
    EXPECT_THROW(m_level.addPoints("road", {{0, 0, 0}}), LevelError);
    EXPECT_TRUE(m_events.empty());
}

TEST_F(LevelTest, PointsAreAddedTogetherOrNotAtAll)
{
    m_level.addCurve("road");
    m_level.addPoints("road", {{1, 2, 3}, {4, 5, 6}});
    EXPECT_THROW(m_level.addPoints("road", {{0, 0, 0}, {std::numeric_limits<double>::quiet_NaN(), 0, 0}}),
                 LevelError);
    EXPECT_THROW(m_level.addPoints("road", {{0, std::numeric_limits<double>::infinity(), 0}}), LevelError);
    EXPECT_EQ(m_level.findCurve("road")->points, (std::vector<Position>{{1, 2, 3}, {4, 5, 6}}));
}

TEST_F(LevelTest, ACurveMayBeRemovedByItsOwnName)
{
    m_level.addCurve("road");
    m_level.removeCurve(m_level.curves().front().name);
    EXPECT_EQ(m_events.back(), "-road");
}

TEST_F(LevelTest, EveryEditOfTheLevelAndItsCurvesCanBeUndoneAndRedone)
{
    m_level.addCurve("road");
    m_level.addPoints("road", {{1, 2, 3}, {4, 5, 6}});
    m_level.addCurve("rail");
    m_level.findDocument("road")->removePoint(0);
    m_level.removeCurve("road");
    const LevelData end = m_level.data();
    EditHistory& history = m_level.history();
    EXPECT_EQ(history.undoCount(), 5U);

    history.undo();
    EXPECT_EQ(m_level.findCurve("road")->points, (std::vector<Position>{{4, 5, 6}}));
    EXPECT_EQ(m_level.curves().front().name, "road") << "it stands where it stood";
    history.undo();
    EXPECT_EQ(m_level.findCurve("road")->points, (std::vector<Position>{{1, 2, 3}, {4, 5, 6}}));
    while (history.undo())
    {
    }
    EXPECT_EQ(m_level.data(), LevelData());
    EXPECT_EQ(m_events, (std::vector<std::string>{"+road", "+rail", "-road", "+road", "-rail", "-road"}));
    while (history.redo())
    {
    }
    EXPECT_EQ(m_level.data(), end);
}

TEST_F(LevelTest, ARemovedCurveComesBackAsTheSameDocument)
{
    m_level.addCurve("road");
    const auto document = m_level.findDocument("road");
    m_level.removeCurve("road");
    EXPECT_EQ(m_level.findDocument("road"), nullptr);
    m_level.history().undo();
    EXPECT_EQ(m_level.findDocument("road"), document);
}

TEST_F(LevelTest, ReplacingForgetsTheHistory)
{
    m_level.addCurve("road");
    m_level.replace({});
    EXPECT_EQ(m_level.history().undoCount(), 0U);
    EXPECT_FALSE(m_level.history().undo());
}

TEST_F(LevelTest, ADocumentMayOutliveItsLevel)
{
    std::shared_ptr<CurveDocument> document;
    {
        Level level;
        level.addCurve("road");
        document = level.findDocument("road");
        document->appendPoints({{1, 2, 3}});
    }
    EXPECT_EQ(document->history().undoCount(), 0U);
    document->removePoint(0);
    EXPECT_TRUE(document->history().undo());
    EXPECT_EQ(document->curve().points.size(), 1U);
}

TEST_F(LevelTest, RefusesACurveThatTheSceneCannotHold)
{
    EXPECT_THROW(m_level.addCurve({"road", false, {{1e39, 0, 0}}}), LevelError);
    EXPECT_THROW(m_level.addCurve({"road", false, {{0, 0, 0}}, CurveKind::Bezier, {{{0, 0, -1e39}, {}}}}),
                 LevelError);
    EXPECT_THROW(m_level.addCurve({"road",
                                   false,
                                   {{0, 0, 0}},
                                   CurveKind::Bezier,
                                   {{{}, {std::numeric_limits<double>::quiet_NaN(), 0, 0}}}}),
                 LevelError);
    EXPECT_TRUE(m_level.curves().empty());
    m_level.addCurve("road");
    EXPECT_THROW(m_level.addPoints("road", {{0, 0, 1e39}}), LevelError);
}

} // namespace
