#include "editor/render/gl_error.hpp"

#include <epoxy/gl.h>

#include <cstdio>

namespace
{

std::string nameOf(GLenum error)
{
    switch (error)
    {
    case GL_INVALID_ENUM:
        return "GL_INVALID_ENUM";
    case GL_INVALID_VALUE:
        return "GL_INVALID_VALUE";
    case GL_INVALID_OPERATION:
        return "GL_INVALID_OPERATION";
    case GL_INVALID_FRAMEBUFFER_OPERATION:
        return "GL_INVALID_FRAMEBUFFER_OPERATION";
    case GL_OUT_OF_MEMORY:
        return "GL_OUT_OF_MEMORY";
    default:
        char text[16];
        static_cast<void>(std::snprintf(text, sizeof text, "0x%04X", error));
        return text;
    }
}

} // namespace

void checkGl(const std::string& doing)
{
    constexpr int MOST_FLAGS = 16; // a lost context may report for ever
    std::string errors;
    for (int i = 0; i < MOST_FLAGS; ++i)
    {
        const GLenum error = glGetError();
        if (error == GL_NO_ERROR)
        {
            break;
        }
        errors += (errors.empty() ? "" : ", ") + nameOf(error);
    }
    if (!errors.empty())
    {
        throw GlError("OpenGL failed while " + doing + ": " + errors);
    }
}
