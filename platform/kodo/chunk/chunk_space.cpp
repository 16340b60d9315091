#include "kodo/chunk/chunk_space.hpp"

#include "kodo/chunk/chunk_item_base.hpp"
#include "kodo/core/assertion.hpp"

#include <algorithm>
#include <utility>

namespace Kodo
{
namespace
{

/// The cache slots of the process, and the spaces that have caches in them: all that live, whether or not the
/// manager knows them still.
class SlotRegistry
{
public:
    static SlotRegistry& instance()
    {
        static SlotRegistry registry;
        return registry;
    }

    void addSpace(ChunkSpace& space) { m_spaces.push_back(&space); }
    void removeSpace(ChunkSpace& space) noexcept { std::erase(m_spaces, &space); }

    std::size_t reserve()
    {
        const auto free = std::find(m_slots.begin(), m_slots.end(), Slot::Free);
        const auto slot = static_cast<std::size_t>(free - m_slots.begin());
        if (free == m_slots.end())
        {
            m_slots.push_back(Slot::Reserved);
        }
        else
        {
            *free = Slot::Reserved;
        }
        return slot;
    }

    /// Starts to give a slot back. False when it is not reserved, or is being given back already.
    bool close(std::size_t slot) noexcept
    {
        if (slot >= m_slots.size() || m_slots[slot] != Slot::Reserved)
        {
            return false;
        }
        m_slots[slot] = Slot::Closing;
        return true;
    }
    void free(std::size_t slot) noexcept { m_slots[slot] = Slot::Free; }

    bool mayHold(std::size_t slot) const noexcept
    {
        return slot < m_slots.size() && m_slots[slot] != Slot::Free;
    }
    std::size_t reservedCount() const noexcept
    {
        return static_cast<std::size_t>(std::count(m_slots.begin(), m_slots.end(), Slot::Reserved));
    }

    /// Some space that has a cache in @p slot; null when none is left.
    const ChunkSpace* spaceWithCache(std::size_t slot) const noexcept
    {
        const auto found = std::find_if(m_spaces.begin(), m_spaces.end(),
                                        [slot](const ChunkSpace* space) { return space->cache(slot); });
        return found == m_spaces.end() ? nullptr : *found;
    }

private:
    /// A slot that is being given back takes caches in still: destructors of its caches may look others up.
    enum class Slot : std::uint8_t
    {
        Free,
        Reserved,
        Closing
    };

    std::vector<Slot> m_slots;
    std::vector<ChunkSpace*> m_spaces;
};

} // namespace

ChunkSpace::Cache::~Cache() = default;

ChunkSpace::ChunkSpace(int id) : m_id(id)
{
    SlotRegistry::instance().addSpace(*this);
}

ChunkSpace::~ChunkSpace()
{
    do
    {
        releaseItems();
        destroyCaches();
    } while (!m_items.empty()); // a cache may have had an item made
    SlotRegistry::instance().removeSpace(*this);
}

void ChunkSpace::releaseItems() noexcept
{
    do
    {
        for (const auto& [id, item] : std::exchange(m_items, {}))
        {
            item->m_space = nullptr;
        }
        m_editorChunk.clear();
    } while (!m_items.empty());
}

void ChunkSpace::destroyCaches() noexcept
{
    // Also what the destructors of others look up meanwhile.
    while (!m_caches.empty() || !m_keptCaches.empty())
    {
        std::vector<std::unique_ptr<Cache>>& caches = m_caches.empty() ? m_keptCaches : m_caches;
        const std::unique_ptr<Cache> last = std::move(caches.back());
        caches.pop_back();
    }
}

ChunkItemBase* ChunkSpace::itemOf(const SceneObject& object) const noexcept
{
    const auto found = m_items.find(object.id());
    return found == m_items.end() ? nullptr : found->second;
}

std::size_t ChunkSpace::registerCache()
{
    return SlotRegistry::instance().reserve();
}

void ChunkSpace::unregisterCache(std::size_t slot) noexcept
{
    SlotRegistry& registry = SlotRegistry::instance();
    if (!registry.close(slot))
    {
        return;
    }
    while (const ChunkSpace* const space = registry.spaceWithCache(slot))
    {
        const std::unique_ptr<Cache> cache = std::move(space->m_caches[slot]);
    }
    registry.free(slot);
}

std::size_t ChunkSpace::registeredCacheCount() noexcept
{
    return SlotRegistry::instance().reservedCount();
}

bool ChunkSpace::isCacheRegistered(std::size_t slot) noexcept
{
    return SlotRegistry::instance().mayHold(slot);
}

ChunkSpace::Cache* ChunkSpace::cache(std::size_t slot) const noexcept
{
    return slot < m_caches.size() ? m_caches[slot].get() : nullptr;
}

void ChunkSpace::setCache(std::size_t slot, std::unique_ptr<Cache> cache) const
{
    if (!KODO_ASSERT(isCacheRegistered(slot)))
    {
        return;
    }
    if (slot >= m_caches.size())
    {
        m_caches.resize(slot + 1);
    }
    std::swap(m_caches[slot], cache); // the old one goes after the new one is in place
}

void ChunkSpace::keepCache(std::unique_ptr<Cache> cache) const
{
    m_keptCaches.push_back(std::move(cache));
}

} // namespace Kodo
