#pragma once

#include "editor/render/frame_buffer.hpp"
#include "kodo/math/vector3.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// From where a picture is taken. What is left out is chosen so that all of the level is seen.
struct CameraOption
{
    /// Where the camera stands and what it looks at.
    struct Place
    {
        Kodo::Vector3 eye;
        Kodo::Vector3 at;

        bool operator==(const Place&) const = default;
    };

    std::optional<Place> place;
    std::optional<float> fieldOfView; ///< from top to bottom, in degrees; not together with the next
    bool isOrthographic = false;
    std::optional<float> height; ///< of an orthographic view, in metres

    bool operator==(const CameraOption&) const = default;
};

/// Largest side of a picture, in pixels: it is drawn at twice its size.
constexpr std::size_t MAX_PICTURE_SIDE = 8192;

/// "1280x720". Throws std::invalid_argument, saying what a size looks like.
PictureSize parsePictureSize(std::string_view text);

/// Words of the form key=value, each at most once:
///
///     eye=x,y,z   where the camera stands, in metres; needs at
///     at=x,y,z    what it looks at; needs eye
///     fov=N       field of view from top to bottom, 1 to 170 degrees
///     ortho=N     no perspective: the view is N metres high; "ortho=fit" chooses N
///
/// Throws std::invalid_argument, saying which word is wrong and why.
CameraOption parseCamera(const std::vector<std::string>& words);
