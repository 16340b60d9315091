// Everything that happens when the library is loaded, in this order, and in the reverse order when it is
// unloaded. It stands in one file because only within one file the order is certain.

#include "tern_common/module/chunk_item_conversion.hpp"

#include "kodo/chunk/chunk_item_base.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/math/vector3.hpp"
#include "tern/meta_object.hpp"
#include "tern_common/curve_view/curve_view_control_point.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tern_common/localization/definition_directories.hpp"
#include "vell/meta_type.hpp"
#include "vell/variant_converter.hpp"

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

namespace
{

using Item = Kodo::ChunkItemBase;
using SharedItem = std::shared_ptr<Item>;
using SmartItem = Kodo::SmartPointer<Item>;

/// The address of the @p T that @p variant holds or points to, which may be null there; the cast error when
/// it is another type.
template <class T, class AnyVariant>
T* addressIn(AnyVariant& variant, const char* expectedTypeName)
{
    T* const held = variant.template peek<std::remove_const_t<T>>();
    if (held != nullptr || variant.type().type() == typeid(T))
    {
        return held; // null where it was moved out
    }
    T* address = nullptr;
    if (!variant.tryCast(address))
    {
        vell::Variant::castError(variant.type().name(), expectedTypeName);
    }
    return address;
}

} // namespace

bool TernCommonDetail::smartPointerFromShared(vell::Variant& target, const vell::Variant& source)
{
    auto* const smart = addressIn<SmartItem>(target, "Kodo::SmartPointer<Kodo::ChunkItemBase>*");
    auto* const shared = addressIn<const SharedItem>(source, "const std::shared_ptr<Kodo::ChunkItemBase>*");
    if (smart == nullptr || shared == nullptr)
    {
        return true;
    }
    if (*shared == nullptr)
    {
        return false;
    }
    *smart = shared->get();
    return true;
}

namespace TernCommonModule
{
namespace
{

// Each meta type and meta object is a static of the function that gives it, so that a use from another thread
// while the library loads finds it whole. Here they are made to be in time, and in order.

const vell::MetaType& smartItemType = vell::metaType<SmartItem>();
const vell::MetaType& itemPointerType = vell::metaType<Item*>();

const vell::VariantConverter smartItemFromShared(&typeid(SmartItem), &typeid(SharedItem),
                                                 TernCommonDetail::smartPointerFromShared);

const vell::MetaType& sharedItemPointerType = vell::metaType<const SharedItem*>();
const vell::MetaType& smartItemPointerType = vell::metaType<SmartItem*>();
const vell::MetaType& sharedItemType = vell::metaType<SharedItem>();

const tern::MetaObject& editorItemMetaObject = tern::staticMetaObject<Kodo::EditorCustomChunkItem>();
const tern::MetaObject& controlPointMetaObject = tern::staticMetaObject<CurveViewControlPoint>();

const vell::MetaType& constItemPointerType = vell::metaType<const Item*>();
const vell::MetaType& anyPointerType = vell::metaType<const volatile void*>();

} // namespace
} // namespace TernCommonModule

template class Kodo::SpaceCache<CurveViewSpaceCache>;
Kodo::SpaceCache<CurveViewSpaceCache> CurveViewSpaceCache::instance;

namespace TernCommonModule
{
namespace
{

[[maybe_unused]] const std::size_t curveViewCacheSlot = CurveViewSpaceCache::instance.slot();

// These, and those at the end of this file, are built with the library and gone with it: nothing in it reads
// them.
const std::string LEFT = "left";
const std::string RIGHT = "right";
const std::string TOP = "top";
const std::string BOTTOM = "bottom";
const std::string CENTER = "center";
const std::string MIDDLE = "center";

} // namespace
} // namespace TernCommonModule

const std::string DefinitionDirectories::VEHICLES = "scripts/item_defs/vehicles/";
const std::string DefinitionDirectories::ARENAS = "scripts/arena_defs/";

namespace TernCommonModule
{
namespace
{

const std::vector<std::string> COLLIDER_SHAPES = {"Bbox", "Sphere", "Cylinder"};

[[maybe_unused]] int shapeLimit = 7;

constexpr float LARGEST = std::numeric_limits<float>::max();
[[maybe_unused]] const Kodo::Vector3 FARTHEST(LARGEST, LARGEST, LARGEST);

} // namespace
} // namespace TernCommonModule
