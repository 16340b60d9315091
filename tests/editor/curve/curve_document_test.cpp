#include "editor/curve/curve_document.hpp"

#include "editor/curve/color_text.hpp"
#include "editor/curve/curve_geometry.hpp"
#include "editor/curve/curve_point.hpp"
#include "editor/curve/position_text.hpp"
#include "tests/editor/curve/any_edit.hpp"
#include "tests/support/property.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace
{

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

Curve line()
{
    return {"line", false, {{0, 0, 0}, {10, 0, 0}, {20, 0, 0}}};
}

/// What undo must bring back: the data, and which point is which.
struct Snapshot
{
    Curve curve;
    std::vector<CurveDocument::PointId> ids;

    explicit Snapshot(const CurveDocument& document) : curve(document.curve()), ids(document.pointIds()) {}
    bool operator==(const Snapshot&) const = default;
};

RC_GTEST_PROP(CurveDocumentTest, UndoAndRedoGiveExactlyTheSameData, ())
{
    const auto document = anyDocument();
    std::vector<Snapshot> past{Snapshot(*document)};
    std::size_t now = 0;
    const int edits = *rc::gen::inRange(1, 30);
    for (int i = 0; i < edits; ++i)
    {
        const int choice = *rc::gen::inRange(0, 4);
        if (choice == 0)
        {
            RC_ASSERT(document->history().undo() == (now > 0));
            now -= now > 0 ? 1U : 0U;
        }
        else if (choice == 1)
        {
            RC_ASSERT(document->history().redo() == (now + 1 < past.size()));
            now += now + 1 < past.size() ? 1U : 0U;
        }
        else
        {
            makeAnyEdit(*document);
            if (const Snapshot after(*document); !(after == past[now]))
            {
                past.resize(++now, past.front());
                past.push_back(after);
            }
        }
        RC_ASSERT(Snapshot(*document) == past[now]);
        RC_ASSERT(document->history().undoCount() == now);
        RC_ASSERT(document->history().redoCount() == past.size() - 1 - now);
        const bool hasHandles = document->curve().kind == CurveKind::Bezier;
        RC_ASSERT(document->curve().handles.size() == (hasHandles ? document->curve().points.size() : 0U));
    }
}

TEST(CurveDocumentTest, TellsOfEachEditOnceAndAfterIt)
{
    const auto document = CurveDocument::make(line());
    std::vector<std::size_t> counts;
    const qua::Connection connection =
        document->connectChanged([&] { counts.push_back(document->curve().points.size()); });
    document->insertPoint({5, 1, 0}, 0.5);
    document->removePoint(3);
    document->history().undo();
    EXPECT_EQ(counts, (std::vector<std::size_t>{4, 3, 4}));
    document->movePoint(0, {0, 0, 0});
    document->setKind(CurveKind::Linear);
    document->setClosed(false);
    document->setColor(std::nullopt);
    document->swapPoints(1, 1);
    document->appendPoints({});
    EXPECT_EQ(counts.size(), 3U) << "what changes nothing is no edit";
    EXPECT_EQ(document->history().undoCount(), 1U);
}

TEST(CurveDocumentTest, APointGoesWhereItsParameterTells)
{
    const auto document = CurveDocument::make(line());
    document->insertPoint({15, 5, 0}, 1.5);
    document->insertPoint({-5, 0, 0}, -1);
    document->insertPoint({30, 0, 0}, 4);
    EXPECT_EQ(document->curve().points,
              (std::vector<Position>{{-5, 0, 0}, {0, 0, 0}, {10, 0, 0}, {15, 5, 0}, {20, 0, 0}, {30, 0, 0}}));
}

TEST(CurveDocumentTest, AFloatOfTheCurveItselfIsTakenAsTheCurvesOwnPlace)
{
    const auto document = CurveDocument::make({"a", false, {{0, 0, 0}, {0.3, 0.7, 0}}});
    const Position own = CurveGeometry::positionAt(document->curve(), 0.375);
    document->insertPoint(toPosition(toVector(own)), 0.375);
    EXPECT_EQ(document->curve().points[1], own);
    document->insertPoint({0.1, 0.1, 0}, 0.5);
    EXPECT_EQ(document->curve().points[1], (Position{0.1, 0.1, 0}));
}

TEST(CurveDocumentTest, RefusesAndReportsWhatCannotBe)
{
    const auto document = CurveDocument::make(line());
    const Snapshot before(*document);
    {
        const ExpectReports reports{"index < m_state.ids.size()", "index < m_state.ids.size()",
                                    "first < m_state.ids.size()", "second < m_state.ids.size()",
                                    "index < m_state.ids.size()", "isShowable(position)",
                                    "isShowable(position)",       "!std::isnan(parameter)",
                                    "areShowable(points)",        "!std::isnan(parameter)"};
        EXPECT_FALSE(document->removePoint(3));
        EXPECT_FALSE(document->movePoint(std::numeric_limits<std::size_t>::max(), {}));
        EXPECT_FALSE(document->swapPoints(3, 0));
        EXPECT_FALSE(document->swapPoints(0, 3));
        EXPECT_TRUE(document->pointObject(3).isEmpty());
        EXPECT_FALSE(document->movePoint(0, {NOT_A_NUMBER, 0, 0}));
        EXPECT_FALSE(document->insertPoint({1e39, 0, 0}, 0));
        EXPECT_FALSE(document->insertPoint({}, NOT_A_NUMBER));
        EXPECT_FALSE(document->appendPoints({{0, 0, 0}, {0, -std::numeric_limits<double>::infinity(), 0}}));
        EXPECT_FALSE(document->splitAt(NOT_A_NUMBER));
        EXPECT_EQ(reports.reports().front().path, "curve/curve_document.cpp");
    }
    EXPECT_FALSE(document->setHandles(0, {})) << "a linear curve has none";
    EXPECT_TRUE(Snapshot(*document) == before);
    EXPECT_EQ(document->history().undoCount(), 0U);
}

TEST(CurveDocumentTest, ACurveMayLoseAllItsPointsAndGetThemBack)
{
    const auto document = CurveDocument::make(line());
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_TRUE(document->removePoint(0));
    }
    EXPECT_TRUE(document->curve().points.empty());
    EXPECT_TRUE(document->insertPoint({1, 2, 3}, 7));
    EXPECT_EQ(document->curve().points, (std::vector<Position>{{1, 2, 3}}));
    while (document->history().undo())
    {
    }
    EXPECT_EQ(document->curve(), line());
}

