#pragma once

#include "editor/render/gl_object.hpp"
#include "kodo/math/matrix.hpp"
#include "kodo/render/colour.hpp"

#include <string>

/// A vertex and a fragment shader, linked. Used while its context is current.
class GlProgram
{
public:
    /// What one uniform is called by. Valid for the program that gave it.
    enum class Uniform : GLint
    {
    };

    /// The sources go without their "#version" line. @p name is for messages. Throws GlError with the
    /// driver's log.
    GlProgram(std::string name, const std::string& vertexSource, const std::string& fragmentSource);

    /// Throws GlError for a uniform that the program does not use: it is misspelt there or here.
    Uniform uniform(const char* name) const;
    void use() const;

    /// These set a uniform of the program in use.
    static void set(Uniform uniform, float value);
    static void set(Uniform uniform, float x, float y);
    static void set(Uniform uniform, const Kodo::Vector3& value);
    /// The components as they are, without alpha.
    static void set(Uniform uniform, const Kodo::Render::ColourRGBAFloat& value);
    /// A matrix of row vectors: GLSL sees its transpose, and multiplies it from the left.
    static void set(Uniform uniform, const Kodo::Matrix& value);

private:
    struct Traits
    {
        static GLuint make() { return glCreateProgram(); }
        static void destroy(GLuint name) { glDeleteProgram(name); }
    };

    void attachShader(GLenum type, const std::string& source);

    std::string m_name;
    GlObject<Traits> m_program;
};
