#include "editor/app/command_help.hpp"

#include <algorithm>
#include <array>
#include <string_view>

namespace
{

struct CommandLine
{
    std::string_view command;
    std::string_view effect;
};

constexpr std::array COMMANDS{
    CommandLine{"level.open(\"file\")", "replace the level by a file's"},
    CommandLine{"level.save(\"file\")", "save the level"},
    CommandLine{"level.addCurve(\"name\")", "add a curve without points"},
    CommandLine{"level.removeCurve(\"name\")", "remove a curve and its commands"},
    CommandLine{"level.importTrack(\"file.gpx\")", "add a GPX track as a curve, named like the file"},
    CommandLine{"level.undo()", "take back the last edit"},
    CommandLine{"level.redo()", "make it again"},
    CommandLine{"curves.NAME.addPoint(\"x y z\")", "add a point behind the last, in metres"},
    CommandLine{"curves.NAME.import(\"file.gpx\")", "add the points of a GPX track"},
    CommandLine{"curves.NAME.insertPoint(\"x y z\", \"t\")", "add a point between those at t = 0, 1, 2, ..."},
    CommandLine{"curves.NAME.split(\"t\")", "add a point on the curve"},
    CommandLine{"curves.NAME.splitNear(\"x y z\")", "the same, where it is nearest to a place"},
    CommandLine{"curves.NAME.movePoint(n, \"x y z\")", "move a point; n counts from 0"},
    CommandLine{"curves.NAME.removePoint(n)", "remove it"},
    CommandLine{"curves.NAME.swapPoints(n, m)", "exchange two points in the order"},
    CommandLine{"curves.NAME.setKind(\"kind\")", "linear, catmullRom or bezier"},
    CommandLine{"curves.NAME.setHandles(n, \"x y z\", \"x y z\")",
                "of a Bezier point: in and out, from it on"},
    CommandLine{"curves.NAME.setClosed(true)", "or false"},
    CommandLine{"curves.NAME.setColor(\"RRGGBB\")", "or \"\" for none"},
    CommandLine{"names.language(\"name\")", "switch the language of names"},
    CommandLine{"names.show(\"key\")", "print the name of a vehicle, an arena or a key"},
    CommandLine{"log.info(\"text\")", "print a line"},
    CommandLine{"wait(n)", "let n ticks pass"}};

} // namespace

std::string commandHelp()
{
    const auto longest = std::max_element(COMMANDS.begin(), COMMANDS.end(),
                                          [](const CommandLine& a, const CommandLine& b)
                                          { return a.command.size() < b.command.size(); });
    std::string text;
    for (const CommandLine& line : COMMANDS)
    {
        const std::size_t blanks = longest->command.size() - line.command.size() + 2;
        text.append("  ").append(line.command).append(blanks, ' ').append(line.effect).append("\n");
    }
    return text;
}