TEST(CurveDocumentTest, ADragIsOneStep)
{
    const auto document = CurveDocument::make(line());
    for (int i = 1; i <= 10; ++i)
    {
        document->movePoint(1, {10, i / 2.0, 0}, tern::SetterFlag::Interactive);
    }
    document->movePoint(1, {10, 6, 0});
    document->movePoint(1, {10, 7, 0});
    EXPECT_EQ(document->history().undoCount(), 2U);
    document->history().undo();
    EXPECT_EQ(document->curve().points[1], (Position{10, 6, 0}));
    document->history().undo();
    EXPECT_EQ(document->curve(), line());
    document->history().redo();
    EXPECT_EQ(document->curve().points[1], (Position{10, 6, 0}));
}

TEST(CurveDocumentTest, DragsOfTwoPointsAreTwoSteps)
{
    const auto document = CurveDocument::make(line());
    document->movePoint(1, {10, 1, 0}, tern::SetterFlag::Interactive);
    document->movePoint(2, {20, 1, 0}, tern::SetterFlag::Interactive);
    EXPECT_EQ(document->history().undoCount(), 2U);
    document->history().undo();
    EXPECT_EQ(document->curve().points[1], (Position{10, 1, 0}));
}

TEST(CurveDocumentTest, ADragBackToItsStartLeavesNoStep)
{
    const auto document = CurveDocument::make(line());
    document->movePoint(1, {10, 1, 0}, tern::SetterFlag::Interactive);
    document->movePoint(1, {10, 0, 0});
    EXPECT_EQ(document->history().undoCount(), 0U);
}

