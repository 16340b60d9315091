#include "editor/render/solid_painter.hpp"

#include "editor/render/gl_error.hpp"
#include "editor/render/scene_light.hpp"
#include "editor/render/scene_shaders.hpp"

#include <cmath>
#include <span>
#include <string>

using Kodo::Matrix;
using Kodo::Render::Camera;

namespace
{

constexpr const char* SKY_VERTEX = R"(
uniform vec3 right;
uniform vec3 up;
uniform vec3 forward;
out vec3 direction;

void main()
{
    vec2 place = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0); // one triangle covers all
    direction = forward + right * place.x + up * place.y;
    gl_Position = vec4(place, 0.0, 1.0);
}
)";

constexpr const char* SKY_FRAGMENT = R"(
in vec3 direction;
uniform vec3 haze;
uniform vec3 zenith;
out vec4 pixel;

void main()
{
    pixel = vec4(mix(haze, zenith, smoothstep(0.0, 0.55, normalize(direction).y)), 1.0);
}
)";

constexpr const char* GROUND_VERTEX = R"(
uniform mat4 toClip;
uniform vec3 centre;
uniform float reach;
out vec3 place;

void main()
{
    vec2 corner = vec2((gl_VertexID & 1) == 0 ? -reach : reach, (gl_VertexID & 2) == 0 ? -reach : reach);
    place = centre + vec3(corner.x, 0.0, corner.y);
    gl_Position = toClip * vec4(place, 1.0);
}
)";

// Unit boxes as 36 corners by number; every group of six is a side.
constexpr const char* BOX_CORNERS = R"(
const int SIDE_CORNERS[6] = int[6](0, 1, 2, 2, 1, 3);
vec3 boxNormal()
{
    int side = gl_VertexID / 6;
    vec3 normal = vec3(0.0);
    normal[side / 2] = (side & 1) == 0 ? -1.0 : 1.0;
    return normal;
}
vec2 boxSide()
{
    int corner = SIDE_CORNERS[gl_VertexID % 6];
    return vec2((corner & 1) * 2 - 1, (corner >> 1) * 2 - 1);
}
vec3 boxCorner()
{
    int axis = gl_VertexID / 12;
    vec3 corner = boxNormal();
    corner[(axis + 1) % 3] = boxSide().x;
    corner[(axis + 2) % 3] = boxSide().y;
    return corner;
}
)";

// A box thrown flat on the ground along the light.
constexpr const char* SHADOW_VERTEX = R"(
layout(location = 0) in vec3 boxCentre;
layout(location = 1) in vec3 boxHalfSize;
uniform mat4 toClip;
uniform vec3 centre;
uniform vec3 toSun;
out vec3 place;

void main()
{
    place = boxCentre + boxHalfSize * boxCorner();
    place -= toSun * (max(place.y - centre.y, 0.0) / toSun.y);
    place.y = centre.y;
    gl_Position = toClip * vec4(place, 1.0);
}
)";

constexpr const char* GROUND_FRAGMENT = R"(
in vec3 place;
uniform vec3 centre;
uniform float reach;
uniform float cell;
uniform float light;
uniform vec3 color;
uniform vec3 gridColor;
uniform vec3 haze;
out vec4 pixel;

// How much of the pixel is a line of the grid; nothing where lines stand closer than a few pixels.
float gridAt(vec2 cells)
{
    vec2 pixels = fwidth(cells);
    vec2 distances = abs(fract(cells - 0.5) - 0.5) / max(pixels, vec2(1e-6));
    vec2 lines = clamp(1.25 - distances, 0.0, 1.0) * (1.0 - smoothstep(0.08, 0.35, pixels));
    return max(lines.x, lines.y);
}

void main()
{
    vec2 cells = (place.xz - centre.xz) / cell;
    float grid = max(0.45 * gridAt(cells), gridAt(cells / 10.0));
    vec3 ground = mix(color, gridColor, grid) * light;
    pixel = vec4(mix(ground, haze, smoothstep(0.15, 0.95, distance(place.xz, centre.xz) / reach)), 1.0);
}
)";

constexpr const char* BOX_VERTEX = R"(
layout(location = 0) in vec3 boxCentre;
layout(location = 1) in vec3 boxHalfSize;
layout(location = 2) in vec4 boxColor;
uniform mat4 toClip;
flat out vec3 normal;
flat out vec3 sideColor;
out vec2 side;

void main()
{
    normal = boxNormal();
    sideColor = boxColor.rgb;
    side = boxSide();
    gl_Position = toClip * vec4(boxCentre + boxHalfSize * boxCorner(), 1.0);
}
)";

constexpr const char* BOX_FRAGMENT = R"(
flat in vec3 normal;
flat in vec3 sideColor;
in vec2 side;
out vec4 pixel;

void main()
{
    vec2 distances = (1.0 - abs(side)) / max(fwidth(side), vec2(1e-6));
    float edge = clamp(1.5 - min(distances.x, distances.y), 0.0, 1.0);
    pixel = vec4(sideColor * lightOn(normal) * (1.0 - 0.3 * edge), 1.0);
}
)";

Matrix clipMatrixOf(const Camera& camera, float aspect)
{
    Matrix matrix = camera.viewMatrix();
    matrix.postMultiply(camera.projectionMatrix(aspect));
    return matrix;
}

