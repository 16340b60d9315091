#pragma once

#include "kodo/core/reference_count.hpp"
#include "vell/pointer_traits.hpp"

#include <concepts>
#include <cstddef>
#include <memory>
#include <utility>

namespace Kodo
{

/// Holds an object that counts its own references (SafeReferenceCount). As large as a pointer. Distinct
/// pointers to one object may be used from several threads; one pointer is not synchronised.
template <class T>
class SmartPointer
{
public:
    constexpr SmartPointer() noexcept = default;
    constexpr SmartPointer(std::nullptr_t) noexcept {}
    /// Adds a reference. Implicit, as a freshly made object is handed over this way.
    SmartPointer(T* object) noexcept : m_object(object) { addReference(); }
    SmartPointer(const SmartPointer& other) noexcept : m_object(other.m_object) { addReference(); }
    SmartPointer(SmartPointer&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    template <class U>
        requires std::convertible_to<U*, T*> SmartPointer(const SmartPointer<U>& other)
    noexcept : m_object(other.get()) { addReference(); }
    ~SmartPointer()
    {
        if (m_object != nullptr)
        {
            m_object->decRef();
        }
    }

    /// By value: the old object goes only after the new one is held, so that assigning a part of it is safe.
    SmartPointer& operator=(SmartPointer other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }

    T* get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }
    bool hasObject() const noexcept { return m_object != nullptr; }

    template <class U>
    friend bool operator==(const SmartPointer& a, const SmartPointer<U>& b) noexcept
    {
        return a.get() == b.get();
    }
    friend bool operator==(const SmartPointer& a, const T* b) noexcept { return a.m_object == b; }

private:
    void addReference() const noexcept
    {
        if (m_object != nullptr)
        {
            m_object->incRef();
        }
    }

    T* m_object = nullptr;
};

/// Observes an object (SafeReferenceCount and WeakReferenceCount) without keeping it.
template <class T>
class WeakPointer
{
public:
    WeakPointer() noexcept = default;
    /// @p object must be held by someone, or null.
    WeakPointer(T* object) : m_object(object)
    {
        if (object != nullptr)
        {
            m_link = object->weakLink(*object);
        }
    }
    WeakPointer(const SmartPointer<T>& object) : WeakPointer(object.get()) {}

    /// The object, now held; null when it is gone or being destroyed.
    SmartPointer<T> lock() const noexcept
    {
        if (!m_link || !WeakReferenceCount::tryHold(*m_link))
        {
            return {};
        }
        SmartPointer<T> held(m_object);
        m_object->decRef(); // the pointer has a reference of its own
        return held;
    }

private:
    T* m_object = nullptr; ///< touched only once the link has given a reference
    std::shared_ptr<WeakReferenceCount::Link> m_link;
};

} // namespace Kodo

template <class T>
struct vell::PointerTraits<Kodo::SmartPointer<T>>
{
    using Target = T;
    static const volatile void* address(const Kodo::SmartPointer<T>& pointer) noexcept
    {
        return pointer.get();
    }
};
