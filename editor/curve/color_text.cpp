#include "editor/curve/color_text.hpp"

#include <charconv>
#include <cstdint>

std::optional<Kodo::Render::Colour32Bit> parseColor(std::string_view text)
{
    constexpr std::size_t DIGITS = 6;
    std::uint32_t rgb = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rgb, 16);
    if (text.size() != DIGITS || error != std::errc() || end != text.data() + text.size())
    {
        return std::nullopt;
    }
    return Kodo::Render::Colour32Bit(0xFF000000U | rgb);
}

std::string formatColor(Kodo::Render::Colour32Bit color)
{
    constexpr std::string_view DIGITS = "0123456789ABCDEF";
    std::string text;
    for (unsigned shift = 24; shift > 0; shift -= 4)
    {
        text += DIGITS[(color.argb() >> (shift - 4)) & 0xFU];
    }
    return text;
}
