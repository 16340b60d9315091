#include "kodo/chunk/editor_custom_chunk_item.hpp"

#include "kodo/chunk/chunk_space.hpp"

namespace Kodo
{

EditorCustomChunkItem::EditorCustomChunkItem(const SmartPointer<ChunkSpace>& space, WantFlags wantFlags)
    : ChunkItemBase(space, wantFlags)
{
    if (space)
    {
        space->editorChunk().addDynamicItem(this);
    }
}

EditorCustomChunkItem::~EditorCustomChunkItem()
{
    // The chunk still holds it only when a derived constructor has thrown: no reference is left otherwise.
    if (ChunkSpace* const entered = space())
    {
        entered->editorChunk().forget(this);
    }
}

bool EditorCustomChunkItem::edTransform(const Matrix& transform, qua::Flags<tern::SetterFlag> /*flags*/)
{
    m_worldTransform = transform;
    return true;
}

Matrix EditorCustomChunkItem::edTransform()
{
    return m_worldTransform;
}

SelectItemType EditorCustomChunkItem::edSelectItemType()
{
    return SelectItemType::ChunkItem;
}

bool EditorCustomChunkItem::customDeleter() const
{
    return false;
}

void EditorCustomChunkItem::customDelete() {}

bool EditorCustomChunkItem::edWorldTransform(const Matrix& transform, qua::Flags<tern::SetterFlag> flags)
{
    return edTransform(transform, flags);
}

void EditorCustomChunkItem::edDelete()
{
    if (customDeleter())
    {
        customDelete();
    }
    else if (ChunkSpace* const entered = space())
    {
        entered->editorChunk().delDynamicItem(this);
    }
}

} // namespace Kodo

namespace tern
{
namespace
{

template <bool (Kodo::EditorCustomChunkItem::*GETTER)() const noexcept>
MetaProperty readOnlyFlag(const char* name)
{
    MetaProperty property;
    property.name = name;
    property.getter = [](const Object& object) -> vell::Variant
    {
        const auto* const item = dynamic_cast<const Kodo::EditorCustomChunkItem*>(&object);
        return item != nullptr ? vell::Variant((item->*GETTER)()) : vell::Variant();
    };
    return property;
}

} // namespace

StaticMetaObject<Kodo::EditorCustomChunkItem>::StaticMetaObject()
    : BaseStaticMetaObject(typeid(Kodo::EditorCustomChunkItem), "EditorCustomChunkItem", Annotations(),
                           Bases())
{
    addProperty(readOnlyFlag<&Kodo::EditorCustomChunkItem::edIsSelected>("selected"));
    addProperty(readOnlyFlag<&Kodo::EditorCustomChunkItem::edIsHovered>("hovered"));
    MetaObjectManager::instance().registerType(*this);
}

} // namespace tern
