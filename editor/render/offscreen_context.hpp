#pragma once

#include <memory>
#include <string>

/// OpenGL 3.3 core without a window or a display. Current on the thread that made it from its construction to
/// its destruction; one at a time.
class OffscreenContext
{
public:
    /// Throws GlError, saying what is missing, where there is no such OpenGL.
    OffscreenContext();
    OffscreenContext(const OffscreenContext&) = delete;
    OffscreenContext& operator=(const OffscreenContext&) = delete;
    ~OffscreenContext();

    /// The driver's name of itself, as "llvmpipe (…), 4.5 (Core Profile) …".
    std::string description() const;

private:
    class Handles;
    std::unique_ptr<Handles> m_handles;
};
