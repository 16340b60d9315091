#include "editor/render/offscreen_context.hpp"

#include "editor/render/gl_error.hpp"

class OffscreenContext::Handles
{
};

OffscreenContext::OffscreenContext()
{
    // Windows ties OpenGL to a window: the viewport has one, a program without windows does not.
    throw GlError("there is no OpenGL without a window on Windows");
}

OffscreenContext::~OffscreenContext() = default;

std::string OffscreenContext::description() const
{
    return {};
}
