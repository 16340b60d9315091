// A curve as a view shows it, from the model to the mouse and back.

#include "editor/curve/curve_point.hpp"
#include "editor/curve/curve_point_drag.hpp"
#include "editor/curve/editor_curve.hpp"
#include "editor/curve/position_text.hpp"
#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/chunk/space_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"
#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_point_inserter.hpp"
#include "tests/editor/curve/any_edit.hpp"
#include "tests/support/property.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr int SPACE = 71;

/// A space with a collision scene, for as long as it lives.
class Scene
{
public:
    Scene()
    {
        static_cast<void>(Kodo::ChunkManager::instance().space(SPACE, true));
        Kodo::SpaceManager::instance().createSpace(SPACE);
        Kodo::CollisionSceneManager::instance().createScene(SPACE);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene()
    {
        Kodo::ChunkManager::instance().removeSpace(SPACE); // its items leave the collision scene
        Kodo::CollisionSceneManager::instance().removeScene(SPACE);
        Kodo::SpaceManager::instance().removeSpace(SPACE);
    }
};

/// Gives what it is to draw to the test. Owns nothing, as its owner runs no destructor.
class CopyingDrawer final : public ICurveDrawer
{
public:
    explicit CopyingDrawer(std::vector<Kodo::Vector3>& points) : m_points(points) {}

    void draw(Kodo::DebugDrawer::Context&, const std::vector<Kodo::Vector3>& points) override
    {
        m_points = points;
    }
    void setColor(Kodo::Render::Colour32Bit) override {}
    void setColorDown(Kodo::Render::Colour32Bit) override {}
    float thickness() const override { return 1; }
    void setThickness(float) override {}

private:
    std::vector<Kodo::Vector3>& m_points;
};

/// All that a view shows of a curve.
struct Shown
{
    std::vector<Kodo::Vector3> line;
    std::vector<Kodo::Matrix> controlPoints;
    std::vector<tern::ReflectedObject> objects;

    bool operator==(const Shown&) const = default;
};

/// A view of a document in a scene of its own.
class ShownCurve
{
public:
    explicit ShownCurve(const std::shared_ptr<CurveDocument>& document)
        : m_view(std::make_unique<EditorCurve>(document), SPACE, std::make_unique<CopyingDrawer>(m_line))
    {
    }

    CurveView& view() { return m_view; }
    CurveViewControlPoint& controlPoint(std::size_t index) { return *m_view.getControlPoints().at(index); }

    Shown shown()
    {
        m_line.clear();
        Kodo::DebugDrawer::Context context;
        m_view.render(context);
        Shown shown{m_line, {}, {}};
        for (const auto& point : m_view.getControlPoints())
        {
            shown.controlPoints.push_back(point->edTransform());
            shown.objects.push_back(point->getRefObject());
        }
        return shown;
    }

private:
    std::vector<Kodo::Vector3> m_line;
    CurveView m_view;
};

Kodo::Matrix turnedOrigin()
{
    return Kodo::Matrix::constructTransformationMatrix({100, 7, -30}, Kodo::Quaternion{0, 0.6F, 0, 0.8F},
                                                       {2, 2, 2});
}

RC_GTEST_PROP(ShownCurveProperty, AViewShowsAfterEveryEditUndoAndRedoWhatAFreshViewShows, ())
{
    const Scene scene;
    const auto document = anyDocument();
    ShownCurve curve(document);
    if (*rc::gen::arbitrary<bool>())
    {
        curve.view().setOrigin(turnedOrigin());
    }
    const int edits = *rc::gen::inRange(1, 15);
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
        default:
            makeAnyEdit(*document);
        }
        ShownCurve fresh(document);
        fresh.view().setOrigin(curve.view().getOrigin());
        RC_ASSERT(curve.shown() == fresh.shown());
    }
}

