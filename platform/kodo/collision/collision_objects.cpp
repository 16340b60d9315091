#include "kodo/collision/collision_objects.hpp"

#include <algorithm>
#include <bit>
#include <utility>

namespace Kodo
{

using Collisions::Line;
using Collisions::PlacedShape;
using Collisions::Real3;
using Collisions::ShapeKind;

namespace
{

/// How many objects are looked at together: the loop over them has no way out in between, so that compilers
/// vectorise it.
constexpr std::uint32_t BLOCK = 64;
/// Fewer gaps than this are never worth closing.
constexpr std::size_t FEW_GAPS = 64;
constexpr std::uint64_t SIGN_BIT = std::uint64_t{1} << 63U;

template <class T>
void makeRoomIn(std::vector<T>& values)
{
    if (values.size() == values.capacity())
    {
        values.reserve(std::max<std::size_t>(values.size() * 2, 16));
    }
}

} // namespace

bool CollisionScene::Objects::add(const SceneObject& object, const SmartPointer<CollisionShape>& shape,
                                  const Matrix& transform, int collisionMask)
{
    if (!shape || contains(object))
    {
        return false;
    }
    makeRoom();
    const auto slot = m_freeSlots.empty() ? static_cast<std::uint32_t>(m_places.size()) : m_freeSlots.back();
    m_slotOfId.emplace(object.id(), slot); // the last that can fail; all else has its room
    if (m_freeSlots.empty())
    {
        m_places.push_back(NOWHERE);
    }
    else
    {
        m_freeSlots.pop_back();
    }
    object.m_slot = slot;
    const auto place = static_cast<Place>(m_entries.size());
    m_places[slot] = place;
    m_entries.push_back({object, shape, collisionMask, ShapeKind::Nothing});
    m_axes.emplace_back();
    m_x.push_back(0.0);
    m_y.push_back(0.0);
    m_z.push_back(0.0);
    m_squaredRadius.push_back(-1.0);
    put(place, transform);
    return true;
}

/// Makes sure that one more object can be taken in, and all of them out, without an allocation.
void CollisionScene::Objects::makeRoom()
{
    makeRoomIn(m_x);
    makeRoomIn(m_y);
    makeRoomIn(m_z);
    makeRoomIn(m_squaredRadius);
    makeRoomIn(m_axes);
    makeRoomIn(m_entries);
    makeRoomIn(m_places);
    m_freeSlots.reserve(m_places.capacity());
}

void CollisionScene::Objects::remove(const SceneObject& object) noexcept
{
    const Place place = placeOf(object);
    if (place == NOWHERE)
    {
        return;
    }
    Entry& entry = m_entries[place];
    m_squaredRadius[place] = -1.0;
    m_places[entry.object.m_slot] = NOWHERE;
    m_freeSlots.push_back(entry.object.m_slot);
    m_slotOfId.erase(entry.object.id());
    entry.shape = nullptr;
    closeGaps();
}

void CollisionScene::Objects::clear() noexcept
{
    for (std::vector<double>* values : {&m_x, &m_y, &m_z, &m_squaredRadius})
    {
        values->clear();
    }
    m_axes.clear();
    m_entries.clear();
    m_places.clear();
    m_freeSlots.clear();
    m_slotOfId.clear();
}

/// Copies of a handle that were made before the object was taken in know no slot, and handles of another
/// scene a wrong one: these are looked up.
CollisionScene::Objects::Place
CollisionScene::Objects::searchPlaceOf(const SceneObject& object) const noexcept
{
    const auto found = m_slotOfId.find(object.id());
    return found == m_slotOfId.end() ? NOWHERE : m_places[found->second];
}

void CollisionScene::Objects::put(Place place, const Matrix& transform) noexcept
{
    Entry& entry = m_entries[place];
    const CollisionShape& shape = *entry.shape;
    const PlacedShape placed = Collisions::placeShape(shape.shapeTemplate() == CollisionShape::TEMPLATE_BOX,
                                                      shape.extent(), shape.offset(), transform);
    m_x[place] = placed.centre[0];
    m_y[place] = placed.centre[1];
    m_z[place] = placed.centre[2];
    m_squaredRadius[place] = placed.squaredRadius;
    entry.kind = placed.kind;
    if (placed.kind != ShapeKind::Sphere)
    {
        m_axes[place] = placed.axes;
    }
}

void CollisionScene::Objects::closeGaps() noexcept
{
    const std::size_t gaps = m_entries.size() - count();
    if (m_raysUnderWay != 0 || gaps < FEW_GAPS || gaps <= count())
    {
        return;
    }
    Place end = 0;
    for (Place place = 0; place < m_entries.size(); ++place)
    {
        if (!m_entries[place].shape)
        {
            continue;
        }
        if (end != place)
        {
            m_x[end] = m_x[place];
            m_y[end] = m_y[place];
            m_z[end] = m_z[place];
            m_squaredRadius[end] = m_squaredRadius[place];
            m_axes[end] = m_axes[place];
            m_entries[end] = std::move(m_entries[place]);
        }
        m_places[m_entries[end].object.m_slot] = end;
        ++end;
    }
    for (std::vector<double>* values : {&m_x, &m_y, &m_z, &m_squaredRadius})
    {
        values->resize(end);
    }
    m_axes.resize(end);
    m_entries.erase(m_entries.begin() + end, m_entries.end());
}

void CollisionScene::Objects::collide(const Line& line, Collisions::ICollisionCollector& collector,
                                      const Collisions::ICollisionFilter* filter)
{
    /// While it lives, objects keep their places.
    class UnderWay
    {
    public:
        explicit UnderWay(Objects& objects) noexcept : m_objects(objects) { ++m_objects.m_raysUnderWay; }
        UnderWay(const UnderWay&) = delete;
        UnderWay& operator=(const UnderWay&) = delete;
        ~UnderWay()
        {
            --m_objects.m_raysUnderWay;
            m_objects.closeGaps();
        }

    private:
        Objects& m_objects;
    };
    const UnderWay underWay(*this);
    const bool wantsAll = collector.queryReturnType() != Collisions::ICollisionCollector::RETURN_ANY;
    const std::size_t known = m_entries.size(); // what is taken in meanwhile is not looked at
    // Whoever is called here may change the scene: nothing is kept across the calls but the place, and the
    // scene itself may be cleared.
    for (Place block = 0; block < std::min(known, m_entries.size()); block += BLOCK)
    {
        const Place end = static_cast<Place>(std::min<std::size_t>(known, block + BLOCK));
        if (!isAnyNear(line, block, end))
        {
            continue;
        }
        for (Place place = block; place < std::min<std::size_t>(end, m_entries.size()); ++place)
        {
            const std::optional<double> entry = enter(line, place);
            if (!entry)
            {
                continue;
            }
            const SceneObject object = m_entries[place].object;
            const int mask = m_entries[place].collisionMask;
            if (filter != nullptr && !filter->accepts(object, mask))
            {
                continue;
            }
            collector.onHit({object, *entry / line.unitLength, mask});
            if (!wantsAll)
            {
                return;
            }
        }
    }
}

bool CollisionScene::Objects::isAnyNear(const Line& line, Place first, Place end) const noexcept
{
    const double* const x = m_x.data();
    const double* const y = m_y.data();
    const double* const z = m_z.data();
    const double* const squaredRadius = m_squaredRadius.data();
    const Real3 origin = line.origin;
    const Real3 direction = line.direction;
    std::uint64_t misses = SIGN_BIT; // sign bits of differences: comparisons GCC does not vectorise
    for (std::size_t i = first; i < end; ++i)
    {
        const double squaredDistance = Collisions::squaredDistanceToAxis(x[i] - origin[0], y[i] - origin[1],
                                                                         z[i] - origin[2], direction);
        misses &= std::bit_cast<std::uint64_t>(squaredRadius[i] - squaredDistance);
    }
    return (misses & SIGN_BIT) == 0;
}

std::optional<double> CollisionScene::Objects::enter(const Line& line, Place place) const noexcept
{
    const Real3 to{m_x[place] - line.origin[0], m_y[place] - line.origin[1], m_z[place] - line.origin[2]};
    const double squaredRadius = m_squaredRadius[place];
    if (!(Collisions::squaredDistanceToAxis(to[0], to[1], to[2], line.direction) <= squaredRadius))
    {
        return std::nullopt;
    }
    switch (m_entries[place].kind)
    {
    case ShapeKind::Sphere:
        return Collisions::enterSphere(line, to, squaredRadius);
    case ShapeKind::Ellipsoid:
        return Collisions::enterEllipsoid(line, to, m_axes[place]);
    case ShapeKind::Box:
        return Collisions::enterBox(line, to, m_axes[place]);
    case ShapeKind::Nothing:
        break;
    }
    return std::nullopt;
}

} // namespace Kodo
