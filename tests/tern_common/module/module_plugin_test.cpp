// A host that is linked with the library: what a plug-in asked for first must stay when the plug-in goes.

#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tests/support/plugin.hpp"
#include "tests/support/polyline_curve.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace
{

TEST(ModulePluginTest, ACacheThatAPluginAskedForFirstStaysWithoutThePlugin)
{
    const TestSpace space;
    Plugin(TERN_MODULE_PLUGIN).entry<void(int)>("askForCache")(space.id);
    ASSERT_NE(space.chunkSpace().cache(CurveViewSpaceCache::instance.slot()), nullptr);
    ASSERT_FALSE(isMapped(TERN_MODULE_PLUGIN));

    auto made = std::make_unique<PolylineCurve>(std::vector<Kodo::Vector3>{{0, 0, 0}, {1, 0, 0}});
    PolylineCurve& curve = *made;
    const CurveView view(std::move(made), space.id);
    CurveViewSpaceCache::instance(space.chunkSpace()).collide({{0, 0, 0}, {0, 0, 1}}, true);
    EXPECT_EQ(curve.insertions.size(), 1U);
}

} // namespace
