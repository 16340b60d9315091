#pragma once

#include "vell/variant.hpp"

namespace TernCommonDetail
{

/// Makes the `Kodo::SmartPointer<Kodo::ChunkItemBase>` that @p target holds or points to hold what the
/// `std::shared_ptr<Kodo::ChunkItemBase>` in @p source does. False when that one is empty; true, with nothing
/// changed, when one of them is a null pointer to such a pointer, or was moved out. Raises the cast error
/// where a variant holds something else.
bool smartPointerFromShared(vell::Variant& target, const vell::Variant& source);

} // namespace TernCommonDetail
