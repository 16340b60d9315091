#include "editor/level/gpx_track.hpp"

#include "editor/files/file_error.hpp"
#include "editor/level/track_curve.hpp"
#include "tests/support/temporary_directory.hpp"

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

/// The reference: each point by its own angle from the middle, in the unit sphere's arcs.
TEST(GpxTrackTest, MayBeCountedFromItsMiddleAndTheSea)
{
    const std::vector<Position> points =
        readGpxTrack(TERN_SAMPLES_DIR "/coast_road.gpx", TrackOrigin::Middle);
    ASSERT_EQ(points.size(), 7U);
    // South 54.1, north 54.1009; west 10.8, east 10.80455.
    const double middle = 54.10045 * std::numbers::pi / 180;
    EXPECT_NEAR(points[0][0], -0.002275 * METRES_PER_DEGREE * std::cos(middle), 1e-6);
    EXPECT_NEAR(points[0][2], -0.00045 * METRES_PER_DEGREE, 1e-6);
    EXPECT_EQ(points[0][1], 4.0);
    EXPECT_NEAR(points[6][0], -points[0][0], 1e-6);
    EXPECT_NEAR(points[3][2], 0.00045 * METRES_PER_DEGREE, 1e-6);
    EXPECT_EQ(points[4][1], 6.3);
}

TEST(GpxTrackTest, SegmentsAndTracksFollowOneAnother)
{
    const std::vector<Position> points = parseGpxTrack(
        "<gpx><wpt lat='9' lon='9'/><trk><trkseg><trkpt lat='0' lon='0'/></trkseg><trkseg/></trk>"
        "<rte><rtept lat='9' lon='9'/></rte><trk><trkseg><trkpt lat='0' lon='1'/></trkseg></trk></gpx>",
        "a");
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[0], (Position{0, 0, 0}));
    EXPECT_NEAR(points[1][0], METRES_PER_DEGREE, 1e-6);
}

TEST(GpxTrackTest, ElementsMayHaveThePrefixOfTheirNamespaceAndThoseOfOthersDoNotCount)
{
    const std::vector<Position> points = parseGpxTrack(
        "<?xml version='1.0'?><!-- a --><g:gpx xmlns:g='http://www.topografix.com/GPX/1/1' xmlns:x='urn:x'>"
        "<x:trk/><g:trk><g:trkseg><x:trkpt/><g:trkpt lat='0' lon='0'/>"
        "<g:trkpt lat='0' lon='1'><x:ele>deep</x:ele><g:ele>7</g:ele></g:trkpt></g:trkseg></g:trk></g:gpx>",
        "a");
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[1][1], 7.0);
    EXPECT_EQ(complaint("<g:kml/>"), "a.gpx:1:2: no GPX: the root element is not \"gpx\"");
}

TEST(GpxTrackTest, ANumberMayHaveAPlusAndBlanksAroundIt)
{
    const std::vector<Position> points = parseGpxTrack(
        track("<trkpt lat='+0' lon=' +1.0 '><ele>\n+3\n</ele></trkpt><trkpt lat='-0' lon='2'/>"), "a",
        TrackOrigin::Middle);
    EXPECT_NEAR(points[0][0], -METRES_PER_DEGREE / 2, 1e-6);
    EXPECT_EQ(points[0][1], 3.0);
    for (const char* const number : {"+", "+-1", "++1", "1 2", "0x1", "1,5", "inf", "-180.0000001", "1e999"})
    {
        EXPECT_EQ(complaint(track("<trkpt lat='1' lon='" + std::string(number) + "'/>")),
                  "a.gpx:1:20: a track point's longitude is wrong: \"" + std::string(number) + "\"");
    }
}

TEST(GpxTrackTest, ATrackOfOnePointIsThatPoint)
{
    EXPECT_EQ(parseGpxTrack(track("<trkpt lat='-90' lon='180'><ele>5</ele></trkpt>"), "a"),
              (std::vector<Position>{{0, 0, 0}}));
    EXPECT_EQ(
        parseGpxTrack(track("<trkpt lat='90' lon='-180'><ele>5</ele></trkpt>"), "a", TrackOrigin::Middle),
        (std::vector<Position>{{0, 5, 0}}));
}

TEST(GpxTrackTest, DistancesAreThoseOnTheSphere)
{
    const std::vector<Position> points =
        readGpxTrack(TERN_SAMPLES_DIR "/coast_road.gpx", TrackOrigin::Middle);
    // From the first point to the second by the haversine of the great circle.
    const auto radians = [](double degrees) { return degrees * std::numbers::pi / 180; };
    const double north = std::sin(radians(0.0004) / 2);
    const double east = std::sin(radians(0.0006) / 2);
    const double haversine =
        north * north + std::cos(radians(54.1)) * std::cos(radians(54.1004)) * east * east;
    const double expected = 2 * 6371008.8 * std::asin(std::sqrt(haversine));
    EXPECT_NEAR(std::hypot(points[1][0] - points[0][0], points[1][2] - points[0][2]), expected,
                expected * 1e-5);
}

TEST(GpxTrackTest, TheMiddleOfATrackAcrossTheDateLineLiesOnIt)
{
    const std::vector<Position> points = parseGpxTrack(
        track("<trkpt lat='0' lon='179.5'/><trkpt lat='0' lon='-178.5'/>"), "a", TrackOrigin::Middle);
    EXPECT_NEAR(points[0][0], -METRES_PER_DEGREE, 1e-6);
    EXPECT_NEAR(points[1][0], METRES_PER_DEGREE, 1e-6);
}

TEST(TrackCurveTest, ATrackIsACurveNamedLikeItsFile)
{
    const Curve curve = readTrackCurve(TERN_SAMPLES_DIR "/coast_road.gpx");
    EXPECT_EQ(curve.name, "coast_road");
    EXPECT_EQ(curve.kind, CurveKind::Linear);
    EXPECT_FALSE(curve.closed);
    EXPECT_EQ(curve.points, readGpxTrack(TERN_SAMPLES_DIR "/coast_road.gpx", TrackOrigin::Middle));
    EXPECT_EQ(readDocument(TERN_SAMPLES_DIR "/coast_road.gpx").curves, (std::vector<Curve>{curve}));
    EXPECT_EQ(readDocument(TERN_SAMPLES_DIR "/harbour.level").items.size(), 6U);
    const TemporaryDirectory directory;
    EXPECT_EQ(readTrackCurve(directory.write("1st run.gpx", track("<trkpt lat='0' lon='1'/>"))).name,
              "_1st_run");
    EXPECT_EQ(readDocument(directory.write("TRACK.GPX", track("<trkpt lat='0' lon='1'/>"))).curves[0].name,
              "TRACK");
    EXPECT_FALSE(isTrackFile("gpx"));
    EXPECT_FALSE(isTrackFile("a.gpx.level"));
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
