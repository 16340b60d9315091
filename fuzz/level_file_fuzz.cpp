// Any bytes are a level or a clear error; a level survives being saved and read, and being opened.

#include "editor/files/file_error.hpp"
#include "editor/level/level_file.hpp"
#include "fuzz/check.hpp"

#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try
    {
        const LevelData level = parseLevel(text, "f");
        FUZZ_CHECK(parseLevel(formatLevel(level), "g") == level);
        for (const Curve& curve : level.curves)
        {
            FUZZ_CHECK(curve.handles.size() == (curve.kind == CurveKind::Bezier ? curve.points.size() : 0));
            FUZZ_CHECK(CurveDocument::make(curve)->curve() == curve);
        }
    }
    catch (const FileError& error)
    {
        FUZZ_CHECK(std::string_view(error.what()).starts_with("f:"));
    }
    return 0;
}
