#pragma once

namespace TernEditor
{

/// Tells the shared asset registry which files this editor knows.
void registerAssetTypes();

} // namespace TernEditor
