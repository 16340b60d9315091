#pragma once

#include "kodo/loom/ui_resource_manager.hpp"

/// A manager of the resource map "map.json".
class MapManager : public Kodo::Loom::UiResourceManager
{
public:
    const char* resourceMapPath() override { return "map.json"; }
};
