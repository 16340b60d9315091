#pragma once

#include "kodo/collision/collision_scene.hpp"
#include "kodo/collision/placed_shape.hpp"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

namespace Kodo
{

/// The objects of a scene in flat arrays, in the order in which they were taken in. Every ray looks at the
/// bounding spheres of all of them; for a sphere this is the shape itself.
///
/// An object keeps its slot for as long as it is here, and its slot knows its place in the arrays. What is
/// taken out leaves a gap that nothing hits; the gaps are closed once they are the larger part, and never
/// while a ray is under way.
class CollisionScene::Objects
{
public:
    bool add(const SceneObject& object, const SmartPointer<CollisionShape>& shape, const Matrix& transform,
             int collisionMask);
    void move(const SceneObject& object, const Matrix& transform) noexcept
    {
        const Place place = placeOf(object);
        if (place != NOWHERE && !putSphere(place, transform))
        {
            put(place, transform);
        }
    }
    void remove(const SceneObject& object) noexcept;
    void clear() noexcept;
    bool contains(const SceneObject& object) const noexcept { return placeOf(object) != NOWHERE; }
    std::size_t count() const noexcept { return m_slotOfId.size(); }

    void collide(const Collisions::Line& line, Collisions::ICollisionCollector& collector,
                 const Collisions::ICollisionFilter* filter);

private:
    using Place = std::uint32_t;
    static constexpr Place NOWHERE = ~Place{0};

    /// What only a hit needs.
    struct Entry
    {
        SceneObject object;                 ///< knows its slot
        SmartPointer<CollisionShape> shape; ///< null where there is a gap
        int collisionMask = 0;
        Collisions::ShapeKind kind = Collisions::ShapeKind::Nothing;
    };

    Place placeOf(const SceneObject& object) const noexcept
    {
        if (object.m_slot < m_places.size())
        {
            const Place place = m_places[object.m_slot];
            if (place != NOWHERE && m_entries[place].object == object)
            {
                return place;
            }
        }
        return searchPlaceOf(object);
    }
    Place searchPlaceOf(const SceneObject& object) const noexcept;
    void put(Place place, const Matrix& transform) noexcept;
    bool putSphere(Place place, const Matrix& transform) noexcept;
    void makeRoom();
    void closeGaps() noexcept;
    bool isAnyNear(const Collisions::Line& line, Place first, Place end) const noexcept;
    std::optional<double> enter(const Collisions::Line& line, Place place) const noexcept;

    std::vector<double> m_x;
    std::vector<double> m_y;
    std::vector<double> m_z;
    std::vector<double> m_squaredRadius; ///< negative: nothing hits it
    std::vector<Collisions::HalfAxes> m_axes;
    std::vector<Entry> m_entries;

    std::vector<Place> m_places; ///< by slot
    std::vector<std::uint32_t> m_freeSlots;
    std::unordered_map<std::uint64_t, std::uint32_t> m_slotOfId;
    std::size_t m_raysUnderWay = 0;
};

/// The short way for what moves most: a sphere that is scaled evenly and not turned. False, with nothing
/// changed, when it is something else.
inline bool CollisionScene::Objects::putSphere(Place place, const Matrix& transform) noexcept
{
    const auto& m = transform.m;
    const auto bits = [](float number) { return std::bit_cast<std::uint32_t>(number); };
    const std::uint32_t uneven = (bits(m[0][0]) ^ bits(m[1][1])) | (bits(m[0][0]) ^ bits(m[2][2]));
    const std::uint32_t aside =
        (bits(m[0][1]) | bits(m[0][2]) | bits(m[1][0]) | bits(m[1][2]) | bits(m[2][0]) | bits(m[2][1]))
        << 1U; // zeros may have a sign
    Entry& entry = m_entries[place];
    const double x{m[3][0]};
    const double y{m[3][1]};
    const double z{m[3][2]};
    const double radius = entry.shape->m_sphereRadius * double{m[0][0]};
    const double squaredRadius = radius * radius;
    const double sum = x + y + z + squaredRadius; // not finite when one of them is not
    if ((uneven | aside) != 0 || !(squaredRadius > 0.0) || sum - sum != 0.0)
    {
        return false;
    }
    m_x[place] = x;
    m_y[place] = y;
    m_z[place] = z;
    m_squaredRadius[place] = squaredRadius;
    if (entry.kind != Collisions::ShapeKind::Sphere) // mostly it is: spares the memory
    {
        entry.kind = Collisions::ShapeKind::Sphere;
    }
    return true;
}

} // namespace Kodo
