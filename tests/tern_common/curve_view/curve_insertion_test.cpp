// Where points are inserted, compared with a search through every sample of every curve.

#include "kodo/render/debug_drawer.hpp"
#include "tests/support/insertion_oracle.hpp"
#include "tests/support/random_seed.hpp"
#include "tests/support/reports.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

namespace
{

using InsertType = CurveViewPointInserter::InsertType;
using Points = std::vector<Kodo::Vector3>;
using Random = std::mt19937;

constexpr float EXTENT = 100.0F;

Random seeded()
{
    return Random(static_cast<std::uint32_t>(randomSeed()));
}

Kodo::Vector3 scattered(Random& random)
{
    std::uniform_real_distribution<float> coordinate(-EXTENT, EXTENT);
    const float x = coordinate(random);
    const float y = coordinate(random);
    return {x, y, coordinate(random)};
}

/// A closed curve, once around or in an eight that crosses itself in the middle.
Points cycle(std::size_t count, bool eight)
{
    Points points;
    for (std::size_t i = 0; i < count; ++i)
    {
        const float angle = 2 * std::numbers::pi_v<float> * static_cast<float>(i) / static_cast<float>(count);
        points.emplace_back(EXTENT * std::sin(angle), 0.0F,
                            EXTENT * (eight ? std::sin(2 * angle) : std::cos(angle)));
    }
    points.push_back(points.front());
    return points;
}

Points wandering(std::size_t count, Random& random)
{
    Points points{scattered(random)};
    while (points.size() < count)
    {
        points.push_back(points.back() + scattered(random) * 0.1F);
    }
    return points;
}

/// Points of a coarse lattice, many of them twice, also one directly after the other.
Points lattice(std::size_t count, Random& random)
{
    Points points;
    while (points.size() < count)
    {
        const auto coordinate = [&] { return static_cast<float>(random() % 5) * 10.0F - 20.0F; };
        const float x = coordinate();
        const float y = coordinate();
        points.emplace_back(x, y, coordinate());
        if (random() % 3 == 0)
        {
            points.push_back(points.back());
        }
    }
    return points;
}

/// A curve whose parameters go in steps of any size, to and fro.
std::unique_ptr<PolylineCurve> uneven(std::size_t count, Random& random)
{
    std::vector<PolylineCurve::Key> keys;
    float parameter = 0;
    for (const Kodo::Vector3& point : wandering(count, random))
    {
        const std::array steps{0.0F, 0.05F, 0.1F, 0.7F, 2.0F, -0.05F, -1.0F};
        parameter += steps[random() % steps.size()];
        keys.push_back({point, parameter});
    }
    return std::make_unique<PolylineCurve>(std::move(keys), 7.5F);
}

std::unique_ptr<PolylineCurve> through(const Points& points, float resolution = 16)
{
    return std::make_unique<PolylineCurve>(points, resolution);
}

/// The identity, a translation, or a rotation with any scale, one axis mirrored now and then.
Kodo::Matrix anyOrigin(Random& random)
{
    Kodo::Matrix origin = Kodo::Matrix::IDENTITY;
    if (random() % 3 == 0)
    {
        origin.setTranslate(scattered(random));
    }
    else if (random() % 2 == 0)
    {
        std::uniform_real_distribution<float> scale(0.25F, 4.0F);
        const float x = scale(random) * (random() % 4 == 0 ? -1.0F : 1.0F);
        const float y = scale(random);
        const auto rotation = Kodo::Quaternion::fromAngleAxis(scale(random), scattered(random));
        origin =
            Kodo::Matrix::constructTransformationMatrix(scattered(random), rotation, {x, y, scale(random)});
    }
    return origin;
}

std::unique_ptr<PolylineCurve> anyCurve(Random& random)
{
    switch (random() % 9)
    {
    case 0:
        return through(cycle(3 + random() % 20, false));
    case 1:
        return through(cycle(3 + random() % 20, true));
    case 2:
        return through(wandering(2 + random() % 60, random), 3);
    case 3:
        return through(lattice(2 + random() % 30, random), 4);
    case 4:
        return uneven(2 + random() % 30, random);
    case 5:
        return through({scattered(random)});
    case 6:
        return through(Points(2 + random() % 4, scattered(random)));
    case 7:
        return through({});
    default:
        auto invalid = through(wandering(5, random));
        invalid->valid = false;
        return invalid;
    }
}

InsertionOracle anyScene(Random& random)
{
    std::vector<InsertionOracle::Curve> curves(1 + random() % 6);
    for (InsertionOracle::Curve& curve : curves)
    {
        curve = {anyCurve(random), anyOrigin(random)};
    }
    return InsertionOracle(std::move(curves));
}

InsertionOracle sceneOf(std::unique_ptr<PolylineCurve> first, std::unique_ptr<PolylineCurve> second = nullptr)
{
    std::vector<InsertionOracle::Curve> curves;
    curves.push_back({std::move(first)});
    if (second)
    {
        curves.push_back({std::move(second)});
    }
    return InsertionOracle(std::move(curves));
}

/// A ray down on a place.
Kodo::Ray downOn(float x, float z)
{
    return {{x, 50, z}, {0, -1, 0}};
}

} // namespace

