#include "tests/editor/picture/software_view.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Software
{

Vec operator+(const Vec& a, const Vec& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

Vec operator-(const Vec& a, const Vec& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Vec operator*(const Vec& a, double factor)
{
    return {a.x * factor, a.y * factor, a.z * factor};
}

double dot(const Vec& a, const Vec& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vec cross(const Vec& a, const Vec& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

Vec unit(const Vec& a)
{
    return a * (1.0 / std::sqrt(dot(a, a)));
}

View::View(const Vec& eye, const Vec& at, double halfHeight, bool isPerspective, const PictureSize& size)
    : m_eye(eye), m_forward(unit(at - eye)), m_right(unit(cross({0, 1, 0}, m_forward))),
      m_up(cross(m_forward, m_right)), m_halfHeight(halfHeight), m_isPerspective(isPerspective), m_size(size)
{
}

View View::perspective(const Vec& eye, const Vec& at, double angle, const PictureSize& size)
{
    return {eye, at, std::tan(angle / 2), true, size};
}

View View::orthographic(const Vec& eye, const Vec& at, double height, const PictureSize& size)
{
    return {eye, at, height / 2, false, size};
}

double View::pixelsPerUnit(double depth) const
{
    return static_cast<double>(m_size.height) / 2 / m_halfHeight / (m_isPerspective ? depth : 1.0);
}

Spot View::project(const Vec& place) const
{
    const Vec offset = place - m_eye;
    const double depth = dot(offset, m_forward);
    const double scale = pixelsPerUnit(depth);
    return {static_cast<double>(m_size.width) / 2 + dot(offset, m_right) * scale,
            static_cast<double>(m_size.height) / 2 + dot(offset, m_up) * scale, depth};
}

Line View::rayThrough(std::size_t x, std::size_t y) const
{
    const double scale = pixelsPerUnit(1.0);
    const Vec across =
        m_right * ((static_cast<double>(x) + 0.5 - static_cast<double>(m_size.width) / 2) / scale) +
        m_up * ((static_cast<double>(y) + 0.5 - static_cast<double>(m_size.height) / 2) / scale);
    return m_isPerspective ? Line{m_eye, m_forward + across} : Line{m_eye + across, m_forward};
}

double View::depthBetween(const Spot& a, const Spot& b, double part) const
{
    return m_isPerspective ? 1.0 / ((1.0 - part) / a.depth + part / b.depth)
                           : a.depth + (b.depth - a.depth) * part;
}

std::optional<double> meet(const Line& ray, const Box& box)
{
    double enter = 0;
    double leave = std::numeric_limits<double>::infinity();
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const double toLow = (box.low[axis] - ray.origin[axis]) / ray.direction[axis];
        const double toHigh = (box.high[axis] - ray.origin[axis]) / ray.direction[axis];
        enter = std::max(enter, std::min(toLow, toHigh));
        leave = std::min(leave, std::max(toLow, toHigh));
    }
    return enter <= leave ? std::optional(enter) : std::nullopt;
}

std::optional<double> meetPlane(const Line& ray, double height)
{
    const double depth = (height - ray.origin[1]) / ray.direction[1];
    return depth > 0 ? std::optional(depth) : std::nullopt;
}

std::optional<double> meetBall(const Line& ray, const Vec& centre, double radius)
{
    const Vec offset = ray.origin - centre;
    const double a = dot(ray.direction, ray.direction);
    const double b = dot(offset, ray.direction);
    const double under = b * b - a * (dot(offset, offset) - radius * radius);
    return under >= 0 ? std::optional((-b - std::sqrt(under)) / a) : std::nullopt;
}

std::optional<double> strip(const View& view, const std::vector<Vec>& points, double width, std::size_t x,
                            std::size_t y)
{
    std::optional<double> nearest;
    const double pixelX = static_cast<double>(x) + 0.5;
    const double pixelY = static_cast<double>(y) + 0.5;
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
    {
        const Spot a = view.project(points[i]);
        const Spot b = view.project(points[i + 1]);
        const double alongX = b.x - a.x;
        const double alongY = b.y - a.y;
        const double squared = alongX * alongX + alongY * alongY;
        const double part =
            std::clamp(((pixelX - a.x) * alongX + (pixelY - a.y) * alongY) / squared, 0.0, 1.0);
        const auto halfWidth = [&](const Spot& spot)
        { return std::max(1.0, width * view.pixelsPerUnit(spot.depth)) / 2; };
        const double reach = halfWidth(a) + (halfWidth(b) - halfWidth(a)) * part;
        if (std::hypot(pixelX - a.x - alongX * part, pixelY - a.y - alongY * part) <= reach)
        {
            const double depth = view.depthBetween(a, b, part);
            nearest = std::min(nearest.value_or(depth), depth);
        }
    }
    return nearest;
}

Rgb bytesOf(const Vec& color)
{
    return {static_cast<int>(std::lround(color.x * 255)), static_cast<int>(std::lround(color.y * 255)),
            static_cast<int>(std::lround(color.z * 255))};
}

Rgb pixelOf(const RgbPicture& picture, std::size_t x, std::size_t fromBottom)
{
    const std::size_t at = ((picture.height - 1 - fromBottom) * picture.width + x) * 3;
    return {picture.bytes[at], picture.bytes[at + 1], picture.bytes[at + 2]};
}

bool isNear(const Rgb& a, const Rgb& b, int most)
{
    return std::abs(a[0] - b[0]) <= most && std::abs(a[1] - b[1]) <= most && std::abs(a[2] - b[2]) <= most;
}

} // namespace Software
