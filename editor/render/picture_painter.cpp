#include "editor/render/picture_painter.hpp"

#include "editor/render/gl_error.hpp"

#include <algorithm>

namespace
{

/// Each pixel the mean of a square of samples, rounded to the nearest.
RgbPicture shrink(const RgbPicture& large, const PictureSize& size, std::size_t samples)
{
    RgbPicture small{size.width, size.height, std::vector<std::uint8_t>(size.width * size.height * 3)};
    const std::size_t count = samples * samples;
    std::vector<std::size_t> sums(size.width * 3);
    for (std::size_t row = 0; row < size.height; ++row)
    {
        std::fill(sums.begin(), sums.end(), 0);
        for (std::size_t i = 0; i < samples * large.width; ++i)
        {
            const std::size_t column = i % large.width / samples;
            for (std::size_t component = 0; component < 3; ++component)
            {
                sums[column * 3 + component] +=
                    large.bytes[(row * samples * large.width + i) * 3 + component];
            }
        }
        std::transform(
            sums.begin(), sums.end(), small.bytes.begin() + static_cast<std::ptrdiff_t>(row * sums.size()),
            [count](std::size_t sum) { return static_cast<std::uint8_t>((sum + count / 2) / count); });
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
