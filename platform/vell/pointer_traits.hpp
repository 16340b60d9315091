#pragma once

#include <concepts>
#include <memory>
#include <type_traits>

namespace vell
{

/// What a variant needs to know of a pointer type: the class it refers to and the address it holds.
/// Specialise it for further smart pointers; they must be copyable.
template <class T>
struct PointerTraits;

namespace Detail
{
/// Pointers to char are text and stay out: a variant takes them as std::string.
template <class T>
concept PointerTarget = (std::is_object_v<T> || std::is_void_v<T>)&&!std::same_as<std::remove_cv_t<T>, char>;
} // namespace Detail

template <Detail::PointerTarget T>
struct PointerTraits<T*>
{
    using Target = T;
    static const volatile void* address(T* pointer) noexcept { return pointer; }
};

template <class T>
struct PointerTraits<std::shared_ptr<T>>
{
    using Target = T;
    static const volatile void* address(const std::shared_ptr<T>& pointer) noexcept { return pointer.get(); }
};

template <class T>
concept PointerLike = requires
{
    typename PointerTraits<T>::Target;
};

} // namespace vell
