#pragma once

#include <stdexcept>
#include <string>

/// OpenGL that is not there, or that refused something. The text says what, and what the driver says of it.
class GlError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Throws GlError when OpenGL has reported errors since the last call; @p doing says what was tried.
void checkGl(const std::string& doing);