TEST(CurveInsertionTest, TakesTheNearestSampleOfAllViews)
{
    Random random = seeded();
    for (int round = 0; round < 150; ++round)
    {
        InsertionOracle scene = anyScene(random);
        for (int i = 0; i < 20; ++i)
        {
            const std::size_t view = random() % scene.views.size();
            ASSERT_TRUE(scene.insertsRightly(rayNear(scene.samplesOf(view), 20.0F, random)));
        }
    }
}

TEST(CurveInsertionTest, TakesTheFirstOfManyAtTheSameDistance)
{
    Random random = seeded();
    const std::array directions{Kodo::Vector3(0, -1, 0), Kodo::Vector3(1, 0, 0), Kodo::Vector3(0, 0, -1)};
    for (int round = 0; round < 100; ++round)
    {
        InsertionOracle scene = sceneOf(through(lattice(2 + random() % 20, random), 4),
                                        through(lattice(2 + random() % 20, random), 4));
        for (int i = 0; i < 20; ++i)
        {
            const Points origin = lattice(1, random);
            ASSERT_TRUE(scene.insertsRightly({origin.front(), directions[random() % directions.size()]}));
        }
    }
}

TEST(CurveInsertionTest, FollowsCurvesThatGrowByIt)
{
    Random random = seeded();
    InsertionOracle scene = sceneOf(through(cycle(8, true)), through(wandering(12, random)));
    for (PolylineCurve* model : scene.models)
    {
        model->grows = true;
    }
    for (int i = 0; i < 200; ++i)
    {
        const std::size_t view = random() % 2;
        ASSERT_TRUE(scene.insertsRightly(rayNear(scene.samplesOf(view), 20.0F, random)));
        ASSERT_EQ(scene.views[view]->getControlPoints().size(), scene.models[view]->pointCount());
    }
    EXPECT_EQ(scene.models[0]->pointCount() + scene.models[1]->pointCount(), 9U + 12U + 200U);
}

TEST(CurveInsertionTest, WhereAClosedCurveMeetsItselfItsStartIsTaken)
{
    InsertionOracle scene = sceneOf(through({{0, 0, 0}, {4, 0, 0}, {4, 0, 4}, {0, 0, 0}}, 4));
    ASSERT_TRUE(scene.insertsRightly(downOn(0, 0)));
    EXPECT_EQ(scene.models[0]->insertions.front().parameter, 0.0F);
}

