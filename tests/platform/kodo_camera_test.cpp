#include "kodo/render/camera.hpp"
#include "kodo/render/colour.hpp"

#include "tests/support/math.hpp"
#include "tests/support/property.hpp"

#include <array>
#include <cmath>
#include <numbers>
#include <type_traits>

using Kodo::Matrix;
using Kodo::Ray;
using Kodo::Vector3;
using Kodo::Render::Camera;
using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;
using Kodo::Render::RenderSystem;

namespace
{

// A packed colour serves wherever a float colour is taken; a number is a colour only where it is said.
static_assert(std::is_convertible_v<Colour32Bit, ColourRGBAFloat>);
static_assert(!std::is_convertible_v<std::uint32_t, Colour32Bit>);
static_assert(sizeof(Colour32Bit) == sizeof(std::uint32_t));

TEST(ColourTest, APackedColourIsAlphaRedGreenBlue)
{
    constexpr Colour32Bit PACKED(0xFF2CFFA6);
    static_assert(PACKED.a() == 0xFF && PACKED.r() == 0x2C && PACKED.g() == 0xFF && PACKED.b() == 0xA6);
    static_assert(PACKED.argb() == 0xFF2CFFA6);
    static_assert(Colour32Bit() == Colour32Bit(0));
    static_assert(PACKED != Colour32Bit(0xFF2CFFA7));
}

TEST(ColourTest, EachComponentBecomesItsPartOf255)
{
    constexpr ColourRGBAFloat COLOUR = Colour32Bit(0x80FF0033);
    static_assert(COLOUR.r() == 1.0F && COLOUR.g() == 0.0F && COLOUR.b() == 0.2F);
    static_assert(COLOUR.a() == 128.0F / 255.0F);
    for (std::uint32_t value = 0; value < 256; ++value)
    {
        const ColourRGBAFloat grey = Colour32Bit(value * 0x01010101U);
        EXPECT_EQ(grey.r(), static_cast<float>(value) / 255.0F);
        EXPECT_EQ(std::lround(grey.r() * 255.0F), static_cast<long>(value)) << "packs again to what it was";
        EXPECT_TRUE(grey.r() == grey.g() && grey.g() == grey.b() && grey.b() == grey.a());
    }
}

/// Where @p point appears in the picture, worked out from angles and distances; z is the distance ahead.
Exact seen(const Camera& camera, const Vector3& point, double aspect)
{
    const Matrix& world = camera.worldMatrix();
    const Vector3 offset = point - world.translation();
    const auto along = [&offset](const Vector3& axis)
    {
        return static_cast<double>(offset.x) * axis.x + static_cast<double>(offset.y) * axis.y +
               static_cast<double>(offset.z) * axis.z;
    };
    const double ahead = along(world.row(2));
    const double half = camera.projection() == Camera::Projection::Perspective
                            ? ahead * std::tan(camera.verticalFieldOfView() / 2.0)
                            : camera.orthographicHeight() / 2.0;
    return {along(world.row(0)) / (half * aspect), along(world.row(1)) / half, ahead};
}

/// The same by the matrices, divided by w.
Exact projected(const Camera& camera, const Vector3& point, float aspect)
{
    Matrix whole = camera.viewMatrix();
    whole.postMultiply(camera.projectionMatrix(aspect));
    std::array<double, 4> clip{};
    for (std::size_t i = 0; i < 4; ++i)
    {
        clip[i] = static_cast<double>(point.x) * whole.m[0][i] +
                  static_cast<double>(point.y) * whole.m[1][i] +
                  static_cast<double>(point.z) * whole.m[2][i] + whole.m[3][i];
    }
    return {clip[0] / clip[3], clip[1] / clip[3], clip[2] / clip[3]};
}

rc::Gen<Camera> anyCamera()
{
    return rc::gen::map(rc::gen::tuple(anyVector(100.0F), anyVector(100.0F), rc::gen::arbitrary<bool>()),
                        [](const std::tuple<Vector3, Vector3, bool>& choice)
                        {
                            Camera camera;
                            camera.lookAt(std::get<0>(choice), std::get<1>(choice), {0.0F, 1.0F, 0.0F});
                            if (std::get<2>(choice))
                            {
                                camera.setPerspective(1.1F, 0.5F, 500.0F);
                            }
                            else
                            {
                                camera.setOrthographic(30.0F, 0.5F, 500.0F);
                            }
                            return camera;
                        });
}

Vector3 fromCamera(const Camera& camera, float right, float up, float ahead)
{
    return camera.worldMatrix().applyPoint({right, up, ahead});
}

RC_GTEST_PROP(CameraPropertyTest, LookingAtAPointPutsItAhead, ())
{
    const Vector3 position = *anyVector(100.0F);
    const Vector3 target = *anyVector(100.0F);
    const Vector3 up = *anyVector(1.0F);
    const float distance = (target - position).length();
    RC_PRE(distance > 0.01F);
    Camera camera;
    camera.lookAt(position, target, up);

    const Matrix& world = camera.worldMatrix();
    RC_ASSERT(world.translation() == position);
    RC_ASSERT(almostEqual(position + world.row(2) * distance, target, 1e-3F));
    for (int i = 0; i < 3; ++i)
    {
        RC_ASSERT(std::fabs(world.row(i).length() - 1.0F) < 1e-5F);
        RC_ASSERT(std::fabs(world.row(i).dotProduct(world.row((i + 1) % 3))) < 1e-5F);
    }
    // Forward is the third axis of a system in which right and up are the first two.
    RC_ASSERT(almostEqual(world.row(0).crossProduct(world.row(1)), world.row(2), 1e-5F));
    RC_ASSERT(world.row(1).dotProduct(up) >= -1e-5F);
    RC_ASSERT(std::fabs(world.row(0).dotProduct(up)) < 1e-4F);
}

RC_GTEST_PROP(CameraPropertyTest, TheMatricesPutAPointWhereAnglesPutIt, ())
{
    const Camera camera = *anyCamera();
    const float aspect = *rc::gen::element(0.5F, 1.0F, 16.0F / 9.0F);
    const Vector3 point = fromCamera(camera, *floatUpTo(20.0F), *floatUpTo(20.0F), 50.0F + *floatUpTo(49.0F));

    const Exact byAngles = seen(camera, point, aspect);
    const Exact byMatrices = projected(camera, point, aspect);

    RC_ASSERT(std::fabs(byAngles[0] - byMatrices[0]) < 2e-3 * std::max(1.0, std::fabs(byAngles[0])));
    RC_ASSERT(std::fabs(byAngles[1] - byMatrices[1]) < 2e-3 * std::max(1.0, std::fabs(byAngles[1])));
}

RC_GTEST_PROP(CameraPropertyTest, ThePickRayRunsThroughWhatIsSeenThere, ())
{
    const Camera camera = *anyCamera();
    const float aspect = *rc::gen::element(0.5F, 1.0F, 16.0F / 9.0F);
    const float x = *floatUpTo(1.0F);
    const float y = *floatUpTo(1.0F);

    const Ray ray = camera.pickRay(x, y, aspect);

    RC_ASSERT(std::fabs(ray.direction.length() - 1.0F) < 1e-5F);
    for (const float distance : {5.0F, 60.0F})
    {
        const Exact place = seen(camera, ray.origin + ray.direction * distance, aspect);
        RC_ASSERT(std::fabs(place[0] - x) < 1e-3);
        RC_ASSERT(std::fabs(place[1] - y) < 1e-3);
        RC_ASSERT(place[2] > 0.0);
    }
}

TEST(CameraTest, LooksAlongTheThirdAxisUntilItIsPlaced)
{
    const Camera camera;
    EXPECT_EQ(camera.worldMatrix(), Matrix::IDENTITY);
    EXPECT_EQ(camera.projection(), Camera::Projection::Perspective);
    const Ray ray = camera.pickRay(0.0F, 0.0F, 1.0F);
    EXPECT_EQ(ray.origin, Vector3::ZERO);
    EXPECT_EQ(ray.direction, Vector3(0.0F, 0.0F, 1.0F));
    EXPECT_GT(camera.pickRay(1.0F, 0.0F, 1.0F).direction.x, 0.0F) << "right is right";
    EXPECT_GT(camera.pickRay(0.0F, 1.0F, 1.0F).direction.y, 0.0F) << "up is up";
}

TEST(CameraTest, TheDepthRunsFromTheNearPlaneToTheFarPlane)
{
    Camera camera;
    camera.lookAt({1.0F, 2.0F, 3.0F}, {4.0F, 6.0F, 3.0F}, {0.0F, 0.0F, 1.0F});
    for (const bool isPerspective : {true, false})
    {
        if (isPerspective)
        {
            camera.setPerspective(std::numbers::pi_v<float> / 2.0F, 1.0F, 100.0F);
        }
        else
        {
            camera.setOrthographic(10.0F, 1.0F, 100.0F);
        }
        EXPECT_NEAR(projected(camera, fromCamera(camera, 0.0F, 0.0F, 1.0F), 1.0F)[2], -1.0, 1e-4);
        EXPECT_NEAR(projected(camera, fromCamera(camera, 0.0F, 0.0F, 100.0F), 1.0F)[2], 1.0, 1e-4);
        const double middle = projected(camera, fromCamera(camera, 0.0F, 0.0F, 50.0F), 1.0F)[2];
        const double expected = isPerspective ? (101.0 - 200.0 / 50.0) / 99.0 : (50.0 - 50.5) / 49.5;
        EXPECT_NEAR(middle, expected, 1e-4);
    }
    EXPECT_EQ(camera.orthographicHeight(), 10.0F);
    EXPECT_EQ(camera.nearPlane(), 1.0F);
    EXPECT_EQ(camera.farPlane(), 100.0F);
}

TEST(CameraTest, AnUpwardsAlongTheViewIsReplaced)
{
    for (const Vector3& direction : {Vector3(0.0F, 5.0F, 0.0F), Vector3(0.0F, -5.0F, 0.0F),
                                     Vector3(0.0F, 0.0F, 5.0F), Vector3(5.0F, 0.0F, 0.0F)})
    {
        for (const Vector3& up : {direction, -direction, Vector3::ZERO})
        {
            Camera camera;
            camera.lookAt(Vector3::ZERO, direction, up);
            EXPECT_EQ(camera.worldMatrix().row(2), direction.normalised());
            Matrix inverse = camera.worldMatrix();
            EXPECT_TRUE(inverse.invert());
            EXPECT_TRUE(almostEqual(camera.worldMatrix().row(0).crossProduct(camera.worldMatrix().row(1)),
                                    direction.normalised(), 1e-6F));
        }
    }
}

TEST(CameraTest, WithNowhereToLookItIsMovedOnly)
{
    Camera camera;
    camera.lookAt(Vector3::ZERO, {1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F});
    Matrix expected = camera.worldMatrix();
    expected.m[3][0] = 7.0F;

    camera.lookAt({7.0F, 0.0F, 0.0F}, {7.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F});

    EXPECT_EQ(camera.worldMatrix(), expected);
}

TEST(CameraTest, AWorldWithoutAnInverseIsSeenFromTheOrigin)
{
    Camera camera;
    camera.setWorldMatrix(Matrix());
    EXPECT_EQ(camera.viewMatrix(), Matrix::IDENTITY);
}

TEST(RenderSystemTest, HasOneSceneCameraForTheProcess)
{
    Camera& camera = RenderSystem::instance().sceneCamera();
    const Matrix before = camera.worldMatrix();
    Matrix moved;
    moved.setTranslate({1.0F, 2.0F, 3.0F});
    camera.setWorldMatrix(moved);
    EXPECT_EQ(RenderSystem::instance().sceneCamera().worldMatrix(), moved);
    camera.setWorldMatrix(before);
}

} // namespace
