#pragma once

#include "kodo/chunk/chunk_manager.hpp"
#include "tern_common/curve_view/curve_view.hpp"

#include <span>
#include <utility>

/// Control points that are being made, and have entered the editor chunk of their space in that. They leave
/// it again unless the view takes them.
class CurveView::NewPoints
{
public:
    explicit NewPoints(int spaceId) noexcept : m_spaceId(spaceId) {}
    NewPoints(const NewPoints&) = delete;
    NewPoints& operator=(const NewPoints&) = delete;
    ~NewPoints() { leaveEditorChunk(m_spaceId, m_points); }

    void add(Kodo::SmartPointer<CurveViewControlPoint> point)
    {
        try
        {
            m_points.push_back(point);
        }
        catch (...)
        {
            leaveEditorChunk(m_spaceId, {&point, 1});
            throw;
        }
    }

    ControlPoints& points() noexcept { return m_points; }
    ControlPoints take() noexcept { return std::exchange(m_points, {}); }

    /// Takes points out of the editor chunk, first to last.
    static void leaveEditorChunk(int spaceId,
                                 std::span<const Kodo::SmartPointer<CurveViewControlPoint>> points)
    {
        if (points.empty())
        {
            return;
        }
        const Kodo::SmartPointer<Kodo::ChunkSpace> space =
            Kodo::ChunkManager::instance().space(spaceId, true);
        for (const auto& point : points)
        {
            space->editorChunk().delDynamicItem(point);
        }
    }

private:
    int m_spaceId;
    ControlPoints m_points;
};
