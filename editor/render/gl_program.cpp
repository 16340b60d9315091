#include "editor/render/gl_program.hpp"

#include "editor/render/gl_error.hpp"

#include <array>
#include <utility>

namespace
{

/// The driver's log of a shader or program, without what stands after its last word.
template <class GetParameter, class GetLog>
std::string logOf(GLuint name, const GetParameter& getParameter, const GetLog& getLog)
{
    GLint length = 0;
    getParameter(name, GL_INFO_LOG_LENGTH, &length);
    std::string log(static_cast<std::size_t>(length > 0 ? length : 1), '\0');
    GLsizei written = 0;
    getLog(name, static_cast<GLsizei>(log.size()), &written, log.data());
    log.resize(static_cast<std::size_t>(written));
    while (!log.empty() && (log.back() == '\n' || log.back() == '\0'))
    {
        log.pop_back();
    }
    return log;
}

} // namespace

GlProgram::GlProgram(std::string name, const std::string& vertexSource, const std::string& fragmentSource)
    : m_name(std::move(name))
{
    attachShader(GL_VERTEX_SHADER, vertexSource);
    attachShader(GL_FRAGMENT_SHADER, fragmentSource);
    glLinkProgram(m_program.name());
    GLint linked = GL_FALSE;
    glGetProgramiv(m_program.name(), GL_LINK_STATUS, &linked);
    if (linked != GL_TRUE)
    {
        throw GlError("the shaders \"" + m_name +
                      "\" do not link: " + logOf(m_program.name(), glGetProgramiv, glGetProgramInfoLog));
    }
}

void GlProgram::attachShader(GLenum type, const std::string& source)
{
    const std::string text = "#version 330 core\n" + source;
    const char* const lines = text.c_str();
    const GLuint shader = glCreateShader(type);
    glShaderSource(shader, 1, &lines, nullptr);
    glCompileShader(shader);
    glAttachShader(m_program.name(), shader);
    glDeleteShader(shader); // goes with the program
    GLint compiled = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled != GL_TRUE)
    {
        throw GlError(std::string("the ") + (type == GL_VERTEX_SHADER ? "vertex" : "fragment") +
                      " shader of \"" + m_name +
                      "\" does not compile: " + logOf(shader, glGetShaderiv, glGetShaderInfoLog));
    }
}

GlProgram::Uniform GlProgram::uniform(const char* name) const
{
    const GLint location = glGetUniformLocation(m_program.name(), name);
    if (location < 0)
    {
        throw GlError("the shaders \"" + m_name + "\" use no uniform \"" + name + "\"");
    }
    return Uniform{location};
}

void GlProgram::use() const
{
    glUseProgram(m_program.name());
}

void GlProgram::set(Uniform uniform, float value)
{
    glUniform1f(static_cast<GLint>(uniform), value);
}

void GlProgram::set(Uniform uniform, float x, float y)
{
    glUniform2f(static_cast<GLint>(uniform), x, y);
}

void GlProgram::set(Uniform uniform, const Kodo::Vector3& value)
{
    glUniform3f(static_cast<GLint>(uniform), value.x, value.y, value.z);
}

void GlProgram::set(Uniform uniform, const Kodo::Render::ColourRGBAFloat& value)
{
    glUniform3f(static_cast<GLint>(uniform), value.r(), value.g(), value.b());
}

void GlProgram::set(Uniform uniform, const Kodo::Matrix& value)
{
    // Rows of a row-vector matrix lie in memory where GLSL has the columns of a column-vector one.
    glUniformMatrix4fv(static_cast<GLint>(uniform), 1, GL_FALSE, &value.m[0][0]);
}
