#pragma once

#include "editor/curve/curve_data.hpp"
#include "kodo/math/vector3.hpp"

#include <optional>
#include <string>
#include <string_view>

/// Reads "x y z": three numbers with blanks between them. Nothing for any other text.
std::optional<Position> parsePosition(std::string_view text);
/// The shortest text that parsePosition() reads as exactly @p position, which must be finite.
std::string formatPosition(const Position& position);

/// The numbers that people would write for the floats of @p vector: 0.1 for 0.1F, not 0.10000000149011612.
/// toVector() gives the same floats again.
Position toPosition(const Kodo::Vector3& vector);
/// Rounded to floats; what is too large for one becomes the largest.
Kodo::Vector3 toVector(const Position& position) noexcept;