void setGround(const GlProgram& program, const SolidScene& scene, const Matrix& toClip)
{
    program.use();
    GlProgram::set(program.uniform("toClip"), toClip);
    GlProgram::set(program.uniform("centre"), scene.ground->centre);
    GlProgram::set(program.uniform("reach"), scene.ground->reach);
    GlProgram::set(program.uniform("cell"), scene.ground->cell);
    GlProgram::set(program.uniform("color"), scene.ground->color);
    GlProgram::set(program.uniform("gridColor"), scene.ground->gridColor);
    GlProgram::set(program.uniform("haze"), scene.haze);
}

constexpr GLsizei CORNERS_OF_BOX = 36;

} // namespace

SolidPainter::SolidPainter()
    : m_skyProgram("sky", SKY_VERTEX, SKY_FRAGMENT),
      m_groundProgram("ground", GROUND_VERTEX, GROUND_FRAGMENT),
      m_shadowProgram("shadow", std::string(BOX_CORNERS) + SHADOW_VERTEX, GROUND_FRAGMENT),
      m_boxProgram("box", std::string(BOX_CORNERS) + BOX_VERTEX,
                   std::string(SceneShaders::LIGHT) + BOX_FRAGMENT)
{
    glBindVertexArray(m_boxArray.name());
    glBindBuffer(GL_ARRAY_BUFFER, m_boxes.name());
    const auto attribute = [](GLuint index, GLint components, std::size_t offset)
    {
        glEnableVertexAttribArray(index);
        glVertexAttribPointer(index, components, GL_FLOAT, GL_FALSE, sizeof(SolidBox), bufferOffset(offset));
        glVertexAttribDivisor(index, 1);
    };
    static_assert(sizeof(SolidBox) == 10 * sizeof(float));
    attribute(0, 3, offsetof(SolidBox, centre));
    attribute(1, 3, offsetof(SolidBox, halfSize));
    attribute(2, 4, offsetof(SolidBox, color));
    glBindVertexArray(0);
    checkGl("preparing the scene");
}

void SolidPainter::paint(const SolidScene& scene, const Camera& camera, const PictureSize& size)
{
    glDepthMask(GL_TRUE);
    glClearDepth(1.0);
    glClear(GL_DEPTH_BUFFER_BIT); // the sky covers all colours
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    paintSky(scene, camera, size.aspect());

    const Matrix toClip = clipMatrixOf(camera, size.aspect());
    uploadBoxes(scene);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    if (scene.ground)
    {
        paintGround(scene, toClip);
    }
    paintBoxes(scene, toClip);
    glBindVertexArray(0);
    checkGl("drawing the scene");
}

void SolidPainter::paintSky(const SolidScene& scene, const Camera& camera, float aspect) const
{
    const Matrix& world = camera.worldMatrix();
    const bool isPerspective = camera.projection() == Camera::Projection::Perspective;
    const float height = isPerspective ? std::tan(camera.verticalFieldOfView() / 2.0F) : 0.0F;
    m_skyProgram.use();
    GlProgram::set(m_skyProgram.uniform("right"), world.row(0) * (height * aspect));
    GlProgram::set(m_skyProgram.uniform("up"), world.row(1) * height);
    GlProgram::set(m_skyProgram.uniform("forward"), world.row(2));
    GlProgram::set(m_skyProgram.uniform("haze"), scene.haze);
    GlProgram::set(m_skyProgram.uniform("zenith"), scene.zenith);
    glBindVertexArray(m_noVertices.name());
    glDrawArrays(GL_TRIANGLES, 0, 3);
}

void SolidPainter::paintGround(const SolidScene& scene, const Matrix& toClip) const
{
    setGround(m_groundProgram, scene, toClip);
    GlProgram::set(m_groundProgram.uniform("light"), 1.0F);
    glBindVertexArray(m_noVertices.name());
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);

    // Shadows are ground of less light, drawn in the ground's plane; where they overlap they stay the same.
    setGround(m_shadowProgram, scene, toClip);
    GlProgram::set(m_shadowProgram.uniform("light"), SceneLight::SHADOW);
    GlProgram::set(m_shadowProgram.uniform("toSun"), SceneLight::TO_SUN);
    glDepthMask(GL_FALSE);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(-1.0F, -4.0F);
    glBindVertexArray(m_boxArray.name());
    glDrawArraysInstanced(GL_TRIANGLES, 0, CORNERS_OF_BOX, static_cast<GLsizei>(scene.boxes.size()));
    glDisable(GL_POLYGON_OFFSET_FILL);
    glDepthMask(GL_TRUE);
}

void SolidPainter::paintBoxes(const SolidScene& scene, const Matrix& toClip) const
{
    m_boxProgram.use();
    SceneShaders::setLight(m_boxProgram);
    GlProgram::set(m_boxProgram.uniform("toClip"), toClip);
    glBindVertexArray(m_boxArray.name());
    glDrawArraysInstanced(GL_TRIANGLES, 0, CORNERS_OF_BOX, static_cast<GLsizei>(scene.boxes.size()));
}

void SolidPainter::uploadBoxes(const SolidScene& scene)
{
    glBindBuffer(GL_ARRAY_BUFFER, m_boxes.name());
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(std::span(scene.boxes).size_bytes()),
                 scene.boxes.data(), GL_STREAM_DRAW);
}
