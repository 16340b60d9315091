// A host that edits a curve in its scene: it supplies the curve's model, sends rays, and draws each frame.
//
//     curve_view_example

#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/chunk/space_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"
#include "kodo/core/async_manager.hpp"
#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tern_common/curve_view/space_curve_point_collider.hpp"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

namespace
{

/// A path of posts, straight from one to the next. The parameter is the distance along the path.
class FencePath : public CurveView::IAbstractCurve
{
public:
    explicit FencePath(std::vector<Kodo::Vector3> posts) : m_posts(std::move(posts)) { measure(); }

    std::size_t pointCount() const override { return m_posts.size(); }
    float pointParameter(std::size_t index) const override { return m_distances[index]; }
    Kodo::Vector3 pointPosition(std::size_t index) const override { return m_posts[index]; }
    float segmentResolution(std::size_t) const override { return 8.0F; } // steps from post to post
    bool isValid() const override { return m_posts.size() >= 2; }
    // Where there are property panels and undo, this is the object they know the post by.
    tern::ReflectedObject pointObject(std::size_t) const override { return {}; }

    Kodo::Vector3 positionAt(float distance) const override
    {
        const std::size_t next = indexBehind(distance);
        if (next == 0 || next == m_posts.size())
        {
            return next == 0 ? m_posts.front() : m_posts.back();
        }
        const float part = (distance - m_distances[next - 1]) / (m_distances[next] - m_distances[next - 1]);
        return m_posts[next - 1] + (m_posts[next] - m_posts[next - 1]) * part;
    }

    // The view asks for edits here. The data changes first, then the signal tells the view.
    void insertPoint(const Kodo::Vector3& position, float distance) override
    {
        const std::size_t index = indexBehind(distance);
        m_posts.insert(m_posts.begin() + static_cast<std::ptrdiff_t>(index), position);
        measure();
        pointAdded(index, 1);
    }
    void removePoint(std::size_t index) override
    {
        m_posts.erase(m_posts.begin() + static_cast<std::ptrdiff_t>(index));
        measure();
        pointRemoved(index, 1);
    }
    void movePoint(std::size_t index, const Kodo::Vector3& position)
    {
        m_posts[index] = position;
        measure();
        pointUpdated(index, 1);
    }

private:
    std::size_t indexBehind(float distance) const
    {
        const auto behind = std::upper_bound(m_distances.begin(), m_distances.end(), distance);
        return static_cast<std::size_t>(behind - m_distances.begin());
    }
    void measure()
    {
        m_distances.assign(m_posts.empty() ? 0 : 1, 0.0F);
        for (std::size_t i = 1; i < m_posts.size(); ++i)
        {
            m_distances.push_back(m_distances.back() + (m_posts[i] - m_posts[i - 1]).length());
        }
    }

    std::vector<Kodo::Vector3> m_posts;
    std::vector<float> m_distances;
};

constexpr int SPACE = 1;

void showFrame(const char* what, CurveView& view)
{
    Kodo::AsyncManager::runMainThreadJobs();
    static Kodo::DebugDrawer::Context context; // a real host hands it to its renderer
    context.clear();
    view.render(context);
    std::printf("%s: %zu posts, %zu samples, %zu balls drawn\n", what, view.getControlPoints().size(),
                context.points().size() / 2, context.spheres().size());
}

} // namespace

int main()
{
    Kodo::CollisionSceneManager::instance().createScene(SPACE);
    const auto space = Kodo::SpaceManager::instance().createSpace(SPACE);

    auto made =
        std::make_unique<FencePath>(std::vector<Kodo::Vector3>{{0, 0, 20}, {10, 0, 20}, {10, 10, 20}});
    FencePath& path = *made; // the view owns it
    CurveView view(std::move(made), SPACE);
    view.setCurveColor(Kodo::Render::Colour32Bit(0xFF40A0FFU));
    showFrame("shown", view);

    // The mouse hovers with the key for insertion held: a preview, asked for anew each frame.
    const auto& chunkSpace = *Kodo::ChunkManager::instance().space(SPACE, true);
    CurveViewSpaceCache& picking = CurveViewSpaceCache::instance(chunkSpace);
    const Kodo::Ray mouse{{5, 0.1F, 0}, {0, 0, 1}};
    picking.collide(mouse, false);
    showFrame("hovered", view);

    // A click inserts where the preview was.
    picking.collide(mouse, true);
    showFrame("inserted", view);

    path.movePoint(1, {5, 2, 20});
    showFrame("moved", view);

    // A click on a post selects it, Delete deletes it: the view asks the path, and follows its signal.
    SpaceCurvePointCollider collider(space);
    Kodo::Collisions::Ray click{{5, 2, 0}, {0, 0, 1}};
    for (CurveViewControlPoint* const post : collider.collide(click))
    {
        post->edSelected();
        post->edDelete();
    }
    showFrame("deleted", view);
    return 0;
}
