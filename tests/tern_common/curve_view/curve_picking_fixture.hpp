#pragma once

#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tests/support/recording_curve.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

/// Down the z axis at x and y.
inline Kodo::Ray rayAt(float x, float y = RecordingCurve::WAY_Y)
{
    return {{x, y, -50}, {0, 0, 1}};
}

/// A space with views of curves in it.
class CurvePickingTest : public testing::Test
{
protected:
    CurveView& show(std::size_t count, const Kodo::Matrix& origin = Kodo::Matrix::IDENTITY)
    {
        auto made = std::make_unique<RecordingCurve>(count);
        curves.push_back(made.get());
        views.push_back(std::make_unique<CurveView>(std::move(made), space.id, origin));
        return *views.back();
    }
    CurveViewSpaceCache& cache() { return CurveViewSpaceCache::instance(space.chunkSpace()); }

    std::size_t insertionCount() const
    {
        std::size_t count = 0;
        for (const RecordingCurve* curve : curves)
        {
            count += curve->insertions.size();
        }
        return count;
    }

    TestSpace space;
    std::vector<RecordingCurve*> curves;
    std::vector<std::unique_ptr<CurveView>> views;
    Kodo::DebugDrawer::Context context;
};
