#pragma once

#include <type_traits>

namespace qua
{

/// A set of the bits that the enumerators of @p E stand for. A plain value; converts from a single
/// enumerator.
template <class E>
    requires std::is_enum_v<E>
class Flags
{
public:
    using Bits = std::make_unsigned_t<std::underlying_type_t<E>>;

    constexpr Flags() noexcept = default;
    constexpr Flags(E flag) noexcept : m_bits(static_cast<Bits>(flag)) {}
    constexpr explicit Flags(Bits bits) noexcept : m_bits(bits) {}

    constexpr Bits bits() const noexcept { return m_bits; }
    constexpr bool empty() const noexcept { return m_bits == 0; }

    /// True when every bit of @p flags is set here. The empty set is contained in every set.
    constexpr bool contains(Flags flags) const noexcept { return (m_bits & flags.m_bits) == flags.m_bits; }

    constexpr Flags& operator|=(Flags other) noexcept { return *this = *this | other; }
    constexpr Flags& operator&=(Flags other) noexcept { return *this = *this & other; }

    friend constexpr Flags operator|(Flags a, Flags b) noexcept
    {
        return Flags(static_cast<Bits>(a.m_bits | b.m_bits));
    }
    friend constexpr Flags operator&(Flags a, Flags b) noexcept
    {
        return Flags(static_cast<Bits>(a.m_bits & b.m_bits));
    }
    friend constexpr bool operator==(Flags a, Flags b) noexcept = default;

private:
    Bits m_bits = 0;
};

} // namespace qua
