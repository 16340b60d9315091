#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Rows of pixels, the topmost first, three bytes a pixel.
struct RgbPicture
{
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<std::uint8_t> bytes;
};

/// The bytes of a PNG file; empty when the picture is empty or not as large as it says.
std::string formatPng(const RgbPicture& picture);

/// Replaces the file by the picture (see replaceFile()); false when that fails, or when there is no PNG of
/// it.
bool writePng(const std::string& file, const RgbPicture& picture);
