#include "kodo/collision/collision_scene.hpp"

#include "kodo/collision/collision_scene_manager.hpp"
#include "tests/platform/collision_fixture.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace
{

using Kodo::CollisionScene;
using Kodo::CollisionSceneManager;
using Kodo::Matrix;
using Kodo::SceneObject;
using Kodo::Vector3;
using Kodo::Collisions::ICollisionCollector;
using Kodo::Collisions::ICollisionFilter;
using Kodo::Collisions::Ray;
using Kodo::Collisions::RayHit;

static_assert(!std::is_copy_constructible_v<CollisionScene>);
static_assert(std::is_trivially_copyable_v<SceneObject>);

TEST_F(CollisionTest, HitsComeInTheOrderOfRegistrationWhateverTheirShapeAndPlace)
{
    std::vector<std::uint64_t> expected;
    for (int i = 0; i < 300; ++i)
    {
        const Vector3 scale = i % 3 == 0 ? Vector3{1.0F, 1.0F, 1.0F} : Vector3{1.0F, 2.0F, 1.0F};
        const float x = static_cast<float>(400 - i);
        const SceneObject object = add(i % 2 == 0 ? SPHERE : BOX, placedAt({x, 0.0F, 0.0F}, scale));
        expected.push_back(object.id());
        add(SPHERE, placedAt({x, 50.0F, 0.0F})); // beside the ray
    }
    EXPECT_EQ(hitBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}), expected);
    Collector first(ICollisionCollector::RETURN_ANY);
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, first, nullptr);
    EXPECT_EQ(first.ids(), std::vector{expected[0]});
}

TEST_F(CollisionTest, AMoveKeepsAnObjectsTurn)
{
    const SceneObject a = add(SPHERE, placedAt({5.0F, 0.0F, 0.0F}));
    const SceneObject b = add(BOX, placedAt({7.0F, 0.0F, 0.0F}));
    const Ray ray{Vector3::ZERO, {1.0F, 0.0F, 0.0F}};
    scene->updateTransform(a, placedAt({9.0F, 0.0F, 0.0F}, {1.0F, 3.0F, 1.0F})); // an ellipsoid now
    EXPECT_EQ(hitBy(ray), (std::vector{a.id(), b.id()}));
    scene->updateTransform(a, placedAt({9.0F, 10.0F, 0.0F}));
    EXPECT_EQ(hitBy(ray), std::vector{b.id()});
    scene->updateTransform(a, placedAt({3.0F, 0.0F, 0.0F}));
    EXPECT_EQ(hitBy(ray), (std::vector{a.id(), b.id()}));
}

