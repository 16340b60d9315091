#pragma once

#include "tern_common/curve_view/curve_view.hpp"

#include <cstddef>

/// Points one apart along a wave, which cost next to nothing to ask for. Out of line, so that whoever calls
/// through the interface makes a call, as with any editor's model.
class WaveCurve : public CurveView::IAbstractCurve
{
public:
    static constexpr std::size_t STEPS = 16;

    explicit WaveCurve(std::size_t points) noexcept;

    std::size_t pointCount() const override;
    float pointParameter(std::size_t index) const override;
    Kodo::Vector3 positionAt(float parameter) const override;
    float segmentResolution(std::size_t index) const override;
    bool isValid() const override;
    Kodo::Vector3 pointPosition(std::size_t index) const override;
    void insertPoint(const Kodo::Vector3& position, float parameter) override;
    void removePoint(std::size_t index) override;
    tern::ReflectedObject pointObject(std::size_t index) const override;

    std::size_t count;
};
