#include "editor/level/track_curve.hpp"

#include "editor/files/file_error.hpp"
#include "editor/level/gpx_track.hpp"
#include "editor/level/level_file.hpp"

#include <string>

namespace fs = std::filesystem;

namespace
{

std::string curveNameOf(const fs::path& file)
{
    std::string name = displayName(file.stem());
    for (char& c : name)
    {
        if (!isCurveName(std::string{'_', c}))
        {
            c = '_';
        }
    }
    return isCurveName(name) ? name : "_" + name;
}

} // namespace

Curve readTrackCurve(const fs::path& file)
{
    Curve curve;
    curve.name = curveNameOf(file);
    curve.points = readGpxTrack(file, TrackOrigin::Middle);
    return curve;
}

LevelData readDocument(const fs::path& file)
{
    if (!isTrackFile(file))
    {
        return readLevelFile(file);
    }
    LevelData level;
    level.curves.push_back(readTrackCurve(file));
    return level;
}
