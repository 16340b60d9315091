#include "editor/commands/level_commands.hpp"

#include "editor/commands/curve_commands.hpp"
#include "editor/commands/finished.hpp"
#include "editor/files/file_error.hpp"
#include "editor/level/gpx_track.hpp"
#include "editor/level/level_file.hpp"
#include "editor/level/track_curve.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/stack_tracker.hpp"

#include <filesystem>

namespace
{

std::filesystem::path pathOf(const std::string& name)
{
    return std::filesystem::path(std::u8string(name.begin(), name.end()));
}

} // namespace

LevelCommands::LevelCommands(CommandObject& root, Level& level) : m_root(root), m_level(level)
{
    addLevelCommands();
    for (const auto& document : level.documents())
    {
        addCurveObject(document->curve().name);
    }
    m_curveAdded = level.connectCurveAdded([this](const std::string& name) { addCurveObject(name); });
    m_curveRemoved = level.connectCurveRemoved([this](const std::string& name) { removeCurveObject(name); });
    m_root.addChild("level", &m_levelObject);
    m_root.addChild("curves", &m_curvesObject);
}

LevelCommands::~LevelCommands()
{
    m_root.removeChild("curves");
    m_root.removeChild("level");
}

Level& LevelCommands::level()
{
    m_arrivals.drain();
    return m_level;
}

void LevelCommands::addLevelCommands()
{
    m_levelObject.addCommand("open",
                             [this](const std::string& file)
                             {
                                 return finished(
                                     [&]
                                     {
                                         KODO_PROFILE_SCOPE("level.open");
                                         level().replace(readDocument(pathOf(file)));
                                     });
                             });
    m_levelObject.addCommand("save",
                             [this](const std::string& file)
                             {
                                 return finished(
                                     [&]
                                     {
                                         KODO_PROFILE_SCOPE("level.save");
                                         writeLevelFile(pathOf(file), level().data());
                                     });
                             });
    m_levelObject.addCommand("addCurve", [this](const std::string& name)
                             { return finished([&] { level().addCurve(name); }); });
    m_levelObject.addCommand("removeCurve", [this](const std::string& name)
                             { return finished([&] { level().removeCurve(name); }); });
    m_levelObject.addCommand("importTrack",
                             [this](const std::string& file)
                             {
                                 return finished(
                                     [&]
                                     {
                                         KODO_PROFILE_SCOPE("level.importTrack");
                                         level().addCurve(readTrackCurve(pathOf(file)));
                                     });
                             });
    m_levelObject.addCommand("undo",
                             [this]
                             {
                                 return finished(
                                     [&]
                                     {
                                         if (!level().history().undo())
                                         {
                                             throw LevelError("there is nothing to undo");
                                         }
                                     });
                             });
    m_levelObject.addCommand("redo",
                             [this]
                             {
                                 return finished(
                                     [&]
                                     {
                                         if (!level().history().redo())
                                         {
                                             throw LevelError("there is nothing to redo");
                                         }
                                     });
                             });
}

void LevelCommands::addCurveObject(const std::string& name)
{
    auto object = std::make_unique<CommandObject>();
    addCurveCommands(*object, name, [this]() -> Level& { return level(); });
    object->addCommand("import", [this, name](const std::string& file) { return importTrack(name, file); });
    m_curvesObject.addChild(name, object.get());
    m_curveObjects[name] = std::move(object);
}

void LevelCommands::removeCurveObject(const std::string& name)
{
    m_curvesObject.removeChild(name);
    m_curveObjects.erase(name);
}

std::future<void> LevelCommands::importTrack(const std::string& curve, const std::string& file)
{
    auto promise = std::make_shared<std::promise<void>>();
    m_worker.post(
        [this, promise, curve, path = pathOf(file)]
        {
            KODO_PROFILE_SCOPE("LevelCommands::importTrack");
            try
            {
                m_arrivals.post(
                    [this, curve, points = readGpxTrack(path)]
                    {
                        if (m_level.findCurve(curve) == nullptr)
                        {
                            Kodo::DebugMessageHelper(0, 5).message("import: the curve \"" + curve +
                                                                   "\" is gone");
                            return;
                        }
                        m_level.addPoints(curve, points);
                    });
                promise->set_value();
            }
            catch (...)
            {
                promise->set_exception(std::current_exception());
            }
        });
    return promise->get_future();
}
