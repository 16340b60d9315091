#pragma once

#include "kodo/chunk/editor_chunk.hpp"
#include "kodo/collision/scene_object.hpp"
#include "kodo/core/reference_count.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/export.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace Kodo
{

class ChunkItemBase;

/// A space of the chunk manager: its editor chunk, the items that stand in it, and one cache for each slot
/// that was registered. Main thread only.
class KODO_API ChunkSpace : public SafeReferenceCount
{
public:
    /// What a slot holds: destroyed with the space or when the slot is given back, whichever comes first.
    class KODO_API Cache
    {
    public:
        virtual ~Cache();

    protected:
        Cache() = default;
        Cache(const Cache&) = default;
        Cache& operator=(const Cache&) = default;
    };

    explicit ChunkSpace(int id);

    int id() const noexcept { return m_id; }
    EditorChunk& editorChunk() noexcept { return m_editorChunk; }
    /// The item that a scene object stands for; null when it is none of this space.
    ChunkItemBase* itemOf(const SceneObject& object) const noexcept;

    /// Reserves a slot in all spaces, present and future; the lowest that is free.
    static std::size_t registerCache();
    /// Gives a slot back: its caches are destroyed in every space, then the slot is free.
    static void unregisterCache(std::size_t slot) noexcept;
    static std::size_t registeredCacheCount() noexcept;
    /// Whether caches may be put into @p slot: until it has been given back with all that is in it.
    static bool isCacheRegistered(std::size_t slot) noexcept;

    /// The cache in @p slot, or null.
    Cache* cache(std::size_t slot) const noexcept;
    /// Puts a cache into a registered slot, in place of the one there. Another slot is reported, and the
    /// cache destroyed.
    void setCache(std::size_t slot, std::unique_ptr<Cache> cache) const;
    /// Keeps a cache without a slot until the space goes.
    void keepCache(std::unique_ptr<Cache> cache) const;

private:
    friend class ChunkItemBase;
    friend class ChunkManager;
    ~ChunkSpace() override;

    /// All items forget the space, and the editor chunk lets go of its own.
    void releaseItems() noexcept;
    void destroyCaches() noexcept;

    int m_id;
    mutable std::vector<std::unique_ptr<Cache>> m_caches; ///< by slot
    mutable std::vector<std::unique_ptr<Cache>> m_keptCaches;
    std::unordered_map<std::uint64_t, ChunkItemBase*> m_items; ///< by the id of their scene object
    EditorChunk m_editorChunk;
};

} // namespace Kodo
