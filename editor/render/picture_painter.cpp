#include "editor/render/picture_painter.hpp"

#include "editor/render/gl_error.hpp"

#include <limits>

namespace
{

/// Each pixel the mean of a square of samples, rounded to the nearest.
RgbPicture shrink(const RgbPicture& large, const PictureSize& size, std::size_t samples)
{
    RgbPicture small{size.width, size.height, std::vector<std::uint8_t>(size.width * size.height * 3)};
    const std::size_t count = samples * samples;
    for (std::size_t i = 0; i < small.bytes.size(); ++i)
    {
        const std::size_t component = i % 3;
        const std::size_t left = i / 3 % size.width * samples;
        const std::size_t top = i / 3 / size.width * samples;
        std::size_t sum = 0;
        for (std::size_t y = top; y < top + samples; ++y)
        {
            for (std::size_t x = left; x < left + samples; ++x)
            {
                sum += large.bytes[(y * large.width + x) * 3 + component];
            }
        }
        small.bytes[i] = static_cast<std::uint8_t>((sum + count / 2) / count);
    }
    return small;
}

} // namespace

RgbPicture PicturePainter::paint(const SolidScene& scene, const Kodo::DebugDrawer::Context& drawn,
                                 const Kodo::Render::Camera& camera, const PictureSize& size)
{
    return paintFrame(scene, drawn, camera, size, 1.0F);
}

RgbPicture PicturePainter::paintSmooth(const SolidScene& scene, const Kodo::DebugDrawer::Context& drawn,
                                       const Kodo::Render::Camera& camera, const PictureSize& size,
                                       std::size_t samples)
{
    const PictureSize large{size.width * samples, size.height * samples};
    return shrink(paintFrame(scene, drawn, camera, large, 1.5F * static_cast<float>(samples)), size, samples);
}

RgbPicture PicturePainter::paintFrame(const SolidScene& scene, const Kodo::DebugDrawer::Context& drawn,
                                      const Kodo::Render::Camera& camera, const PictureSize& size,
                                      float narrowestLine)
{
    const FrameBuffer frame(size);
    frame.bind();
    m_solids.paint(scene, camera, size);
    m_debug.paint(drawn, {camera, size, narrowestLine});
    return frame.read();
}
