#pragma once

#include "kodo/core/smart_pointer.hpp"
#include "kodo/export.hpp"

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace Kodo
{

class EditorCustomChunkItem;

/// The chunk of a space that holds what the editor adds to it. Holds its items. Main thread only.
class KODO_API EditorChunk
{
public:
    EditorChunk();
    EditorChunk(const EditorChunk&) = delete;
    EditorChunk& operator=(const EditorChunk&) = delete;
    ~EditorChunk();

    /// Takes an item in; one that is here already stays as it is.
    void addDynamicItem(EditorCustomChunkItem* item);
    /// Lets go of an item, which is destroyed unless someone else holds it. One that is not here is ignored.
    void delDynamicItem(EditorCustomChunkItem* item);
    void delDynamicItem(const SmartPointer<EditorCustomChunkItem>& item) { delDynamicItem(item.get()); }

    bool contains(const EditorCustomChunkItem* item) const noexcept;
    std::size_t itemCount() const noexcept;

private:
    std::unordered_map<const EditorCustomChunkItem*, SmartPointer<EditorCustomChunkItem>> m_items;
};

} // namespace Kodo
