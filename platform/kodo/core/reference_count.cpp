#include "kodo/core/reference_count.hpp"

#include <limits>
#include <mutex>

namespace Kodo
{
namespace
{

/// Far below zero: pointers that are made and dropped while an object is being destroyed must not bring its
/// count from one to zero again.
constexpr std::int32_t DESTROYED = std::numeric_limits<std::int32_t>::min() / 2;

/// One lock for the first observers of all objects: it is taken once an object and held for a few
/// instructions.
std::mutex& firstObserverMutex() noexcept
{
    static std::mutex mutex;
    return mutex;
}

} // namespace

void SafeReferenceCount::decRef() const noexcept
{
    if (m_count.fetch_sub(1, std::memory_order_acq_rel) == 1)
    {
        m_count.store(DESTROYED, std::memory_order_relaxed);
        delete this;
    }
}

bool SafeReferenceCount::tryIncRef() const noexcept
{
    std::int32_t count = m_count.load(std::memory_order_relaxed);
    while (count > 0)
    {
        if (m_count.compare_exchange_weak(count, count + 1, std::memory_order_relaxed))
        {
            return true;
        }
    }
    return false;
}

SafeReferenceCount::~SafeReferenceCount() = default;

class WeakReferenceCount::Link
{
public:
    explicit Link(const SafeReferenceCount& counted) noexcept : m_counted(&counted) {}

    bool tryIncRef() noexcept
    {
        const std::lock_guard lock(m_mutex);
        return m_counted != nullptr && m_counted->tryIncRef();
    }
    void cut() noexcept
    {
        const std::lock_guard lock(m_mutex);
        m_counted = nullptr;
    }

private:
    std::mutex m_mutex;
    const SafeReferenceCount* m_counted;
};

std::shared_ptr<WeakReferenceCount::Link>
WeakReferenceCount::weakLink(const SafeReferenceCount& counted) const
{
    const std::lock_guard lock(firstObserverMutex());
    if (!m_link)
    {
        m_link = std::make_shared<Link>(counted);
    }
    return m_link;
}

bool WeakReferenceCount::tryHold(Link& link) noexcept
{
    return link.tryIncRef();
}

WeakReferenceCount::~WeakReferenceCount()
{
    if (m_link)
    {
        m_link->cut();
    }
}

} // namespace Kodo
