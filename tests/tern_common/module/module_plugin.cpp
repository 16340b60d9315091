// Loaded by module_boundary_test: uses what the library offers, from within.

#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/core/async_manager.hpp"
#include "qua/symbol_visibility.hpp"
#include "tern_common/command_system.hpp"
#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tern_common/curve_view/space_curve_point_collider.hpp"
#include "tern_common/localization/localization.hpp"
#include "tern_common/query/query_controller.hpp"
#include "tern_common/requests/open_resources_request.hpp"
#include "tern_common/utils/color_generator.hpp"
#include "tern_common/utils/finalizer.hpp"
#include "tests/support/fake_query_edit.hpp"
#include "tests/support/futures.hpp"
#include "tests/support/recording_curve.hpp"
#include "tests/support/recording_editor_manager.hpp"
#include "tests/support/test_space.hpp"

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// With a script that calls `count(1)`.
extern "C" QUA_SYMBOL_EXPORT int useAll(const wchar_t* scriptPath);
extern "C" QUA_SYMBOL_EXPORT int useSpace(int spaceId);
extern "C" QUA_SYMBOL_EXPORT void askForCache(int spaceId);
/// Leaves a view's points to be made by the main thread, and lets go of the view. Returns how many jobs were
/// scheduled meanwhile.
extern "C" QUA_SYMBOL_EXPORT int deferInThread(int spaceId);

namespace
{

class WordQuery : public Query
{
public:
    bool isComplete() const override { return true; }

protected:
    bool tokenize(const std::string& text, std::vector<Token>& tokens) override
    {
        Token token{};
        token.len = token.valueLen = text.size();
        tokens.push_back(token);
        return true;
    }
};

int useCommands(const std::wstring& scriptPath)
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
    system.parseScriptFile(scriptPath);
    while (!system.isIdle())
    {
        system.tick();
    }
    return calls;
}

int useQuery()
{
    WordQuery query;
    int changes = 0;
    const auto connection = query.connectChanged([&changes] { ++changes; });
    query.setQueryString("word");

    FakeQueryEdit edit;
    QueryController controller;
    controller.setQuery(std::make_unique<WordQuery>());
    controller.setEdit(&edit);
    controller.setApplyingStrategy([](const Query*, const std::function<void()>&) { return true; });
    const auto applied = controller.connectApplied([&changes](const auto&, const auto&) { ++changes; });
    edit.enter("word");
    controller.apply({});
    controller.setEdit(nullptr);
    return changes;
}

int useLocalization()
{
    Localization localization;
    return localization.translate("tug") == "Harbour tug" ? 1 : 0;
}

int useRequest()
{
    vell::OpenResourcesRequest request;
    request.addResource("a");
    RecordingEditorManager manager;
    manager.newInstanceAllowed = false;
    request.exec(&manager, false);
    return static_cast<int>(request.resources().size());
}

int useUtilities()
{
    ColorGenerator colors;
    int result = colors().a() == 1.0F ? 1 : 0;
    {
        Finalizer finalizer;
        finalizer.add([&result] { ++result; });
    }
    return result;
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

/// How many of a shared item and an empty one convert.
int useConversion(const TestSpace& space)
{
    using Item = Kodo::ChunkItemBase;
    const Kodo::SmartPointer<Item> point =
        new CurveViewControlPoint({}, space.id, {}, Kodo::Matrix::IDENTITY);
    const vell::Variant shared(std::shared_ptr<Item>(point.get(), [held = point](Item*) {}));
    const vell::Variant empty(std::shared_ptr<Item>{});
    Kodo::SmartPointer<Item> item;
    return (shared.tryCast(item) && item == point ? 1 : 0) + (empty.tryCast(item) ? 1 : 0);
}

} // namespace

int useAll(const wchar_t* scriptPath)
{
    const TestSpace space;
    return useCurve(space.id) + useCommands(scriptPath) + useQuery() + useLocalization() + useRequest() +
           useUtilities() + useConversion(space);
}

int useSpace(int spaceId)
{
    return useCurve(spaceId);
}

int deferInThread(int spaceId)
{
    CurveView view(std::make_unique<RecordingCurve>(4), spaceId);
    std::thread([&view] { view.update(); }).join();
    return static_cast<int>(Kodo::AsyncManager::pendingCount());
}

void askForCache(int spaceId)
{
    CurveViewSpaceCache::instance(*Kodo::ChunkManager::instance().space(spaceId, true))
        .unregisterView(nullptr);
}
