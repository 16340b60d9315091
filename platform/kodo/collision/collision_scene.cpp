#include "kodo/collision/collision_scene.hpp"

#include "kodo/collision/collision_objects.hpp"

#include <cmath>
#include <limits>
#include <optional>

namespace Kodo
{
namespace
{

bool isFinite(const Vector3& vector) noexcept
{
    return std::isfinite(vector.x) && std::isfinite(vector.y) && std::isfinite(vector.z);
}

/// The ray as the tests take it; nothing when it can't hit anything.
std::optional<Collisions::Line> lineOf(const Collisions::Ray& ray) noexcept
{
    if (!isFinite(ray.origin) || !isFinite(ray.direction) || !std::isfinite(ray.length))
    {
        return std::nullopt;
    }
    const Collisions::Real3 direction{ray.direction.x, ray.direction.y, ray.direction.z};
    const double length = std::sqrt(Collisions::dot(direction, direction));
    if (length == 0.0)
    {
        return std::nullopt;
    }
    Collisions::Line line;
    line.origin = {ray.origin.x, ray.origin.y, ray.origin.z};
    line.direction = {direction[0] / length, direction[1] / length, direction[2] / length};
    line.length = double{ray.length} * length;
    line.unitLength = length;
    return line;
}

} // namespace

CollisionShape::CollisionShape(int shapeTemplate, const Vector3& extent, const Vector3& offset) noexcept
    : m_template(shapeTemplate), m_extent(extent), m_offset(offset),
      m_sphereRadius(shapeTemplate == TEMPLATE_SPHERE && extent.x == extent.y && extent.x == extent.z &&
                             offset == Vector3::ZERO
                         ? 0.5 * std::fabs(double{extent.x})
                         : std::numeric_limits<double>::quiet_NaN())
{
}

CollisionScene::CollisionScene() : m_objects(std::make_shared<Objects>()) {}

CollisionScene::~CollisionScene()
{
    m_objects->clear(); // a ray that is under way finds nothing more
}

SmartPointer<CollisionShape> CollisionScene::createShape(int shapeTemplate, const Vector3& extent,
                                                         const Vector3& offset, bool /*reversed*/)
{
    if (shapeTemplate != CollisionShape::TEMPLATE_BOX && shapeTemplate != CollisionShape::TEMPLATE_SPHERE)
    {
        return {};
    }
    return new CollisionShape(shapeTemplate, extent, offset);
}

bool CollisionScene::addUserObject(const SceneObject& object, const SmartPointer<CollisionShape>& shape,
                                   const Matrix& transform, int /*bodyFlags*/, int /*collisionGroup*/,
                                   int collisionMask)
{
    return m_objects->add(object, shape, transform, collisionMask);
}

void CollisionScene::updateTransform(const SceneObject& object, const Matrix& transform)
{
    m_objects->move(object, transform);
}

void CollisionScene::deleteObstacle(const SceneObject& object)
{
    m_objects->remove(object);
}

bool CollisionScene::contains(const SceneObject& object) const noexcept
{
    return m_objects->contains(object);
}

std::size_t CollisionScene::objectCount() const noexcept
{
    return m_objects->count();
}

void CollisionScene::collideRay(const Collisions::Ray& ray, Collisions::ICollisionCollector& collector,
                                const Collisions::ICollisionFilter* filter) const
{
    if (const std::optional<Collisions::Line> line = lineOf(ray))
    {
        const std::shared_ptr<Objects> objects = m_objects; // the collector may do away with the scene
        objects->collide(*line, collector, filter);
    }
}

} // namespace Kodo
