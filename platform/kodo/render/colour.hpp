#pragma once

#include <cstdint>

namespace Kodo::Render
{

/// A colour packed into 32 bits as 0xAARRGGBB.
class Colour32Bit
{
public:
    constexpr Colour32Bit() noexcept = default;
    constexpr explicit Colour32Bit(std::uint32_t argb) noexcept : m_argb(argb) {}

    constexpr std::uint32_t argb() const noexcept { return m_argb; }
    constexpr std::uint8_t r() const noexcept { return byteAt(16); }
    constexpr std::uint8_t g() const noexcept { return byteAt(8); }
    constexpr std::uint8_t b() const noexcept { return byteAt(0); }
    constexpr std::uint8_t a() const noexcept { return byteAt(24); }

    friend constexpr bool operator==(Colour32Bit, Colour32Bit) noexcept = default;

private:
    constexpr std::uint8_t byteAt(unsigned shift) const noexcept
    {
        return static_cast<std::uint8_t>((m_argb >> shift) & 0xFFU);
    }

    std::uint32_t m_argb = 0;
};

/// A colour of four floats, each nominally 0 to 1; nothing is clamped. Transparent black by default.
class ColourRGBAFloat
{
public:
    constexpr ColourRGBAFloat() noexcept = default;
    constexpr ColourRGBAFloat(float r, float g, float b, float a) noexcept : m_r(r), m_g(g), m_b(b), m_a(a) {}
    /// Maps 0 to 0 and 255 to exactly 1.
    constexpr ColourRGBAFloat(Colour32Bit packed) noexcept
        : m_r(scaled(packed.r())), m_g(scaled(packed.g())), m_b(scaled(packed.b())), m_a(scaled(packed.a()))
    {
    }

    constexpr float r() const noexcept { return m_r; }
    constexpr float g() const noexcept { return m_g; }
    constexpr float b() const noexcept { return m_b; }
    constexpr float a() const noexcept { return m_a; }

    friend constexpr bool operator==(const ColourRGBAFloat&, const ColourRGBAFloat&) noexcept = default;

private:
    static constexpr float scaled(std::uint8_t component) noexcept
    {
        return static_cast<float>(component) / 255.0F;
    }

    float m_r = 0.0F;
    float m_g = 0.0F;
    float m_b = 0.0F;
    float m_a = 0.0F;
};

} // namespace Kodo::Render