TEST(CurveDocumentTest, AMoveThatIsNotToBeRememberedIsNot)
{
    const auto document = CurveDocument::make(line());
    EXPECT_TRUE(document->movePoint(1, {10, 1, 0}, tern::SetterFlag::NoUndo));
    EXPECT_EQ(document->curve().points[1], (Position{10, 1, 0}));
    EXPECT_EQ(document->history().undoCount(), 0U);
}

TEST(CurveDocumentTest, DocumentsMayShareAHistory)
{
    const auto history = std::make_shared<EditHistory>();
    const auto a = CurveDocument::make(line(), history);
    auto b = CurveDocument::make(line(), history);
    a->removePoint(0);
    b->removePoint(0);
    history->undo();
    EXPECT_EQ(b->curve(), line());
    EXPECT_EQ(a->curve().points.size(), 2U);
    b.reset();
    EXPECT_TRUE(history->redo()) << "the step of a curve that is gone does nothing";
}

TEST(CurveDocumentTest, BecomingABezierCurveKeepsTheShapeAndUndoTheData)
{
    Curve curve = line();
    curve.kind = CurveKind::CatmullRom;
    curve.points[1] = {10, 5, 3};
    const auto document = CurveDocument::make(curve);
    document->setKind(CurveKind::Bezier);
    EXPECT_EQ(document->curve().handles.size(), 3U);
    EXPECT_NEAR(CurveGeometry::positionAt(document->curve(), 0.3)[1],
                CurveGeometry::positionAt(curve, 0.3)[1], 1e-12);
    document->setHandles(1, {{1, 2, 3}, {4, 5, 6}});
    document->setKind(CurveKind::Linear);
    EXPECT_TRUE(document->curve().handles.empty());
    document->history().undo();
    EXPECT_EQ(document->curve().handles[1], (CurveHandles{{1, 2, 3}, {4, 5, 6}}));
    document->history().undo();
    document->history().undo();
    EXPECT_EQ(document->curve(), curve);
}

TEST(CurveDocumentTest, HandlesThatAKindHasNoUseForAreDropped)
{
    Curve curve = line();
    curve.handles.resize(3);
    EXPECT_TRUE(CurveDocument::make(curve)->curve().handles.empty());
    curve.kind = CurveKind::Bezier;
    curve.handles.resize(1);
    EXPECT_EQ(CurveDocument::make(curve)->curve().handles.size(), 3U);
}

TEST(CurveDocumentTest, APlaceOfTheCurveOutsideTheSceneIsNotSplit)
{
    constexpr double FAR = 3.4e38;
    const Curve wide{"wide",
                     true,
                     {{-FAR, 0, 0}, {0, FAR, 0}, {FAR, 0, 0}, {0, -FAR, 0}},
                     CurveKind::Bezier,
                     {{{-FAR, 0, 0}, {-FAR, 0, 0}}, {}, {}, {}}};
    const auto document = CurveDocument::make(wide);
    const ExpectReports reports{"isShowable(position)"};
    EXPECT_FALSE(document->splitAt(0.3));
    EXPECT_EQ(document->curve(), wide);
    EXPECT_EQ(document->history().undoCount(), 0U);
}

TEST(CurveDocumentTest, AListenerMayTakeBackTheEditThatItHearsOf)
{
    const auto document = CurveDocument::make(line());
    const qua::Connection veto = document->connectChanged(
        [&]
        {
            if (document->curve().points.size() < 3)
            {
                EXPECT_TRUE(document->history().undo());
            }
        });
    document->removePoint(1);
    EXPECT_EQ(document->curve(), line());
    EXPECT_EQ(document->history().undoCount(), 0U);
    EXPECT_EQ(document->history().redoCount(), 1U);
}

