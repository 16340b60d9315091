#include "editor/requests/asset_types.hpp"

#include "vell/asset_registry.hpp"

#include <array>
#include <string_view>
#include <utility>

void registerAssetTypes()
{
    using Entry = std::pair<std::string_view, std::string_view>;
    constexpr std::array TYPES{Entry{"curve", "Curve"}, Entry{"curve.json", "Curve"}, Entry{"gpx", "Track"},
                               Entry{"level", "Level"}, Entry{"script", "CommandScript"}};
    for (const auto& [extension, type] : TYPES)
    {
        vell::AssetRegistry::instance().setType(extension, std::string(type));
    }
}