TEST(CurveInsertionTest, WhereTwoCurvesTouchTheOneVisitedFirstIsTaken)
{
    const Points first{{0, 0, 0}, {10, 0, 0}};
    const Points second{{10, 0, 0}, {10, 0, 10}};
    InsertionOracle scene = sceneOf(through(second), through(first));
    ASSERT_TRUE(scene.insertsRightly(downOn(10, 0)));
    EXPECT_EQ(scene.models[0]->insertions.size(), 1U);
    std::swap(scene.views[0], scene.views[1]);
    std::swap(scene.models[0], scene.models[1]);
    ASSERT_TRUE(scene.insertsRightly(downOn(10, 0)));
    EXPECT_EQ(scene.models[0]->insertions.front().parameter, 1.0F);
}

TEST(CurveInsertionTest, TheInsertedPositionIsTheSamplesInTheSpaceOfTheCurve)
{
    std::vector<InsertionOracle::Curve> curves(1);
    curves[0].model = through({{0, 0, 0}, {8, 0, 0}}, 4);
    curves[0].origin = Kodo::Matrix::constructTransformationMatrix(
        {100, 0, 50}, Kodo::Quaternion::fromAngleAxis(std::numbers::pi_v<float> / 2, {0, 1, 0}), {-2, 1, 4});
    InsertionOracle scene(std::move(curves));
    const Kodo::Vector3 world = scene.views[0]->getOrigin().applyPoint({6, 0, 0});
    ASSERT_TRUE(scene.insertsRightly(downOn(world.x, world.z)));
    const PolylineCurve::Key& inserted = scene.models[0]->insertions.front();
    EXPECT_TRUE(Kodo::almostEqual(inserted.position, {6, 0, 0}, 1e-4F)) << inserted.position.x;
    EXPECT_EQ(inserted.parameter, 0.75F);
}

TEST(CurveInsertionTest, RaysFromBehindAndBackwardRaysFindTheSame)
{
    InsertionOracle scene = sceneOf(through(cycle(12, false)));
    for (const Kodo::Ray& ray : {Kodo::Ray{{90, 50, 40}, {0, -1, 0}}, Kodo::Ray{{90, -50, 40}, {0, -1, 0}},
                                 Kodo::Ray{{90, 50, 40}, {0, 1, 0}}})
    {
        ASSERT_TRUE(scene.insertsRightly(ray));
        EXPECT_EQ(scene.models[0]->insertions.front().parameter,
                  scene.nearestTo(downOn(90, 40)).sample.parameter);
    }
}

TEST(CurveInsertionTest, AViewVisitedTwiceCountsOnce)
{
    InsertionOracle scene = sceneOf(through(cycle(5, false)));
    CurveViewPointInserter inserter(
        [&](const std::function<void(CurveView&)>& visit)
        {
            visit(*scene.views[0]);
            visit(*scene.views[0]);
        });
    inserter.insert(downOn(3, 4), InsertType::Insert);
    EXPECT_EQ(scene.models[0]->insertions.size(), 1U);
}

TEST(CurveInsertionTest, WithoutASampleNothingHappens)
{
    auto invalid = through(cycle(5, false));
    invalid->valid = false;
    InsertionOracle scene = sceneOf(through({}), std::move(invalid));
    for (const InsertType type : {InsertType::Insert, InsertType::Ghost})
    {
        scene.inserter().insert(downOn(0, 0), type);
        CurveViewPointInserter([](const auto&) {}).insert(downOn(0, 0), type);
    }
    EXPECT_TRUE(scene.models[0]->insertions.empty());
    EXPECT_TRUE(scene.models[1]->insertions.empty());
    EXPECT_EQ(scene.space.itemCount(), scene.views[1]->getControlPoints().size());
}

