#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tests/support/allocation_hook.hpp"
#include "tests/support/recording_curve.hpp"
#include "tests/support/recording_drawer.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace
{

class CurveViewMemoryTest : public testing::Test
{
protected:
    CurveView& show(std::size_t count)
    {
        auto made = std::make_unique<RecordingCurve>(count);
        curve = made.get();
        curve->counts = false;
        view = std::make_unique<CurveView>(std::move(made), space.id);
        return *view;
    }

    TestSpace space;
    RecordingCurve* curve = nullptr;
    std::unique_ptr<CurveView> view;
    Kodo::DebugDrawer::Context context;
};

TEST_F(CurveViewMemoryTest, RenderingTenThousandPointsAllocatesNothingOnceWarm)
{
    show(10000);
    for (int i = 0; i < 2; ++i)
    {
        context.clear();
        view->render(context);
    }
    context.clear();
    const AllocationCount allocations;
    view->render(context);
    EXPECT_EQ(allocations.count(), 0U);
    EXPECT_EQ(context.spheres().size(), 20000U);
}

TEST_F(CurveViewMemoryTest, SamplingAnewAllocatesNothing)
{
    show(1000);
    const AllocationCount allocations;
    view->updatePointRemoved(0, 0);
    EXPECT_EQ(allocations.count(), 0U);
    view->updatePointMoved(1, 2);
    EXPECT_EQ(allocations.count(), 0U);
}

TEST_F(CurveViewMemoryTest, TheFirstSamplingAllocatesOnceHoweverTheSegmentsDiffer)
{
    using Key = RecordingCurve::Key;
    constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
    const auto even = [](float i) { return RecordingCurve::key(i); };
    const auto uneven = [](float i) { return RecordingCurve::key(i, 1.0F + i / 20.0F); };
    const auto tooShort = [](float i) { return RecordingCurve::key(i / 1000.0F); };
    const auto shortAtFirst = [](float i) { return RecordingCurve::key(i < 900 ? i / 1000.0F : i); };
    const auto toAndFro = [](float i) { return RecordingCurve::key(std::fmod(i * 7.0F, 10.0F), 5.0F); };
    const auto withoutNumber = [](float i)
    { return RecordingCurve::key(i, std::fmod(i, 3.0F) == 0.0F ? NOT_A_NUMBER : 6.0F); };
    const auto fewLong = [](float i) { return RecordingCurve::key(i, i < 3 ? 60000.0F : 1.0F); };
    for (const std::function<Key(float)>& key : std::vector<std::function<Key(float)>>{
             even, uneven, tooShort, shortAtFirst, toAndFro, withoutNumber, fewLong})
    {
        show(0);
        for (int i = 0; i < 1000; ++i)
        {
            curve->keys.push_back(key(static_cast<float>(i)));
        }
        for (const std::size_t expected : {2U, 0U}) // the samples and their parameters, and never again
        {
            const AllocationCount allocations;
            view->updatePointRemoved(0, 0);
            EXPECT_EQ(allocations.count(), expected) << curve->keys.at(5).parameter;
        }
    }
}

TEST_F(CurveViewMemoryTest, OneUpdatedPointCostsAsMuchAmongTenAsAmongThousands)
{
    std::vector<std::size_t> counts;
    for (const std::size_t size : {10U, 5000U})
    {
        show(size);
        const AllocationCount allocations;
        curve->pointUpdated(5, 1);
        counts.push_back(allocations.count());
    }
    EXPECT_EQ(counts[0], counts[1]);
}

TEST_F(CurveViewMemoryTest, AResolutionThatLiesTakesNoMemoryForIt)
{
    show(0);
    // 2^23 steps are announced; the model gives up after a few.
    curve->keys = {RecordingCurve::key(0, 8388608.0F), RecordingCurve::key(1, 8388608.0F),
                   RecordingCurve::key(2)};
    const std::size_t before = liveHeapBytes();
    std::size_t most = 0;
    actWithin(*curve, "positionAt", 100,
              [&]
              {
                  most = liveHeapBytes() - before;
                  throw std::bad_alloc();
              });
    EXPECT_THROW(view->updatePointRemoved(0, 0), std::bad_alloc);
    EXPECT_LT(most, std::size_t{16} << 20U);
}

TEST_F(CurveViewMemoryTest, TheDrawerGoesBeforeTheCurve)
{
    DrawerLog log;
    const std::size_t before = liveHeapBytes();
    auto drawer = std::make_unique<RecordingDrawer>(log);
    const std::size_t drawerSize = liveHeapBytes() - before;
    ASSERT_GT(drawerSize, 4096U);
    view = std::make_unique<CurveView>(nullptr, space.id, std::move(drawer));
    auto made = std::make_unique<RecordingCurve>(0);
    std::size_t atTheEnd = 0;
    made->onDestroyed = [&] { atTheEnd = liveHeapBytes(); };
    view->setCurve(std::move(made));
    const std::size_t whole = liveHeapBytes();
    view.reset();
    EXPECT_LE(atTheEnd + drawerSize, whole) << "its storage was released already";
    EXPECT_GT(atTheEnd, 0U);
}

TEST_F(CurveViewMemoryTest, WhereverMemoryRunsOutTheViewStaysWhole)
{
    std::size_t failures = 0;
    for (std::size_t successes = 0;; ++successes)
    {
        show(4);
        curve->insert(1, {RecordingCurve::key(0.25F), RecordingCurve::key(0.5F)});
        bool failed = false;
        try
        {
            const FailingAllocation failing(successes);
            curve->pointAdded(1, 2);
        }
        catch (const std::bad_alloc&)
        {
            failed = true;
        }
        const std::size_t expected = failed ? 4U : 6U;
        EXPECT_EQ(view->getControlPoints().size(), expected) << successes;
        EXPECT_EQ(space.itemCount(), expected) << successes;
        EXPECT_EQ(space.scene().objectCount(), expected) << successes;
        if (!failed)
        {
            break;
        }
        ++failures;
    }
    EXPECT_GT(failures, 10U);

    for (std::size_t successes = 0;; ++successes)
    {
        show(4);
        bool failed = false;
        try
        {
            const FailingAllocation failing(successes);
            view->update();
        }
        catch (const std::bad_alloc&)
        {
            failed = true;
        }
        EXPECT_EQ(space.itemCount(), view->getControlPoints().size()) << successes;
        if (!failed)
        {
            break;
        }
    }
}

TEST_F(CurveViewMemoryTest, WhereverMemoryRunsOutThereIsOneGhostOrNone)
{
    show(2);
    auto& cache = CurveViewSpaceCache::instance(space.chunkSpace());
    std::size_t failures = 0;
    for (bool failed = true; failed; ++failures)
    {
        cache.collide({{0, 0, -1}, {0, 0, 1}}, false);
        ASSERT_EQ(space.itemCount(), 3U);
        failed = false;
        try
        {
            const FailingAllocation failing(failures);
            cache.collide({{0, 0, -1}, {0, 0, 1}}, false);
        }
        catch (const std::bad_alloc&)
        {
            failed = true;
        }
        EXPECT_TRUE(space.itemCount() == 3 || (failed && space.itemCount() == 2)) << failures;
        view->render(context);
        EXPECT_EQ(space.itemCount(), 2U) << failures << ": what is there is the view's";
    }
    EXPECT_GT(failures, 3U);
}

TEST_F(CurveViewMemoryTest, DestructionNeedsNoMemory)
{
    show(3);
    CurveViewSpaceCache::instance(space.chunkSpace()).collide({{0, 0, -1}, {0, 0, 1}}, false);
    ASSERT_EQ(space.itemCount(), 4U);
    const FailingAllocation failing(0);
    view.reset();
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewMemoryTest, AMoveWithoutMemoryTakesNothing)
{
    show(3);
    for (std::size_t successes = 0;; ++successes)
    {
        try
        {
            const FailingAllocation failing(successes);
            const CurveView moved(std::move(*view));
            EXPECT_EQ(moved.getControlPoints().size(), 3U);
            break;
        }
        catch (const std::bad_alloc&)
        {
            EXPECT_EQ(view->getCurve(), curve);
            EXPECT_EQ(view->getControlPoints().size(), 3U);
            EXPECT_EQ(view->curveThickness(), 1.2F);
            curve->changed();
            EXPECT_EQ(view->getControlPoints().size(), 3U);
        }
    }
    EXPECT_EQ(space.itemCount(), 0U);
}

TEST_F(CurveViewMemoryTest, WhereverMemoryRunsOutInAConstructorNothingIsLeft)
{
    for (std::size_t successes = 0;; ++successes)
    {
        auto made = std::make_unique<RecordingCurve>(3);
        bool failed = false;
        try
        {
            const FailingAllocation failing(successes);
            const CurveView shown(std::move(made), space.id);
        }
        catch (const std::bad_alloc&)
        {
            failed = true;
        }
        EXPECT_EQ(space.itemCount(), 0U) << successes;
        EXPECT_EQ(space.scene().objectCount(), 0U) << successes;
        if (!failed)
        {
            break;
        }
    }
}

} // namespace
