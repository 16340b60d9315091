#include "kodo/chunk/editor_chunk.hpp"

#include "kodo/chunk/editor_custom_chunk_item.hpp"

#include <utility>

namespace Kodo
{

EditorChunk::EditorChunk() = default;

EditorChunk::~EditorChunk()
{
    clear();
}

void EditorChunk::addDynamicItem(EditorCustomChunkItem* item)
{
    if (item != nullptr && m_items.insert(item).second)
    {
        item->incRef();
    }
}

void EditorChunk::delDynamicItem(EditorCustomChunkItem* item)
{
    if (m_items.erase(item) != 0)
    {
        item->decRef();
    }
}

bool EditorChunk::contains(const EditorCustomChunkItem* item) const noexcept
{
    return m_items.contains(const_cast<EditorCustomChunkItem*>(item));
}

void EditorChunk::forget(EditorCustomChunkItem* item) noexcept
{
    m_items.erase(item);
}

void EditorChunk::clear() noexcept
{
    // Destructors of items may come back here: to take out others, or to put in new ones.
    while (!m_items.empty())
    {
        for (EditorCustomChunkItem* item : std::exchange(m_items, {}))
        {
            item->decRef();
        }
    }
}

} // namespace Kodo
