#pragma once

#include "editor/render/frame_buffer.hpp"
#include "editor/render/gl_object.hpp"
#include "editor/render/gl_program.hpp"
#include "kodo/render/camera.hpp"
#include "kodo/render/debug_drawer.hpp"

#include <vector>

/// How the record of a frame is looked at.
struct DebugView
{
    const Kodo::Render::Camera& camera;
    PictureSize size;
    /// Lines are at least so many pixels wide, so that a far or thin one stays whole.
    float narrowestLine = 1.0F;
};

/// Draws what a DebugDrawer::Context recorded over the scene that is in the frame buffer, by its depths.
/// Made, used and destroyed while its OpenGL context is current.
///
/// What was recorded first stays on top: the record is painted from its end to its beginning. So a strip
/// that is recorded twice, with the depth test in one colour and then without it in another, shows the first
/// colour where the scene leaves it visible and the second where the scene hides it.
///
/// - A depth test is passed in front of the scene and at its very surface. What goes without the test does
///   not write depths either, whatever it asked for. Colours are opaque and not clamped before they are
///   stored; alpha does not count.
/// - A line is a band of its width in world units that faces the camera, round at its joints and ends; its
///   half width on the screen changes evenly from one end of a segment to the other. It is not lit. A strip
///   of one point is a dot, one of none is nothing.
/// - A ball is lit as SceneLight says. A negative scale looks as its absolute value does: a ball is its own
///   mirror image. A scale of zero in any axis draws nothing.
/// - Something with a number that is not finite draws nothing, segment by segment.
class DebugPainter
{
public:
    /// Throws GlError.
    DebugPainter();

    void paint(const Kodo::DebugDrawer::Context& context, const DebugView& view);

private:
    void uploadPoints(const Kodo::DebugDrawer::Context& context);
    void paintLine(const Kodo::DebugDrawer::LineRecord& line) const;
    void paintSphere(const Kodo::DebugDrawer::SphereRecord& sphere) const;

    struct LineUniforms
    {
        GlProgram::Uniform toClip;
        GlProgram::Uniform pictureSize;
        GlProgram::Uniform pixelsPerUnit;
        GlProgram::Uniform narrowest;
        GlProgram::Uniform width;
        GlProgram::Uniform color;
    };
    struct SphereUniforms
    {
        GlProgram::Uniform toClip;
        GlProgram::Uniform toWorld;
        GlProgram::Uniform normalToWorld;
        GlProgram::Uniform color;
    };

    GlProgram m_lineProgram;
    LineUniforms m_lineUniforms;
    GlVertexArray m_lineArray;
    GlBuffer m_points;
    GlProgram m_sphereProgram;
    SphereUniforms m_sphereUniforms;
    GlVertexArray m_sphereArray;
    GlBuffer m_sphereVertices;
    GlBuffer m_sphereIndices;
    GLsizei m_sphereIndexCount = 0;
};
