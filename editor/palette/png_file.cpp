#include "editor/palette/png_file.hpp"

#include <png.h>

bool writePng(const std::string& file, const RgbPicture& picture)
{
    if (picture.bytes.empty() || picture.bytes.size() != picture.width * picture.height * 3)
    {
        return false;
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, file.c_str(), 0, picture.bytes.data(), 0, nullptr) != 0;
}
