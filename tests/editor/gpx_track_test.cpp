#include "editor/level/gpx_track.hpp"

#include "editor/files/file_error.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>

namespace
{

constexpr double METRES_PER_DEGREE = 6371008.8 * std::numbers::pi / 180;

std::string track(const std::string& points)
{
    return "<gpx><trk><trkseg>" + points + "</trkseg></trk></gpx>";
}

std::string complaint(std::string_view text)
{
    try
    {
        parseGpxTrack(text, "a.gpx");
    }
    catch (const FileError& error)
    {
        return error.what();
    }
    return "no complaint";
}

TEST(GpxTrackTest, ReadsEverySegmentOfTheSample)
{
    const std::vector<Position> points = readGpxTrack(TERN_SAMPLES_DIR "/coast_road.gpx");
    ASSERT_EQ(points.size(), 7U);
    EXPECT_EQ(points[0], (Position{0, 0, 0}));
    EXPECT_NEAR(points[6][0], 0.00455 * METRES_PER_DEGREE * std::cos(54.1 * std::numbers::pi / 180), 1e-6);
    EXPECT_NEAR(points[6][1], 1.0, 1e-9);
    EXPECT_NEAR(points[6][2], 0.0002 * METRES_PER_DEGREE, 1e-6);
}

TEST(GpxTrackTest, OneDegreeAtTheEquatorIsTheSameBothWays)
{
    const std::vector<Position> points =
        parseGpxTrack(track("<trkpt lat='0' lon='0'/><trkpt lat='0' lon='1'/><trkpt lat='1' lon='0'><ele> "
                            "7.5 </ele></trkpt>"),
                      "a");
    EXPECT_NEAR(points[1][0], METRES_PER_DEGREE, 1e-6);
    EXPECT_NEAR(points[2][2], METRES_PER_DEGREE, 1e-6);
    EXPECT_EQ(points[2][1], 7.5);
}

TEST(GpxTrackTest, ATrackMayCrossTheDateLine)
{
    const std::vector<Position> points =
        parseGpxTrack(track("<trkpt lat='0' lon='179.5'/><trkpt lat='0' lon='-179.5'/>"), "a");
    EXPECT_NEAR(points[1][0], METRES_PER_DEGREE, 1e-6);
}

TEST(GpxTrackTest, SaysWhatIsWrongAndWhere)
{
    EXPECT_TRUE(complaint("<gpx>\n<trk>").starts_with("a.gpx:2:")) << complaint("<gpx>\n<trk>");
    EXPECT_TRUE(complaint("").starts_with("a.gpx:1:1: ")) << complaint("");
    EXPECT_EQ(complaint("<kml/>"), "a.gpx:1:2: no GPX: the root element is not \"gpx\"");
    EXPECT_EQ(complaint("<gpx/>"), "a.gpx:1:2: the file has no track point");
    EXPECT_EQ(complaint(track("\n <trkpt lat='91' lon='0'/>")),
              "a.gpx:2:3: a track point's latitude is wrong: \"91\"");
    EXPECT_EQ(complaint(track("<trkpt lat='1'/>")), "a.gpx:1:20: a track point's longitude is wrong: \"\"");
    EXPECT_EQ(complaint(track("<trkpt lat='1' lon='nan'/>")),
              "a.gpx:1:20: a track point's longitude is wrong: \"nan\"");
    EXPECT_EQ(complaint(track("<trkpt lat='1' lon='2'><ele>3m</ele></trkpt>")),
              "a.gpx:1:20: a track point's elevation is wrong: \"3m\"");
}

} // namespace
