#include "editor/render/debug_painter.hpp"

#include "editor/render/gl_error.hpp"
#include "editor/render/scene_shaders.hpp"
#include "editor/render/sphere_mesh.hpp"

#include <algorithm>
#include <cmath>
#include <span>

using Kodo::Matrix;
using Kodo::Vector3;
using Kodo::DebugDrawer::Context;
using Kodo::DebugDrawer::LineRecord;
using Kodo::DebugDrawer::SphereRecord;

namespace
{

// Four vertices a segment. It is cut off at the edges of the view, widened so that its own edges stay
// outside, before it is projected: what lies behind the eye has no place on the screen, and far places have
// no exact one.
constexpr const char* LINE_VERTEX = R"(
layout(location = 0) in vec3 from;
layout(location = 1) in vec3 to;
uniform mat4 toClip;
uniform vec2 pictureSize;
uniform float pixelsPerUnit;
uniform float narrowest;
uniform float width;
flat out vec3 first; // x and y in pixels, and the depth
flat out vec3 last;
flat out vec2 radii;

const float WIDER = 4.0;

float insideOf(int edge, vec4 place)
{
    switch (edge)
    {
    case 0: return place.z + place.w;
    case 1: return place.w - place.z;
    case 2: return WIDER * place.w + place.x;
    case 3: return WIDER * place.w - place.x;
    case 4: return WIDER * place.w + place.y;
    default: return WIDER * place.w - place.y;
    }
}

bool cutOff(inout vec4 a, inout vec4 b)
{
    for (int edge = 0; edge < 6; ++edge)
    {
        float insideA = insideOf(edge, a);
        float insideB = insideOf(edge, b);
        if (!(insideA >= 0.0 || insideB >= 0.0))
        {
            return false;
        }
        if (insideA < 0.0)
        {
            a = mix(a, b, insideA / (insideA - insideB));
        }
        else if (insideB < 0.0)
        {
            b = mix(b, a, insideB / (insideB - insideA));
        }
    }
    return a.w > 0.0 && b.w > 0.0;
}

vec3 onScreen(vec4 place)
{
    vec3 normalized = place.xyz / place.w * 0.5 + 0.5;
    return vec3(normalized.xy * pictureSize, normalized.z);
}

float radiusAt(vec4 place)
{
    return max(narrowest, width * pixelsPerUnit / place.w) * 0.5;
}

bool isFinite(vec3 place)
{
    return !any(isnan(place)) && !any(isinf(place));
}

void main()
{
    first = last = vec3(0.0);
    radii = vec2(0.0);
    gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
    vec4 a = toClip * vec4(from, 1.0);
    vec4 b = toClip * vec4(to, 1.0);
    if (!isFinite(from) || !isFinite(to) || !cutOff(a, b))
    {
        return;
    }
    first = onScreen(a);
    last = onScreen(b);
    radii = vec2(radiusAt(a), radiusAt(b));
    vec2 along = last.xy - first.xy;
    along = dot(along, along) > 0.0 ? normalize(along) : vec2(1.0, 0.0);
    float margin = max(radii.x, radii.y) + 1.0;
    vec2 corner = (gl_VertexID & 1) == 0 ? first.xy - along * margin : last.xy + along * margin;
    corner += vec2(-along.y, along.x) * ((gl_VertexID & 2) == 0 ? -margin : margin);
    gl_Position = vec4(corner / pictureSize * 2.0 - 1.0, 0.0, 1.0);
}
)";

constexpr const char* LINE_FRAGMENT = R"(
flat in vec3 first;
flat in vec3 last;
flat in vec2 radii;
uniform vec3 color;
out vec4 pixel;

void main()
{
    vec2 along = last.xy - first.xy;
    float squared = dot(along, along);
    float part = squared > 0.0 ? clamp(dot(gl_FragCoord.xy - first.xy, along) / squared, 0.0, 1.0) : 0.0;
    if (distance(gl_FragCoord.xy, first.xy + part * along) > mix(radii.x, radii.y, part))
    {
        discard;
    }
    gl_FragDepth = mix(first.z, last.z, part);
    pixel = vec4(color, 1.0);
}
)";