TEST(CurveInsertionTest, ADistanceThatIsNoNumberOrTooLargeIsNowhere)
{
    InsertionOracle scene = sceneOf(through(cycle(5, false)));
    const float none = std::numeric_limits<float>::quiet_NaN();
    const float huge = std::numeric_limits<float>::max();
    EXPECT_TRUE(scene.insertsRightly({{none, 0, 0}, {0, -1, 0}}));
    EXPECT_TRUE(scene.insertsRightly({{0, 0, 0}, {0, none, 0}}));
    EXPECT_TRUE(scene.insertsRightly({{huge, 0, 0}, {0, -1, 0}}));
    EXPECT_EQ(scene.nearestTo({{huge, 0, 0}, {0, -1, 0}}).view, InsertionOracle::NO_VIEW);
}

TEST(CurveInsertionTest, AnInserterWithoutViewsToAskThrows)
{
    CurveViewPointInserter inserter(nullptr);
    EXPECT_THROW(inserter.insert(downOn(0, 0), InsertType::Insert), std::bad_function_call);
    EXPECT_THROW(inserter.insert(downOn(0, 0), InsertType::Ghost), std::bad_function_call);
}

TEST(CurveInsertionTest, AGhostShowsWhereAPointWouldBeInsertedForOneFrame)
{
    Random random = seeded();
    for (int round = 0; round < 100; ++round)
    {
        InsertionOracle scene = anyScene(random);
        const std::size_t items = scene.space.itemCount();
        const Kodo::Ray ray = rayNear(scene.samplesOf(0), 20.0F, random);
        const InsertionOracle::Expectation expected = scene.nearestTo(ray);
        const bool found = expected.view != InsertionOracle::NO_VIEW;
        for (int i = 0; i < 3; ++i) // each replaces the one before
        {
            scene.inserter().insert(ray, InsertType::Ghost);
            ASSERT_EQ(scene.space.itemCount(), items + (found ? 1 : 0));
        }
        for (std::size_t view = 0; view < scene.views.size(); ++view)
        {
            EXPECT_TRUE(scene.models[view]->insertions.empty());
            Kodo::DebugDrawer::Context first;
            Kodo::DebugDrawer::Context second;
            scene.views[view]->render(first);
            scene.views[view]->render(second);
            ASSERT_EQ(first.spheres().size(), second.spheres().size() + (view == expected.view ? 2 : 0));
            if (view == expected.view)
            {
                EXPECT_EQ(first.spheres().back().position, expected.sample.position);
            }
        }
        EXPECT_EQ(scene.space.itemCount(), items);
    }
}

TEST(CurveInsertionTest, AGhostAndAnInsertionDoNotDisturbEachOther)
{
    InsertionOracle scene = sceneOf(through(cycle(12, false)));
    scene.inserter().insert(downOn(90, 40), InsertType::Ghost);
    const std::size_t items = scene.space.itemCount();
    ASSERT_TRUE(scene.insertsRightly(downOn(-20, 90)));
    EXPECT_EQ(scene.space.itemCount(), items);
    Kodo::DebugDrawer::Context frame;
    scene.views[0]->render(frame);
    EXPECT_EQ(frame.spheres().back().position, scene.nearestTo(downOn(90, 40)).sample.position);
}

TEST(CurveInsertionTest, AnyOtherTypeInserts)
{
    InsertionOracle scene = sceneOf(through(cycle(5, false)));
    scene.inserter().insert(downOn(3, 4), static_cast<InsertType>(2));
    EXPECT_EQ(scene.models[0]->insertions.size(), 1U);
}

TEST(CurveInsertionTest, InsertersAreCopiedWithWhatTheyAsk)
{
    InsertionOracle scene = sceneOf(through(cycle(5, false)));
    CurveViewPointInserter inserter = scene.inserter();
    CurveViewPointInserter copy(inserter);
    copy.insert(downOn(3, 4), InsertType::Insert);
    CurveViewPointInserter moved(std::move(copy));
    moved.insert(downOn(3, 4), InsertType::Insert);
    inserter = moved;
    inserter.insert(downOn(3, 4), InsertType::Insert);
    EXPECT_EQ(scene.models[0]->insertions.size(), 3U);
}
