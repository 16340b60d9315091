#include "editor/picture/level_picture.hpp"

#include "editor/picture/level_scene.hpp"
#include "editor/picture/picture_camera.hpp"
#include "editor/render/picture_painter.hpp"
#include "kodo/core/stack_tracker.hpp"

RgbPicture drawLevel(const Level& level, const CameraOption& camera, const PictureSize& size)
{
    KODO_PROFILE_SCOPE("drawLevel");
    constexpr int SPACE = 1;
    constexpr float POINT_SIZE = 0.03F; // of a picture's height: about as in perspective
    constexpr std::size_t SAMPLES = 2;  // by as many: what MAX_PICTURE_SIDE counts on
    PicturePainter painter;
    LevelScene scene(level, SPACE);
    Kodo::Render::Camera& sceneCamera = Kodo::Render::RenderSystem::instance().sceneCamera();
    sceneCamera = placeCamera(camera, scene.bounds(), size.aspect());
    if (sceneCamera.projection() == Kodo::Render::Camera::Projection::Orthographic)
    {
        scene.fixPointSize(sceneCamera.orthographicHeight() * POINT_SIZE);
    }
    Kodo::DebugDrawer::Context drawn;
    scene.render(drawn);
    return painter.paintSmooth(scene.solids(), drawn, sceneCamera, size, SAMPLES);
}
