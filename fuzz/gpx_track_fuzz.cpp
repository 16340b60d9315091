// Any bytes are a track of finite points or a clear error.

#include "editor/files/file_error.hpp"
#include "editor/level/gpx_track.hpp"
#include "fuzz/check.hpp"

#include <cmath>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try
    {
        const std::vector<Position> track = parseGpxTrack(text, "f");
        FUZZ_CHECK(!track.empty());
        for (const Position& point : track)
        {
            FUZZ_CHECK(std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]));
        }
    }
    catch (const FileError& error)
    {
        FUZZ_CHECK(std::string_view(error.what()).starts_with("f:"));
    }
    return 0;
}
