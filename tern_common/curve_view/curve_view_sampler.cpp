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
    const float start = m_curve->pointParameter(index);
    if (!isCurrent())
    {
        return true;
    }
    const float length = m_curve->pointParameter(index + 1) - start;
    if (!isCurrent())
    {
        return true;
    }
    if (!(std::fabs(length) >= LEAST_DIVIDED))
    {
        addSample(start);
        return true;
    }
    const float step = length / m_curve->segmentResolution(index);
    if (!isCurrent())
    {
        return true;
    }
    if (!TernCommonDetail::stepsEnd(length, step))
    {
        addSample(start);
        return false;
    }
    if (length > 0.0F) // the way back has no samples
    {
        makeRoom(index, length / step);
        addSamples(start, length, step);
    }
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
    if (isCurrent())
    {
        append(m_origin.applyPoint(position), parameter);
    }
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

void CurveView::Sampler::addSample(float parameter)
{
    const Kodo::Vector3 position = m_curve->positionAt(parameter);
    if (isCurrent())
    {
        append(m_origin.applyPoint(position), parameter);
    }
}

/// What the loop needs stands in variables of its own: members would be read anew after each call of the
/// model.
void CurveView::Sampler::addSamples(float start, float length, float step)
{
    const std::size_t& samplings = m_presence->samplings;
    const std::size_t sampling = m_sampling;
    const IAbstractCurve& curve = *m_curve;
    const Kodo::Matrix origin = m_origin;
    Kodo::Vector3* points = m_points.data();
    float* parameters = m_parameters.data();
    std::size_t room = m_points.size();
    std::size_t sampled = m_sampled;
    float t = 0.0F;
    while (t < length)
    {
        const Kodo::Vector3 position = curve.positionAt(start + t);
        if (samplings != sampling)
        {
            return;
        }
        if (sampled == room)
        {
            grow(sampled + sampled / 2 + 1);
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

void CurveView::Sampler::append(const Kodo::Vector3& point, float parameter)
{
    if (m_sampled == m_points.size())
    {
        grow(m_sampled + m_sampled / 2 + 1);
    }
    m_points[m_sampled] = point;
    m_parameters[m_sampled] = parameter;
    ++m_sampled;
}

/// Makes room for the samples of a segment, and at the first one for as many in each of the others: memory
/// does not grow while samples come, unless the model's segments differ.
void CurveView::Sampler::makeRoom(std::size_t index, float steps)
{
    if (!(steps > 0.0F))
    {
        return;
    }
    const auto most = static_cast<float>(MOST_EXPECTED);
    const auto expected = static_cast<std::size_t>(std::min(steps, most)) + 2; // the rounding's, and the last
    const std::size_t segments = index == 0 ? std::min(m_count, MOST_EXPECTED) : 1;
    const std::size_t needed = m_sampled + std::min(expected * segments, MOST_EXPECTED);
    if (needed > m_points.size())
    {
        grow(needed);
    }
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
