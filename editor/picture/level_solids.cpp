#include "editor/picture/level_solids.hpp"

#include "editor/curve/position_text.hpp"
#include "kodo/core/debug_message_helper.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>

using Kodo::Vector3;
using Kodo::Render::Colour32Bit;

namespace
{

constexpr Vector3 DEFAULT_SIZE{3.0F, 3.0F, 3.0F};
constexpr float GAP_TO_GROUND = 0.25F;
constexpr Colour32Bit SELECTED_COLOR{0xFFEBA04A}; // of control points

// Muted, and of few hues: most hues are left for curves.
constexpr std::array<Colour32Bit, 5> BOX_COLORS{Colour32Bit(0xFFCCAD87), Colour32Bit(0xFF8FA6C4),
                                                Colour32Bit(0xFFC28070), Colour32Bit(0xFFD1CCC2),
                                                Colour32Bit(0xFF66758F)};

/// "x y z"; nothing where it is not three positive numbers that are of use.
std::optional<Vector3> sizeIn(std::string_view text)
{
    constexpr float MOST_METRES = 1e5F;
    std::array<float, 3> numbers{};
    for (float& number : numbers)
    {
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || !(number > 0.0F && number <= MOST_METRES))
        {
            return std::nullopt;
        }
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (!text.empty() && text.front() != ' ')
        {
            return std::nullopt;
        }
    }
    return text.find_first_not_of(' ') == std::string_view::npos
               ? std::optional(Vector3(numbers[0], numbers[1], numbers[2]))
               : std::nullopt;
}

Vector3 sizeOf(const Item& item)
{
    const auto property = item.properties.find("size");
    if (property == item.properties.end())
    {
        return DEFAULT_SIZE;
    }
    const std::optional<Vector3> size = sizeIn(property->second);
    if (!size)
    {
        Kodo::DebugMessageHelper(0, 5).message("The size of item '" + item.name + "' is '" +
                                               property->second +
                                               "', not three positive numbers: it is drawn without");
    }
    return size.value_or(DEFAULT_SIZE);
}

/// The items that a picture can show; each other one is reported.
std::vector<const Item*> drawableItems(const std::vector<Item>& items)
{
    std::vector<const Item*> drawable;
    for (const Item& item : items)
    {
        if (isDrawable(toVector(item.position)))
        {
            drawable.push_back(&item);
        }
        else
        {
            Kodo::DebugMessageHelper(0, 5).message(
                "The item '" + item.name + "' stands farther than a picture reaches: it is not drawn");
        }
    }
    return drawable;
}

SolidBox boxOf(const Item& item, float groundHeight)
{
    const Vector3 size = sizeOf(item);
    const Vector3 place = toVector(item.position);
    const float height = place.y + size.y - groundHeight;
    return {{place.x, groundHeight + height / 2.0F, place.z}, {size.x / 2.0F, height / 2.0F, size.z / 2.0F}};
}

/// Its cell is a power of ten metres, so that a level is some dozens of them wide.
Ground groundOf(const SceneBounds& bounds, float height)
{
    constexpr float CELLS_TO_EDGE = 80.0F;
    const float radius = std::max(bounds.radius(), 1.0F);
    Ground ground;
    ground.cell = std::max(1.0F, std::pow(10.0F, std::ceil(std::log10(radius / CELLS_TO_EDGE))));
    const float strong = ground.cell * 10.0F; // strong lines go through multiples of this
    ground.centre = {std::round(bounds.centre().x / strong) * strong, height,
                     std::round(bounds.centre().z / strong) * strong};
    ground.reach = std::max(300.0F, 30.0F * radius);
    return ground;
}

} // namespace

SolidScene solidsOf(const std::vector<Item>& items, const SceneBounds& curves)
{
    SceneBounds places = curves;
    std::set<std::string_view> types;
    for (const Item& item : items)
    {
        types.insert(item.type);
    }
    const std::vector<const Item*> drawable = drawableItems(items);
    for (const Item* const item : drawable)
    {
        places.include(toVector(item->position));
    }
    const float groundHeight = places.isEmpty() ? 0.0F : places.low().y - GAP_TO_GROUND;
    SolidScene scene;
    for (const Item* const item : drawable)
    {
        const auto number = static_cast<std::size_t>(std::distance(types.begin(), types.find(item->type)));
        scene.boxes.push_back(boxOf(*item, groundHeight));
        scene.boxes.back().color = BOX_COLORS[number % BOX_COLORS.size()];
    }
    const SceneBounds bounds = boundsOf(scene, curves);
    scene.ground = bounds.isEmpty() ? Ground{} : groundOf(bounds, groundHeight);
    return scene;
}

SceneBounds boundsOf(const SolidScene& solids, const SceneBounds& curves)
{
    SceneBounds bounds = curves;
    for (const SolidBox& box : solids.boxes)
    {
        for (unsigned corner = 0; corner < 8; ++corner)
        {
            bounds.include(box.centre + Vector3((corner & 1U) == 0 ? -box.halfSize.x : box.halfSize.x,
                                                (corner & 2U) == 0 ? -box.halfSize.y : box.halfSize.y,
                                                (corner & 4U) == 0 ? -box.halfSize.z : box.halfSize.z));
        }
    }
    return bounds;
}

std::vector<Colour32Bit> sceneColors()
{
    std::vector<Colour32Bit> colors(BOX_COLORS.begin(), BOX_COLORS.end());
    colors.push_back(SELECTED_COLOR);
    return colors;
}
