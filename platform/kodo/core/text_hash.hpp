#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Kodo
{

/// A hash of short texts, eight bytes a step. For tables within the process: it differs between systems.
inline std::uint64_t hashText(std::string_view text) noexcept
{
    constexpr std::uint64_t FACTOR = 0x9E3779B97F4A7C15U;
    const auto mix = [](std::uint64_t value)
    {
        value *= FACTOR;
        return value ^ (value >> 32U);
    };
    std::uint64_t hash = mix(text.size());
    std::uint64_t word = 0;
    for (; text.size() >= sizeof word; text.remove_prefix(sizeof word))
    {
        std::memcpy(&word, text.data(), sizeof word);
        hash = mix(hash ^ word);
    }
    word = 0;
    for (const char unit : text)
    {
        word = (word << 8U) | static_cast<unsigned char>(unit);
    }
    return mix(hash ^ word);
}

/// Lets a map of strings be asked with views.
struct TextHash
{
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept
    {
        return static_cast<std::size_t>(hashText(text));
    }
};

} // namespace Kodo
