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
    m_points.clear();
    m_parameters.clear();
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
    flush();
    if (isCurrent())
    {
        m_presence->view->m_points = std::move(m_points);
        m_presence->view->m_parameters = std::move(m_parameters);
    }
}

bool CurveView::Sampler::addSample(float parameter)
{
    const Kodo::Vector3 position = m_curve->positionAt(parameter);
    if (!isCurrent())
    {
        return false;
    }
    append(m_origin.applyPoint(position), parameter);
    return true;
}

void CurveView::Sampler::addSamples(float start, float length, float step)
{
    for (float t = 0.0F; t < length && addSample(start + t);)
    {
        t += step;
    }
}

inline void CurveView::Sampler::append(const Kodo::Vector3& point, float parameter)
{
    if (m_batched == BATCH)
    {
        flush();
    }
    m_batchPoints[m_batched] = point;
    m_batchParameters[m_batched] = parameter;
    ++m_batched;
}

void CurveView::Sampler::flush()
{
    const auto count = static_cast<std::ptrdiff_t>(std::exchange(m_batched, 0));
    m_points.insert(m_points.end(), m_batchPoints.begin(), m_batchPoints.begin() + count);
    m_parameters.insert(m_parameters.end(), m_batchParameters.begin(), m_batchParameters.begin() + count);
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
    const std::size_t needed = m_points.size() + m_batched + std::min(expected * segments, MOST_EXPECTED);
    if (needed > m_points.capacity())
    {
        const std::size_t room = std::max(needed, 2 * m_points.capacity());
        m_points.reserve(room);
        m_parameters.reserve(room);
    }
}
