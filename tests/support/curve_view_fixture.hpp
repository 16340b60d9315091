#pragma once

#include "tern_common/curve_view/curve_view.hpp"
#include "tests/support/recording_curve.hpp"
#include "tests/support/recording_drawer.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

inline Kodo::Matrix translation(const Kodo::Vector3& offset)
{
    Kodo::Matrix matrix;
    matrix.setTranslate(offset);
    return matrix;
}

/// A view in a space of its own, its model and its drawer.
class CurveViewTest : public testing::Test
{
protected:
    /// A view of a fresh curve of @p count keys.
    CurveView& show(std::size_t count)
    {
        auto made = std::make_unique<RecordingCurve>(count);
        curve = made.get();
        view = std::make_unique<CurveView>(std::move(made), space.id, std::make_unique<RecordingDrawer>(log));
        curve->calls.clear();
        return *view;
    }

    /// The samples, as the drawer sees them.
    std::vector<Kodo::Vector3> samples()
    {
        log.drawn.clear();
        context.clear();
        view->render(context);
        return log.drawn.empty() ? std::vector<Kodo::Vector3>() : log.drawn.back();
    }
    std::vector<float> sampleParameters()
    {
        std::vector<float> parameters;
        for (const Kodo::Vector3& sample : samples())
        {
            parameters.push_back(sample.x);
        }
        return parameters;
    }
    std::vector<CurveViewControlPoint*> points() const
    {
        std::vector<CurveViewControlPoint*> result;
        for (const auto& point : view->getControlPoints())
        {
            result.push_back(point.get());
        }
        return result;
    }

    TestSpace space;
    DrawerLog log;
    Kodo::DebugDrawer::Context context;
    RecordingCurve* curve = nullptr;
    std::unique_ptr<CurveView> view;
};
