#include "editor/palette/color_difference.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace
{

constexpr double DEGREE = std::numbers::pi / 180.0;

double toLinear(float component)
{
    const double c = std::clamp(static_cast<double>(component), 0.0, 1.0);
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

double labCurve(double t)
{
    constexpr double DELTA = 6.0 / 29.0;
    return t > DELTA * DELTA * DELTA ? std::cbrt(t) : t / (3.0 * DELTA * DELTA) + 4.0 / 29.0;
}

/// In degrees, 0 to 360; 0 for greys.
double hueAngle(double a, double b)
{
    if (a == 0.0 && b == 0.0)
    {
        return 0.0;
    }
    const double angle = std::atan2(b, a) / DEGREE;
    return angle < 0.0 ? angle + 360.0 : angle;
}

/// c^7 / (c^7 + 25^7) under the root, which both corrections of chroma use.
double chromaWeight(double chroma)
{
    const double seventh = std::pow(chroma, 7.0);
    return std::sqrt(seventh / (seventh + 6103515625.0));
}

/// Chroma and hue with the a axis stretched for near-greys.
struct Polar
{
    double chroma = 0;
    double hue = 0;
};

Polar polar(const LabColor& color, double stretch)
{
    const double a = color.a * stretch;
    return {std::hypot(a, color.b), hueAngle(a, color.b)};
}

double hueDifference(const Polar& first, const Polar& second)
{
    if (first.chroma * second.chroma == 0.0)
    {
        return 0.0;
    }
    const double difference = second.hue - first.hue;
    if (std::fabs(difference) <= 180.0)
    {
        return difference;
    }
    return difference > 180.0 ? difference - 360.0 : difference + 360.0;
}

double meanHue(const Polar& first, const Polar& second)
{
    const double sum = first.hue + second.hue;
    if (first.chroma * second.chroma == 0.0)
    {
        return sum;
    }
    if (std::fabs(first.hue - second.hue) <= 180.0)
    {
        return sum / 2.0;
    }
    return sum < 360.0 ? (sum + 360.0) / 2.0 : (sum - 360.0) / 2.0;
}

} // namespace

LabColor toLab(const Kodo::Render::ColourRGBAFloat& color)
{
    const double r = toLinear(color.r());
    const double g = toLinear(color.g());
    const double b = toLinear(color.b());
    const double x = labCurve((0.4124564 * r + 0.3575761 * g + 0.1804375 * b) / 0.95047);
    const double y = labCurve(0.2126729 * r + 0.7151522 * g + 0.0721750 * b);
    const double z = labCurve((0.0193339 * r + 0.1191920 * g + 0.9503041 * b) / 1.08883);
    return {116.0 * y - 16.0, 500.0 * (x - y), 200.0 * (y - z)};
}

double perceptualDistance(const LabColor& first, const LabColor& second)
{
    const double meanPlainChroma = (std::hypot(first.a, first.b) + std::hypot(second.a, second.b)) / 2.0;
    const double stretch = 1.0 + 0.5 * (1.0 - chromaWeight(meanPlainChroma));
    const Polar one = polar(first, stretch);
    const Polar two = polar(second, stretch);

    const double hueStep = hueDifference(one, two);
    const double lightness = second.l - first.l;
    const double chroma = two.chroma - one.chroma;
    const double hue = 2.0 * std::sqrt(one.chroma * two.chroma) * std::sin(hueStep * DEGREE / 2.0);

    const double meanChroma = (one.chroma + two.chroma) / 2.0;
    const double mean = meanHue(one, two);
    const double t = 1.0 - 0.17 * std::cos((mean - 30.0) * DEGREE) + 0.24 * std::cos(2.0 * mean * DEGREE) +
                     0.32 * std::cos((3.0 * mean + 6.0) * DEGREE) -
                     0.20 * std::cos((4.0 * mean - 63.0) * DEGREE);
    const double blueness = (mean - 275.0) / 25.0;
    const double rotation =
        -std::sin(60.0 * DEGREE * std::exp(-blueness * blueness)) * 2.0 * chromaWeight(meanChroma);

    const double middle = (first.l + second.l) / 2.0 - 50.0;
    const double byLightness =
        lightness / (1.0 + 0.015 * middle * middle / std::sqrt(20.0 + middle * middle));
    const double byChroma = chroma / (1.0 + 0.045 * meanChroma);
    const double byHue = hue / (1.0 + 0.015 * meanChroma * t);
    return std::sqrt(byLightness * byLightness + byChroma * byChroma + byHue * byHue +
                     rotation * byChroma * byHue);
}
