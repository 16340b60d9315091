#pragma once

#include "vell/export.hpp"
#include "vell/pointer_traits.hpp"

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace vell
{

/// A type that variants can hold, as the process knows it. Constructing one registers the type, destroying it
/// takes it out again. Several libraries may register the same type; each registration stands for itself, and
/// find() gives the oldest that is left. Registering and finding are safe from any thread.
class VELL_API MetaType
{
public:
    static constexpr std::uint32_t CONST_QUALIFIER = 1;
    static constexpr std::uint32_t VOLATILE_QUALIFIER = 2;

    struct Data
    {
        const std::type_info* type = nullptr;
        std::size_t size = 0; ///< of a value, in bytes
        std::size_t reserved = 0;
        const std::type_info* underlyingType = nullptr; ///< what a pointer refers to; null for plain values
        std::uint32_t qualifiers = 0;                   ///< of what a pointer refers to; bits as above
        std::uint32_t reserved2 = 0;
    };

    MetaType(const MetaType&) = delete;
    MetaType& operator=(const MetaType&) = delete;
    virtual ~MetaType();

    const std::type_info& type() const noexcept { return *m_data.type; }
    std::size_t size() const noexcept { return m_data.size; }
    const std::type_info* underlyingType() const noexcept { return m_data.underlyingType; }
    std::uint32_t qualifiers() const noexcept { return m_data.qualifiers; }
    /// The type's name as a person writes it, for messages.
    const char* name() const noexcept { return m_name.c_str(); }

    /// The registered type, or null.
    static const MetaType* find(const std::type_info& type) noexcept;
    /// How many registrations there are now.
    static std::size_t registeredCount() noexcept;

    /// @name Operations on a value in raw storage of size() bytes.
    /// @{
    virtual void copyConstruct(void* to, const void* from) const = 0;
    virtual void moveConstruct(void* to, void* from) const noexcept = 0;
    virtual void destroy(void* value) const noexcept = 0;
    /// What a pointer value refers to; null for plain values.
    virtual const volatile void* address(const void* value) const noexcept = 0;
    /// @}

protected:
    explicit MetaType(const Data& data);

private:
    Data m_data;
    std::string m_name;
};

/// A type's name as a person writes it.
VELL_API std::string typeName(const std::type_info& type);

/// The meta type of one pointer or smart-pointer type.
template <PointerLike T>
class MetaTypeImpl final : public MetaType
{
public:
    MetaTypeImpl() : MetaType(describe()) {}

    void copyConstruct(void* to, const void* from) const override
    {
        new (to) T(*static_cast<const T*>(from));
    }
    void moveConstruct(void* to, void* from) const noexcept override
    {
        new (to) T(std::move(*static_cast<T*>(from)));
    }
    void destroy(void* value) const noexcept override { static_cast<T*>(value)->~T(); }
    const volatile void* address(const void* value) const noexcept override
    {
        return PointerTraits<T>::address(*static_cast<const T*>(value));
    }

private:
    static Data describe()
    {
        using Target = typename PointerTraits<T>::Target;
        Data data;
        data.type = &typeid(T);
        data.size = sizeof(T);
        data.underlyingType = &typeid(std::remove_cv_t<Target>);
        data.qualifiers = (std::is_const_v<Target> ? CONST_QUALIFIER : 0U) |
                          (std::is_volatile_v<Target> ? VOLATILE_QUALIFIER : 0U);
        return data;
    }
};

/// The meta type of @p T, registered on first use by the calling library, for as long as that library is
/// loaded.
template <class T>
const MetaType& metaType()
{
    static const MetaTypeImpl<T> type;
    return type;
}

template <>
VELL_API const MetaType& metaType<void>();
template <>
VELL_API const MetaType& metaType<bool>();
template <>
VELL_API const MetaType& metaType<std::int64_t>();
template <>
VELL_API const MetaType& metaType<std::string>();

} // namespace vell
