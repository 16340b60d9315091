#include "editor/level/gpx_track.hpp"

#include "editor/files/file_error.hpp"

#include <pugixml.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>
#include <string>

namespace fs = std::filesystem;

namespace
{

/// A point on the Earth: degrees and metres.
struct GeoPoint
{
    double latitude = 0;
    double longitude = 0;
    double elevation = 0;
};

class GpxReader
{
public:
    GpxReader(std::string_view text, const fs::path& file) : m_text(text), m_file(file) {}

    std::vector<GeoPoint> read() const
    {
        pugi::xml_document document;
        const pugi::xml_parse_result result = document.load_buffer(m_text.data(), m_text.size());
        if (!result)
        {
            fail(static_cast<std::size_t>(result.offset), std::string("not XML: ") + result.description());
        }
        const pugi::xml_node gpx = document.child("gpx");
        if (!gpx)
        {
            fail(document.document_element().offset_debug(), "no GPX: the root element is not \"gpx\"");
        }
        std::vector<GeoPoint> points;
        for (const pugi::xml_node track : gpx.children("trk"))
        {
            for (const pugi::xml_node segment : track.children("trkseg"))
            {
                for (const pugi::xml_node point : segment.children("trkpt"))
                {
                    points.push_back(readPoint(point));
                }
            }
        }
        if (points.empty())
        {
            fail(gpx.offset_debug(), "the file has no track point");
        }
        return points;
    }

private:
    [[noreturn]] void fail(std::ptrdiff_t offset, const std::string& text) const
    {
        fail(static_cast<std::size_t>(offset < 0 ? 0 : offset), text);
    }
    [[noreturn]] void fail(std::size_t offset, const std::string& text) const
    {
        throw FileError(m_file, positionAt(m_text, offset), text);
    }

    double readNumber(const pugi::xml_node& node, std::string_view text, const char* what, double limit) const
    {
        while (!text.empty() && std::string_view(" \t\r\n").find(text.front()) != std::string_view::npos)
        {
            text.remove_prefix(1);
        }
        while (!text.empty() && std::string_view(" \t\r\n").find(text.back()) != std::string_view::npos)
        {
            text.remove_suffix(1);
        }
        double value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size() || !(std::abs(value) <= limit))
        {
            fail(node.offset_debug(),
                 std::string("a track point's ") + what + " is wrong: \"" + std::string(text) + "\"");
        }
        return value;
    }

    GeoPoint readPoint(const pugi::xml_node& node) const
    {
        constexpr double HIGHEST = 1e6;
        GeoPoint point;
        point.latitude = readNumber(node, node.attribute("lat").value(), "latitude", 90);
        point.longitude = readNumber(node, node.attribute("lon").value(), "longitude", 180);
        if (const pugi::xml_node elevation = node.child("ele"))
        {
            point.elevation = readNumber(node, elevation.child_value(), "elevation", HIGHEST);
        }
        return point;
    }

    std::string_view m_text;
    const fs::path& m_file;
};

/// Degrees to the east of @p origin, the short way round: a track may cross the date line.
double eastOf(const GeoPoint& origin, const GeoPoint& point)
{
    const double eastward = point.longitude - origin.longitude;
    return eastward - 360 * std::round(eastward / 360);
}

GeoPoint originOf(const std::vector<GeoPoint>& track, TrackOrigin origin)
{
    const GeoPoint& first = track.front();
    if (origin == TrackOrigin::FirstPoint)
    {
        return first;
    }
    const auto [south, north] =
        std::minmax_element(track.begin(), track.end(),
                            [](const GeoPoint& a, const GeoPoint& b) { return a.latitude < b.latitude; });
    const auto [west, east] = std::minmax_element(track.begin(), track.end(),
                                                  [&first](const GeoPoint& a, const GeoPoint& b)
                                                  { return eastOf(first, a) < eastOf(first, b); });
    return {(south->latitude + north->latitude) / 2,
            first.longitude + (eastOf(first, *west) + eastOf(first, *east)) / 2, 0};
}

Position project(const GeoPoint& point, const GeoPoint& origin)
{
    constexpr double EARTH_RADIUS = 6371008.8;
    constexpr double RADIANS = std::numbers::pi / 180;
    return {EARTH_RADIUS * eastOf(origin, point) * RADIANS * std::cos(origin.latitude * RADIANS),
            point.elevation - origin.elevation, EARTH_RADIUS * (point.latitude - origin.latitude) * RADIANS};
}

} // namespace

bool isTrackFile(const fs::path& file)
{
    return file.extension() == ".gpx";
}

std::vector<Position> readGpxTrack(const fs::path& file, TrackOrigin origin)
{
    return parseGpxTrack(readWholeFile(file), file, origin);
}

std::vector<Position> parseGpxTrack(std::string_view text, const fs::path& file, TrackOrigin origin)
{
    const std::vector<GeoPoint> track = GpxReader(text, file).read();
    const GeoPoint middle = originOf(track, origin);
    std::vector<Position> positions;
    positions.reserve(track.size());
    for (const GeoPoint& point : track)
    {
        positions.push_back(project(point, middle));
    }
    return positions;
}
