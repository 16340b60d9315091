#include "kodo/chunk/chunk_manager.hpp"

#include "kodo/chunk/space_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"
#include "kodo/core/debug_message_helper.hpp"

#include <utility>

namespace Kodo
{
namespace
{

/// Made when the library is loaded: whoever uses the spaces from static destructors, and so a plug-in that
/// gives its cache slot back after main, was loaded later and goes earlier.
[[maybe_unused]] const ChunkManager& readyBeforeMain = ChunkManager::instance();

} // namespace

ChunkManager& ChunkManager::instance()
{
    static ChunkManager manager;
    return manager;
}

ChunkManager::ChunkManager()
{
    // Items that are left at exit use these from their destructors: made first, they go last.
    static_cast<void>(CollisionSceneManager::instance());
    static_cast<void>(SpaceManager::instance());
    static_cast<void>(ChunkSpace::registeredCacheCount());
    static_cast<void>(DebugMessageSink(DebugMessageSink::Receiver()));
}

ChunkManager::~ChunkManager()
{
    while (!m_spaces.empty()) // destructors of items may ask for spaces again
    {
        removeSpace(m_spaces.begin()->first);
    }
}

SmartPointer<ChunkSpace> ChunkManager::space(int id, bool createIfMissing)
{
    const auto found = m_spaces.find(id);
    if (found != m_spaces.end())
    {
        return found->second;
    }
    if (!createIfMissing)
    {
        return {};
    }
    SmartPointer<ChunkSpace> made(new ChunkSpace(id));
    m_spaces.emplace(id, made);
    return made;
}

void ChunkManager::removeSpace(int id)
{
    auto node = m_spaces.extract(id);
    if (!node.empty())
    {
        node.mapped()->releaseItems(); // out of the manager already: what they ask for is another space
    }
}

} // namespace Kodo
