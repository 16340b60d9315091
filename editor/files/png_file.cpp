#include "editor/files/png_file.hpp"

#include "editor/files/atomic_file.hpp"
#include "editor/files/file_error.hpp"

#include <png.h>

std::string formatPng(const RgbPicture& picture)
{
    if (picture.bytes.empty() || picture.bytes.size() != picture.width * picture.height * 3)
    {
        return {};
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string bytes(size, '\0');
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.bytes.data(), 0, nullptr) == 0)
    {
        return {};
    }
    bytes.resize(size);
    return bytes;
}

bool writePng(const std::string& file, const RgbPicture& picture)
{
    const std::string bytes = formatPng(picture);
    if (bytes.empty())
    {
        return false;
    }
    try
    {
        replaceFile(file, bytes);
        return true;
    }
    catch (const FileError&)
    {
        return false;
    }
}
