#pragma once

#include "editor/files/png_file.hpp"
#include "editor/render/frame_buffer.hpp"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// The rules by which a picture is drawn, computed anew: rays and projections in double precision, with
/// nothing taken from the renderer or from the camera's own arithmetic.
namespace Software
{

struct Vec
{
    double x = 0;
    double y = 0;
    double z = 0;

    constexpr double operator[](std::size_t axis) const { return axis == 0 ? x : axis == 1 ? y : z; }
};

Vec operator+(const Vec& a, const Vec& b);
Vec operator-(const Vec& a, const Vec& b);
Vec operator*(const Vec& a, double factor);
double dot(const Vec& a, const Vec& b);
Vec cross(const Vec& a, const Vec& b);
Vec unit(const Vec& a);

/// A place in the picture: pixels from the left and from the bottom, and how far before the eye.
struct Spot
{
    double x = 0;
    double y = 0;
    double depth = 0;
};

struct Line
{
    Vec origin;
    Vec direction; ///< advances the depth by 1
};

/// A camera and the size of its picture.
class View
{
public:
    /// @p angle is the field of view from top to bottom in radians.
    static View perspective(const Vec& eye, const Vec& at, double angle, const PictureSize& size);
    static View orthographic(const Vec& eye, const Vec& at, double height, const PictureSize& size);

    const PictureSize& size() const { return m_size; }
    const Vec& eye() const { return m_eye; }
    const Vec& forward() const { return m_forward; }
    Spot project(const Vec& place) const;
    /// The ray through the middle of a pixel, counted from the left and from the bottom.
    Line rayThrough(std::size_t x, std::size_t y) const;
    /// How many pixels a unit of length is at a depth.
    double pixelsPerUnit(double depth) const;
    /// The depth between two spots, a part of the way on the screen.
    double depthBetween(const Spot& a, const Spot& b, double part) const;

private:
    View(const Vec& eye, const Vec& at, double halfHeight, bool isPerspective, const PictureSize& size);

    Vec m_eye;
    Vec m_forward;
    Vec m_right;
    Vec m_up;
    double m_halfHeight; ///< of the view, at depth 1 in a perspective one
    bool m_isPerspective;
    PictureSize m_size;
};

struct Box
{
    Vec low;
    Vec high;
};

/// The depth at which a ray meets a box, a level plane or a ball; nothing where it doesn't. Rays begin at
/// depth 0.
std::optional<double> meet(const Line& ray, const Box& box);
std::optional<double> meetPlane(const Line& ray, double height);
std::optional<double> meetBall(const Line& ray, const Vec& centre, double radius);

/// Whether a strip of lines covers the middle of a pixel, and the depth of the nearest piece there.
std::optional<double> strip(const View& view, const std::vector<Vec>& points, double width, std::size_t x,
                            std::size_t y);

using Rgb = std::array<int, 3>;

/// Components from 0 to 1, as bytes.
Rgb bytesOf(const Vec& color);
Rgb pixelOf(const RgbPicture& picture, std::size_t x, std::size_t fromBottom);
/// Whether no component differs by more.
bool isNear(const Rgb& a, const Rgb& b, int most);

/// What a pixel should show: a colour with its tolerance, and the name of what has it.
struct Expected
{
    std::string what;
    Rgb color;
    int tolerance = 0;
};

} // namespace Software
