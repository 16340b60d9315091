#pragma once

#include "editor/files/png_file.hpp"
#include "editor/render/debug_painter.hpp"
#include "editor/render/frame_buffer.hpp"
#include "editor/render/offscreen_context.hpp"
#include "editor/render/solid_painter.hpp"

/// Draws pictures of a scene without a window. Main thread only.
class PicturePainter
{
public:
    /// Throws GlError where there is no OpenGL without a window.
    PicturePainter() = default;

    const OffscreenContext& context() const noexcept { return m_context; }

    /// One sample a pixel: what DebugPainter draws has its very colours. Throws GlError.
    RgbPicture paint(const SolidScene& scene, const Kodo::DebugDrawer::Context& drawn,
                     const Kodo::Render::Camera& camera, const PictureSize& size);
    /// The same, smooth to look at: drawn larger, and each pixel the mean of @p samples by @p samples.
    RgbPicture paintSmooth(const SolidScene& scene, const Kodo::DebugDrawer::Context& drawn,
                           const Kodo::Render::Camera& camera, const PictureSize& size, std::size_t samples);

private:
    RgbPicture paintFrame(const SolidScene& scene, const Kodo::DebugDrawer::Context& drawn,
                          const Kodo::Render::Camera& camera, const PictureSize& size, float narrowestLine);

    OffscreenContext m_context; // first: the others need it as long as they live
    SolidPainter m_solids;
    DebugPainter m_debug;
};