constexpr const char* SPHERE_VERTEX = R"(
layout(location = 0) in vec3 vertex;
uniform mat4 toClip;
uniform mat4 toWorld;
uniform mat4 normalToWorld;
out vec3 normal;

void main()
{
    normal = mat3(normalToWorld) * vertex;
    gl_Position = toClip * (toWorld * vec4(vertex, 1.0));
}
)";

constexpr const char* SPHERE_FRAGMENT = R"(
in vec3 normal;
uniform vec3 color;
out vec4 pixel;

void main()
{
    pixel = vec4(color * lightOn(normalize(normal)), 1.0);
}
)";

void setDepthUse(bool test, bool write)
{
    if (test)
    {
        glEnable(GL_DEPTH_TEST);
    }
    else
    {
        glDisable(GL_DEPTH_TEST); // and with it the writing
    }
    glDepthMask(write ? GL_TRUE : GL_FALSE);
}

bool isFinite(const Kodo::Render::ColourRGBAFloat& color)
{
    return std::isfinite(color.r()) && std::isfinite(color.g()) && std::isfinite(color.b());
}

bool isFinite(const Kodo::Quaternion& rotation)
{
    return std::isfinite(rotation.x) && std::isfinite(rotation.y) && std::isfinite(rotation.z) &&
           std::isfinite(rotation.w);
}

bool isUsable(float scale)
{
    return std::isfinite(scale) && scale != 0.0F;
}

} // namespace

DebugPainter::DebugPainter()
    : m_lineProgram("debug line", LINE_VERTEX, LINE_FRAGMENT),
      m_lineUniforms{m_lineProgram.uniform("toClip"),        m_lineProgram.uniform("pictureSize"),
                     m_lineProgram.uniform("pixelsPerUnit"), m_lineProgram.uniform("narrowest"),
                     m_lineProgram.uniform("width"),         m_lineProgram.uniform("color")},
      m_sphereProgram("debug sphere", SPHERE_VERTEX, std::string(SceneShaders::LIGHT) + SPHERE_FRAGMENT),
      m_sphereUniforms{m_sphereProgram.uniform("toClip"), m_sphereProgram.uniform("toWorld"),
                       m_sphereProgram.uniform("normalToWorld"), m_sphereProgram.uniform("color")}
{
    constexpr int SPLITS = 3; // 1280 triangles: a ball 44 pixels wide is round to a tenth of a pixel
    const SphereMesh mesh = makeSphereMesh(SPLITS);
    m_sphereIndexCount = static_cast<GLsizei>(mesh.indices.size());
    glBindVertexArray(m_sphereArray.name());
    glBindBuffer(GL_ARRAY_BUFFER, m_sphereVertices.name());
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(std::span(mesh.vertices).size_bytes()),
                 mesh.vertices.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_sphereIndices.name());
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(std::span(mesh.indices).size_bytes()),
                 mesh.indices.data(), GL_STATIC_DRAW);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(Vector3), nullptr);
    glBindVertexArray(m_lineArray.name());
    for (const GLuint attribute : {0U, 1U})
    {
        glEnableVertexAttribArray(attribute);
        glVertexAttribDivisor(attribute, 1);
    }
    glBindVertexArray(0);
    checkGl("preparing the debug drawer");
}

