#include "editor/picture/level_scene.hpp"

#include "editor/curve/editor_curve.hpp"
#include "editor/palette/palette.hpp"
#include "editor/picture/level_solids.hpp"
#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/chunk/space_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "tern_common/utils/color_generator.hpp"

#include <algorithm>
#include <cmath>

using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;

namespace
{

constexpr float CURVE_THICKNESS = 0.12F; // metres

Colour32Bit packed(const ColourRGBAFloat& color, float factor)
{
    const auto byte = [factor](float component)
    { return static_cast<std::uint32_t>(std::lround(std::clamp(component * factor, 0.0F, 1.0F) * 255.0F)); };
    return Colour32Bit(0xFF000000U | (byte(color.r()) << 16U) | (byte(color.g()) << 8U) | byte(color.b()));
}

/// Gives colours that are neither the scene's nor those of curves that bring their own.
ColorGenerator colorsFor(const Level& level)
{
    std::vector<Colour32Bit> wanted = sceneColors();
    for (const auto& document : level.documents())
    {
        if (document->curve().color)
        {
            wanted.push_back(*document->curve().color);
        }
    }
    std::vector<Colour32Bit> banned;
    ColorGenerator colors;
    for (const Colour32Bit color : wanted)
    {
        banned.push_back(color);
        if (leavesFreeHue(banned)) // else the generator would look for one for ever
        {
            colors.banColor(color);
        }
        else
        {
            banned.pop_back();
        }
    }
    return colors;
}

void setColors(CurveView& view, const ColourRGBAFloat& color)
{
    constexpr float HIDDEN = 0.5F; // the same hue, darker
    view.setCurveColor(packed(color, 1.0F));
    view.setCurveColorDown(packed(color, HIDDEN));
}

/// Its points, and where it bends, the places between them through which a view draws it.
SceneBounds boundsOfCurve(const EditorCurve& curve)
{
    SceneBounds bounds;
    const bool isStraight = curve.document()->curve().kind == CurveKind::Linear;
    const std::size_t points = curve.pointCount();
    for (std::size_t i = 0; i < points; ++i)
    {
        bounds.include(curve.pointPosition(i));
        const int steps = isStraight || i + 1 == points ? 0 : static_cast<int>(curve.segmentResolution(i));
        for (int step = 1; step < steps; ++step)
        {
            const float part = static_cast<float>(step) / static_cast<float>(steps);
            bounds.include(curve.positionAt(curve.pointParameter(i) + part));
        }
    }
    return bounds;
}

/// Whether a picture can show all of a curve; one that it cannot is reported.
bool expectDrawable(const EditorCurve& curve, const SceneBounds& bounds)
{
    if (curve.isValid() && (bounds.isEmpty() || (isDrawable(bounds.low()) && isDrawable(bounds.high()))))
    {
        return true;
    }
    Kodo::DebugMessageHelper(0, 5).message("The curve '" + curve.document()->curve().name +
                                           "' reaches farther than a picture does: it is not drawn");
    return false;
}

} // namespace

LevelScene::Space::Space(int id) : m_id(id)
{
    Kodo::CollisionSceneManager::instance().createScene(id);
    Kodo::SpaceManager::instance().createSpace(id);
}

LevelScene::Space::~Space()
{
    Kodo::ChunkManager::instance().removeSpace(m_id);
    Kodo::SpaceManager::instance().removeSpace(m_id);
    Kodo::CollisionSceneManager::instance().removeScene(m_id);
}

LevelScene::LevelScene(const Level& level, int spaceId) : m_space(spaceId)
{
    ColorGenerator colors = colorsFor(level);
    SceneBounds curves;
    for (const auto& document : level.documents())
    {
        auto curve = std::make_unique<EditorCurve>(document);
        const SceneBounds bounds = boundsOfCurve(*curve);
        if (!expectDrawable(*curve, bounds))
        {
            continue;
        }
        for (const Kodo::Vector3& place : bounds.points())
        {
            curves.include(place);
        }
        auto view = std::make_unique<CurveView>(std::move(curve), spaceId);
        setColors(*view, document->curve().color ? ColourRGBAFloat(*document->curve().color) : colors());
        view->setCurveThickness(CURVE_THICKNESS);
        m_views.push_back(std::move(view));
    }
    m_solids = solidsOf(level.items(), curves);
    m_bounds = boundsOf(m_solids, curves);
}

LevelScene::~LevelScene() = default;

void LevelScene::fixPointSize(float metres)
{
    for (const auto& view : m_views)
    {
        for (const auto& point : view->getControlPoints())
        {
            point->enableAutoScale(false);
            point->setScale(metres);
        }
    }
}

void LevelScene::render(Kodo::DebugDrawer::Context& context) const
{
    for (const auto& view : m_views)
    {
        view->render(context);
    }
}
