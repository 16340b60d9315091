#pragma once

#include "editor/files/png_file.hpp"
#include "editor/render/gl_object.hpp"

#include <cstddef>

/// A picture's size in pixels.
struct PictureSize
{
    std::size_t width = 0;
    std::size_t height = 0;

    float aspect() const noexcept { return static_cast<float>(width) / static_cast<float>(height); }
    friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// Pixels and depths to draw to, one sample a pixel: what is read back is what was drawn. Used while its
/// context is current.
class FrameBuffer
{
public:
    /// Throws GlError for an empty size, or one that this OpenGL does not offer.
    explicit FrameBuffer(const PictureSize& size);

    const PictureSize& size() const noexcept { return m_size; }
    /// Draws to this from now on.
    void bind() const;
    /// The picture as it is, once all drawing is done. Throws GlError.
    RgbPicture read() const;

private:
    PictureSize m_size;
    GlRenderBuffer m_color;
    GlRenderBuffer m_depth;
    GlFrameBuffer m_frame;
};