TEST(InvalidShownCurveTest, AViewShowsACurveThatBecomesValidNotValidAndValidAgain)
{
    const Scene scene;
    const auto document =
        CurveDocument::make({"a", false, {{0, 0, 0}, {1e39, 0, 0}, {10, 0, 10}}, CurveKind::CatmullRom});
    ShownCurve curve(document);
    EXPECT_TRUE(curve.shown().line.empty());
    document->movePoint(1, {10, 0, 0});
    EXPECT_EQ(curve.shown().line.size(), 2 * 16U + 1U);
    document->history().undo();
    EXPECT_TRUE(curve.shown().line.empty());
    document->removePoint(0);
    EXPECT_TRUE(curve.shown().line.empty());
    document->history().undo();
    document->history().redo();
    document->removePoint(0);
    EXPECT_EQ(curve.shown().line, (std::vector<Kodo::Vector3>{{10, 0, 10}}));
    EXPECT_EQ(curve.shown().controlPoints.size(), 1U);
}

class ShownCurveTest : public testing::Test
{
protected:
    void close() { m_document->setClosed(true); }

    Scene m_scene;
    Curve m_before{"a", false, {{0, 0, 0}, {10, 0, 0}, {10, 0, 10}}};
    std::shared_ptr<CurveDocument> m_document = CurveDocument::make(m_before);
    ShownCurve m_curve{m_document};
};

TEST_F(ShownCurveTest, EachSegmentIsSampledInItsStepsAndAClosedCurveEndsWhereItBegan)
{
    EXPECT_EQ(m_curve.shown().line.size(), 16U + 16U + 1U);
    close();
    const Shown shown = m_curve.shown();
    EXPECT_EQ(shown.line.size(), 3 * 16U + 1U);
    EXPECT_EQ(shown.line.back(), shown.line.front());
    EXPECT_EQ(shown.controlPoints.size(), 4U);
}

TEST_F(ShownCurveTest, DeletingAControlPointRemovesThePoint)
{
    m_curve.controlPoint(1).edDelete();
    EXPECT_EQ(m_document->curve().points, (std::vector<Position>{{0, 0, 0}, {10, 0, 10}}));
    EXPECT_EQ(m_curve.view().getControlPoints().size(), 2U);
    m_document->history().undo();
    EXPECT_EQ(m_document->curve(), m_before);
    EXPECT_EQ(m_curve.view().getControlPoints().size(), 3U);
}

TEST_F(ShownCurveTest, DeletingTheControlPointThatClosesTheCurveRemovesTheFirst)
{
    close();
    m_curve.controlPoint(3).edDelete();
    EXPECT_EQ(m_document->curve().points, (std::vector<Position>{{10, 0, 0}, {10, 0, 10}}));
    EXPECT_TRUE(m_curve.shown() == ShownCurve(m_document).shown());
}

TEST_F(ShownCurveTest, ARayInsertsAPointThatKeepsTheShape)
{
    m_curve.view().setOrigin(turnedOrigin());
    const Shown before = m_curve.shown();
    const Kodo::Vector3 target = before.line[4]; // a quarter of the first segment
    CurveViewPointInserter inserter([this](const std::function<void(CurveView&)>& visit)
                                    { visit(m_curve.view()); });
    inserter.insert({target + Kodo::Vector3(0, 50, 0), {0, -1, 0}},
                    CurveViewPointInserter::InsertType::Insert);
    ASSERT_EQ(m_document->curve().points.size(), 4U);
    EXPECT_NEAR(m_document->curve().points[1][0], 2.5, 1e-4);
    EXPECT_NEAR(m_document->curve().points[1][2], 0, 1e-4);
    m_document->history().undo();
    EXPECT_TRUE(m_curve.shown() == before);
}

TEST_F(ShownCurveTest, ARayInsertsIntoTheSegmentThatClosesTheCurve)
{
    close();
    const Kodo::Vector3 target = m_curve.shown().line[40];
    CurveViewPointInserter inserter([this](const std::function<void(CurveView&)>& visit)
                                    { visit(m_curve.view()); });
    inserter.insert({target + Kodo::Vector3(0, 50, 0), {0, -1, 0}},
                    CurveViewPointInserter::InsertType::Insert);
    EXPECT_EQ(m_document->curve().points.back(), (Position{5, 0, 5}));
}

