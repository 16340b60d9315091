#pragma once

#include "kodo/math/ray.hpp"
#include "tern_common/export.hpp"

#include <cstddef>
#include <functional>

class CurveView;

/// Adds a point to the curve whose drawn polyline a ray passes closest to, or previews it. As precise as the
/// views' sampling. Main thread only.
class TERN_COMMON_API CurveViewPointInserter
{
public:
    enum class InsertType
    {
        Insert, ///< asks the curve's model for a new point
        Ghost   ///< shows the point until the view is rendered next
    };

    /// @p forEachView calls what it is given once for each view to consider, before it returns. On equal
    /// distances the view visited first is taken.
    explicit CurveViewPointInserter(
        std::function<void(std::function<void(CurveView&)>)> forEachView) noexcept;

    /// Takes the sample nearest to the line that @p ray lies on, before and behind its origin. The distance
    /// is measured with the direction as it is given, so it should have length 1. Without any sample nothing
    /// happens. An origin of the view that can't be inverted is reported; the model is asked all the same,
    /// with the right parameter and a place that means nothing. Throws std::bad_function_call when there is
    /// no function that visits the views.
    void insert(const Kodo::Ray& ray, InsertType type);

private:
    static void showGhost(CurveView& view, std::size_t index);
    static void insertPoint(CurveView& view, std::size_t index);

    std::function<void(std::function<void(CurveView&)>)> m_forEachView;
};
