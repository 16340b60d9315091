#pragma once

#include "editor/level/level.hpp"
#include "tern_common/command_object.hpp"

#include <functional>
#include <string>

/// Adds to @p object the commands that edit the curve @p name:
///
///     addPoint("x y z")                   behind the last point
///     insertPoint("x y z", "parameter")   where the parameter tells its place
///     split("parameter")                  a point where the curve is, which keeps its shape
///     splitNear("x y z")                  the same where the curve comes nearest to a place
///     movePoint(index, "x y z")
///     setHandles(index, "x y z", "x y z") of a Bezier curve: in and out, from the point on
///     removePoint(index)
///     swapPoints(index, index)
///     setKind("linear" | "catmullRom" | "bezier")
///     setClosed(true | false)
///     setColor("RRGGBB"), setColor("") for none
///
/// Each is one step of the level's history, and fails with a LevelError in its future. Points count from 0;
/// the parameter of a point is its index, that of a place between two lies between theirs. @p level gives the
/// level with all that earlier commands brought, and must outlive the commands.
void addCurveCommands(CommandObject& object, const std::string& name, std::function<Level&()> level);
