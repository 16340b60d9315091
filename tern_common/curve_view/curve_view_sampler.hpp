#pragma once

#include "tern_common/curve_view/curve_view_presence.hpp"

#include <cstddef>
#include <memory>
#include <vector>

/// One sampling of a view's curve. Every call of the model may call back in: once that has begun another
/// sampling, replaced the model or destroyed the view, this one is obsolete, touches neither view nor model
/// any more, and all it does is nothing.
///
/// The samples are gathered here, in the memory of those before: a call from within sees the view without
/// samples, never with half of them.
class CurveView::Sampler
{
public:
    explicit Sampler(CurveView& view);
    Sampler(const Sampler&) = delete;
    Sampler& operator=(const Sampler&) = delete;

    bool isCurrent() const noexcept { return m_presence->samplings == m_sampling; }

    /// How many points the curve has; 0 where it can't be shown.
    std::size_t count();
    /// Samples the way from a point to the next, that one left out. False when the steps would never get
    /// there: the way has one sample then.
    bool addSegment(std::size_t index);
    void addLastPoint(std::size_t index);
    /// Hands the samples to the view.
    void finish();

private:
    /// The way from a point to the next, in the curve's parameter.
    struct Segment
    {
        float start;
        float length;
        float step; ///< as long as the way where that is too short to be divided
        bool isDivided;
        bool ends; ///< whether its steps do
    };

    bool ask(std::size_t index, Segment& segment) const;
    void addSample(std::size_t index, const Segment& segment);
    void addSamples(std::size_t index, const Segment& segment);
    bool makeRoom(std::size_t index, const Segment& segment);
    static std::size_t expectedSamples(const Segment& segment) noexcept;
    void grow(std::size_t size);

    std::shared_ptr<Presence> m_presence;
    std::size_t m_sampling;
    IAbstractCurve* m_curve;
    Kodo::Matrix m_origin;
    std::size_t m_count = 0;
    /// Beyond the samples these have elements to be overwritten: appending one by one would look at the ends
    /// of both vectors each time.
    std::vector<Kodo::Vector3> m_points;
    std::vector<float> m_parameters;
    std::size_t m_sampled = 0;
};