TEST(CurveDocumentTest, AListenerMayEditTheCurve)
{
    const auto document = CurveDocument::make(line());
    const qua::Connection snap = document->connectChanged(
        [&]
        {
            if (document->curve().points[1][1] > 5)
            {
                document->movePoint(1, {10, 5, 0});
            }
        });
    document->movePoint(1, {10, 8, 0});
    EXPECT_EQ(document->curve().points[1], (Position{10, 5, 0}));
    EXPECT_EQ(document->history().undoCount(), 2U);
}

TEST(CurveDocumentTest, AListenerMayLetGoOfTheDocument)
{
    auto document = CurveDocument::make(line());
    CurveDocument& edited = *document;
    const qua::Connection connection = document->connectChanged([&] { document.reset(); });
    edited.removePoint(0);
    EXPECT_EQ(document, nullptr);
}

/// The point objects of a line of three points.
class CurvePointTest : public testing::Test
{
protected:
    std::string text(const tern::ReflectedObject& object) const
    {
        const auto value = object.property(CurvePoint::POSITION);
        return value.isVoid() ? "gone" : *value.peek<std::string>();
    }

    std::shared_ptr<CurveDocument> m_document = CurveDocument::make(line());
};

TEST_F(CurvePointTest, HasItsPositionAsATextThatCanBeSet)
{
    const tern::ReflectedObject object = m_document->pointObject(1);
    EXPECT_EQ(object.metaObject()->className(), "CurvePoint");
    EXPECT_EQ(text(object), "10 0 0");
    EXPECT_TRUE(object.setProperty(CurvePoint::POSITION, "1.5 -2e-3 0.1"));
    EXPECT_EQ(m_document->curve().points[1], (Position{1.5, -2e-3, 0.1}));
    EXPECT_EQ(text(object), "1.5 -0.002 0.1");
    EXPECT_TRUE(m_document->history().undo());
    EXPECT_EQ(text(object), "10 0 0");
}

TEST_F(CurvePointTest, TakesNothingThatIsNoPosition)
{
    const tern::ReflectedObject object = m_document->pointObject(1);
    for (const char* const text :
         {"", "1 2", "1 2 3 4", "1 2 x", "1,2,3", "nan 0 0", "0 inf 0", "1e39 0 0", "1 2 3m"})
    {
        EXPECT_FALSE(object.setProperty(CurvePoint::POSITION, text)) << text;
    }
    EXPECT_FALSE(object.setProperty(CurvePoint::POSITION, 7));
    EXPECT_FALSE(object.setProperty("place", "1 2 3"));
    EXPECT_EQ(m_document->curve(), line());
    EXPECT_EQ(m_document->history().undoCount(), 0U);
}

TEST_F(CurvePointTest, StaysWithItsPointWhereverThatStands)
{
    const tern::ReflectedObject object = m_document->pointObject(1);
    m_document->insertPoint({5, 0, 0}, 0.5);
    EXPECT_EQ(m_document->pointObject(2), object);
    m_document->removePoint(0);
    EXPECT_EQ(m_document->pointObject(1), object);
    m_document->swapPoints(1, 2);
    EXPECT_EQ(m_document->pointObject(2), object);
    EXPECT_EQ(text(object), "10 0 0");
}

TEST_F(CurvePointTest, IsInertWhileItsPointIsGone)
{
    const tern::ReflectedObject object = m_document->pointObject(1);
    m_document->removePoint(1);
    EXPECT_EQ(text(object), "gone");
    EXPECT_FALSE(object.setProperty(CurvePoint::POSITION, "1 2 3"));
    EXPECT_EQ(m_document->history().undoCount(), 1U);
    m_document->history().undo();
    EXPECT_EQ(text(object), "10 0 0");
    EXPECT_EQ(m_document->pointObject(1), object);
    m_document.reset();
    EXPECT_EQ(text(object), "gone");
    EXPECT_FALSE(object.setProperty(CurvePoint::POSITION, "1 2 3"));
}

