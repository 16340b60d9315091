#pragma once

#include "kodo/chunk/chunk_space.hpp"

#include <cstddef>
#include <memory>
#include <utility>

namespace Kodo
{

/// One @p T for each chunk space, made on first use as T(const ChunkSpace&) and kept in the space. Reserves
/// its slot when constructed and gives it back, with all that is in it, when destroyed: a plug-in's caches go
/// with the plug-in. Main thread only.
///
/// T's constructor and destructor may look up other caches and reserve or give back other slots; what a
/// destructor makes anew in the slot or space that is going is destroyed as well.
///
/// When the program ends, spaces go after the caches of libraries and plug-ins. What is still in them then
/// may look its cache up once more: each look-up makes a T of its own, which goes with the space.
template <class T>
class SpaceCache
{
public:
    SpaceCache() : m_slot(ChunkSpace::registerCache()) {}
    SpaceCache(const SpaceCache&) = delete;
    SpaceCache& operator=(const SpaceCache&) = delete;
    ~SpaceCache() { ChunkSpace::unregisterCache(m_slot); }

    std::size_t slot() const noexcept { return m_slot; }

    T& operator()(const ChunkSpace& space) const
    {
        if (ChunkSpace::Cache* cache = space.cache(m_slot))
        {
            return static_cast<Holder*>(cache)->value;
        }
        auto holder = std::make_unique<Holder>(space);
        if (ChunkSpace::Cache* cache = space.cache(m_slot))
        {
            return static_cast<Holder*>(cache)->value; // its constructor has looked itself up: one for all
        }
        T& value = holder->value;
        if (ChunkSpace::isCacheRegistered(m_slot))
        {
            space.setCache(m_slot, std::move(holder));
        }
        else
        {
            space.keepCache(std::move(holder));
        }
        return value;
    }

private:
    struct Holder final : ChunkSpace::Cache
    {
        explicit Holder(const ChunkSpace& space) : value(space) {}
        T value;
    };

    std::size_t m_slot;
};

} // namespace Kodo
