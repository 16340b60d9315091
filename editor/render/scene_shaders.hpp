#pragma once

#include "editor/render/gl_program.hpp"

/// What the shaders of several painters have in common.
namespace SceneShaders
{

/// GLSL: `float lightOn(vec3 normal)`, the factor of SceneLight, by the uniforms `darkest` and `toSun`.
inline constexpr const char* LIGHT = R"(
uniform float darkest;
uniform vec3 toSun;
float lightOn(vec3 normal)
{
    return darkest + (1.0 - darkest) * (1.0 + dot(normal, toSun)) / 2.0;
}
)";

/// Sets those uniforms; the program is in use.
void setLight(const GlProgram& program);

} // namespace SceneShaders
