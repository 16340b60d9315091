#pragma once

#include "vell/export.hpp"
#include "vell/meta_type.hpp"
#include "vell/pointer_traits.hpp"
#include "vell/variant_converter.hpp"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <variant>

namespace vell
{

/// A variant was asked for a type that it does not hold.
class VELL_API VariantCastError : public std::bad_cast
{
public:
    explicit VariantCastError(std::string text);
    VariantCastError(const VariantCastError&) noexcept;
    VariantCastError& operator=(const VariantCastError&) noexcept;
    ~VariantCastError() override;

    const char* what() const noexcept override;

private:
    std::shared_ptr<const std::string> m_text; ///< shared: copying an exception must not throw another one
};

/// The integer types a variant casts to: every one but bool and the character types.
template <class T>
concept VariantInteger =
    std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, wchar_t> &&
    !std::same_as<T, char8_t> && !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;

namespace Detail
{

/// A pointer or smart pointer of a registered type, stored in a machine word.
class VELL_API PointerValue
{
public:
    template <PointerLike T>
    explicit PointerValue(T pointer) : m_type(&metaType<T>())
    {
        PointerStorage<T>::store(m_storage, std::move(pointer));
    }
    PointerValue(const PointerValue& other);
    PointerValue(PointerValue&& other) noexcept;
    PointerValue& operator=(const PointerValue& other);
    PointerValue& operator=(PointerValue&& other) noexcept;
    ~PointerValue();

    const MetaType& type() const noexcept { return *m_type; }
    const void* value() const noexcept { return m_type->value(m_storage); }
    const volatile void* address() const noexcept { return m_type->address(m_storage); }

private:
    const MetaType* m_type;
    alignas(void*) std::byte m_storage[sizeof(void*)];
};

} // namespace Detail

/// A dynamically typed value: nothing (void), bool, 64-bit signed integer, std::string, or a pointer or smart
/// pointer of a registered type. Values are stored inline, but for smart pointers of more than one machine
/// word: of those it is the address, and what was moved from has no value any more. The variant owns a string
/// and a share of what a smart pointer holds, never what a plain pointer refers to. Not synchronised.
class VELL_API Variant
{
public:
    Variant() noexcept = default;
    Variant(const Variant&) = default;
    Variant(Variant&&) noexcept = default;
    Variant(std::same_as<bool> auto value) noexcept : m_value(value) {}
    Variant(VariantInteger auto value) noexcept
        requires(std::in_range<std::int64_t>(std::numeric_limits<decltype(value)>::max()))
        : m_value(static_cast<std::int64_t>(value))
    {
    }
    Variant(std::string value) noexcept : m_value(std::move(value)) {}
    /// @p value must not be null.
    Variant(const char* value) : m_value(std::string(value)) {}
    /// A string made of @p arguments where it is stored.
    template <class... Args>
        requires std::constructible_from<std::string, Args...>
    explicit Variant(std::in_place_type_t<std::string> type, Args&&... arguments)
        : m_value(type, std::forward<Args>(arguments)...)
    {
    }
    Variant(std::nullptr_t) = delete; ///< a null pointer has a type: say which
    template <PointerLike T>
    Variant(T pointer) : m_value(Detail::PointerValue(std::move(pointer)))
    {
    }

    /// Assignment takes the new value before it releases the old one, which may be what keeps @p other alive.
    Variant& operator=(const Variant& other);
    Variant& operator=(Variant&& other) noexcept;
    ~Variant() = default;

    bool isVoid() const noexcept { return std::holds_alternative<std::monostate>(m_value); }

    /// The type of what is held; void's when nothing is.
    const MetaType& type() const noexcept;

    /// The value of type @p T that is held, or that a held pointer of fitting constness refers to; null when
    /// there is none.
    template <class T>
    const T* peek() const noexcept
    {
        if constexpr (IS_PLAIN<T>)
        {
            if (const T* value = std::get_if<T>(&m_value))
            {
                return value;
            }
        }
        return static_cast<const T*>(peek(typeid(T), MetaType::CONST_QUALIFIER));
    }
    template <class T>
    T* peek() noexcept
    {
        return static_cast<T*>(const_cast<void*>(peek(typeid(T), 0)));
    }

    /// Casts to @p T and stores the result in @p out; false, with @p out untouched, when that fails.
    ///
    /// Values come from a value of that type, else from a pointer to one, else from the conversion registered
    /// for the type held. Integers of every width go through the 64-bit integer and must fit. Pointers come
    /// from any held pointer or smart pointer to the same class that is no more const or volatile than @p T
    /// allows; null pointers cast to null.
    template <class T>
        requires std::same_as<T, bool> || VariantInteger<T> || std::same_as<T, std::string> || PointerLike<T>
    bool tryCast(T& out) const
    {
        if constexpr (VariantInteger<T>)
        {
            return tryCastValue<std::int64_t>(
                [&out](std::int64_t value)
                {
                    if (!std::in_range<T>(value))
                    {
                        return false;
                    }
                    out = static_cast<T>(value);
                    return true;
                });
        }
        else
        {
            if constexpr (std::is_pointer_v<T>)
            {
                using Target = std::remove_pointer_t<T>;
                const volatile void* address = nullptr;
                if (findAddress(typeid(std::remove_cv_t<Target>), qualifiersOf<Target>(), address))
                {
                    out = static_cast<T>(const_cast<void*>(address));
                    return true;
                }
            }
            return tryCastValue<T>(
                [&out](const T& value)
                {
                    out = value;
                    return true;
                });
        }
    }

    /// tryCast() for those who cannot go on without: raises the cast error instead of returning false.
    template <class T>
    T cast() const
    {
        T result{};
        if (!tryCast(result))
        {
            castError(type().name(), typeName(typeid(T)).c_str());
        }
        return result;
    }

    /// Throws VariantCastError with a text that names both types.
    [[noreturn]] static void castError(const char* actualTypeName, const char* expectedTypeName);

private:
    template <class T>
    static constexpr bool IS_PLAIN =
        std::same_as<T, bool> || std::same_as<T, std::int64_t> || std::same_as<T, std::string>;

    template <class Target>
    static constexpr std::uint32_t qualifiersOf() noexcept
    {
        return (std::is_const_v<Target> ? MetaType::CONST_QUALIFIER : 0U) |
               (std::is_volatile_v<Target> ? MetaType::VOLATILE_QUALIFIER : 0U);
    }

    /// Hands the value of type @p V, converted where need be, to @p accept and returns its verdict.
    template <class V, class Accept>
    bool tryCastValue(Accept accept) const
    {
        if (const V* value = peek<V>())
        {
            return accept(*value);
        }
        if (type().type() == typeid(V))
        {
            return PointerLike<V> && accept(V{}); // moved out: as null as any smart pointer is then
        }
        Variant converted{V{}};
        if (!VariantConverter::convert(converted, *this))
        {
            return false;
        }
        const Variant& result = converted;
        const V* value = result.peek<V>();
        return value != nullptr && accept(*value);
    }

    const void* peek(const std::type_info& type, std::uint32_t allowedQualifiers) const noexcept;
    /// Finds a held pointer to @p target; false when there is none or it is more qualified than allowed.
    bool findAddress(const std::type_info& target, std::uint32_t allowedQualifiers,
                     const volatile void*& address) const noexcept;

    std::variant<std::monostate, bool, std::int64_t, std::string, Detail::PointerValue> m_value;
};

} // namespace vell