TEST_F(ShownCurveTest, ADraggedControlPointTakesTheCurveAlongInOneStep)
{
    m_curve.view().setOrigin(turnedOrigin());
    const Shown before = m_curve.shown();
    {
        CurvePointDrag drag(m_curve.view().getControlPoints()[1], m_curve.view().getOrigin());
        for (const float x : {2.0F, 3.0F, 4.0F})
        {
            EXPECT_TRUE(drag.moveTo(turnedOrigin().applyPoint({x, 1, 0})));
            EXPECT_NEAR(m_document->curve().points[1][0], static_cast<double>(x), 1e-4);
            EXPECT_FALSE(m_document->history().undo());
        }
    }
    EXPECT_TRUE(m_document->history().undoCount() == 1);
    ShownCurve fresh(m_document);
    fresh.view().setOrigin(turnedOrigin());
    EXPECT_TRUE(m_curve.shown() == fresh.shown());
    m_document->history().undo();
    EXPECT_EQ(m_document->curve(), m_before);
    EXPECT_TRUE(m_curve.shown() == before);
}

TEST_F(ShownCurveTest, ACancelledDragLeavesNothing)
{
    const Shown before = m_curve.shown();
    {
        CurvePointDrag drag(m_curve.view().getControlPoints()[0], m_curve.view().getOrigin());
        EXPECT_TRUE(drag.moveTo({3, 3, 3}));
        drag.cancel();
    }
    EXPECT_EQ(m_document->history().undoCount(), 0U);
    EXPECT_TRUE(m_curve.shown() == before);
}

TEST_F(ShownCurveTest, DraggingEitherEndOfAClosedCurveMovesBoth)
{
    close();
    {
        CurvePointDrag drag(m_curve.view().getControlPoints()[3], m_curve.view().getOrigin());
        EXPECT_TRUE(drag.moveTo({1, 2, 3}));
    }
    EXPECT_EQ(m_document->curve().points[0], (Position{1, 2, 3}));
    const Shown shown = m_curve.shown();
    EXPECT_EQ(shown.controlPoints[0], shown.controlPoints[3]);
    EXPECT_TRUE(shown == ShownCurve(m_document).shown());
}

TEST_F(ShownCurveTest, AControlPointWhereItsViewPutItChangesNothing)
{
    m_curve.view().setOrigin(turnedOrigin());
    for (std::size_t i = 0; i < 3; ++i)
    {
        EXPECT_TRUE(applyToCurve(m_curve.controlPoint(i), m_curve.view().getOrigin()));
    }
    EXPECT_EQ(m_document->history().undoCount(), 0U);
}

TEST_F(ShownCurveTest, AControlPointWithoutAPointMovesNothing)
{
    const Kodo::SmartPointer<CurveViewControlPoint> control = m_curve.view().getControlPoints()[1];
    CurvePointDrag drag(control, m_curve.view().getOrigin());
    m_document->removePoint(1);
    EXPECT_FALSE(drag.moveTo({1, 1, 1}));
    const Kodo::SmartPointer<CurveViewControlPoint> preview(
        new CurveViewControlPoint([](CurveViewControlPoint*) {}, SPACE, {}, Kodo::Matrix::IDENTITY));
    EXPECT_FALSE(applyToCurve(*preview, Kodo::Matrix::IDENTITY));
    CurvePointDrag previewDrag(preview, Kodo::Matrix::IDENTITY);
    EXPECT_FALSE(previewDrag.moveTo({1, 1, 1}));
    EXPECT_EQ(m_document->curve().points.size(), 2U);
}

TEST_F(ShownCurveTest, TwoViewsShowOneCurve)
{
    ShownCurve other(m_document);
    {
        CurvePointDrag drag(m_curve.view().getControlPoints()[2], m_curve.view().getOrigin());
        EXPECT_TRUE(drag.moveTo({9, 9, 9}));
    }
    EXPECT_TRUE(other.shown() == m_curve.shown());
    EXPECT_EQ(other.shown().line.back(), (Kodo::Vector3{9, 9, 9}));
}

} // namespace
