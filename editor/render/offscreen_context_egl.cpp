#include "editor/render/offscreen_context.hpp"

#include "editor/render/gl_error.hpp"

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <array>
#include <cstdio>

namespace
{

std::string lastEglError()
{
    char text[32];
    static_cast<void>(
        std::snprintf(text, sizeof text, "EGL error 0x%04X", static_cast<unsigned>(eglGetError())));
    return text;
}

/// Whether EGL offers this without a display.
bool hasClientExtension(const char* name)
{
    return epoxy_has_egl_extension(EGL_NO_DISPLAY, name);
}

bool initialized(EGLDisplay display)
{
    return display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr) == EGL_TRUE;
}

/// A display that needs no server: surfaceless, else a device's, else whatever the system takes for its
/// default.
EGLDisplay openDisplay()
{
    if (hasClientExtension("EGL_EXT_platform_base"))
    {
        if (hasClientExtension("EGL_MESA_platform_surfaceless"))
        {
            EGLDisplay display =
                eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
            if (initialized(display))
            {
                return display;
            }
        }
        EGLDeviceEXT device = nullptr;
        EGLint found = 0;
        if (hasClientExtension("EGL_EXT_platform_device") &&
            hasClientExtension("EGL_EXT_device_enumeration") &&
            eglQueryDevicesEXT(1, &device, &found) == EGL_TRUE && found == 1)
        {
            EGLDisplay display = eglGetPlatformDisplayEXT(EGL_PLATFORM_DEVICE_EXT, device, nullptr);
            if (initialized(display))
            {
                return display;
            }
        }
    }
    EGLDisplay display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    if (!initialized(display))
    {
        throw GlError("no OpenGL without a window: EGL opens no display (" + lastEglError() + ")");
    }
    return display;
}

/// The display is the process's, opened once and left to the process's end: other code in it may have been
/// given the same one.
EGLDisplay display()
{
    static EGLDisplay opened = openDisplay();
    return opened;
}

EGLConfig chooseConfig(EGLDisplay display)
{
    constexpr std::array<EGLint, 5> WANTED{EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_SURFACE_TYPE, 0,
                                           EGL_NONE};
    EGLConfig config = nullptr;
    EGLint found = 0;
    if (eglChooseConfig(display, WANTED.data(), &config, 1, &found) != EGL_TRUE || found == 0)
    {
        throw GlError("no OpenGL without a window: EGL has no OpenGL here (" + lastEglError() + ")");
    }
    return config;
}

EGLContext createContext(EGLDisplay display)
{
    if (!epoxy_has_egl_extension(display, "EGL_KHR_surfaceless_context"))
    {
        throw GlError("no OpenGL without a window: EGL_KHR_surfaceless_context is missing");
    }
    if (eglBindAPI(EGL_OPENGL_API) != EGL_TRUE)
    {
        throw GlError("no OpenGL without a window: EGL offers OpenGL ES alone");
    }
    constexpr std::array<EGLint, 7> WANTED{EGL_CONTEXT_MAJOR_VERSION_KHR,
                                           3,
                                           EGL_CONTEXT_MINOR_VERSION_KHR,
                                           3,
                                           EGL_CONTEXT_OPENGL_PROFILE_MASK_KHR,
                                           EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT_KHR,
                                           EGL_NONE};
    EGLContext context = eglCreateContext(display, chooseConfig(display), EGL_NO_CONTEXT, WANTED.data());
    if (context == EGL_NO_CONTEXT)
    {
        throw GlError("no OpenGL 3.3 core: " + lastEglError());
    }
    return context;
}

std::string textOf(GLenum name)
{
    const GLubyte* const text = glGetString(name);
    return text == nullptr ? std::string("?") : std::string(reinterpret_cast<const char*>(text));
}

} // namespace

class OffscreenContext::Handles
{
public:
    Handles() : m_display(display())
    {
        try
        {
            m_context = createContext(m_display);
            if (eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, m_context) != EGL_TRUE)
            {
                throw GlError("OpenGL cannot be used without a window: " + lastEglError());
            }
        }
        catch (const GlError&)
        {
            close();
            throw;
        }
    }
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;
    ~Handles() { close(); }

private:
    void close() noexcept
    {
        eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (m_context != EGL_NO_CONTEXT)
        {
            eglDestroyContext(m_display, m_context);
        }
        eglReleaseThread();
    }

    EGLDisplay m_display;
    EGLContext m_context = EGL_NO_CONTEXT;
};

OffscreenContext::OffscreenContext()
{
    if (!epoxy_has_egl()) // else the first call would end the process
    {
        throw GlError("no OpenGL without a window: the library EGL is not installed");
    }
    m_handles = std::make_unique<Handles>();
}

OffscreenContext::~OffscreenContext() = default;

std::string OffscreenContext::description() const
{
    return textOf(GL_RENDERER) + ", " + textOf(GL_VERSION);
}
