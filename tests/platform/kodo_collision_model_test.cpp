// The collision scene against a plain model: every object in a list, every ray tested against each by
// formulas of its own (a quadric for round shapes, the six faces for boxes) in long double.

#include "kodo/collision/collision_scene.hpp"
#include "tests/support/random_seed.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <random>
#include <utility>
#include <vector>

namespace
{

using Kodo::CollisionScene;
using Kodo::CollisionShape;
using Kodo::Matrix;
using Kodo::SceneObject;
using Kodo::Vector3;
using Kodo::Collisions::Ray;
using Kodo::Collisions::RayHit;

using Wide = long double;
using Wide3 = std::array<Wide, 3>;

Wide3 operator+(const Wide3& a, const Wide3& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
Wide3 operator-(const Wide3& a, const Wide3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
Wide3 operator*(const Wide3& a, Wide factor)
{
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}
Wide dot(const Wide3& a, const Wide3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Wide3 wide(const Vector3& v)
{
    return {v.x, v.y, v.z};
}

/// An object as the model knows it.
struct Thing
{
    SceneObject object;
    bool isBox = false;
    Vector3 extent;
    Vector3 offset;
    Matrix transform;
    int mask = 0;
};

bool isFinite(const Thing& thing)
{
    Wide sum = 0;
    for (int row = 0; row < 4; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            sum += Wide{thing.transform.m[row][column]};
        }
    }
    const Wide3 rest = wide(thing.extent) + wide(thing.offset);
    return std::isfinite(sum + rest[0] + rest[1] + rest[2]);
}

/// Solves s[0] * axes[0] + s[1] * axes[1] + s[2] * axes[2] = to by elimination; nothing when the axes lie in
/// one plane.
std::optional<Wide3> solve(const std::array<Wide3, 3>& axes, const Wide3& to)
{
    std::array<std::array<Wide, 4>, 3> rows{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        rows[i] = {axes[0][i], axes[1][i], axes[2][i], to[i]};
    }
    for (std::size_t column = 0; column < 3; ++column)
    {
        std::size_t pivot = column;
        for (std::size_t i = column + 1; i < 3; ++i)
        {
            pivot = std::fabs(rows[i][column]) > std::fabs(rows[pivot][column]) ? i : pivot;
        }
        if (rows[pivot][column] == 0)
        {
            return std::nullopt;
        }
        std::swap(rows[column], rows[pivot]);
        for (std::size_t i = 0; i < 3; ++i)
        {
            const Wide factor = i == column ? 0 : rows[i][column] / rows[column][column];
            for (std::size_t k = 0; k < 4; ++k)
            {
                rows[i][k] -= factor * rows[column][k];
            }
        }
    }
    return Wide3{rows[0][3] / rows[0][0], rows[1][3] / rows[1][1], rows[2][3] / rows[2][2]};
}

struct ModelShape
{
    Wide3 centre{};
    std::array<Wide3, 3> axes{}; ///< half axes
};

/// The thing's shape grown by @p growth.
ModelShape shapeOf(const Thing& thing, Wide growth)
{
    ModelShape shape;
    const Wide3 half = wide(thing.extent) * (growth / 2);
    const Wide3 offset = wide(thing.offset);
    shape.centre = wide(thing.transform.translation());
    for (int axis = 0; axis < 3; ++axis)
    {
        const auto i = static_cast<std::size_t>(axis);
        const Wide3 row = wide(thing.transform.row(axis));
        shape.axes[i] = row * half[i];
        shape.centre = shape.centre + row * offset[i];
    }
    return shape;
}

/// Where the ray enters an ellipsoid: the smaller root of |p + t d| = 1 in the ellipsoid's own coordinates.
std::optional<Wide> enterRound(const ModelShape& shape, const Wide3& origin, const Wide3& direction)
{
    const Wide3 p = *solve(shape.axes, origin - shape.centre);
    const Wide3 d = *solve(shape.axes, direction);
    const Wide a = dot(d, d);
    const Wide b = dot(p, d);
    const Wide c = dot(p, p) - 1;
    if (c <= 0)
    {
        return Wide{0};
    }
    const Wide discriminant = b * b - a * c;
    if (discriminant < 0 || b > 0)
    {
        return std::nullopt;
    }
    return c / (-b + std::sqrt(discriminant));
}

/// Where the ray enters a box: the nearest of the faces that it passes through.
std::optional<Wide> enterBox(const ModelShape& shape, const Wide3& origin, const Wide3& direction)
{
    const Wide3 inside = *solve(shape.axes, origin - shape.centre);
    if (std::all_of(inside.begin(), inside.end(), [](Wide s) { return std::fabs(s) <= 1; }))
    {
        return Wide{0};
    }
    std::optional<Wide> nearest;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const std::size_t u = (axis + 1) % 3;
        const std::size_t v = (axis + 2) % 3;
        for (const Wide side : {Wide{-1}, Wide{1}})
        {
            // origin + t * direction = centre + side * axis + a * u + b * v
            const Wide3 face = shape.centre + shape.axes[axis] * side;
            const auto at = solve({direction * Wide{-1}, shape.axes[u], shape.axes[v]}, origin - face);
            if (at && (*at)[0] >= 0 && std::fabs((*at)[1]) <= 1 && std::fabs((*at)[2]) <= 1)
            {
                nearest = nearest ? std::min(*nearest, (*at)[0]) : (*at)[0];
            }
        }
    }
    return nearest;
}

std::optional<Wide> enter(const Thing& thing, const Ray& ray, Wide growth)
{
    const ModelShape shape = shapeOf(thing, growth);
    if (!solve(shape.axes, Wide3{}))
    {
        return std::nullopt;
    }
    const auto entry = thing.isBox ? enterBox(shape, wide(ray.origin), wide(ray.direction))
                                   : enterRound(shape, wide(ray.origin), wide(ray.direction));
    return entry && *entry <= Wide{ray.length} * (growth > 1 ? 1 + 1e-9L : 1 - 1e-9L) ? entry : std::nullopt;
}

struct Expectation
{
    std::optional<Wide> grown;  ///< where the ray enters the shape when it is a little larger
    std::optional<Wide> shrunk; ///< and a little smaller
};

Expectation expectationOf(const Thing& thing, const Ray& ray)
{
    const Wide3 direction = wide(ray.direction);
    const Wide finite = dot(wide(ray.origin), {1, 1, 1}) + dot(direction, {1, 1, 1}) + Wide{ray.length};
    if (!isFinite(thing) || !std::isfinite(finite) || dot(direction, direction) == 0)
    {
        return {};
    }
    return {enter(thing, ray, 1 + 1e-7L), enter(thing, ray, 1 - 1e-7L)};
}

struct Recorded
{
    std::uint64_t id;
    double distance;
    int mask;
};

class Recorder final : public Kodo::Collisions::ICollisionCollector
{
public:
    Recorder() : ICollisionCollector(RETURN_ALL) {}
    void onHit(const RayHit& hit) override
    {
        hits.push_back({hit.sceneObject.id(), hit.distance, hit.collisionMask});
    }

    std::vector<Recorded> hits;
};

class CollisionModelTest : public testing::Test
{
protected:
    float real(float least, float most)
    {
        return std::uniform_real_distribution<float>(least, most)(m_random);
    }
    int whole(int least, int most) { return std::uniform_int_distribution<int>(least, most)(m_random); }
    bool oneIn(int count) { return whole(1, count) == 1; }
    Vector3 point(float reach) { return {real(-reach, reach), real(-reach, reach), real(-reach, reach)}; }
    Vector3 wholePoint() // exact numbers: faces, edges and tangents are met
    {
        const auto component = [this] { return static_cast<float>(whole(-4, 4)); };
        return {component(), component(), component()};
    }

    Matrix transform()
    {
        Vector3 scale{real(0.1F, 4.0F), real(0.1F, 4.0F), real(0.1F, 4.0F)};
        const bool isEven = oneIn(2);
        if (isEven)
        {
            scale = Vector3(1.0F, 1.0F, 1.0F) * static_cast<float>(whole(1, 3));
        }
        if (oneIn(5))
        {
            scale = scale * -1.0F;
        }
        if (oneIn(10))
        {
            scale.y = oneIn(2) ? 0.0F : -scale.y;
        }
        const auto turn = isEven && oneIn(2)
                              ? Kodo::Quaternion::IDENTITY
                              : Kodo::Quaternion::fromAngleAxis(real(-4.0F, 4.0F), point(1.0F));
        Matrix made =
            Matrix::constructTransformationMatrix(oneIn(3) ? wholePoint() : point(20.0F), turn, scale);
        if (oneIn(5))
        {
            made.m[whole(0, 2)][whole(0, 2)] += real(-1.0F, 1.0F); // shear
        }
        if (oneIn(20))
        {
            made.m[whole(0, 3)][whole(0, 2)] = badNumber();
        }
        return made;
    }

    float badNumber()
    {
        constexpr float INFINITE = std::numeric_limits<float>::infinity();
        return std::array{INFINITE, -INFINITE,
                          std::numeric_limits<float>::quiet_NaN()}[static_cast<std::size_t>(whole(0, 2))];
    }

    Thing thing()
    {
        Thing made;
        made.isBox = oneIn(2);
        made.extent = oneIn(2) ? Vector3{2.0F, 2.0F, 2.0F}
                               : Vector3{real(0.1F, 5.0F), real(-5.0F, -0.1F), real(0.1F, 5.0F)};
        made.offset = oneIn(4) ? point(3.0F) : Vector3::ZERO;
        made.transform = transform();
        made.mask = whole(0, 99);
        return made;
    }

    Ray ray()
    {
        Ray made;
        made.origin = oneIn(3) ? wholePoint() : point(oneIn(3) ? 200.0F : 20.0F);
        made.direction = oneIn(3) ? wholePoint() : point(1.0F);
        if (!m_things.empty() && !oneIn(4))
        {
            const auto aim = static_cast<std::size_t>(whole(0, static_cast<int>(m_things.size()) - 1));
            made.direction = m_things[aim].transform.translation() - made.origin + point(2.0F);
        }
        if (oneIn(2))
        {
            made.direction = made.direction * std::pow(10.0F, real(-3.0F, 3.0F));
        }
        if (oneIn(4))
        {
            made.length = oneIn(8) ? -1.0F : real(0.0F, 2.0F);
        }
        if (oneIn(50))
        {
            (oneIn(2) ? made.origin.y : made.direction.z) = badNumber();
        }
        return made;
    }

    void change()
    {
        const int kind = whole(0, 5);
        if (kind <= 2 || m_things.empty())
        {
            m_things.push_back(thing());
            const Thing& added = m_things.back();
            const auto shape = m_scene.createShape(added.isBox ? CollisionShape::TEMPLATE_BOX
                                                               : CollisionShape::TEMPLATE_SPHERE,
                                                   added.extent, added.offset, oneIn(2));
            ASSERT_TRUE(m_scene.addUserObject(added.object, shape, added.transform, 0, 0, added.mask));
            return;
        }
        const int index = whole(0, static_cast<int>(m_things.size()) - 1);
        const auto at = m_things.begin() + index;
        if (kind <= 4)
        {
            at->transform = transform();
            m_scene.updateTransform(at->object, at->transform);
        }
        else
        {
            m_scene.deleteObstacle(at->object);
            m_things.erase(at);
        }
    }

    void removeSome()
    {
        while (m_things.size() > 20)
        {
            const auto at = m_things.begin() + whole(0, static_cast<int>(m_things.size()) - 1);
            m_scene.deleteObstacle(at->object);
            m_things.erase(at);
        }
    }

    /// Compares the scene's hits with the model's, passing over what is decided by rounding.
    void compare(const Ray& cast)
    {
        Recorder recorder;
        m_scene.collideRay(cast, recorder, nullptr);
        auto hit = recorder.hits.begin();
        for (const Thing& each : m_things)
        {
            const Expectation expected = expectationOf(each, cast);
            const bool isHit = hit != recorder.hits.end() && hit->id == each.object.id();
            if (expected.shrunk.has_value() == expected.grown.has_value())
            {
                ASSERT_EQ(isHit, expected.grown.has_value());
                ++(isHit ? m_hits : m_misses);
            }
            if (!isHit)
            {
                continue;
            }
            if (expected.grown && expected.shrunk)
            {
                const Wide slack = 1e-9L * (1 + *expected.shrunk);
                ASSERT_GE(hit->distance, *expected.grown - slack);
                ASSERT_LE(hit->distance, *expected.shrunk + slack);
                m_insides += hit->distance == 0.0 ? 1U : 0U;
            }
            ASSERT_EQ(hit->mask, each.mask);
            ++hit;
        }
        ASSERT_TRUE(hit == recorder.hits.end()) << "hits come in the order of registration, once each";
        ASSERT_EQ(m_scene.objectCount(), m_things.size());
    }

    std::mt19937_64 m_random{randomSeed()};
    CollisionScene m_scene;
    std::vector<Thing> m_things;
    std::size_t m_hits = 0;
    std::size_t m_misses = 0;
    std::size_t m_insides = 0;
};

TEST_F(CollisionModelTest, AgreesWithThePlainModelThroughEveryChange)
{
    for (int round = 0; round < 20; ++round)
    {
        for (int step = 0; step < 300; ++step)
        {
            change();
            compare(ray());
            if (HasFatalFailure())
            {
                return;
            }
        }
        removeSome();
    }
    EXPECT_GT(m_hits, 1000U);
    EXPECT_GT(m_insides, 20U);
    EXPECT_GT(m_misses, 1000U);
}

} // namespace
