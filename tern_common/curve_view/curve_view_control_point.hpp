#pragma once

#include "kodo/chunk/editor_custom_chunk_item.hpp"
#include "kodo/math/matrix.hpp"
#include "kodo/math/vector3.hpp"
#include "kodo/render/colour.hpp"
#include "kodo/render/debug_drawer.hpp"
#include "qua/flags.hpp"
#include "tern/meta_object.hpp"
#include "tern/reflected_object.hpp"
#include "tern/setter_flag.hpp"
#include "tern_common/export.hpp"

#include <functional>

/// One point of a curve as an item of the 3D scene: can be selected, hovered, moved and deleted. Never
/// changes the curve itself: it carries the reflected object of the curve's point, and hands deletion to
/// whoever made it. Has a ball in the collision scene of its space, so that rays hit it.
///
/// Made by `new` and held by Kodo::SmartPointer; its space's editor chunk holds it from construction until it
/// is taken out. Main thread only, but for the reference counts.
class TERN_COMMON_API CurveViewControlPoint : public Kodo::EditorCustomChunkItem
{
public:
    static constexpr float DEFAULT_SCALE = 5.0F;

    /// @p deleter is what customDelete() calls. Without a collision scene the point is reported and exists
    /// without a collider; it can't be moved then.
    CurveViewControlPoint(std::function<void(CurveViewControlPoint*)> deleter, int spaceId,
                          tern::ReflectedObject object, const Kodo::Matrix& transform);

    /// The radius while auto scale is off, in world units.
    float scale() const noexcept { return m_scale; }
    void setScale(float scale) noexcept { m_scale = scale; }
    /// Auto scale draws the point equally large at every depth, whatever the scale is.
    bool autoScaleEnabled() const noexcept { return m_autoScale; }
    void enableAutoScale(bool enable) noexcept { m_autoScale = enable; }

    /// Sets the colour and the one where the point is hidden.
    void setColor(const Kodo::Render::ColourRGBAFloat& colour,
                  const Kodo::Render::ColourRGBAFloat& overlapColour) noexcept;
    const Kodo::Render::ColourRGBAFloat& getColor() const noexcept { return m_color; }
    const Kodo::Render::ColourRGBAFloat& getOverlapColor() const noexcept { return m_overlapColor; }

    /// The object that stands for the point in property panels and undo; empty for a preview.
    const tern::ReflectedObject& getRefObject() const noexcept { return m_object; }

    /// Moves the point with its collider. False, with nothing moved, when there is no collision scene.
    bool edTransform(const Kodo::Matrix& transform, qua::Flags<tern::SetterFlag> flags) override;
    /// What was set last; all zeros until then.
    Kodo::Matrix edTransform() override;
    Kodo::SelectItemType edSelectItemType() override;
    /// Always true.
    bool customDeleter() const override;
    /// Calls the deleter, which may drop this point: it lives until the call is over. Throws
    /// std::bad_function_call when there is no deleter.
    void customDelete() override;

    /// Draws the point and fits its collider to what is drawn.
    void render(Kodo::DebugDrawer::Context& context);

protected:
    ~CurveViewControlPoint() override;

private:
    Kodo::Vector3 renderedSize() const;
    void fitCollider(const Kodo::Vector3& size);
    void drawKey(Kodo::DebugDrawer::Context& context, const Kodo::Vector3& size, bool depthTest) const;
    void drawKeyHovered(Kodo::DebugDrawer::Context& context, const Kodo::Vector3& size) const;
    void drawKeySelected(Kodo::DebugDrawer::Context& context, const Kodo::Vector3& size) const;

    std::function<void(CurveViewControlPoint*)> m_deleter;
    Kodo::Matrix m_transform;
    int m_spaceId;
    tern::ReflectedObject m_object;
    Kodo::Render::ColourRGBAFloat m_color{Kodo::Render::Colour32Bit(0xFF2CFFA6U)};
    Kodo::Render::ColourRGBAFloat m_overlapColor{Kodo::Render::Colour32Bit(0xFF006F9AU)};
    float m_scale = DEFAULT_SCALE;
    bool m_autoScale = true;
};

/// Registers CurveViewControlPoint as a kind of EditorCustomChunkItem, annotated with its display name.
template <>
class TERN_COMMON_API tern::StaticMetaObject<CurveViewControlPoint> : public tern::BaseStaticMetaObject<1>
{
public:
    StaticMetaObject();
};
