#pragma once

#include "tern_common/curve_view/curve_view.hpp"
#include "tern_common/curve_view/curve_view_point_inserter.hpp"
#include "tests/support/polyline_curve.hpp"
#include "tests/support/test_space.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <utility>
#include <vector>

/// Views of curves, in the order in which an inserter visits them, and where it must insert: found by taking
/// every sample of every curve from its model anew.
class InsertionOracle
{
public:
    struct Curve
    {
        std::unique_ptr<PolylineCurve> model;
        Kodo::Matrix origin = Kodo::Matrix::IDENTITY;
    };
    struct Sample
    {
        Kodo::Vector3 position; ///< in the world
        float parameter;
    };
    struct Expectation
    {
        std::size_t view = NO_VIEW;
        Sample sample{};
    };
    static constexpr std::size_t NO_VIEW = std::numeric_limits<std::size_t>::max();

    explicit InsertionOracle(std::vector<Curve> curves)
    {
        for (Curve& curve : curves)
        {
            models.push_back(curve.model.get());
            views.push_back(std::make_unique<CurveView>(std::move(curve.model), space.id, curve.origin));
        }
    }

    /// The samples of a view: the curve's points and what is between them, in order.
    std::vector<Sample> samplesOf(std::size_t view) const
    {
        std::vector<Sample> samples;
        const PolylineCurve& curve = *models[view];
        const Kodo::Matrix& origin = views[view]->getOrigin();
        if (!curve.isValid() || curve.pointCount() == 0)
        {
            return samples;
        }
        const std::size_t last = curve.pointCount() - 1;
        for (std::size_t i = 0; i < last; ++i)
        {
            const float start = curve.pointParameter(i);
            const float length = curve.pointParameter(i + 1) - start;
            const bool divided = std::fabs(length) >= 0.1F;
            const float end = divided ? length : 1.0F;
            const float step = divided ? length / curve.segmentResolution(i) : 1.0F;
            for (float t = 0; t < end; t += step)
            {
                samples.push_back({origin.applyPoint(curve.positionAt(start + t)), start + t});
            }
        }
        samples.push_back({origin.applyPoint(curve.pointPosition(last)), curve.pointParameter(last)});
        return samples;
    }

    Expectation nearestTo(const Kodo::Ray& ray) const
    {
        Expectation nearest;
        float least = std::numeric_limits<float>::max();
        for (std::size_t view = 0; view < views.size(); ++view)
        {
            for (const Sample& sample : samplesOf(view))
            {
                const float along = (sample.position - ray.origin).dotProduct(ray.direction);
                const float distance =
                    (sample.position - (ray.origin + ray.direction * along)).lengthSquared();
                if (distance < least)
                {
                    least = distance;
                    nearest = {view, sample};
                }
            }
        }
        return nearest;
    }

    CurveViewPointInserter inserter() const
    {
        return CurveViewPointInserter(
            [this](const std::function<void(CurveView&)>& visit)
            {
                for (const auto& view : views)
                {
                    visit(*view);
                }
            });
    }

    /// Inserts along a ray and compares: one insertion, into the right curve, exact in place and parameter.
    testing::AssertionResult insertsRightly(const Kodo::Ray& ray)
    {
        const Expectation expected = nearestTo(ray);
        for (PolylineCurve* model : models)
        {
            model->insertions.clear();
        }
        Kodo::Vector3 position;
        if (expected.view != NO_VIEW)
        {
            Kodo::Matrix inverse = views[expected.view]->getOrigin();
            Kodo::Matrix transform;
            transform.setTranslate(expected.sample.position);
            inverse.invert();
            transform.postMultiply(inverse);
            position = transform.translation();
        }
        inserter().insert(ray, CurveViewPointInserter::InsertType::Insert);
        for (std::size_t view = 0; view < models.size(); ++view)
        {
            const auto& insertions = models[view]->insertions;
            if (insertions.size() != (view == expected.view ? 1U : 0U))
            {
                return testing::AssertionFailure() << insertions.size() << " insertions into curve " << view
                                                   << " where curve " << expected.view << " is nearest";
            }
        }
        if (expected.view == NO_VIEW)
        {
            return testing::AssertionSuccess();
        }
        const PolylineCurve::Key& inserted = models[expected.view]->insertions.front();
        if (!(inserted.position == position) || inserted.parameter != expected.sample.parameter)
        {
            return testing::AssertionFailure()
                   << "at (" << inserted.position.x << ", " << inserted.position.y << ", "
                   << inserted.position.z << "), parameter " << inserted.parameter << ", instead of ("
                   << position.x << ", " << position.y << ", " << position.z << "), parameter "
                   << expected.sample.parameter;
        }
        return testing::AssertionSuccess();
    }

    TestSpace space;
    std::vector<PolylineCurve*> models;            ///< owned by the views
    std::vector<std::unique_ptr<CurveView>> views; ///< go before their space
};

/// A ray of length 1 that passes near one of the samples, or anywhere where there are none.
inline Kodo::Ray rayNear(const std::vector<InsertionOracle::Sample>& samples, float spread,
                         std::mt19937& random)
{
    std::uniform_real_distribution<float> offset(-spread, spread);
    const auto anywhere = [&]
    {
        const float x = offset(random);
        const float y = offset(random);
        return Kodo::Vector3(x, y, offset(random));
    };
    const Kodo::Vector3 target =
        samples.empty() ? Kodo::Vector3() : samples[random() % samples.size()].position;
    const Kodo::Vector3 direction = (anywhere() + Kodo::Vector3(0, -2 * spread, 0)).normalised();
    return {target + anywhere() * 0.2F - direction * (3 * spread), direction};
}