TEST_F(CurvePointTest, OneStandsForWhicheverPointIsTheFirst)
{
    const tern::ReflectedObject object = m_document->firstPointObject();
    EXPECT_EQ(text(object), "0 0 0");
    m_document->removePoint(0);
    EXPECT_EQ(text(object), "10 0 0");
    EXPECT_TRUE(object.setProperty(CurvePoint::POSITION, "1 2 3"));
    EXPECT_EQ(m_document->curve().points[0], (Position{1, 2, 3}));
    m_document->removePoint(0);
    m_document->removePoint(0);
    EXPECT_EQ(text(object), "gone");
}

TEST_F(CurvePointTest, ObjectsThatNobodyHoldsAreMadeAnewAndThoseHeldAreKept)
{
    const tern::ReflectedObject held = m_document->pointObject(0);
    for (int i = 0; i < 100; ++i)
    {
        m_document->insertPoint({1, 0, 0}, 1);
        static_cast<void>(m_document->pointObject(1));
        m_document->removePoint(1);
    }
    EXPECT_EQ(m_document->pointObject(0), held);
}

RC_GTEST_PROP(PositionTextTest, EveryFinitePositionComesBackToTheBit, (std::uint64_t x, std::uint64_t y))
{
    const Position position{std::bit_cast<double>(x), std::bit_cast<double>(y), -0.0};
    RC_PRE(isFinite(position));
    const auto back = parsePosition(formatPosition(position));
    RC_ASSERT(back.has_value());
    for (std::size_t i = 0; i < position.size(); ++i)
    {
        RC_ASSERT(std::bit_cast<std::uint64_t>((*back)[i]) == std::bit_cast<std::uint64_t>(position[i]));
    }
}

RC_GTEST_PROP(PositionTextTest, EveryFiniteVectorComesBackToTheBit, (std::uint32_t x))
{
    const Kodo::Vector3 vector(std::bit_cast<float>(x), 0.1F, -0.0F);
    RC_PRE(isFinite({static_cast<double>(vector.x), 0, 0}));
    RC_ASSERT(std::bit_cast<std::uint32_t>(toVector(toPosition(vector)).x) == x);
    RC_ASSERT(toPosition(vector)[1] == 0.1);
}

TEST(PositionTextTest, WhatIsTooLargeForAFloatIsTheLargest)
{
    EXPECT_EQ(toVector({1e300, -1e300, 0}).x, std::numeric_limits<float>::max());
    EXPECT_EQ(toVector({1e300, -1e300, 0}).y, -std::numeric_limits<float>::max());
}

TEST(ColorTextTest, SixHexadecimalDigitsAreAColour)
{
    EXPECT_EQ(parseColor("2cFFa6"), Kodo::Render::Colour32Bit(0xFF2CFFA6U));
    EXPECT_EQ(formatColor(Kodo::Render::Colour32Bit(0x002CFFA6U)), "2CFFA6");
    for (const char* const text : {"", "2CFFA", "2CFFA6F", "#2CFFA", "-2CFFA", "2CFFAG"})
    {
        EXPECT_EQ(parseColor(text), std::nullopt) << text;
    }
}

TEST(CurveKindTest, EveryKindHasItsName)
{
    for (const CurveKind kind : {CurveKind::Linear, CurveKind::CatmullRom, CurveKind::Bezier})
    {
        EXPECT_EQ(curveKindOf(curveKindName(kind)), kind);
    }
    EXPECT_EQ(curveKindName(CurveKind::CatmullRom), "catmullRom");
    EXPECT_EQ(curveKindOf("Linear"), std::nullopt);
}

} // namespace
