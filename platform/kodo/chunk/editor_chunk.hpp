#pragma once

#include "kodo/core/smart_pointer.hpp"
#include "kodo/export.hpp"

#include <cstddef>
#include <unordered_set>

namespace Kodo
{

class EditorCustomChunkItem;

/// The chunk of a space that holds what the editor adds to it: one reference to each item. Main thread only.
/// The destructor of an item that is let go of may use the chunk like anyone else.
class KODO_API EditorChunk
{
public:
    EditorChunk();
    EditorChunk(const EditorChunk&) = delete;
    EditorChunk& operator=(const EditorChunk&) = delete;
    ~EditorChunk();

    /// Takes an item in; one that is here already stays as it is. Null is ignored.
    void addDynamicItem(EditorCustomChunkItem* item);
    /// Lets go of an item, which is destroyed unless someone else holds it. One that is not here, be it
    /// because it is being destroyed, is ignored.
    void delDynamicItem(EditorCustomChunkItem* item);
    void delDynamicItem(const SmartPointer<EditorCustomChunkItem>& item) { delDynamicItem(item.get()); }

    /// @p item is not looked at: it may be gone.
    bool contains(const EditorCustomChunkItem* item) const noexcept;
    std::size_t itemCount() const noexcept { return m_items.size(); }

private:
    friend class ChunkSpace;
    friend class EditorCustomChunkItem;

    /// Takes out an item whose constructor failed: its reference goes with it.
    void forget(EditorCustomChunkItem* item) noexcept;
    /// Lets go of all items, also of those that come in meanwhile.
    void clear() noexcept;

    /// References counted by hand: an item enters before it is whole and may have to leave without being
    /// deleted.
    std::unordered_set<EditorCustomChunkItem*> m_items;
};

} // namespace Kodo
