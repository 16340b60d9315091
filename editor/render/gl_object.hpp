#pragma once

#include <epoxy/gl.h>

#include <cstddef>
#include <utility>

/// Owns one OpenGL object. Made, used and destroyed while its context is current.
template <class Traits>
class GlObject
{
public:
    GlObject() : m_name(Traits::make()) {}
    GlObject(GlObject&& other) noexcept : m_name(std::exchange(other.m_name, 0)) {}
    GlObject& operator=(GlObject&& other) noexcept
    {
        std::swap(m_name, other.m_name);
        return *this;
    }
    GlObject(const GlObject&) = delete;
    GlObject& operator=(const GlObject&) = delete;
    ~GlObject()
    {
        if (m_name != 0)
        {
            Traits::destroy(m_name);
        }
    }

    GLuint name() const noexcept { return m_name; }

private:
    GLuint m_name;
};

struct GlBufferTraits
{
    static GLuint make()
    {
        GLuint name = 0;
        glGenBuffers(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteBuffers(1, &name); }
};

struct GlVertexArrayTraits
{
    static GLuint make()
    {
        GLuint name = 0;
        glGenVertexArrays(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteVertexArrays(1, &name); }
};

struct GlRenderBufferTraits
{
    static GLuint make()
    {
        GLuint name = 0;
        glGenRenderbuffers(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteRenderbuffers(1, &name); }
};

struct GlFrameBufferTraits
{
    static GLuint make()
    {
        GLuint name = 0;
        glGenFramebuffers(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteFramebuffers(1, &name); }
};

/// A place in the bound buffer, in bytes, as OpenGL takes it.
inline const void* bufferOffset(std::size_t bytes)
{
    return reinterpret_cast<const void*>(bytes); // NOLINT(performance-no-int-to-ptr): it is never a pointer
}

using GlBuffer = GlObject<GlBufferTraits>;
using GlVertexArray = GlObject<GlVertexArrayTraits>;
using GlRenderBuffer = GlObject<GlRenderBufferTraits>;
using GlFrameBuffer = GlObject<GlFrameBufferTraits>;
