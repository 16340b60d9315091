#include "kodo/chunk/chunk_item_base.hpp"

#include "kodo/chunk/chunk_space.hpp"

namespace Kodo
{

ChunkItemBase::ChunkItemBase(const SmartPointer<ChunkSpace>& space, WantFlags wantFlags)
    : m_space(space.get()), m_wantFlags(wantFlags)
{
    if (m_space != nullptr)
    {
        m_space->m_items.emplace(m_sceneObject.id(), this);
    }
}

ChunkItemBase::~ChunkItemBase()
{
    if (m_space != nullptr)
    {
        m_space->m_items.erase(m_sceneObject.id());
    }
}

} // namespace Kodo
