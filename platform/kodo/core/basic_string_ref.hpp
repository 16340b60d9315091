#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>

namespace Kodo
{

/// Refers to text that someone else keeps: a parameter that takes literals, C strings and strings alike
/// without a copy. The text needs no NUL at its end and may hold some. As cheap to pass by value.
template <class CharT>
class BasicStringRef
{
public:
    using value_type = CharT;
    using const_iterator = const CharT*;
    using iterator = const_iterator;

    constexpr BasicStringRef() noexcept = default;
    /// Up to the first NUL; of a null pointer the empty text.
    constexpr BasicStringRef(const CharT* text) noexcept
        : m_data(text), m_size(text != nullptr ? std::char_traits<CharT>::length(text) : 0)
    {
    }
    constexpr BasicStringRef(const CharT* text, std::size_t size) noexcept : m_data(text), m_size(size) {}
    constexpr BasicStringRef(std::basic_string_view<CharT> text) noexcept
        : m_data(text.data()), m_size(text.size())
    {
    }
    template <class Allocator>
    constexpr BasicStringRef(
        const std::basic_string<CharT, std::char_traits<CharT>, Allocator>& text) noexcept
        : m_data(text.data()), m_size(text.size())
    {
    }

    constexpr const CharT* data() const noexcept { return m_data; }
    constexpr std::size_t size() const noexcept { return m_size; }
    constexpr std::size_t length() const noexcept { return m_size; }
    constexpr bool empty() const noexcept { return m_size == 0; }
    constexpr const CharT& operator[](std::size_t index) const noexcept { return m_data[index]; }
    constexpr const_iterator begin() const noexcept { return m_data; }
    constexpr const_iterator end() const noexcept { return m_data + m_size; }

    /// A copy that keeps its text itself.
    std::basic_string<CharT> toString() const { return std::basic_string<CharT>(view()); }
    constexpr std::basic_string_view<CharT> view() const noexcept { return {m_data, m_size}; }

    /// By characters, as std::string compares.
    friend constexpr bool operator==(BasicStringRef a, BasicStringRef b) noexcept
    {
        return a.view() == b.view();
    }
    friend constexpr auto operator<=>(BasicStringRef a, BasicStringRef b) noexcept
    {
        return a.view() <=> b.view();
    }

private:
    const CharT* m_data = nullptr;
    std::size_t m_size = 0;
};

} // namespace Kodo
