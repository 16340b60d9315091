#include "tern_common/curve_view/curve_view_space_cache.hpp"

#include "kodo/core/stack_tracker.hpp"
#include "tests/tern_common/curve_view/curve_picking_fixture.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

class CurveViewSpaceCacheTest : public CurvePickingTest
{
};

TEST_F(CurveViewSpaceCacheTest, ACacheWithoutViewsDoesNothing)
{
    cache().collide(rayAt(0), true);
    cache().collide(rayAt(0), false);
    show(2);
    views[0]->disableCurveView();
    cache().collide(rayAt(0), true);
    EXPECT_EQ(insertionCount(), 0U);
}

TEST_F(CurveViewSpaceCacheTest, RegisteringTwiceIsOnceAndUnknownViewsAreIgnored)
{
    show(2);
    cache().registerView(views[0].get());
    cache().registerView(nullptr);
    cache().collide(rayAt(0), true);
    EXPECT_EQ(insertionCount(), 1U);
    views[0]->disableCurveView();
    views[0]->disableCurveView();
    cache().unregisterView(nullptr);
    cache().collide(rayAt(0), true);
    EXPECT_EQ(insertionCount(), 1U);
    views[0]->enableCurveView();
    cache().collide(rayAt(0), true);
    EXPECT_EQ(insertionCount(), 2U);
}

TEST_F(CurveViewSpaceCacheTest, EachSpaceHasACacheOfItsOwn)
{
    const TestSpace other(4712);
    show(2);
    auto& otherCache = CurveViewSpaceCache::instance(other.chunkSpace());
    EXPECT_NE(&otherCache, &cache());
    EXPECT_EQ(&otherCache, &CurveViewSpaceCache::instance(other.chunkSpace()));
    otherCache.collide(rayAt(0), true);
    EXPECT_EQ(insertionCount(), 0U);
}

TEST_F(CurveViewSpaceCacheTest, ViewsAndSpacesGoInAnyOrder)
{
    show(2);
    show(3);
    cache().collide(rayAt(0), false);
    Kodo::ChunkManager::instance().removeSpace(space.id);
    views[0].reset();
    views.erase(views.begin());
    views[0]->update();
    views[0]->render(context);
    EXPECT_EQ(space.itemCount(), 3U) << "in the space that stands in its place";
}

TEST_F(CurveViewSpaceCacheTest, CacheOperationsHaveScopesOfTheirNames)
{
    show(1);
    auto& known = cache();
    Kodo::StackTracker::startRecording();
    known.registerView(views[0].get());
    known.unregisterView(views[0].get());
    known.collide(rayAt(0), true);
    std::vector<std::string> names;
    for (const auto& scope : Kodo::StackTracker::stopRecording())
    {
        names.push_back(scope.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{
                         "CurveViewSpaceCache::registerView", "CurveViewSpaceCache::unregisterView",
                         "CurveViewSpaceCache::collide", "CurveViewPointInserter::insert"}));
}

} // namespace
