#pragma once

#include "editor/render/frame_buffer.hpp"
#include "editor/render/gl_object.hpp"
#include "editor/render/gl_program.hpp"
#include "editor/render/solid_scene.hpp"
#include "kodo/render/camera.hpp"

/// Fills the frame buffer with the sky, a ground with the boxes' shadows, and the boxes, and with their
/// depths. Made, used and destroyed while its OpenGL context is current.
class SolidPainter
{
public:
    /// Throws GlError.
    SolidPainter();

    void paint(const SolidScene& scene, const Kodo::Render::Camera& camera, const PictureSize& size);

private:
    void paintSky(const SolidScene& scene, const Kodo::Render::Camera& camera, float aspect) const;
    void paintGround(const SolidScene& scene, const Kodo::Matrix& toClip) const;
    void paintBoxes(const SolidScene& scene, const Kodo::Matrix& toClip) const;
    void uploadBoxes(const SolidScene& scene);

    GlProgram m_skyProgram;
    GlProgram m_groundProgram;
    GlProgram m_shadowProgram;
    GlProgram m_boxProgram;
    GlVertexArray m_noVertices;
    GlVertexArray m_boxArray;
    GlBuffer m_boxes;
};
