#include "tern_common/curve_view/curve_view_sampler.hpp"

#include "tern_common/curve_view/sampling_steps.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{

/// Shorter ways, in the curve's parameter, are not divided.
constexpr float LEAST_DIVIDED = 0.1F;
/// As much is made room for ahead on a model's word; beyond that, memory grows with the samples that come.
constexpr std::size_t MOST_EXPECTED = std::size_t{1} << 18U;

} // namespace

CurveView::Sampler::Sampler(CurveView& view)
    : m_presence(view.m_presence), m_sampling(++m_presence->samplings), m_curve(view.m_curve.get()),
      m_origin(view.m_origin), m_points(std::exchange(view.m_points, {})),
      m_parameters(std::exchange(view.m_parameters, {}))
{
}

std::size_t CurveView::Sampler::count()
{
    if (m_curve == nullptr || !m_curve->isValid() || !isCurrent())
    {
        return 0;
    }
    m_count = m_curve->pointCount();
    return isCurrent() ? m_count : 0;
}

bool CurveView::Sampler::addSegment(std::size_t index)
{
    Segment segment{};
    if (!ask(index, segment))
    {
        return true;
    }
    if (!segment.isDivided || !segment.ends)
    {
        addSample(index, segment);
        return segment.ends;
    }
    addSamples(index, segment);
    return true;
}

void CurveView::Sampler::addLastPoint(std::size_t index)
{
    const Kodo::Vector3 position = m_curve->pointPosition(index);
    if (!isCurrent())
    {
        return;
    }
    const float parameter = m_curve->pointParameter(index);
    if (!isCurrent())
    {
        return;
    }
    if (m_sampled == m_points.size())
    {
        grow(m_sampled + 1);
    }
    m_points[m_sampled] = m_origin.applyPoint(position);
    m_parameters[m_sampled] = parameter;
    ++m_sampled;
}

void CurveView::Sampler::finish()
{
    if (isCurrent())
    {
        m_points.resize(m_sampled);
        m_parameters.resize(m_sampled);
        m_presence->view->m_points = std::move(m_points);
        m_presence->view->m_parameters = std::move(m_parameters);
    }
}

/// Has the model describe a segment. False when that has made the sampling obsolete.
bool CurveView::Sampler::ask(std::size_t index, Segment& segment) const
{
    segment.start = m_curve->pointParameter(index);
    if (!isCurrent())
    {
        return false;
    }
    segment.length = m_curve->pointParameter(index + 1) - segment.start;
    if (!isCurrent())
    {
        return false;
    }
    segment.isDivided = std::fabs(segment.length) >= LEAST_DIVIDED;
    segment.step = segment.length / (segment.isDivided ? m_curve->segmentResolution(index) : 1.0F);
    segment.ends = !segment.isDivided || TernCommonDetail::stepsEnd(segment.length, segment.step);
    return isCurrent();
}

void CurveView::Sampler::addSample(std::size_t index, const Segment& segment)
{
    const Kodo::Vector3 position = m_curve->positionAt(segment.start);
    if (isCurrent() && (m_sampled < m_points.size() || makeRoom(index, segment)))
    {
        m_points[m_sampled] = m_origin.applyPoint(position);
        m_parameters[m_sampled] = segment.start;
        ++m_sampled;
    }
}

/// What the loop needs stands in variables of its own: members would be read anew after each call of the
/// model.
void CurveView::Sampler::addSamples(std::size_t index, const Segment& segment)
{
    const std::size_t& samplings = m_presence->samplings;
    const std::size_t sampling = m_sampling;
    const IAbstractCurve& curve = *m_curve;
    const Kodo::Matrix origin = m_origin;
    const float start = segment.start;
    const float length = segment.length;
    const float step = segment.step;
    Kodo::Vector3* points = m_points.data();
    float* parameters = m_parameters.data();
    std::size_t room = m_points.size();
    std::size_t sampled = m_sampled;
    float t = 0.0F;
    while (t < length) // not at all on a way back
    {
        const Kodo::Vector3 position = curve.positionAt(start + t);
        if (samplings != sampling)
        {
            return;
        }
        if (sampled == room)
        {
            m_sampled = sampled;
            if (!makeRoom(index, segment))
            {
                return;
            }
            points = m_points.data();
            parameters = m_parameters.data();
            room = m_points.size();
        }
        points[sampled] = origin.applyPoint(position);
        parameters[sampled] = start + t;
        ++sampled;
        t += step;
    }
    m_sampled = sampled;
}

/// Makes room for a segment's samples, for those of all the segments behind it and for the last point: memory
/// grows once, not while samples come. False when asking the model for those segments has made the sampling
/// obsolete.
bool CurveView::Sampler::makeRoom(std::size_t index, const Segment& segment)
{
    std::size_t expected = expectedSamples(segment) + 1;
    Segment next{};
    for (std::size_t i = index + 1; i + 1 < m_count && expected < MOST_EXPECTED; ++i)
    {
        if (!ask(i, next))
        {
            return false;
        }
        expected += expectedSamples(next);
    }
    grow(m_sampled + std::min(expected, MOST_EXPECTED));
    return true;
}

/// At least as many as the segment is going to have, on the model's word: rounding adds up while a float
/// counts the steps.
std::size_t CurveView::Sampler::expectedSamples(const Segment& segment) noexcept
{
    if (!segment.isDivided || !segment.ends)
    {
        return 1;
    }
    const float steps = segment.length / segment.step;
    if (!(steps >= 0.0F) || segment.length < 0.0F)
    {
        return 1; // a step that is no number ends the way at once, and a way back has no samples
    }
    const auto most = static_cast<float>(MOST_EXPECTED);
    return static_cast<std::size_t>(std::min(steps + steps * steps * 0x1p-24F, most)) + 2;
}

/// Gives the vectors that many elements. Their memory grows by half at least, so that growing a little often
/// does not copy often.
void CurveView::Sampler::grow(std::size_t size)
{
    if (size > m_points.capacity() || size > m_parameters.capacity())
    {
        const std::size_t room = std::max(size, m_points.capacity() + m_points.capacity() / 2);
        m_points.reserve(room);
        m_parameters.reserve(room);
    }
    m_points.resize(size);
    m_parameters.resize(size);
}
