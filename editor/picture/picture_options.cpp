#include "editor/picture/picture_options.hpp"

#include <charconv>
#include <cmath>
#include <set>
#include <stdexcept>
#include <system_error>

namespace
{

/// All of the text as a number; nothing where it is none, or none that is finite.
template <class Number>
std::optional<Number> numberIn(std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
    {
        return std::nullopt;
    }
    if constexpr (std::is_floating_point_v<Number>)
    {
        if (!std::isfinite(number))
        {
            return std::nullopt;
        }
    }
    return number;
}

std::optional<Kodo::Vector3> vectorIn(std::string_view text)
{
    const std::size_t first = text.find(',');
    const std::size_t second = first == std::string_view::npos ? first : text.find(',', first + 1);
    if (second == std::string_view::npos)
    {
        return std::nullopt;
    }
    const auto x = numberIn<float>(text.substr(0, first));
    const auto y = numberIn<float>(text.substr(first + 1, second - first - 1));
    const auto z = numberIn<float>(text.substr(second + 1));
    return x && y && z ? std::optional(Kodo::Vector3(*x, *y, *z)) : std::nullopt;
}

[[noreturn]] void refuse(const std::string& word, const std::string& why)
{
    throw std::invalid_argument("--camera " + word + ": " + why);
}

Kodo::Vector3 expectVector(const std::string& word, std::string_view value)
{
    const std::optional<Kodo::Vector3> vector = vectorIn(value);
    if (!vector)
    {
        refuse(word, "three numbers are wanted, as 1,2.5,-3");
    }
    return *vector;
}

float expectNumber(const std::string& word, std::string_view value, float least, float most)
{
    const std::optional<float> number = numberIn<float>(value);
    if (!number || *number < least || *number > most)
    {
        refuse(word, "a number from " + std::to_string(std::lround(least)) + " to " +
                         std::to_string(std::lround(most)) + " is wanted");
    }
    return *number;
}

/// The words read so far.
struct CameraWords
{
    std::optional<Kodo::Vector3> eye;
    std::optional<Kodo::Vector3> at;
    CameraOption option;
    std::set<std::string, std::less<>> keys;
};

void readHeight(CameraWords& words, const std::string& word, std::string_view value)
{
    constexpr float MOST_METRES = 1e6F;
    words.option.isOrthographic = true;
    if (value == "fit")
    {
        return;
    }
    const std::optional<float> height = numberIn<float>(value);
    if (!height || !(*height > 0.0F) || *height > MOST_METRES)
    {
        refuse(word, "metres above 0, to 1000000, or the word fit are wanted");
    }
    words.option.height = height;
}

void readWord(CameraWords& words, const std::string& word)
{
    const std::size_t equals = word.find('=');
    const std::string key = word.substr(0, equals);
    const std::string_view value =
        equals == std::string::npos ? std::string_view() : std::string_view(word).substr(equals + 1);
    if (!words.keys.insert(key).second)
    {
        refuse(word, key + " is given twice");
    }
    if (key == "eye")
    {
        words.eye = expectVector(word, value);
    }
    else if (key == "at")
    {
        words.at = expectVector(word, value);
    }
    else if (key == "fov")
    {
        words.option.fieldOfView = expectNumber(word, value, 1.0F, 170.0F);
    }
    else if (key == "ortho")
    {
        readHeight(words, word, value);
    }
    else
    {
        refuse(word, "eye=x,y,z, at=x,y,z, fov=N or ortho=N is wanted");
    }
}

} // namespace

PictureSize parsePictureSize(std::string_view text)
{
    const std::size_t cross = text.find('x');
    if (cross != std::string_view::npos)
    {
        const auto width = numberIn<std::size_t>(text.substr(0, cross));
        const auto height = numberIn<std::size_t>(text.substr(cross + 1));
        if (width && height && *width >= 1 && *height >= 1 && *width <= MAX_PICTURE_SIDE &&
            *height <= MAX_PICTURE_SIDE)
        {
            return {*width, *height};
        }
    }
    throw std::invalid_argument("--size takes WIDTHxHEIGHT, each 1 to " + std::to_string(MAX_PICTURE_SIDE) +
                                " pixels, as 1280x720: not \"" + std::string(text) + "\"");
}

CameraOption parseCamera(const std::vector<std::string>& words)
{
    CameraWords read;
    for (const std::string& word : words)
    {
        readWord(read, word);
    }
    if (read.eye.has_value() != read.at.has_value())
    {
        throw std::invalid_argument("--camera: eye and at go together");
    }
    if (read.option.fieldOfView && read.option.isOrthographic)
    {
        throw std::invalid_argument("--camera: fov and ortho exclude each other");
    }
    if (read.eye)
    {
        if (*read.eye == *read.at)
        {
            throw std::invalid_argument("--camera: eye and at are the same place");
        }
        read.option.place = CameraOption::Place{*read.eye, *read.at};
    }
    return read.option;
}
