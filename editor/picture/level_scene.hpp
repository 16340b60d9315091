#pragma once

#include "editor/level/level.hpp"
#include "editor/picture/scene_bounds.hpp"
#include "editor/render/solid_scene.hpp"
#include "kodo/render/debug_drawer.hpp"
#include "tern_common/curve_view/curve_view.hpp"

#include <memory>
#include <vector>

/// A level as it stands in a space of the scene: its items as boxes on a ground, and a CurveView for each
/// curve. What stands farther than isDrawable() is reported and left out. Shows the curves' later edits, and
/// neither items nor curves that come or go. Main thread only.
class LevelScene
{
public:
    /// Builds the scene in a space of that identifier, which is to be free, and removes the space in the end.
    LevelScene(const Level& level, int spaceId);
    LevelScene(const LevelScene&) = delete;
    LevelScene& operator=(const LevelScene&) = delete;
    ~LevelScene();

    const SolidScene& solids() const noexcept { return m_solids; }
    /// What is to be seen when the scene is built.
    const SceneBounds& bounds() const noexcept { return m_bounds; }
    const std::vector<std::unique_ptr<CurveView>>& views() const noexcept { return m_views; }

    /// Gives the control points that there are this radius, wherever the camera is. Else they grow with their
    /// distance from it, so as to look the same in perspective.
    void fixPointSize(float metres);

    /// Records all curves and their control points, as the scene camera of the render system sees them.
    void render(Kodo::DebugDrawer::Context& context) const;

private:
    /// Makes the space's parts and removes them.
    class Space
    {
    public:
        explicit Space(int id);
        Space(const Space&) = delete;
        Space& operator=(const Space&) = delete;
        ~Space();

    private:
        int m_id;
    };

    Space m_space; // before the views, which leave it when they die
    std::vector<std::unique_ptr<CurveView>> m_views;
    SolidScene m_solids;
    SceneBounds m_bounds;
};
