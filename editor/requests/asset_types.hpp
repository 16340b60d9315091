#pragma once

/// Tells the shared asset registry which files this editor knows.
void registerAssetTypes();
