// Points inserted into curves of real shape: recorded tracks and coastlines, read as an editor reads tracks.

#include "editor/level/gpx_track.hpp"
#include "tests/support/insertion_oracle.hpp"
#include "tests/support/random_seed.hpp"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace
{

using Random = std::mt19937;

/// Islands and shores, one "longitude latitude" a line, an empty line between two.
constexpr const char* COASTLINES = "/usr/share/doc/gnuplot/examples/world.dat";

std::unique_ptr<PolylineCurve> curveAlong(const std::vector<Position>& track)
{
    std::vector<Kodo::Vector3> points;
    for (const Position& position : track)
    {
        points.emplace_back(static_cast<float>(position[0]), static_cast<float>(position[1]),
                            static_cast<float>(position[2]));
    }
    return std::make_unique<PolylineCurve>(points, 5.0F);
}

/// The coastlines as GPX tracks.
std::vector<std::string> coastlineTracks(std::istream& file)
{
    std::vector<std::string> tracks;
    std::string points;
    const auto finish = [&]
    {
        if (!points.empty())
        {
            tracks.push_back("<gpx><trk><trkseg>" + points + "</trkseg></trk></gpx>");
            points.clear();
        }
    };
    for (std::string line; std::getline(file, line);)
    {
        const std::size_t start = line.find_first_not_of(" \t\r");
        if (start == std::string::npos)
        {
            finish();
        }
        else if (line[start] != '#')
        {
            double longitude = 0;
            std::string latitude;
            std::istringstream(line) >> longitude >> latitude;
            // Shores that cross the date line go on beyond 180 degrees, which a track must not.
            points += "<trkpt lon='" + std::to_string(std::remainder(longitude, 360.0)) + "' lat='" +
                      latitude + "'/>";
        }
    }
    finish();
    return tracks;
}

} // namespace

TEST(TrackInsertionTest, TakesTheNearestSampleOfTheSampleTracks)
{
    Random random(static_cast<std::uint32_t>(randomSeed()));
    std::vector<InsertionOracle::Curve> curves;
    for (const auto& entry : std::filesystem::directory_iterator(TERN_SAMPLES_DIR))
    {
        if (entry.path().extension() == ".gpx")
        {
            curves.push_back({curveAlong(readGpxTrack(entry.path()))});
        }
    }
    ASSERT_FALSE(curves.empty());
    InsertionOracle scene(std::move(curves));
    for (int i = 0; i < 500; ++i)
    {
        const std::size_t view = random() % scene.views.size();
        ASSERT_TRUE(scene.insertsRightly(rayNear(scene.samplesOf(view), 30.0F, random)));
    }
}

TEST(TrackInsertionTest, TakesTheNearestSampleOfAllCoastlinesOfTheWorld)
{
    std::ifstream file(COASTLINES);
    if (!file)
    {
        GTEST_SKIP() << COASTLINES << " of the package gnuplot-doc is not installed";
    }
    Random random(static_cast<std::uint32_t>(randomSeed()));
    std::vector<InsertionOracle::Curve> curves;
    for (const std::string& track : coastlineTracks(file))
    {
        // Every track starts at zero; half of them are laid on top of one another as they are.
        Kodo::Matrix origin = Kodo::Matrix::IDENTITY;
        if (curves.size() % 2 == 1)
        {
            origin = Kodo::Matrix::constructTransformationMatrix(
                {0, 0, 1e5F * static_cast<float>(curves.size())},
                Kodo::Quaternion::fromAngleAxis(static_cast<float>(curves.size()), {0, 1, 0}), {1, 1, -0.5F});
        }
        curves.push_back({curveAlong(parseGpxTrack(track, COASTLINES)), origin});
    }
    ASSERT_GT(curves.size(), 100U);
    InsertionOracle scene(std::move(curves));
    for (int i = 0; i < 300; ++i)
    {
        const std::size_t view = random() % scene.views.size();
        ASSERT_TRUE(scene.insertsRightly(rayNear(scene.samplesOf(view), 1e5F, random))) << i;
    }
}
