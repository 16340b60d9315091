#pragma once

#include "kodo/chunk/chunk_space.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/export.hpp"

#include <cstddef>
#include <unordered_map>

namespace Kodo
{

/// The chunk spaces of the process. Main thread only.
class KODO_API ChunkManager
{
public:
    static ChunkManager& instance();
    ChunkManager(const ChunkManager&) = delete;
    ChunkManager& operator=(const ChunkManager&) = delete;

    /// The space of that identifier; with @p createIfMissing made if need be, else null.
    SmartPointer<ChunkSpace> space(int id, bool createIfMissing);
    /// Lets go of a space: its items leave it, its caches are destroyed with it.
    void removeSpace(int id);
    std::size_t spaceCount() const noexcept { return m_spaces.size(); }

private:
    ChunkManager();
    ~ChunkManager();

    std::unordered_map<int, SmartPointer<ChunkSpace>> m_spaces;
};

} // namespace Kodo
