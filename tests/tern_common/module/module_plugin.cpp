// Loaded by module_boundary_test: uses what the library offers, from within.

#include "kodo/chunk/chunk_manager.hpp"
#include "qua/symbol_visibility.hpp"
#include "tern_common/command_system.hpp"
#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tern_common/curve_view/space_curve_point_collider.hpp"
#include "tern_common/query/query.hpp"
#include "tern_common/requests/open_resources_request.hpp"
#include "tern_common/utils/color_generator.hpp"
#include "tern_common/utils/finalizer.hpp"
#include "tests/support/futures.hpp"
#include "tests/support/recording_curve.hpp"
#include "tests/support/test_space.hpp"

#include <memory>
#include <string>
#include <utility>
#include <vector>

extern "C" QUA_SYMBOL_EXPORT int useAll();
extern "C" QUA_SYMBOL_EXPORT int useSpace(int spaceId);
extern "C" QUA_SYMBOL_EXPORT void askForCache(int spaceId);

namespace
{

class WordQuery : public Query
{
public:
    bool isComplete() const override { return true; }

protected:
    bool tokenize(const std::string& text, std::vector<Token>& tokens) override
    {
        Token token;
        token.len = token.valueLen = text.size();
        tokens.push_back(token);
        return true;
    }
};

int useCommands()
{
    CommandSystem system;
    int calls = 0;
    system.rootObject().addCommand("count",
                                   [&calls](int)
                                   {
                                       ++calls;
                                       return readyFuture();
                                   });
    const vell::Variant argument(1);
    system.rootObject().findCommand("count")->invoke(1, &argument).get();
    system.tick();
    return calls;
}

int useQuery()
{
    WordQuery query;
    int changes = 0;
    const auto connection = query.connectChanged([&changes] { ++changes; });
    query.setQueryString("word");
    return changes;
}

int useCurve(int spaceId)
{
    auto made = std::make_unique<RecordingCurve>(4);
    RecordingCurve& curve = *made;
    CurveView view(std::move(made), spaceId);
    curve.insert(1, {RecordingCurve::key(0.5F)});
    curve.pointAdded(1, 1);
    curve.pointUpdated(0, 3);
    curve.pointMoved(0, 1);
    curve.removePoint(2);
    auto& cache = CurveViewSpaceCache::instance(*Kodo::ChunkManager::instance().space(spaceId, true));
    cache.collide({{0, 0, 0}, {0, 1, 0}}, false);
    cache.collide({{0, 0, 0}, {0, 1, 0}}, true);
    Kodo::DebugDrawer::Context context;
    view.render(context);
    view.getControlPoints()[0]->edDelete();
    SpaceCurvePointCollider collider(Kodo::SpaceManager::instance().createSpace(spaceId));
    Kodo::Collisions::Ray ray{{1, 0, 50}, {0, 0, -1}};
    collider.collide(ray);
    return static_cast<int>(view.getControlPoints().size() + curve.insertions.size() +
                            context.lines().size());
}

} // namespace

int useAll()
{
    const TestSpace space;
    int result = useCurve(space.id) + useCommands() + useQuery();
    ColorGenerator colors;
    result += colors().a() == 1.0F ? 1 : 0;
    vell::OpenResourcesRequest request;
    request.addResource("a");
    result += static_cast<int>(request.resources().size());
    {
        Finalizer finalizer;
        finalizer.add([&result] { ++result; });
    }
    const vell::Variant shared(std::shared_ptr<Kodo::ChunkItemBase>{});
    Kodo::SmartPointer<Kodo::ChunkItemBase> item;
    return result + (shared.tryCast(item) ? 100 : 0);
}

int useSpace(int spaceId)
{
    return useCurve(spaceId);
}

void askForCache(int spaceId)
{
    CurveViewSpaceCache::instance(*Kodo::ChunkManager::instance().space(spaceId, true))
        .unregisterView(nullptr);
}