void DebugPainter::paint(const Context& context, const DebugView& view)
{
    const Matrix& world = view.camera.worldMatrix();
    Matrix toClip = view.camera.viewMatrix();
    const Matrix projection = view.camera.projectionMatrix(view.size.aspect());
    toClip.postMultiply(projection);
    const bool isMirrored = world.row(0).crossProduct(world.row(1)).dotProduct(world.row(2)) < 0.0F;

    glDepthFunc(GL_LEQUAL);
    glDisable(GL_BLEND);
    glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glFrontFace(isMirrored ? GL_CCW : GL_CW);
    m_sphereProgram.use();
    SceneShaders::setLight(m_sphereProgram);
    GlProgram::set(m_sphereUniforms.toClip, toClip);
    m_lineProgram.use();
    GlProgram::set(m_lineUniforms.toClip, toClip);
    GlProgram::set(m_lineUniforms.pictureSize, static_cast<float>(view.size.width),
                   static_cast<float>(view.size.height));
    GlProgram::set(m_lineUniforms.pixelsPerUnit,
                   projection.m[1][1] * static_cast<float>(view.size.height) / 2.0F);
    GlProgram::set(m_lineUniforms.narrowest, view.narrowestLine);
    uploadPoints(context);

    const auto commands = context.commands();
    std::for_each(commands.rbegin(), commands.rend(),
                  [this, &context](const Context::Command& command)
                  {
                      command.kind == Context::Kind::Line ? paintLine(context.lines()[command.index])
                                                          : paintSphere(context.spheres()[command.index]);
                  });
    glDisable(GL_CULL_FACE);
    glDepthMask(GL_TRUE); // else the next frame could not be cleared
    checkGl("drawing lines and balls");
}

void DebugPainter::uploadPoints(const Context& context)
{
    glBindBuffer(GL_ARRAY_BUFFER, m_points.name());
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(context.points().size_bytes()),
                 context.points().data(), GL_STREAM_DRAW);
}

void DebugPainter::paintLine(const LineRecord& line) const
{
    if (line.pointCount == 0 || !std::isfinite(line.width) || !isFinite(line.colour))
    {
        return;
    }
    const bool isDot = line.pointCount == 1;
    const std::size_t first = line.firstPoint * sizeof(Vector3);
    const std::size_t second = isDot ? first : first + sizeof(Vector3);
    m_lineProgram.use();
    GlProgram::set(m_lineUniforms.width, line.width);
    GlProgram::set(m_lineUniforms.color, line.colour);
    setDepthUse(line.zTest, line.zWrite);
    glBindVertexArray(m_lineArray.name());
    glBindBuffer(GL_ARRAY_BUFFER, m_points.name());
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(Vector3), bufferOffset(first));
    glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, sizeof(Vector3), bufferOffset(second));
    glDisable(GL_CULL_FACE); // a band has no back
    glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, 4, static_cast<GLsizei>(isDot ? 1 : line.pointCount - 1));
}

void DebugPainter::paintSphere(const SphereRecord& sphere) const
{
    const Vector3 scale(std::fabs(sphere.scale.x), std::fabs(sphere.scale.y), std::fabs(sphere.scale.z));
    if (!isUsable(scale.x) || !isUsable(scale.y) || !isUsable(scale.z) || !isFinite(sphere.rotation) ||
        !isFinite(sphere.colour))
    {
        return;
    }
    m_sphereProgram.use();
    GlProgram::set(m_sphereUniforms.toWorld,
                   Matrix::constructTransformationMatrix(sphere.position, sphere.rotation, scale));
    // A normal is stretched the other way; its length is mended for each pixel.
    const float longest = std::max({scale.x, scale.y, scale.z});
    const Vector3 inverse(longest / scale.x, longest / scale.y, longest / scale.z);
    GlProgram::set(m_sphereUniforms.normalToWorld,
                   Matrix::constructTransformationMatrix(Vector3::ZERO, sphere.rotation, inverse));
    GlProgram::set(m_sphereUniforms.color, sphere.colour);
    setDepthUse(sphere.zTest, sphere.zWrite);
    glEnable(GL_CULL_FACE);
    glBindVertexArray(m_sphereArray.name());
    glDrawElements(GL_TRIANGLES, m_sphereIndexCount, GL_UNSIGNED_SHORT, nullptr);
}
