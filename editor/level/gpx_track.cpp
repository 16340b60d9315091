#include "editor/level/gpx_track.hpp"

#include "editor/files/file_error.hpp"
#include "editor/search/ascii_case.hpp"

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

/// Without the white space of XML at both ends.
std::string_view withoutBlanks(std::string_view text)
{
    constexpr std::string_view BLANKS = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
    return text.substr(0, text.find_last_not_of(BLANKS) + 1);
}

/// The names of the elements that count, with the prefix of their namespace.
struct ElementNames
{
    explicit ElementNames(const std::string& prefix)
        : gpx(prefix + "gpx"), track(prefix + "trk"), segment(prefix + "trkseg"), point(prefix + "trkpt"),
          elevation(prefix + "ele")
    {
    }

    std::string gpx;
    std::string track;
    std::string segment;
    std::string point;
    std::string elevation;
};

/// Takes the track points out of a GPX document. Its elements may have a namespace's prefix, the root's;
/// those of other prefixes are foreign.
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
        const pugi::xml_node gpx = document.document_element();
        const std::string root = gpx.name();
        const ElementNames names(root.substr(0, root.find(':') + 1)); // no prefix where there is no colon
        if (root != names.gpx)
        {
            fail(gpx.offset_debug(), "no GPX: the root element is not \"gpx\"");
        }
        std::vector<GeoPoint> points;
        for (const pugi::xml_node track : gpx.children(names.track.c_str()))
        {
            for (const pugi::xml_node segment : track.children(names.segment.c_str()))
            {
                for (const pugi::xml_node point : segment.children(names.point.c_str()))
                {
                    points.push_back(readPoint(point, names));
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
        text = withoutBlanks(text);
        const bool hasPlus = text.starts_with('+') && !text.starts_with("+-"); // from_chars does not take it
        const std::string_view digits = text.substr(hasPlus ? 1 : 0);
        double value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error != std::errc() || end != digits.data() + digits.size() || !(std::abs(value) <= limit))
        {
            fail(node.offset_debug(),
                 std::string("a track point's ") + what + " is wrong: \"" + std::string(text) + "\"");
        }
        return value;
    }

    GeoPoint readPoint(const pugi::xml_node& node, const ElementNames& names) const
    {
        constexpr double HIGHEST = 1e6;
        GeoPoint point;
        point.latitude = readNumber(node, node.attribute("lat").value(), "latitude", 90);
        point.longitude = readNumber(node, node.attribute("lon").value(), "longitude", 180);
        if (const pugi::xml_node elevation = node.child(names.elevation.c_str()))
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
    return AsciiCase::equal(displayName(file.extension()), ".gpx");
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
