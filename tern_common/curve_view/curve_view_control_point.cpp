#include "tern_common/curve_view/curve_view_control_point.hpp"

#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/chunk/space_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/stack_tracker.hpp"
#include "kodo/math/quaternion.hpp"
#include "kodo/render/camera.hpp"
#include "tern/annotation_scopes.hpp"
#include "tern_common/assertion.hpp"

#include <string>
#include <utility>

namespace
{

using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;

constexpr const char* NO_COLLIDER = "ControlPointImpl :: cannot add control point to the collision scene";

constexpr Kodo::Vector3 COLLIDER_EXTENT(5.0F, 5.0F, 5.0F);
constexpr int COLLISION_MASK = 16;

/// Size by depth of a point that scales itself.
constexpr float AUTO_SCALE = 0.025F;
constexpr float EMPHASIS = 1.3F;
constexpr Colour32Bit SELECTED_INNER(0xFFEBA04AU);
constexpr Colour32Bit SELECTED_OUTER(0xFFFFFFFFU);

void report(const char* text)
{
    Kodo::DebugMessageHelper(0, 5).message(text);
}

Kodo::CollisionScene* sceneOf(int spaceId)
{
    return Kodo::CollisionSceneManager::instance().scene(spaceId);
}

Kodo::DebugDrawer::Context::Sphere ball(Kodo::DebugDrawer::Context& context, const Kodo::Matrix& transform,
                                        const ColourRGBAFloat& colour, const Kodo::Vector3& size,
                                        bool depthTest)
{
    Kodo::Vector3 position;
    Kodo::Quaternion rotation;
    Kodo::Vector3 unused;
    Kodo::Matrix::decomposeMatrix(transform, position, rotation, unused);
    Kodo::DebugDrawer::Context::Sphere sphere = context.sphere();
    sphere.colour(colour);
    sphere.position(position);
    sphere.rotation(rotation);
    sphere.scale(size);
    sphere.zTestEnable(depthTest);
    return sphere;
}

tern::Annotations displayName()
{
    tern::AnnotationScopes scopes;
    scopes.add(std::string("Curve View Control Point"));
    TERN_COMMON_ASSERT_AS(scopes.size() == 1, "annotations_.size() == 1");
    return scopes.finish();
}

} // namespace

CurveViewControlPoint::CurveViewControlPoint(std::function<void(CurveViewControlPoint*)> deleter, int spaceId,
                                             tern::ReflectedObject object, const Kodo::Matrix& transform)
    : EditorCustomChunkItem(Kodo::ChunkManager::instance().space(spaceId, true), WANTS_DRAW),
      m_deleter(std::move(deleter)), m_spaceId(spaceId), m_object(std::move(object))
{
    KODO_PROFILE_SCOPE("CurveViewControlPoint::CurveViewControlPoint");
    edWorldTransform(transform, {});
    if (Kodo::CollisionScene* const scene = sceneOf(spaceId))
    {
        const auto shape = scene->createShape(Kodo::CollisionShape::TEMPLATE_SPHERE, COLLIDER_EXTENT,
                                              Kodo::Vector3::ZERO, false);
        scene->addUserObject(sceneObject(), shape, edWorldTransform(), 0, 0, COLLISION_MASK);
    }
    else
    {
        report(NO_COLLIDER);
    }
}

CurveViewControlPoint::~CurveViewControlPoint()
{
    KODO_PROFILE_SCOPE("CurveViewControlPoint::~CurveViewControlPoint");
    if (Kodo::CollisionScene* const scene = sceneOf(m_spaceId))
    {
        edDeselected();
        scene->deleteObstacle(sceneObject());
    }
    else
    {
        report("~CurveViewControlPoint :: cannot remove control point from the collision scene");
    }
}

void CurveViewControlPoint::setColor(const ColourRGBAFloat& colour,
                                     const ColourRGBAFloat& overlapColour) noexcept
{
    m_color = colour;
    m_overlapColor = overlapColour;
}

