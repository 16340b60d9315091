#include "benchmarks/wave_curve.hpp"

#include <cmath>

WaveCurve::WaveCurve(std::size_t points) noexcept : count(points) {}

std::size_t WaveCurve::pointCount() const
{
    return count;
}

float WaveCurve::pointParameter(std::size_t index) const
{
    return static_cast<float>(index);
}

Kodo::Vector3 WaveCurve::positionAt(float parameter) const
{
    const float part = parameter - std::floor(parameter);
    return {parameter, part * (1.0F - part), 2.0F};
}

float WaveCurve::segmentResolution(std::size_t) const
{
    return static_cast<float>(STEPS);
}

bool WaveCurve::isValid() const
{
    return true;
}

Kodo::Vector3 WaveCurve::pointPosition(std::size_t index) const
{
    return {static_cast<float>(index), 0.0F, 2.0F};
}

void WaveCurve::insertPoint(const Kodo::Vector3&, float) {}

void WaveCurve::removePoint(std::size_t) {}

tern::ReflectedObject WaveCurve::pointObject(std::size_t) const
{
    return {};
}
