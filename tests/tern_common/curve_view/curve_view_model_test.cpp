// A curve view that follows a model through random edits, beside the rules written down naively, and beside a
// view that is built afresh.

#include "tern_common/curve_view/curve_view.hpp"
#include "tests/support/random_seed.hpp"
#include "tests/support/recording_curve.hpp"
#include "tests/support/recording_drawer.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace
{

using Kodo::Matrix;
using Kodo::Vector3;

struct NaivePoint
{
    const tern::Object* object;
    Vector3 position;
    friend bool operator==(const NaivePoint&, const NaivePoint&) = default;
};

/// What a view holds, by the rules.
class NaiveView
{
public:
    explicit NaiveView(const RecordingCurve& curve) : m_curve(curve) { update(); }

    void update()
    {
        samples.clear();
        points.clear();
        createPoints();
        sample();
    }
    void setOrigin(const Vector3& offset)
    {
        m_offset = offset;
        update();
    }
    void updatePoint(std::size_t index, std::size_t count)
    {
        if (!follows())
        {
            return;
        }
        if (index + count <= points.size())
        {
            for (std::size_t i = index; i < index + count; ++i)
            {
                points[i].position = world(i);
            }
        }
    }
    void updatePointAdded(std::size_t index, std::size_t count)
    {
        if (!follows())
        {
            return;
        }
        if (index <= points.size() && index + count <= m_curve.keys.size())
        {
            for (std::size_t i = index; i < index + count; ++i)
            {
                points.insert(points.begin() + static_cast<std::ptrdiff_t>(i), made(i));
            }
        }
    }
    void updatePointMoved(std::size_t first, std::size_t second)
    {
        if (follows() && std::max(first, second) < points.size())
        {
            std::swap(points[first], points[second]);
        }
    }
    void updatePointRemoved(std::size_t index, std::size_t count)
    {
        if (!m_curve.valid)
        {
            points.clear();
            return;
        }
        sample();
        if (index + count <= points.size())
        {
            for (std::size_t i = index + count; i-- > index;)
            {
                points.erase(points.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
    }

    std::vector<Vector3> samples;
    std::vector<NaivePoint> points;

private:
    /// What the handlers do first; false when that was all.
    bool follows()
    {
        if (!m_curve.valid)
        {
            return false;
        }
        sample();
        const bool had = !points.empty();
        if (!had)
        {
            createPoints();
        }
        return had;
    }
    Vector3 world(std::size_t i) const { return m_curve.keys[i].position + m_offset; }
    NaivePoint made(std::size_t i) const { return {m_curve.keys[i].object.get(), world(i)}; }
    void createPoints()
    {
        for (std::size_t i = 0; i < m_curve.keys.size(); ++i)
        {
            points.push_back(made(i));
        }
    }
    void sample()
    {
        samples.clear();
        if (!m_curve.valid || m_curve.keys.empty())
        {
            return;
        }
        const auto onTheWay = [this](float parameter)
        { samples.push_back(Vector3(parameter, RecordingCurve::WAY_Y, 0) + m_offset); };
        for (std::size_t i = 0; i + 1 < m_curve.keys.size(); ++i)
        {
            const float t0 = m_curve.keys[i].parameter;
            const float d = m_curve.keys[i + 1].parameter - t0;
            if (std::fabs(d) < 0.1F)
            {
                onTheWay(t0);
                continue;
            }
            for (float t = 0; t < d; t += d / m_curve.keys[i].resolution)
            {
                onTheWay(t0 + t);
            }
        }
        samples.push_back(world(m_curve.keys.size() - 1));
    }

    const RecordingCurve& m_curve;
    Vector3 m_offset;
};

class CurveViewModelTest : public testing::Test
{
protected:
    CurveViewModelTest() : m_random(static_cast<std::uint32_t>(randomSeed())) {}

    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : m_random() % limit; }
    float coordinate() { return static_cast<float>(below(64)); }

    RecordingCurve::Key randomKey()
    {
        RecordingCurve::Key key =
            RecordingCurve::key(static_cast<float>(below(200)) * 0.05F, static_cast<float>(1 + below(8)));
        key.position = {coordinate(), coordinate(), coordinate()};
        return key;
    }

    /// A valid edit of the model, signalled, and the same told to the naive view.
    void edit(RecordingCurve& curve, CurveView& view, NaiveView& naive)
    {
        const std::size_t size = curve.keys.size();
        const std::size_t index = below(size + 1);
        const std::size_t count = below(std::min<std::size_t>(size - index, 3) + 1);
        switch (below(8))
        {
        case 0:
        case 1:
        {
            std::vector<RecordingCurve::Key> keys(1 + below(3));
            std::generate(keys.begin(), keys.end(), [this] { return randomKey(); });
            const std::size_t added = keys.size();
            curve.insert(index, std::move(keys));
            curve.pointAdded(index, added);
            naive.updatePointAdded(index, added);
            break;
        }
        case 2:
            curve.erase(index, count);
            curve.pointRemoved(index, count);
            naive.updatePointRemoved(index, count);
            break;
        case 3:
            for (std::size_t i = index; i < index + count; ++i)
            {
                curve.keys[i].position = {coordinate(), coordinate(), coordinate()};
            }
            curve.pointUpdated(index, count);
            naive.updatePoint(index, count);
            break;
        case 4:
            if (size != 0)
            {
                const std::size_t second = below(size);
                const std::size_t first = std::min(index, size - 1);
                std::swap(curve.keys[first], curve.keys[second]);
                std::swap(curve.keys[first].parameter, curve.keys[second].parameter);
                curve.pointMoved(first, second);
                naive.updatePointMoved(first, second);
            }
            break;
        case 5:
            curve.valid = !curve.valid;
            break;
        case 6:
            curve.changed();
            naive.update();
            break;
        default:
        {
            Matrix origin;
            const Vector3 offset(coordinate(), coordinate(), coordinate());
            origin.setTranslate(offset);
            if (!(view.getOrigin() == origin))
            {
                view.setOrigin(origin);
                naive.setOrigin(offset);
            }
        }
        }
    }

    static std::vector<NaivePoint> pointsOf(const CurveView& view)
    {
        std::vector<NaivePoint> points;
        for (const auto& point : view.getControlPoints())
        {
            points.push_back({point->getRefObject().object(), point->edTransform().translation()});
        }
        return points;
    }
    static std::vector<Vector3> samplesOf(CurveView& view, DrawerLog& log)
    {
        log.drawn.clear();
        Kodo::DebugDrawer::Context context;
        view.render(context);
        return log.drawn.empty() ? std::vector<Vector3>() : log.drawn.back();
    }

    TestSpace m_space;
    TestSpace m_otherSpace{4712};
    std::mt19937 m_random;
};

TEST_F(CurveViewModelTest, TheViewFollowsTheModelByTheRules)
{
    for (int round = 0; round < 60; ++round)
    {
        DrawerLog log;
        auto made = std::make_unique<RecordingCurve>(below(5));
        RecordingCurve& curve = *made;
        curve.counts = false;
        CurveView view(std::move(made), m_space.id, std::make_unique<RecordingDrawer>(log));
        NaiveView naive(curve);
        const CollectReports reports; // signals for points that a view which heard nothing lacks
        for (int step = 0; step < 60; ++step)
        {
            edit(curve, view, naive);
            ASSERT_EQ(pointsOf(view), naive.points) << "round " << round << ", step " << step;
            ASSERT_EQ(samplesOf(view, log), naive.samples) << "round " << round << ", step " << step;
            ASSERT_EQ(m_space.itemCount(), naive.points.size());
            ASSERT_EQ(m_space.scene().objectCount(), naive.points.size());
        }
    }
}

TEST_F(CurveViewModelTest, WhereAllSignalsAreHeardTheViewEqualsOneBuiltAfresh)
{
    int compared = 0;
    for (int round = 0; round < 30; ++round)
    {
        DrawerLog log;
        auto made = std::make_unique<RecordingCurve>(1 + below(5));
        RecordingCurve& curve = *made;
        curve.counts = false;
        CurveView view(std::move(made), m_space.id, std::make_unique<RecordingDrawer>(log));
        NaiveView naive(curve);
        bool heardAll = true;
        for (int step = 0; step < 60; ++step)
        {
            const CollectReports reports;
            const bool wasValid = curve.valid;
            edit(curve, view, naive);
            heardAll = heardAll && wasValid;
            EXPECT_TRUE(!heardAll || reports.texts().empty());
            if (!heardAll && curve.valid && step % 3 == 0)
            {
                curve.changed();
                naive.update();
                heardAll = true;
            }
            if (!heardAll || !curve.valid)
            {
                continue;
            }
            DrawerLog freshLog;
            auto copy = std::make_unique<RecordingCurve>();
            copy->keys = curve.keys;
            CurveView fresh(std::move(copy), m_otherSpace.id, std::make_unique<RecordingDrawer>(freshLog));
            fresh.setOrigin(view.getOrigin());
            ASSERT_EQ(pointsOf(view), pointsOf(fresh)) << "round " << round << ", step " << step;
            ASSERT_EQ(samplesOf(view, log), samplesOf(fresh, freshLog))
                << "round " << round << ", step " << step;
            ++compared;
        }
    }
    EXPECT_GT(compared, 100);
}

TEST_F(CurveViewModelTest, TransformsThatMovedPointsKeepDifferFromAFreshView)
{
    // Keys that exchange objects alone: their places stay, so the points are in each other's place until the
    // model reports that too.
    auto made = std::make_unique<RecordingCurve>(2);
    RecordingCurve& curve = *made;
    CurveView view(std::move(made), m_space.id);
    std::swap(curve.keys[0].object, curve.keys[1].object);
    curve.pointMoved(0, 1);
    EXPECT_EQ(pointsOf(view)[0], (NaivePoint{curve.keys[0].object.get(), {1, 0, 0}}));
    curve.pointUpdated(0, 2);
    EXPECT_EQ(pointsOf(view)[0], (NaivePoint{curve.keys[0].object.get(), {0, 0, 0}}));
}

} // namespace
