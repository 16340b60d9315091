#pragma once

#include "kodo/export.hpp"

#include <atomic>
#include <cstdint>
#include <memory>

namespace Kodo
{

/// Base of objects that count who holds them. The count is atomic; whoever drops it to zero deletes the
/// object, once: pointers to it may come and go within its destructor. Objects are made with `new` and held
/// by SmartPointer from then on.
class KODO_API SafeReferenceCount
{
public:
    SafeReferenceCount(const SafeReferenceCount&) = delete;
    SafeReferenceCount& operator=(const SafeReferenceCount&) = delete;

    void incRef() const noexcept { m_count.fetch_add(1, std::memory_order_relaxed); }
    void decRef() const noexcept;
    /// Adds a reference unless there is none left, that is, unless the object is being destroyed.
    bool tryIncRef() const noexcept;
    /// How many references there are; 0 or less while the object is being destroyed.
    std::int32_t refCount() const noexcept { return m_count.load(std::memory_order_relaxed); }

protected:
    SafeReferenceCount() noexcept = default;
    virtual ~SafeReferenceCount();

private:
    mutable std::atomic<std::int32_t> m_count{0};
};

/// Base of objects that WeakPointer may observe. Costs one pointer until the first observer.
class KODO_API WeakReferenceCount
{
public:
    WeakReferenceCount(const WeakReferenceCount&) = delete;
    WeakReferenceCount& operator=(const WeakReferenceCount&) = delete;

    /// What observers share: tells, from any thread, whether the object can still be held.
    class Link;
    /// @p counted is the same object's count. Any thread that holds the object may ask.
    std::shared_ptr<Link> weakLink(const SafeReferenceCount& counted) const;
    /// Adds a reference to the object behind @p link; false when it is gone or going.
    static bool tryHold(Link& link) noexcept;

protected:
    WeakReferenceCount() noexcept = default;
    virtual ~WeakReferenceCount();

private:
    mutable std::shared_ptr<Link> m_link; ///< guarded by a lock in the source file
};

} // namespace Kodo
