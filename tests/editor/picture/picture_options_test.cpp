#include "editor/picture/picture_options.hpp"

#include "editor/picture/picture_camera.hpp"
#include "tests/support/property.hpp"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <stdexcept>

using Kodo::Vector3;
using Kodo::Render::Camera;

namespace
{

std::string complaintAbout(const std::vector<std::string>& words)
{
    try
    {
        parseCamera(words);
    }
    catch (const std::invalid_argument& error)
    {
        return error.what();
    }
    return {};
}

/// Where a point is in the picture, each axis -1 to 1 and the depth too.
Vector3 placeInPicture(const Camera& camera, const Vector3& point, float aspect)
{
    const Vector3 seen = camera.viewMatrix().applyPoint(point);
    const Kodo::Matrix projection = camera.projectionMatrix(aspect);
    const float w = seen.z * projection.m[2][3] + projection.m[3][3];
    return {seen.x * projection.m[0][0] / w, seen.y * projection.m[1][1] / w,
            (seen.z * projection.m[2][2] + projection.m[3][2]) / w};
}

TEST(PictureOptionsTest, ReadsSizes)
{
    EXPECT_EQ(parsePictureSize("1280x720"), (PictureSize{1280, 720}));
    EXPECT_EQ(parsePictureSize("1x8192"), (PictureSize{1, 8192}));
    for (const char* const wrong : {"", "x", "1280", "0x1", "1x0", "8193x1", "1x8193", "-1x1", "1280X720",
                                    "10x10x10", " 10x10", "10x10 ", "1e2x10", "99999999999999999999x1"})
    {
        EXPECT_THROW(parsePictureSize(wrong), std::invalid_argument) << wrong;
    }
}

TEST(PictureOptionsTest, ReadsCameras)
{
    EXPECT_EQ(parseCamera({}), CameraOption());
    const CameraOption camera = parseCamera({"eye=1,-2.5,3e2", "at=0,0,0", "fov=60"});
    EXPECT_EQ(camera.place, (CameraOption::Place{{1.0F, -2.5F, 300.0F}, {0.0F, 0.0F, 0.0F}}));
    EXPECT_EQ(camera.fieldOfView, 60.0F);
    EXPECT_FALSE(camera.isOrthographic);
    EXPECT_TRUE(parseCamera({"ortho=fit"}).isOrthographic);
    EXPECT_EQ(parseCamera({"ortho=fit"}).height, std::nullopt);
    EXPECT_EQ(parseCamera({"ortho=40"}).height, 40.0F);
}

TEST(PictureOptionsTest, SaysWhichWordOfACameraIsWrong)
{
    EXPECT_EQ(complaintAbout({"eye=1,2", "at=0,0,0"}),
              "--camera eye=1,2: three numbers are wanted, as 1,2.5,-3");
    EXPECT_EQ(complaintAbout({"fov=0"}), "--camera fov=0: a number from 1 to 170 is wanted");
    EXPECT_EQ(complaintAbout({"zoom=2"}), "--camera zoom=2: eye=x,y,z, at=x,y,z, fov=N or ortho=N is wanted");
    EXPECT_EQ(complaintAbout({"fov=50", "fov=50"}), "--camera fov=50: fov is given twice");
    EXPECT_EQ(complaintAbout({"eye=1,2,3"}), "--camera: eye and at go together");
    EXPECT_EQ(complaintAbout({"eye=1,2,3", "at=1,2,3"}), "--camera: eye and at are the same place");
    EXPECT_EQ(complaintAbout({"fov=50", "ortho=4"}), "--camera: fov and ortho exclude each other");
    for (const char* const wrong :
         {"", "eye", "eye=", "eye=1,2,3,4", "eye=1,2,nan", "eye=1,,3", "at=1,2,inf", "fov=171", "fov=x",
          "fov=", "ortho=0", "ortho=-1", "ortho=1000001", "ortho=nan", "ortho", "=1", "eye=1, 2,3"})
    {
        EXPECT_NE(complaintAbout({wrong}), "") << wrong;
    }
}

TEST(PictureOptionsTest, APlacedCameraStandsAndLooksAsItWasTold)
{
    const Camera camera = placeCamera(parseCamera({"eye=10,5,-20", "at=10,5,0", "fov=90"}), {}, 1.5F);
    EXPECT_EQ(camera.worldMatrix().translation(), Vector3(10.0F, 5.0F, -20.0F));
    EXPECT_TRUE(Kodo::almostEqual(camera.worldMatrix().row(2), Vector3(0.0F, 0.0F, 1.0F), 1e-6F));
    EXPECT_NEAR(camera.verticalFieldOfView(), std::acos(0.0F), 1e-6F);
    const Camera flat = placeCamera(parseCamera({"eye=10,5,-20", "at=10,5,0", "ortho=40"}), {}, 1.5F);
    EXPECT_EQ(flat.projection(), Camera::Projection::Orthographic);
    EXPECT_EQ(flat.orthographicHeight(), 40.0F);
}

RC_GTEST_PROP(PictureOptionsProperty, SeesAllOfAnyLevelAndWastesLittle, ())
{
    const auto coordinate =
        rc::gen::map(rc::gen::inRange(-30000, 30000), [](int i) { return static_cast<float>(i) / 10.0F; });
    SceneBounds bounds;
    for (const auto& place :
         *rc::gen::nonEmpty(rc::gen::container<std::vector<std::tuple<float, float, float>>>(
             rc::gen::tuple(coordinate, coordinate, coordinate))))
    {
        bounds.include({std::get<0>(place), std::get<1>(place), std::get<2>(place)});
    }
    const bool isOrthographic = *rc::gen::arbitrary<bool>();
    const float aspect = *rc::gen::element(0.5F, 1.0F, 16.0F / 9.0F, 4.0F);
    const Camera camera = placeCamera(parseCamera({isOrthographic ? "ortho=fit" : "fov=50"}), bounds, aspect);
    float widest = 0.0F;
    for (const Vector3& point : bounds.points())
    {
        const Vector3 place = placeInPicture(camera, point, aspect);
        RC_ASSERT(std::fabs(place.x) <= 1.0F);
        RC_ASSERT(std::fabs(place.y) <= 1.0F);
        RC_ASSERT(std::fabs(place.z) <= 1.0F);
        widest = std::max({widest, std::fabs(place.x), std::fabs(place.y)});
    }
    RC_ASSERT(bounds.radius() < 10.0F || bounds.points().size() < 3 || widest > 0.5F);
}

} // namespace
