#pragma once

#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/chunk/space_manager.hpp"
#include "kodo/collision/collision_scene_manager.hpp"
#include "tern_common/curve_view/curve_view.hpp"

#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

/// A curve that waves from west to east through five points, with 8 steps from each to the next.
class WaveCurve final : public CurveView::IAbstractCurve
{
public:
    static constexpr std::size_t POINTS = 5;
    static constexpr std::size_t STEPS = 8;

    static Kodo::Vector3 at(float parameter)
    {
        return {-8.0F + 4.0F * parameter, 2.2F + 0.6F * std::sin(1.3F * parameter),
                1.5F * std::cos(0.9F * parameter)};
    }

    std::size_t pointCount() const override { return POINTS; }
    float pointParameter(std::size_t index) const override { return static_cast<float>(index); }
    Kodo::Vector3 positionAt(float parameter) const override { return at(parameter); }
    float segmentResolution(std::size_t) const override { return static_cast<float>(STEPS); }
    bool isValid() const override { return true; }
    Kodo::Vector3 pointPosition(std::size_t index) const override { return at(static_cast<float>(index)); }
    void insertPoint(const Kodo::Vector3& position, float parameter) override
    {
        insertedPosition = position;
        insertedParameter = parameter;
        ++insertions;
    }
    void removePoint(std::size_t) override {}
    tern::ReflectedObject pointObject(std::size_t) const override { return {}; }

    int insertions = 0;
    float insertedParameter = 0.0F;
    Kodo::Vector3 insertedPosition;
};

/// A view of that curve in a space of its own.
class WaveScene
{
public:
    static constexpr int SPACE = 71;

    WaveScene()
    {
        Kodo::CollisionSceneManager::instance().createScene(SPACE);
        Kodo::SpaceManager::instance().createSpace(SPACE);
        auto curve = std::make_unique<WaveCurve>();
        m_curve = curve.get();
        m_view = std::make_unique<CurveView>(std::move(curve), SPACE);
        m_view->setCurveThickness(THICKNESS);
    }
    WaveScene(const WaveScene&) = delete;
    WaveScene& operator=(const WaveScene&) = delete;
    ~WaveScene()
    {
        m_view.reset();
        Kodo::ChunkManager::instance().removeSpace(SPACE);
        Kodo::SpaceManager::instance().removeSpace(SPACE);
        Kodo::CollisionSceneManager::instance().removeScene(SPACE);
    }

    static constexpr float THICKNESS = 0.12F;

    CurveView& view() { return *m_view; }
    WaveCurve& curve() { return *m_curve; }
    CurveViewControlPoint& point(std::size_t index) { return *m_view->getControlPoints()[index]; }

private:
    WaveCurve* m_curve = nullptr;
    std::unique_ptr<CurveView> m_view;
};
