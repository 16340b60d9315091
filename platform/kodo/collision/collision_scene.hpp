#pragma once

#include "kodo/collision/collision_ray.hpp"
#include "kodo/collision/i_collision_collector.hpp"
#include "kodo/collision/scene_object.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/export.hpp"
#include "kodo/math/matrix.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Kodo
{

/// A shape of unit scale that objects of a scene share. Immutable.
class KODO_API CollisionShape : public SafeReferenceCount
{
public:
    enum Template : int
    {
        TEMPLATE_BOX = 0,
        TEMPLATE_SPHERE = 1
    };

    int shapeTemplate() const noexcept { return m_template; }
    /// Its full size along each axis, before an object's transform: a sphere's diameters.
    const Vector3& extent() const noexcept { return m_extent; }
    const Vector3& offset() const noexcept { return m_offset; }

private:
    friend class CollisionScene;
    CollisionShape(int shapeTemplate, const Vector3& extent, const Vector3& offset) noexcept;

    int m_template;
    Vector3 m_extent;
    Vector3 m_offset;
    double m_sphereRadius; ///< of a sphere about the origin; for what is none, not a number
};

/// The objects of one space that rays can hit: flat arrays of world-space shapes, every ray looks at all of
/// them. Main thread only.
///
/// An object's transform may be any: a sphere becomes an ellipsoid, a box a parallelepiped. Its fourth column
/// does not count. Tests are made in double precision. A shape is hit on its surface or from inside it; a
/// negative scale counts as its absolute value. Nothing is hit of an object without volume (a zero scale, a
/// flat box), of an object or by a ray with a number that is not finite, or by a ray without a direction.
class KODO_API CollisionScene
{
public:
    CollisionScene();
    CollisionScene(const CollisionScene&) = delete;
    CollisionScene& operator=(const CollisionScene&) = delete;
    ~CollisionScene();

    /// A shape for objects of this scene; null for an unknown template. The sign of an extent does not count.
    /// @p offset is the shape's centre before an object's transform. @p reversed is kept for hosts whose
    /// shapes have an inside; it has no effect on solid ones.
    SmartPointer<CollisionShape> createShape(int shapeTemplate, const Vector3& extent, const Vector3& offset,
                                             bool reversed);

    /// Takes an object in. False, with nothing changed, when it is here already or the shape is null. Rays
    /// see the @p collisionMask; @p bodyFlags and @p collisionGroup are for hosts that simulate bodies.
    bool addUserObject(const SceneObject& object, const SmartPointer<CollisionShape>& shape,
                       const Matrix& transform, int bodyFlags, int collisionGroup, int collisionMask);
    /// Moves an object; one that is not here is ignored.
    void updateTransform(const SceneObject& object, const Matrix& transform);
    /// Takes an object out; one that is not here is ignored.
    void deleteObstacle(const SceneObject& object);
    bool contains(const SceneObject& object) const noexcept;
    std::size_t objectCount() const noexcept;

    /// Shows @p collector what the ray hits, in the order in which the objects were taken in, passing over
    /// what @p filter, which may be null, refuses. Each of the two may change the scene, cast other rays, and
    /// do away with the scene: an object is tested as it stands when its turn comes, and one that is taken in
    /// meanwhile is not looked at. What they throw ends the query and reaches the caller.
    void collideRay(const Collisions::Ray& ray, Collisions::ICollisionCollector& collector,
                    const Collisions::ICollisionFilter* filter) const;

private:
    class Objects;
    std::shared_ptr<Objects> m_objects; ///< shared with the rays under way
};

} // namespace Kodo
