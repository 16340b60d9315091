#include "editor/render/scene_shaders.hpp"

#include "editor/render/scene_light.hpp"

void SceneShaders::setLight(const GlProgram& program)
{
    GlProgram::set(program.uniform("darkest"), SceneLight::DARKEST);
    GlProgram::set(program.uniform("toSun"), SceneLight::TO_SUN);
}
