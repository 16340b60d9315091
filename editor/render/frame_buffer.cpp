#include "editor/render/frame_buffer.hpp"

#include "editor/render/gl_error.hpp"

#include <algorithm>
#include <string>

namespace
{

void expectPossible(const PictureSize& size)
{
    GLint most = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &most);
    const auto limit = static_cast<std::size_t>(most);
    if (size.width == 0 || size.height == 0 || size.width > limit || size.height > limit)
    {
        throw GlError("no picture of " + std::to_string(size.width) + "x" + std::to_string(size.height) +
                      " pixels: each side has 1 to " + std::to_string(limit));
    }
}

void allocate(const GlRenderBuffer& buffer, GLenum format, const PictureSize& size)
{
    glBindRenderbuffer(GL_RENDERBUFFER, buffer.name());
    glRenderbufferStorage(GL_RENDERBUFFER, format, static_cast<GLsizei>(size.width),
                          static_cast<GLsizei>(size.height));
}

} // namespace

FrameBuffer::FrameBuffer(const PictureSize& size) : m_size(size)
{
    expectPossible(size);
    allocate(m_color, GL_RGBA8, size);
    allocate(m_depth, GL_DEPTH_COMPONENT32F, size);
    glBindFramebuffer(GL_FRAMEBUFFER, m_frame.name());
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, m_color.name());
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_depth.name());
    checkGl("making a frame buffer");
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
    {
        throw GlError("OpenGL does not take the frame buffer of " + std::to_string(size.width) + "x" +
                      std::to_string(size.height) + " pixels");
    }
}

void FrameBuffer::bind() const
{
    glBindFramebuffer(GL_FRAMEBUFFER, m_frame.name());
    glViewport(0, 0, static_cast<GLsizei>(m_size.width), static_cast<GLsizei>(m_size.height));
}

RgbPicture FrameBuffer::read() const
{
    const std::size_t rowBytes = m_size.width * 3;
    RgbPicture picture{m_size.width, m_size.height, std::vector<std::uint8_t>(rowBytes * m_size.height)};
    glBindFramebuffer(GL_FRAMEBUFFER, m_frame.name());
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, static_cast<GLsizei>(m_size.width), static_cast<GLsizei>(m_size.height), GL_RGB,
                 GL_UNSIGNED_BYTE, picture.bytes.data());
    checkGl("reading the picture back");
    for (std::size_t low = 0, high = m_size.height - 1; low < high; ++low, --high) // OpenGL begins below
    {
        const auto lowRow = picture.bytes.begin() + static_cast<std::ptrdiff_t>(low * rowBytes);
        const auto highRow = picture.bytes.begin() + static_cast<std::ptrdiff_t>(high * rowBytes);
        std::swap_ranges(lowRow, lowRow + static_cast<std::ptrdiff_t>(rowBytes), highRow);
    }
    return picture;
}