bool CurveViewControlPoint::edTransform(const Kodo::Matrix& transform, qua::Flags<tern::SetterFlag> flags)
{
    KODO_PROFILE_SCOPE("CurveViewControlPoint::edTransform");
    Kodo::CollisionScene* const scene = sceneOf(m_spaceId);
    if (scene == nullptr)
    {
        report(NO_COLLIDER); // also when it is there and only moves: users know this text
        return false;
    }
    scene->updateTransform(sceneObject(), transform);
    m_transform = transform;
    if (const auto space = Kodo::SpaceManager::instance().space(m_spaceId))
    {
        Kodo::SpatialFeature& feature = space->spatialFeature();
        if (feature.isPresent(sceneObject()))
        {
            feature.modify(sceneObject(), m_transform);
        }
    }
    return EditorCustomChunkItem::edTransform(transform, flags);
}

Kodo::Matrix CurveViewControlPoint::edTransform()
{
    return m_transform;
}

Kodo::SelectItemType CurveViewControlPoint::edSelectItemType()
{
    return EditorCustomChunkItem::edSelectItemType();
}

bool CurveViewControlPoint::customDeleter() const
{
    return true;
}

void CurveViewControlPoint::customDelete()
{
    KODO_PROFILE_SCOPE("CurveViewControlPoint::customDelete");
    const Kodo::SmartPointer<CurveViewControlPoint> alive(this); // the deleter must outlive its call
    m_deleter(this);
}

void CurveViewControlPoint::render(Kodo::DebugDrawer::Context& context)
{
    KODO_PROFILE_SCOPE("CurveViewControlPoint::render");
    const Kodo::Vector3 size = renderedSize();
    fitCollider(size);
    if (edIsSelected())
    {
        drawKeySelected(context, size);
    }
    else if (edIsHovered())
    {
        drawKeyHovered(context, size);
    }
    else
    {
        drawKey(context, size, true);
        drawKey(context, size, false);
    }
}

/// A point behind the camera has a negative size.
Kodo::Vector3 CurveViewControlPoint::renderedSize() const
{
    if (!m_autoScale)
    {
        return {m_scale, m_scale, m_scale};
    }
    const Kodo::Matrix& camera = Kodo::Render::RenderSystem::instance().sceneCamera().worldMatrix();
    const Kodo::Vector3 forward = camera.row(2);
    const float depth = forward.dotProduct(m_transform.translation()) - forward.dotProduct(camera.row(3));
    return Kodo::Vector3(depth, depth, depth) * AUTO_SCALE;
}

void CurveViewControlPoint::fitCollider(const Kodo::Vector3& size)
{
    Kodo::CollisionScene* const scene = sceneOf(m_spaceId);
    if (scene == nullptr)
    {
        report("ControlPointImpl :: cannot adjust collider scale");
        return;
    }
    scene->updateTransform(sceneObject(),
                           Kodo::Matrix::constructTransformationMatrix(edWorldTransform().translation(),
                                                                       Kodo::Quaternion::IDENTITY, size));
}

void CurveViewControlPoint::drawKey(Kodo::DebugDrawer::Context& context, const Kodo::Vector3& size,
                                    bool depthTest) const
{
    KODO_PROFILE_SCOPE("CurveViewControlPoint::drawKey");
    ball(context, m_transform, depthTest ? m_color : m_overlapColor, size, depthTest).zWriteEnable(false);
}

void CurveViewControlPoint::drawKeyHovered(Kodo::DebugDrawer::Context& context,
                                           const Kodo::Vector3& size) const
{
    KODO_PROFILE_SCOPE("CurveViewControlPoint::drawKeyHovered");
    ball(context, m_transform, m_color, size * EMPHASIS, false);
}

void CurveViewControlPoint::drawKeySelected(Kodo::DebugDrawer::Context& context,
                                            const Kodo::Vector3& size) const
{
    KODO_PROFILE_SCOPE("CurveViewControlPoint::drawKeySelected");
    ball(context, m_transform, ColourRGBAFloat(SELECTED_INNER), size * EMPHASIS, false);
    ball(context, m_transform, ColourRGBAFloat(SELECTED_OUTER), size * EMPHASIS * EMPHASIS, false);
}

tern::StaticMetaObject<CurveViewControlPoint>::StaticMetaObject()
    : BaseStaticMetaObject(typeid(CurveViewControlPoint), "CurveViewControlPoint", displayName(),
                           Bases{&tern::staticMetaObject<Kodo::EditorCustomChunkItem>()})
{
    MetaObjectManager::instance().registerType(*this);
}
