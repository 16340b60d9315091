#include "editor/curve/position_text.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace
{

constexpr std::size_t LONGEST_NUMBER = 32; // "-2.2250738585072014e-308" has 24 characters

double toDouble(float value)
{
    std::array<char, LONGEST_NUMBER> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    double decimal = 0;
    static_cast<void>(std::from_chars(text.data(), end, decimal));
    // Rounding twice may end at the neighbour: the float's own value is right, if longer.
    return error == std::errc() && static_cast<float>(decimal) == value ? decimal
                                                                        : static_cast<double>(value);
}

float toFloat(double value) noexcept
{
    constexpr auto LARGEST = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<float>(std::clamp(value, -LARGEST, LARGEST));
}

} // namespace

std::optional<Position> parsePosition(std::string_view text)
{
    const auto skipBlanks = [&text]
    { text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size())); };
    Position position{};
    for (double& coordinate : position)
    {
        skipBlanks();
        const auto [next, error] = std::from_chars(text.data(), text.data() + text.size(), coordinate);
        text.remove_prefix(static_cast<std::size_t>(next - text.data()));
        if (error != std::errc() || !(text.empty() || text.front() == ' ' || text.front() == '\t'))
        {
            return std::nullopt;
        }
    }
    skipBlanks();
    return text.empty() ? std::optional(position) : std::nullopt;
}

std::string formatPosition(const Position& position)
{
    std::string text;
    for (const double coordinate : position)
    {
        std::array<char, LONGEST_NUMBER> number{};
        const auto result = std::to_chars(number.data(), number.data() + number.size(), coordinate);
        text.append(text.empty() ? "" : " ").append(number.data(), result.ptr);
    }
    return text;
}

Position toPosition(const Kodo::Vector3& vector)
{
    return {toDouble(vector.x), toDouble(vector.y), toDouble(vector.z)};
}

Kodo::Vector3 toVector(const Position& position) noexcept
{
    return {toFloat(position[0]), toFloat(position[1]), toFloat(position[2])};
}
