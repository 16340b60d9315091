#pragma once

#include "editor/render/gl_error.hpp"
#include "editor/render/picture_painter.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

/// For tests that draw. Where there is no OpenGL they are skipped, and say so; with TERN_TEST_OPENGL=required
/// in the environment they fail.
class PictureTest : public testing::Test
{
protected:
    void SetUp() override
    {
        try
        {
            m_painter = std::make_unique<PicturePainter>();
        }
        catch (const GlError& error)
        {
            const char* const wanted = std::getenv("TERN_TEST_OPENGL");
            if (wanted != nullptr && std::string(wanted) == "required")
            {
                FAIL() << error.what();
            }
            GTEST_SKIP() << error.what();
        }
    }

    PicturePainter& painter() { return *m_painter; }
    RgbPicture paint(const SolidScene& scene, const Kodo::DebugDrawer::Context& drawn,
                     const Kodo::Render::Camera& camera, const PictureSize& size)
    {
        return m_painter->paint(scene, drawn, camera, size);
    }

private:
    std::unique_ptr<PicturePainter> m_painter;
};
