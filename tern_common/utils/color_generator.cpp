#include "tern_common/utils/color_generator.hpp"

#include "kodo/core/kodo_random.hpp"
#include "tern_common/utils/color_hue.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace
{

using Color = Kodo::Render::ColourRGBAFloat;

constexpr float MIN_HUE_DISTANCE = 0.5235988F; // pi / 6
constexpr std::int32_t ATTEMPTS_BEFORE_RESET = 10000;

std::array<float, 3> toBytes(float r, float g, float b)
{
    const auto scaled = [](float component) { return std::clamp(component * 255.0F, 0.0F, 255.0F); };
    return {scaled(r), scaled(g), scaled(b)};
}

/// Hue in degrees, saturation and value in percent; red, green and blue in 0 to 255.
std::array<float, 3> hsvToRgb(float hue, float saturation, float value)
{
    const float x = std::clamp(hue * (1.0F / 360.0F), 0.0F, 1.0F) * 6.0F;
    const int i = static_cast<int>(x); // x is not negative: the same as its floor, and no call
    const float f = x - static_cast<float>(i);
    const float s = std::clamp(saturation * 0.01F, 0.0F, 1.0F);
    const float v = std::clamp(value * 0.01F, 0.0F, 1.0F);
    const float p = (1.0F - s) * v;
    const float q = (1.0F - f * s) * v;
    const float t = (1.0F - (1.0F - f) * s) * v;

    switch (i % 6)
    {
    case 0:
        return toBytes(v, t, p);
    case 1:
        return toBytes(q, v, p);
    case 2:
        return toBytes(p, v, t);
    case 3:
        return toBytes(p, q, v);
    case 4:
        return toBytes(t, p, v);
    default:
        return toBytes(v, p, q);
    }
}

Color drawCandidate(Kodo::KodoRandom& random)
{
    constexpr float TO_UNIT = 0.003921569F; // 1/255; takes 255 to exactly 1
    const float value = random(90.0F, 100.0F);
    const float hue = random(0.0F, 360.0F);
    const auto [r, g, b] = hsvToRgb(hue, 100.0F, value);
    return {r * TO_UNIT, g * TO_UNIT, b * TO_UNIT, 255.0F * TO_UNIT};
}

/// The hues of stored colours, computed once a call: tens of thousands of candidates may be compared with
/// them.
class StoredHues
{
public:
    StoredHues(const std::vector<Color>& banned, const std::vector<Color>& generated)
    {
        m_hues.reserve(banned.size() + generated.size());
        append(banned);
        m_banned = m_hues.size();
        append(generated);
    }

    void forgetGenerated() { m_hues.resize(m_banned); }

    bool isTooClose(const Color& candidate) const
    {
        const float hue = ColorHue::hueOf(candidate);
        return std::any_of(m_hues.begin(), m_hues.end(),
                           [hue](float stored)
                           { return ColorHue::distance(stored, hue) < MIN_HUE_DISTANCE; });
    }

private:
    void append(const std::vector<Color>& colors)
    {
        for (const Color& color : colors)
        {
            m_hues.push_back(ColorHue::hueOf(color));
        }
    }

    std::vector<float> m_hues;
    std::size_t m_banned = 0;
};

} // namespace

ColorGenerator::ColorGenerator() = default;
ColorGenerator::ColorGenerator(const ColorGenerator& other) = default;
ColorGenerator::ColorGenerator(ColorGenerator&& other) noexcept = default;
ColorGenerator& ColorGenerator::operator=(const ColorGenerator& other) = default;
ColorGenerator::~ColorGenerator() = default;

ColorGenerator& ColorGenerator::operator=(ColorGenerator&& other) noexcept
{
    if (this != &other)
    {
        m_generatedColors = std::exchange(other.m_generatedColors, {});
        m_bannedColors = std::exchange(other.m_bannedColors, {});
    }
    return *this;
}

Color ColorGenerator::operator()()
{
    Kodo::KodoRandom& random = Kodo::KodoRandom::instance();
    StoredHues stored(m_bannedColors, m_generatedColors);
    Color result = drawCandidate(random);
    for (std::int32_t rejected = 0; stored.isTooClose(result); result = drawCandidate(random))
    {
        // Exactly at the limit and never again in this call: the counter goes on, since without earlier
        // colours only bans reject, and those stay.
        if (rejected < ATTEMPTS_BEFORE_RESET && ++rejected == ATTEMPTS_BEFORE_RESET)
        {
            m_generatedColors.clear();
            stored.forgetGenerated();
        }
    }
    m_generatedColors.push_back(result);
    return result;
}

void ColorGenerator::banColor(const Color& colour)
{
    m_bannedColors.push_back(colour);
}
