#pragma once

#include "editor/commands/main_thread_queue.hpp"
#include "editor/commands/worker.hpp"
#include "editor/level/level.hpp"
#include "qua/connection.hpp"
#include "tern_common/command_object.hpp"

#include <map>
#include <memory>
#include <string>

/// The commands by which scripts edit a level, below a command tree's root:
///
///     level.open("file")  level.save("file")
///     level.addCurve("name")  level.removeCurve("name")  level.importTrack("track.gpx")
///     level.undo()  level.redo()
///     curves.<name>.import("track.gpx") and the commands of addCurveCommands()
///
/// Each curve of the level has its object below `curves` for as long as it exists. `import` adds a track's
/// points to a curve, as metres from the track's first point; `importTrack` makes a curve of it (see
/// readTrackCurve()). `open` takes a track as well. File names are relative to the working directory. A
/// command that fails stores the reason in its future. Main thread only; import() reads its file on a worker
/// thread and fulfils its future from there.
class LevelCommands
{
public:
    /// @p root and @p level must outlive this object.
    LevelCommands(CommandObject& root, Level& level);
    LevelCommands(const LevelCommands&) = delete;
    LevelCommands& operator=(const LevelCommands&) = delete;
    ~LevelCommands();

    /// The level with all that finished commands brought: what a worker has read joins the level here, on the
    /// main thread, before anything looks at it.
    Level& level();

private:
    void addLevelCommands();
    void addCurveObject(const std::string& name);
    void removeCurveObject(const std::string& name);
    std::future<void> importTrack(const std::string& curve, const std::string& file);

    CommandObject& m_root;
    Level& m_level;
    CommandObject m_levelObject;
    CommandObject m_curvesObject;
    std::map<std::string, std::unique_ptr<CommandObject>> m_curveObjects;
    MainThreadQueue m_arrivals;
    qua::Connection m_curveAdded;
    qua::Connection m_curveRemoved;
    Worker m_worker; // last: its thread must be gone before what it posts to
};