TEST_F(CollisionTest, AnObjectIsTakenInOnceAndOutOnce)
{
    EXPECT_FALSE(scene->createShape(2, {2.0F, 2.0F, 2.0F}, Vector3::ZERO, false));
    EXPECT_FALSE(scene->createShape(-1, {2.0F, 2.0F, 2.0F}, Vector3::ZERO, true));
    const SceneObject object;
    EXPECT_FALSE(scene->addUserObject(object, nullptr, Matrix::IDENTITY, 0, 0, MASK));
    EXPECT_FALSE(scene->contains(object));
    const auto box = shape(BOX);
    EXPECT_EQ(box->shapeTemplate(), BOX);
    EXPECT_EQ(box->extent(), Vector3(2.0F, 2.0F, 2.0F));
    EXPECT_EQ(box->offset(), Vector3::ZERO);
    EXPECT_TRUE(scene->addUserObject(object, box, Matrix::IDENTITY, 0, 0, MASK));
    EXPECT_EQ(box->refCount(), 2);
    EXPECT_FALSE(scene->addUserObject(object, box, placedAt({50.0F, 0.0F, 0.0F}), 0, 0, 1));
    EXPECT_EQ(distanceBy({{-5.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}), 4.0) << "as it was";
    EXPECT_EQ(scene->objectCount(), 1U);
    scene->deleteObstacle(object);
    EXPECT_EQ(box->refCount(), 1);
    EXPECT_FALSE(scene->contains(object));
    scene->deleteObstacle(object);
    EXPECT_EQ(scene->objectCount(), 0U);
    EXPECT_TRUE(scene->addUserObject(object, box, Matrix::IDENTITY, 0, 0, MASK));
    EXPECT_EQ(scene->objectCount(), 1U);
}

TEST_F(CollisionTest, UnknownHandlesAreIgnored)
{
    const SceneObject object = add(SPHERE, Matrix::IDENTITY);
    const SceneObject unknown;
    scene->updateTransform(unknown, placedAt({9.0F, 0.0F, 0.0F}));
    scene->deleteObstacle(unknown);
    EXPECT_EQ(hitBy({{-5.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}), std::vector{object.id()});
    EXPECT_FALSE(scene->contains(unknown));
}

TEST_F(CollisionTest, CopiesOfAHandleNameTheSameObject)
{
    const SceneObject object;
    const SceneObject earlier = object;
    EXPECT_EQ(earlier, object);
    EXPECT_FALSE(SceneObject() == object);
    add(SPHERE, placedAt({50.0F, 0.0F, 0.0F}));
    scene->addUserObject(object, shape(SPHERE), Matrix::IDENTITY, 0, 0, MASK);
    EXPECT_TRUE(scene->contains(earlier));
    EXPECT_FALSE(scene->addUserObject(earlier, shape(SPHERE), Matrix::IDENTITY, 0, 0, MASK));
    scene->updateTransform(earlier, placedAt({0.0F, 5.0F, 0.0F}));
    EXPECT_EQ(hitBy({{-5.0F, 5.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}), std::vector{object.id()});
    scene->deleteObstacle(earlier);
    EXPECT_FALSE(scene->contains(object));
}

TEST_F(CollisionTest, AnObjectMayStandInSeveralScenes)
{
    CollisionScene other;
    add(SPHERE, placedAt({50.0F, 0.0F, 0.0F}));
    const SceneObject object = add(SPHERE, Matrix::IDENTITY);
    other.addUserObject(object, shape(BOX), placedAt({0.0F, 5.0F, 0.0F}), 0, 0, 3);
    scene->updateTransform(object, placedAt({0.0F, 9.0F, 0.0F}));
    EXPECT_EQ(hitBy({{-5.0F, 9.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}), std::vector{object.id()});
    Collector collector;
    other.collideRay({{-5.0F, 5.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}, collector, nullptr);
    EXPECT_EQ(collector.ids(), std::vector{object.id()});
    other.deleteObstacle(object);
    EXPECT_TRUE(scene->contains(object));
    EXPECT_FALSE(other.contains(object));
}

TEST_F(CollisionTest, AFilterSaysWhatIsLookedAt)
{
    class ByMask final : public ICollisionFilter
    {
    public:
        bool accepts(const SceneObject& object, int collisionMask) const override
        {
            asked.push_back(object.id());
            return (collisionMask & 2) != 0;
        }
        mutable std::vector<std::uint64_t> asked;
    };
    add(SPHERE, placedAt({3.0F, 0.0F, 0.0F}), 1);
    const SceneObject b = add(SPHERE, placedAt({6.0F, 0.0F, 0.0F}), 2);
    add(SPHERE, placedAt({9.0F, 0.0F, 0.0F}), 4);
    const SceneObject d = add(SPHERE, placedAt({12.0F, 0.0F, 0.0F}), 6);
    const ByMask filter;
    Collector collector;
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, collector, &filter);
    EXPECT_EQ(collector.ids(), (std::vector{b.id(), d.id()}));
    Collector first(ICollisionCollector::RETURN_ANY);
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, first, &filter);
    EXPECT_EQ(first.ids(), std::vector{b.id()}) << "what the filter refuses is not the one";
}

TEST_F(CollisionTest, TheOrderSurvivesManyRemovalsAndAdditions)
{
    std::vector<SceneObject> objects;
    for (int i = 0; i < 1000; ++i)
    {
        objects.push_back(add(i % 2 == 0 ? SPHERE : BOX, placedAt({static_cast<float>(i), 0.0F, 0.0F})));
    }
    std::vector<std::uint64_t> expected;
    for (std::size_t i = 0; i < objects.size(); ++i)
    {
        if (i % 10 == 7)
        {
            expected.push_back(objects[i].id());
        }
        else
        {
            scene->deleteObstacle(objects[i]);
        }
    }
    const Ray ray{{-5.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}};
    EXPECT_EQ(hitBy(ray), expected);
    expected.push_back(add(SPHERE, placedAt(Vector3::ZERO)).id()); // in a slot of one that is gone
    EXPECT_EQ(hitBy(ray), expected);
    EXPECT_FALSE(scene->contains(objects[0]));
    scene->updateTransform(objects[17], placedAt({0.0F, 90.0F, 0.0F})); // found after all has moved up
    std::erase(expected, objects[17].id());
    EXPECT_EQ(hitBy(ray), expected);
    EXPECT_EQ(scene->objectCount(), 101U);
}

TEST_F(CollisionTest, ACollectorMayTakeOutMoveAndTakeIn)
{
    std::vector<SceneObject> objects;
    for (int i = 0; i < 200; ++i)
    {
        objects.push_back(add(SPHERE, placedAt({static_cast<float>(i), 0.0F, 0.0F})));
    }
    Collector collector;
    collector.then = [&](const RayHit&)
    {
        const std::size_t turn = collector.hits.size() - 1;
        if (turn == 0)
        {
            for (std::size_t i = 3; i < 197; ++i)
            {
                scene->deleteObstacle(objects[i]);
            }
            scene->updateTransform(objects[1], placedAt({0.0F, 90.0F, 0.0F}));
            scene->updateTransform(objects[198], placedAt({0.0F, 90.0F, 0.0F}));
        }
        for (int i = 0; i < 100; ++i) // the arrays grow beneath the query
        {
            add(BOX, placedAt(Vector3::ZERO));
        }
    };
    const Ray ray{{-5.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}};
    scene->collideRay(ray, collector, nullptr);
    EXPECT_EQ(collector.ids(),
              (std::vector{objects[0].id(), objects[2].id(), objects[197].id(), objects[199].id()}));
    EXPECT_EQ(scene->objectCount(), 6U + 400U);
    EXPECT_EQ(hitBy(ray).size(), 4U + 400U);
}

TEST_F(CollisionTest, ACollectorMayTakeOutEverything)
{
    std::vector<SceneObject> objects;
    for (int i = 0; i < 200; ++i)
    {
        objects.push_back(add(SPHERE, Matrix::IDENTITY));
    }
    Collector collector;
    collector.then = [&](const RayHit& hit)
    {
        for (const SceneObject& object : objects)
        {
            scene->deleteObstacle(object);
        }
        EXPECT_FALSE(scene->contains(hit.sceneObject));
    };
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, collector, nullptr);
    EXPECT_EQ(collector.hits.size(), 1U);
    EXPECT_EQ(scene->objectCount(), 0U);
    EXPECT_EQ(hitBy({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}).size(), 0U);
}

TEST_F(CollisionTest, ACollectorMayDoAwayWithTheScene)
{
    for (int i = 0; i < 200; ++i)
    {
        add(i % 2 == 0 ? SPHERE : BOX, Matrix::IDENTITY);
    }
    Collector collector;
    collector.then = [&](const RayHit&) { scene.reset(); };
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, collector, nullptr);
    EXPECT_EQ(collector.hits.size(), 1U);
}

TEST_F(CollisionTest, AFilterMayDoAwayWithTheSceneToo)
{
    class Careless final : public ICollisionFilter
    {
    public:
        explicit Careless(std::unique_ptr<CollisionScene>& scene) : m_scene(scene) {}
        bool accepts(const SceneObject& /*object*/, int /*collisionMask*/) const override
        {
            m_scene.reset();
            return true;
        }

    private:
        std::unique_ptr<CollisionScene>& m_scene;
    };
    const SceneObject object = add(SPHERE, Matrix::IDENTITY);
    add(SPHERE, Matrix::IDENTITY);
    const Careless filter(scene);
    Collector collector;
    scene->collideRay({Vector3::ZERO, {1.0F, 0.0F, 0.0F}}, collector, &filter);
    EXPECT_EQ(collector.ids(), std::vector{object.id()}) << "it was accepted";
}

TEST_F(CollisionTest, QueriesNestAndMayThrow)
{
    std::vector<SceneObject> objects;
    for (int i = 0; i < 200; ++i)
    {
        objects.push_back(add(SPHERE, Matrix::IDENTITY));
    }
    const Ray ray{Vector3::ZERO, {1.0F, 0.0F, 0.0F}};
    Collector outer;
    outer.then = [&](const RayHit& hit)
    {
        if (outer.hits.size() == 1)
        {
            for (std::size_t i = 1; i < 190; ++i)
            {
                scene->deleteObstacle(objects[i]);
            }
            Collector inner;
            scene->collideRay(ray, inner, nullptr); // must not close the gaps under the outer one
            EXPECT_EQ(inner.hits.size(), 11U);
            EXPECT_EQ(inner.hits[0].id, hit.sceneObject.id());
        }
        if (outer.hits.size() == 5)
        {
            throw std::runtime_error("enough");
        }
    };
    EXPECT_THROW(scene->collideRay(ray, outer, nullptr), std::runtime_error);
    EXPECT_EQ(outer.ids(), (std::vector{objects[0].id(), objects[190].id(), objects[191].id(),
                                        objects[192].id(), objects[193].id()}));
    EXPECT_EQ(hitBy(ray).size(), 11U) << "usable as before";
}

TEST(CollisionSceneManagerTest, ARemovedSceneTakesItsObjectsWithIt)
{
    CollisionSceneManager& manager = CollisionSceneManager::instance();
    EXPECT_EQ(manager.scene(9), nullptr);
    CollisionScene& scene = manager.createScene(9);
    const SceneObject object;
    const auto shape = scene.createShape(SPHERE, {1.0F, 1.0F, 1.0F}, Vector3::ZERO, false);
    scene.addUserObject(object, shape, Matrix::IDENTITY, 0, 0, MASK);
    EXPECT_EQ(manager.scene(9), &scene);
    manager.removeScene(9);
    manager.removeScene(9);
    EXPECT_EQ(manager.scene(9), nullptr);
    EXPECT_EQ(shape->refCount(), 1);
    CollisionScene& anew = manager.createScene(9);
    EXPECT_FALSE(anew.contains(object));
    anew.updateTransform(object, Matrix::IDENTITY);
    anew.deleteObstacle(object);
    EXPECT_TRUE(anew.addUserObject(object, shape, Matrix::IDENTITY, 0, 0, MASK));
    manager.removeScene(9);
}

} // namespace
