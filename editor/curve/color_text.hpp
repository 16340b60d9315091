#pragma once

#include "kodo/render/colour.hpp"

#include <optional>
#include <string>
#include <string_view>

/// Reads an opaque colour: RRGGBB in hexadecimal digits. Nothing for any other text.
std::optional<Kodo::Render::Colour32Bit> parseColor(std::string_view text);
/// The same in capital letters, without the colour's alpha.
std::string formatColor(Kodo::Render::Colour32Bit color);
