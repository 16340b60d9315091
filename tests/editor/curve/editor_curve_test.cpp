#include "editor/curve/editor_curve.hpp"

#include "editor/curve/curve_point.hpp"
#include "editor/curve/position_text.hpp"
#include "tests/editor/curve/any_edit.hpp"
#include "tests/support/property.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace
{

Curve triangle(bool closed)
{
    return {"triangle", closed, {{0, 0, 0}, {10, 0, 0}, {10, 0, 10}}};
}

/// The signals of a curve as text: "added 1 2".
class SignalLog
{
public:
    explicit SignalLog(EditorCurve& curve)
    {
        const auto note = [this](const char* what)
        {
            return [this, what](std::size_t a, std::size_t b)
            { texts.push_back(std::string(what) + " " + std::to_string(a) + " " + std::to_string(b)); };
        };
        m_connections.push_back(curve.changed.connect([this] { texts.emplace_back("changed"); }));
        m_connections.push_back(curve.pointUpdated.connect(note("updated")));
        m_connections.push_back(curve.pointMoved.connect(note("moved")));
        m_connections.push_back(curve.pointAdded.connect(note("added")));
        m_connections.push_back(curve.pointRemoved.connect(note("removed")));
    }

    /// What has been emitted since the last call.
    std::vector<std::string> take() { return std::exchange(texts, {}); }

    std::vector<std::string> texts;

private:
    std::vector<qua::Connection> m_connections;
};

using Texts = std::vector<std::string>;

class EditorCurveTest : public testing::TestWithParam<bool>
{
protected:
    void open(const Curve& curve)
    {
        m_document = CurveDocument::make(curve);
        m_curve = std::make_unique<EditorCurve>(m_document);
        m_log.emplace(*m_curve);
    }

    std::shared_ptr<CurveDocument> m_document;
    std::unique_ptr<EditorCurve> m_curve;
    std::optional<SignalLog> m_log;
};

TEST_F(EditorCurveTest, TellsWhatEachEditOfAnOpenCurveDid)
{
    open(triangle(false));
    m_curve->insertPoint({5, 1, 0}, 0.5F);
    EXPECT_EQ(m_log->take(), (Texts{"added 1 1"}));
    m_document->appendPoints({{1, 1, 1}, {2, 2, 2}});
    EXPECT_EQ(m_log->take(), (Texts{"added 4 2"}));
    m_document->movePoint(2, {3, 3, 3});
    EXPECT_EQ(m_log->take(), (Texts{"updated 2 1"}));
    m_document->swapPoints(4, 1);
    EXPECT_EQ(m_log->take(), (Texts{"moved 1 4"}));
    m_curve->removePoint(0);
    EXPECT_EQ(m_log->take(), (Texts{"removed 0 1"}));
    m_document->setKind(CurveKind::Bezier);
    EXPECT_EQ(m_log->take(), (Texts{"changed"}));
    m_document->setHandles(1, {{1, 0, 0}, {0, 1, 0}});
    EXPECT_EQ(m_log->take(), (Texts{"updated 1 1"})) << "the curve looks different around the point";
    m_document->setColor(Kodo::Render::Colour32Bit(0xFF000000U));
    EXPECT_EQ(m_log->take(), (Texts{"changed"}));
    m_document->setClosed(true);
    EXPECT_EQ(m_log->take(), (Texts{"changed"}));
}

TEST_F(EditorCurveTest, TellsWhatUndoAndRedoDo)
{
    open(triangle(false));
    m_document->insertPoint({5, 1, 0}, 0.5);
    m_document->swapPoints(0, 3);
    m_log->take();
    m_document->history().undo();
    EXPECT_EQ(m_log->take(), (Texts{"moved 0 3"}));
    m_document->history().undo();
    EXPECT_EQ(m_log->take(), (Texts{"removed 1 1"}));
    m_document->history().redo();
    EXPECT_EQ(m_log->take(), (Texts{"added 1 1"}));
}

TEST_F(EditorCurveTest, AClosedCurveShowsItsFirstPointAgainAtTheEnd)
{
    open(triangle(true));
    ASSERT_EQ(m_curve->pointCount(), 4U);
    EXPECT_EQ(m_curve->pointPosition(3), m_curve->pointPosition(0));
    EXPECT_EQ(m_curve->pointParameter(3), 3.0F);
    EXPECT_EQ(m_curve->segmentResolution(2), 16.0F);
    EXPECT_EQ(m_curve->positionAt(2.5F), (Kodo::Vector3{5, 0, 5}));
    EXPECT_FALSE(m_curve->pointObject(3) == m_curve->pointObject(0));
    m_document->movePoint(0, {1, 1, 1});
    EXPECT_EQ(m_log->take(), (Texts{"updated 0 1", "updated 3 1"}));
    EXPECT_TRUE(m_curve->pointObject(3).setProperty(CurvePoint::POSITION, "2 2 2"));
    EXPECT_EQ(m_curve->pointPosition(0), (Kodo::Vector3{2, 2, 2}));
    m_log->take();
    m_curve->insertPoint({5, 0, 6}, 2.5F);
    EXPECT_EQ(m_log->take(), (Texts{"added 3 1"}));
    EXPECT_EQ(m_curve->pointCount(), 5U);
    m_curve->removePoint(4);
    EXPECT_EQ(m_log->take(), (Texts{"removed 0 1", "updated 3 1"})) << "the first point stands there";
}

TEST_F(EditorCurveTest, NothingIsClosedBelowTwoPoints)
{
    open(triangle(true));
    m_curve->removePoint(2);
    EXPECT_EQ(m_curve->pointCount(), 3U);
    m_log->take();
    m_curve->removePoint(1);
    EXPECT_EQ(m_curve->pointCount(), 1U);
    EXPECT_EQ(m_log->take(), (Texts{"removed 1 2"}));
    m_curve->removePoint(0);
    EXPECT_EQ(m_curve->pointCount(), 0U);
    EXPECT_TRUE(m_curve->isValid());
    m_document->history().undo();
    m_log->take();
    m_document->insertPoint({1, 0, 0}, 0);
    EXPECT_EQ(m_log->take(), (Texts{"added 1 2"}));
}

TEST_F(EditorCurveTest, ReportsWhatIsNotThere)
{
    open(triangle(false));
    const ExpectReports reports{"index < pointCount()",  "index < CurveGeometry::segmentCount(curve)",
                                "index < pointCount()",  "index < pointCount()",
                                "index < pointCount()",  "isShowable(position)",
                                "!std::isnan(parameter)"};
    EXPECT_EQ(m_curve->pointParameter(3), 0.0F);
    EXPECT_EQ(m_curve->segmentResolution(2), 1.0F);
    EXPECT_EQ(m_curve->pointPosition(3), Kodo::Vector3::ZERO);
    m_curve->removePoint(3);
    EXPECT_TRUE(m_curve->pointObject(std::numeric_limits<std::size_t>::max()).isEmpty());
    m_curve->insertPoint({std::numeric_limits<float>::infinity(), 0, 0}, 1);
    m_curve->insertPoint({0, 0, 0}, std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(m_log->take(), Texts{});
}

TEST_F(EditorCurveTest, ACurveThatTheSceneCannotHoldIsNotValidUntilItsPointsAreMended)
{
    Curve curve = triangle(false);
    curve.points[1] = {1e300, 0, 0};
    open(curve);
    EXPECT_FALSE(m_curve->isValid());
    EXPECT_EQ(m_curve->pointPosition(1).x, std::numeric_limits<float>::max());
    m_document->movePoint(0, {1, 0, 0});
    EXPECT_EQ(m_log->take(), (Texts{"changed"})) << "a view follows nothing else then";
    m_document->movePoint(1, {1, 0, 0});
    EXPECT_EQ(m_log->take(), (Texts{"changed"}));
    EXPECT_TRUE(m_curve->isValid());
}

TEST_F(EditorCurveTest, ASlotThatEditsIsToldOfInItsTurn)
{
    open(triangle(true));
    const qua::Connection clamp = m_curve->pointUpdated.connect(
        [&](std::size_t, std::size_t)
        {
            if (m_document->curve().points[0][1] > 5)
            {
                m_document->movePoint(0, {0, 5, 0});
            }
        });
    m_document->movePoint(0, {0, 9, 0});
    EXPECT_EQ(m_log->take(), (Texts{"updated 0 1", "updated 0 1", "updated 3 1"}));
    EXPECT_EQ(m_curve->pointPosition(3).y, 5);
}

TEST_F(EditorCurveTest, ASlotMayDestroyTheCurve)
{
    open(triangle(true));
    const qua::Connection connection =
        m_curve->pointUpdated.connect([&](std::size_t, std::size_t) { m_curve.reset(); });
    m_document->movePoint(0, {0, 9, 0});
    EXPECT_EQ(m_curve, nullptr);
    EXPECT_EQ(m_log->take(), (Texts{"updated 0 1"}));
}

TEST_F(EditorCurveTest, TheDocumentOutlivesTheCurve)
{
    open(triangle(false));
    const tern::ReflectedObject object = m_curve->pointObject(1);
    m_curve->removePoint(0);
    m_curve.reset();
    EXPECT_TRUE(object.setProperty(CurvePoint::POSITION, "1 2 3"));
    m_document->history().undo();
    m_document->history().undo();
    EXPECT_EQ(m_document->curve(), triangle(false));
}

TEST_F(EditorCurveTest, ACurveOfItsOwnHasItsOwnHistory)
{
    const std::unique_ptr<EditorCurve> curve = makeCurve(triangle(false));
    curve->removePoint(1);
    EXPECT_EQ(curve->pointCount(), 2U);
    EXPECT_TRUE(curve->document()->history().undo());
    EXPECT_EQ(curve->document()->curve(), triangle(false));
}

/// Keeps, by the signals alone, what a view keeps: for each point its object and where it was told to be.
class Follower
{
public:
    explicit Follower(EditorCurve& curve) : m_curve(curve)
    {
        m_connections.push_back(curve.changed.connect([this] { rebuild(); }));
        m_connections.push_back(curve.pointUpdated.connect(
            [this](std::size_t index, std::size_t count)
            {
                for (std::size_t i = index; i < index + count; ++i)
                {
                    m_points.at(i).second = m_curve.pointPosition(i);
                }
            }));
        m_connections.push_back(curve.pointMoved.connect([this](std::size_t a, std::size_t b)
                                                         { std::swap(m_points.at(a), m_points.at(b)); }));
        m_connections.push_back(curve.pointAdded.connect(
            [this](std::size_t index, std::size_t count)
            {
                for (std::size_t i = index; i < index + count; ++i)
                {
                    m_points.insert(m_points.begin() + static_cast<std::ptrdiff_t>(i), point(i));
                }
            }));
        m_connections.push_back(curve.pointRemoved.connect(
            [this](std::size_t index, std::size_t count)
            {
                const auto at = m_points.begin() + static_cast<std::ptrdiff_t>(index);
                m_points.erase(at, at + static_cast<std::ptrdiff_t>(count));
            }));
        rebuild();
    }

    bool isUpToDate() const
    {
        if (m_points.size() != m_curve.pointCount())
        {
            return false;
        }
        for (std::size_t i = 0; i < m_points.size(); ++i)
        {
            if (!(m_points[i] == point(i)))
            {
                return false;
            }
        }
        return true;
    }

private:
    using Point = std::pair<tern::ReflectedObject, Kodo::Vector3>;

    Point point(std::size_t index) const
    {
        return {m_curve.pointObject(index), m_curve.pointPosition(index)};
    }

    void rebuild()
    {
        m_points.clear();
        for (std::size_t i = 0; i < m_curve.pointCount(); ++i)
        {
            m_points.push_back(point(i));
        }
    }

    EditorCurve& m_curve;
    std::vector<Point> m_points;
    std::vector<qua::Connection> m_connections;
};

RC_GTEST_PROP(EditorCurvePropertyTest, WhoeverFollowsTheSignalsKnowsThePoints, ())
{
    const auto document = anyDocument();
    EditorCurve curve(document);
    const Follower follower(curve);
    const int edits = *rc::gen::inRange(1, 30);
    for (int i = 0; i < edits; ++i)
    {
        switch (*rc::gen::inRange(0, 5))
        {
        case 0:
            document->history().undo();
            break;
        case 1:
            document->history().redo();
            break;
        case 2:
        {
            const EditHistory::Step step(document->history());
            makeAnyEdit(*document);
            makeAnyEdit(*document);
            break;
        }
        default:
            makeAnyEdit(*document);
        }
        RC_ASSERT(follower.isUpToDate());
    }
}

} // namespace
