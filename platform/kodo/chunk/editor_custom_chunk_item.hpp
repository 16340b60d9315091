#pragma once

#include "kodo/chunk/chunk_item_base.hpp"
#include "kodo/export.hpp"
#include "kodo/math/matrix.hpp"
#include "qua/flags.hpp"
#include "tern/meta_object.hpp"
#include "tern/object.hpp"
#include "tern/setter_flag.hpp"

namespace Kodo
{

/// What kind of thing an item is when the editor selects it.
enum class SelectItemType
{
    None,
    ChunkItem
};

/// An item of the editor's own in the 3D scene: can be placed, selected, hovered and deleted. Main thread
/// only.
///
/// It enters its space's editor chunk, which holds it, when its base is constructed: a derived constructor
/// may hand out pointers to it, and may throw, which takes it out again. Where there is no space, nobody
/// holds it before its maker does.
class KODO_API EditorCustomChunkItem : public ChunkItemBase, public tern::Object
{
public:
    /// Moves the item. False when it can't be moved; it stays where it was then.
    virtual bool edTransform(const Matrix& transform, qua::Flags<tern::SetterFlag> flags);
    virtual Matrix edTransform();
    virtual SelectItemType edSelectItemType();
    /// Whether deletion in the editor goes through customDelete() instead of taking the item out of its
    /// chunk.
    virtual bool customDeleter() const;
    virtual void customDelete();

    /// Where the item stands; moving it goes through the virtual edTransform().
    const Matrix& edWorldTransform() const noexcept { return m_worldTransform; }
    bool edWorldTransform(const Matrix& transform, qua::Flags<tern::SetterFlag> flags);

    bool edIsSelected() const noexcept { return m_isSelected; }
    void edSelected() noexcept { m_isSelected = true; }
    void edDeselected() noexcept { m_isSelected = false; }
    bool edIsHovered() const noexcept { return m_isHovered; }
    void edHovered(bool hovered) noexcept { m_isHovered = hovered; }
    /// What the editor's Delete does: customDelete() where the item has it, else out of the editor chunk,
    /// which may destroy the item.
    void edDelete();

protected:
    /// @p space, which may be null, is the space it enters.
    EditorCustomChunkItem(const SmartPointer<ChunkSpace>& space, WantFlags wantFlags);
    ~EditorCustomChunkItem() override;

private:
    Matrix m_worldTransform = Matrix::IDENTITY;
    bool m_isSelected = false;
    bool m_isHovered = false;
};

} // namespace Kodo

/// Registers EditorCustomChunkItem with its properties: "selected" and "hovered" (bool, read-only).
template <>
class KODO_API tern::StaticMetaObject<Kodo::EditorCustomChunkItem> : public tern::BaseStaticMetaObject<0>
{
public:
    StaticMetaObject();
};
