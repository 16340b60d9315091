#pragma once

#include "kodo/export.hpp"
#include "kodo/math/quaternion.hpp"
#include "kodo/math/vector3.hpp"
#include "kodo/render/colour.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kodo::DebugDrawer
{

/// A strip of lines as it was asked for.
struct LineRecord
{
    std::size_t firstPoint = 0; ///< in Context::points()
    std::size_t pointCount = 0;
    Render::ColourRGBAFloat colour{1.0F, 1.0F, 1.0F, 1.0F};
    float width = 0.0F; ///< world units
    bool zTest = true;
    bool zWrite = true;
};

/// A lit ball as it was asked for: a unit sphere (radius 1), scaled, rotated and moved.
struct SphereRecord
{
    Vector3 position;
    Quaternion rotation;
    Vector3 scale{1.0F, 1.0F, 1.0F};
    Render::ColourRGBAFloat colour{1.0F, 1.0F, 1.0F, 1.0F};
    bool zTest = true;
    bool zWrite = true;
};

/// Records what a frame draws for debugging and editing; a back end draws the record. Memory is kept from
/// frame to frame. Main thread only.
class KODO_API Context
{
public:
    /// Sets the properties of the strip that line() added. Valid until the context is cleared.
    class KODO_API Line
    {
    public:
        Line& colour(const Render::ColourRGBAFloat& colour);
        /// Appends points to the strip; at no cost in memory as long as no other line was begun.
        Line& point(const Vector3& point);
        Line& point(const std::vector<Vector3>& points);
        Line& zTestEnable(bool enable);
        Line& zWriteEnable(bool enable);
        Line& width(float worldUnits);

    private:
        friend class Context;
        Line(Context& context, std::size_t index) noexcept : m_context(&context), m_index(index) {}
        LineRecord& record() const;

        Context* m_context;
        std::size_t m_index;
    };

    /// Sets the properties of the ball that sphere() added. Valid until the context is cleared.
    class KODO_API Sphere
    {
    public:
        Sphere& colour(const Render::ColourRGBAFloat& colour);
        Sphere& position(const Vector3& position);
        Sphere& rotation(const Quaternion& rotation);
        Sphere& scale(const Vector3& scale);
        Sphere& zTestEnable(bool enable);
        Sphere& zWriteEnable(bool enable);

    private:
        friend class Context;
        Sphere(Context& context, std::size_t index) noexcept : m_context(&context), m_index(index) {}
        SphereRecord& record() const;

        Context* m_context;
        std::size_t m_index;
    };

    enum class Kind : std::uint8_t
    {
        Line,
        Sphere
    };
    /// One thing to draw. What is recorded first stays on top: a strip recorded with the depth test and then
    /// without it, in another colour, shows both, the second one where the scene hides it.
    struct Command
    {
        Kind kind;
        std::size_t index; ///< in lines() or spheres()
    };

    Line line();
    Sphere sphere();

    std::span<const Command> commands() const noexcept { return m_commands; }
    std::span<const LineRecord> lines() const noexcept { return m_lines; }
    std::span<const SphereRecord> spheres() const noexcept { return m_spheres; }
    std::span<const Vector3> points() const noexcept { return m_points; }
    std::span<const Vector3> pointsOf(const LineRecord& line) const noexcept;

    /// Forgets the frame and keeps the memory.
    void clear() noexcept;

private:
    void append(LineRecord& line, const Vector3* points, std::size_t count);

    std::vector<Command> m_commands;
    std::vector<LineRecord> m_lines;
    std::vector<SphereRecord> m_spheres;
    std::vector<Vector3> m_points;
};

} // namespace Kodo::DebugDrawer
