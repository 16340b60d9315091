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
#include <vector>

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
        std::size_t size = 0; ///< of a value where it is stored, in bytes; a pointer's for all that point
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
    /// All registrations, oldest first.
    static std::vector<const MetaType*> registered();

    /// @name Operations on a value in raw storage of size() bytes.
    /// Pointers of more than one machine word (`std::shared_ptr`) stand in a cell on the heap, and the cell's
    /// address in the storage. Moving takes the cell along: what was moved from is null, may be copied, moved
    /// and destroyed, and has no value.
    /// @{
    virtual void copyConstruct(void* to, const void* from) const = 0;
    virtual void moveConstruct(void* to, void* from) const noexcept = 0;
    virtual void destroy(void* storage) const noexcept = 0;
    /// The value itself, an object of the registered type; null where it was moved out of its storage.
    virtual const void* value(const void* storage) const noexcept = 0;
    /// What a pointer value refers to; null for plain values.
    virtual const volatile void* address(const void* storage) const noexcept = 0;
    /// @}

protected:
    explicit MetaType(const Data& data);

private:
    Data m_data;
    std::string m_name;
};

/// A type's name as a person writes it.
VELL_API std::string typeName(const std::type_info& type);

/// How a pointer of one type is stored in a machine word: as it is when it fits, else in a cell on the heap.
template <PointerLike T>
struct PointerStorage
{
    static constexpr bool IS_INLINE = // NOLINTNEXTLINE(bugprone-sizeof-expression): T is the pointer
        sizeof(T) <= sizeof(void*) && alignof(T) <= alignof(void*) && std::is_nothrow_move_constructible_v<T>;

    /// Constructs the stored form of @p pointer in @p to.
    static void store(void* to, T&& pointer)
    {
        if constexpr (IS_INLINE)
        {
            new (to) T(std::move(pointer));
        }
        else
        {
            new (to) T*(new T(std::move(pointer)));
        }
    }
    /// The pointer stored; null when it was moved out.
    static T* find(const void* storage) noexcept
    {
        if constexpr (IS_INLINE)
        {
            return static_cast<T*>(const_cast<void*>(storage));
        }
        else
        {
            return *static_cast<T* const*>(storage);
        }
    }
    static void moveConstruct(void* to, void* from) noexcept
    {
        if constexpr (IS_INLINE)
        {
            new (to) T(std::move(*find(from)));
        }
        else
        {
            new (to) T*(std::exchange(*static_cast<T**>(from), nullptr));
        }
    }
    static void copyConstruct(void* to, const void* from)
    {
        if constexpr (IS_INLINE)
        {
            new (to) T(*find(from));
        }
        else
        {
            const T* const pointer = find(from);
            new (to) T*(pointer == nullptr ? nullptr : new T(*pointer));
        }
    }
    static void destroy(void* storage) noexcept
    {
        if constexpr (IS_INLINE)
        {
            find(storage)->~T();
        }
        else
        {
            delete find(storage);
        }
    }
};

/// The meta type of one pointer or smart-pointer type.
template <PointerLike T>
class MetaTypeImpl final : public MetaType
{
public:
    MetaTypeImpl() : MetaType(describe()) {}

    void copyConstruct(void* to, const void* from) const override { Storage::copyConstruct(to, from); }
    void moveConstruct(void* to, void* from) const noexcept override { Storage::moveConstruct(to, from); }
    void destroy(void* storage) const noexcept override { Storage::destroy(storage); }
    const void* value(const void* storage) const noexcept override { return Storage::find(storage); }
    const volatile void* address(const void* storage) const noexcept override
    {
        const T* const pointer = Storage::find(storage);
        return pointer == nullptr ? nullptr : PointerTraits<T>::address(*pointer);
    }

private:
    using Storage = PointerStorage<T>;

    static Data describe()
    {
        using Target = typename PointerTraits<T>::Target;
        Data data;
        data.type = &typeid(T);
        data.size = sizeof(void*);
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
