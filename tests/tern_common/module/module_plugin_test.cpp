// A host that is linked with the library: what a plug-in asked for first must stay when the plug-in goes.

#include "kodo/chunk/editor_custom_chunk_item.hpp"
#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tests/support/plugin.hpp"
#include "tests/support/polyline_curve.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
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

/// A host's item that shows a curve for as long as it stands in its space.
class CurveItem final : public Kodo::EditorCustomChunkItem
{
public:
    explicit CurveItem(const Kodo::SmartPointer<Kodo::ChunkSpace>& space)
        : EditorCustomChunkItem(space, WANTS_NOTHING),
          m_view(std::make_unique<PolylineCurve>(std::vector<Kodo::Vector3>{{0, 0, 0}, {1, 0, 0}}),
                 space->id())
    {
    }

private:
    CurveView m_view;
};

TEST(ModulePluginTest, AViewThatIsLeftInASpaceAtExitGoesWithTheSpace)
{
    EXPECT_EXIT(
        {
            Kodo::CollisionSceneManager::instance().createScene(1);
            Kodo::EditorChunk& chunk = Kodo::ChunkManager::instance().space(1, true)->editorChunk();
            new CurveItem(Kodo::ChunkManager::instance().space(1, true));
            std::exit(chunk.itemCount() == 3 ? 0 : 1); // nobody removes the space
        },
        testing::ExitedWithCode(0), "^$");
}

} // namespace
