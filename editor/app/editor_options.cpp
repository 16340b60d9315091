#include "editor/app/editor_options.hpp"

#include "editor/app/command_help.hpp"
#include "editor/curve/color_text.hpp"

#include <boost/program_options.hpp>

#include <charconv>
#include <limits>
#include <sstream>
#include <system_error>

namespace po = boost::program_options;

namespace
{

using Names = std::vector<std::string>;
using Number = std::int64_t; // signed: the conversion to unsigned numbers takes -1 for a large one

po::options_description describeLevelOptions()
{
    po::options_description options("Working on a level");
    options.add_options()                                                           //
        ("level", po::value<std::string>()->value_name("FILE"), "Open this level.") //
        ("script", po::value<Names>()->value_name("FILE...")->multitoken()->composing(),
         "Run these command scripts on the level, one after another.") //
        ("save", po::value<std::string>()->value_name("FILE"),
         "Save the level there at the end: over the level's own file only if nothing went wrong. The file is "
         "replaced as a whole or not at all.") //
        ("max-ticks", po::value<Number>()->value_name("N")->default_value(1000000),
         "Give up after so many ticks.") //
        ("find", po::value<std::string>()->value_name("QUERY"),
         "At the end, list the items that match: words of their names, \"quoted text\", key:value, and any "
         "of "
         "these with a - in front. Write --find=QUERY where it begins with a dash.") //
        ("names", po::bool_switch(),
         "At the end, list the names of the project's vehicles and arenas and of the level's items, in the "
         "language of --language, and count what each language leaves untranslated.") //
        ("language", po::value<std::string>()->value_name("NAME"),
         "The language of names; the project's default where none is given.") //
        ("project", po::value<std::string>()->value_name("DIR"),
         "Take names from this project: else from the directory <level>_project beside the level, or from "
         "the "
         "level's own directory.") //
        ("trace", po::value<std::string>()->value_name("FILE"),
         "Write a profile of the run, for about:tracing or Perfetto.");
    return options;
}

po::options_description describeRequestOptions()
{
    po::options_description options("Opening resources");
    options.add_options() //
        ("uniquePerApp", po::bool_switch(),
         "Open one resource in this process and the others in processes of their own; may be written with "
         "one "
         "dash.") //
        ("report", po::value<std::string>()->value_name("FILE"),
         "Append to this file, as a line of JSON, what each process opened.");
    return options;
}

po::options_description describePaletteOptions()
{
    po::options_description options("Generating colours");
    options.add_options()                                                                            //
        ("colors", po::value<Number>()->value_name("N"), "Generate so many well-separated colours.") //
        ("seed", po::value<Number>()->value_name("N")->default_value(0),
         "Seed of the random draws: of these colours, and of those of a level's curves in its picture.") //
        ("ban", po::value<Names>()->value_name("RRGGBB...")->multitoken()->composing(),
         "Keep away from the hues of these colours.");
    return options;
}

po::options_description describePictureOptions()
{
    po::options_description options("Drawing a picture");
    options.add_options() //
        ("picture", po::value<std::string>()->value_name("FILE"),
         "Draw the level as it is in the end, or the colours, as a PNG picture. The file is replaced as a "
         "whole or not at all.") //
        ("size", po::value<std::string>()->value_name("WxH")->default_value("1280x720"),
         "Size in pixels of the level's picture.") //
        ("camera", po::value<Names>()->value_name("KEY=VALUE...")->multitoken(),
         "From where the level is seen: eye=x,y,z at=x,y,z in metres, y up, and fov=DEGREES from top to "
         "bottom "
         "or, without perspective, ortho=METRES. What is left out is chosen so that all of the level is "
         "seen; so does ortho=fit.");
    return options;
}

po::options_description describeOptions()
{
    po::options_description options("Options");
    options.add_options()                                 //
        ("help,h", po::bool_switch(), "Print this help.") //
        ("headless", po::bool_switch(), "Work without a window.");
    options.add(describeLevelOptions())
        .add(describeRequestOptions())
        .add(describePaletteOptions())
        .add(describePictureOptions());
    return options;
}

/// The values of the options and, as "resources", the argument that is none.
po::variables_map readCommandLine(int argc, const char* const* argv)
{
    po::options_description all = describeOptions();
    all.add_options()("resources", po::value<std::string>());
    po::positional_options_description positional;
    positional.add("resources", 1);

    using Style = po::command_line_style::style_t;
    const int style = (Style::default_style & ~Style::allow_guessing) | Style::allow_long_disguise;
    po::variables_map values;
    po::store(po::command_line_parser(argc, argv).options(all).positional(positional).style(style).run(),
              values);
    po::notify(values);
    return values;
}

std::uint32_t bannedColor(const std::string& text)
{
    const auto color = parseColor(text);
    if (!color)
    {
        throw CommandLineError("\"" + text + "\" is no colour: six hexadecimal digits");
    }
    return color->argb() & 0xFFFFFFU;
}

std::filesystem::path pathOf(const std::string& name)
{
    return std::filesystem::path(name); // as the system gave it: a file's name need not be text
}

std::optional<std::filesystem::path> optionalPath(const po::variables_map& values, const char* name)
{
    return values.count(name) == 0 ? std::nullopt : std::optional(pathOf(values[name].as<std::string>()));
}

Names namesOf(const po::variables_map& values, const char* name)
{
    return values.count(name) == 0 ? Names() : values[name].as<Names>();
}

Number numberOf(const po::variables_map& values, const char* name, Number most)
{
    const Number number = values[name].as<Number>();
    if (number < 0 || number > most)
    {
        throw CommandLineError(std::string("--") + name + " takes a number from 0 to " +
                               std::to_string(most));
    }
    return number;
}

void readPictureOptions(EditorOptions& options, const po::variables_map& values)
{
    options.picture = optionalPath(values, "picture");
    try
    {
        options.size = parsePictureSize(values["size"].as<std::string>());
        options.camera = parseCamera(namesOf(values, "camera"));
    }
    catch (const std::invalid_argument& error)
    {
        throw CommandLineError(error.what());
    }
    const bool isOfLevel = options.picture && values.count("level") != 0;
    if (!isOfLevel && (!values["size"].defaulted() || values.count("camera") != 0))
    {
        throw CommandLineError("--size and --camera need --level and --picture");
    }
}

EditorOptions toOptions(const po::variables_map& values)
{
    EditorOptions options;
    options.help = values["help"].as<bool>();
    options.headless = values["headless"].as<bool>();
    options.resources =
        values.count("resources") == 0 ? std::string() : values["resources"].as<std::string>();
    options.uniquePerApp = values["uniquePerApp"].as<bool>();
    options.report = optionalPath(values, "report");
    if (values.count("colors") != 0)
    {
        options.colors = static_cast<std::size_t>(numberOf(values, "colors", 10000));
    }
    options.seed =
        static_cast<std::uint32_t>(numberOf(values, "seed", std::numeric_limits<std::uint32_t>::max()));
    for (const std::string& color : namesOf(values, "ban"))
    {
        options.banned.push_back(bannedColor(color));
    }
    readPictureOptions(options, values);
    options.level = optionalPath(values, "level");
    for (const std::string& script : namesOf(values, "script"))
    {
        options.scripts.push_back(pathOf(script));
    }
    options.save = optionalPath(values, "save");
    if (values.count("find") != 0)
    {
        options.find = values["find"].as<std::string>();
    }
    options.names = values["names"].as<bool>();
    if (values.count("language") != 0)
    {
        options.language = values["language"].as<std::string>();
    }
    options.project = optionalPath(values, "project");
    options.trace = optionalPath(values, "trace");
    options.maxTicks =
        static_cast<std::uint64_t>(numberOf(values, "max-ticks", std::numeric_limits<Number>::max()));
    return options;
}

void expectOneJob(const EditorOptions& options)
{
    const int jobs = (options.resources.empty() ? 0 : 1) + (options.colors ? 1 : 0) + (options.level ? 1 : 0);
    if (jobs == 0)
    {
        throw CommandLineError("nothing to do: give resources, --colors or --level");
    }
    if (jobs > 1)
    {
        throw CommandLineError("give one of resources, --colors and --level");
    }
    if (options.picture && !options.level && !options.colors)
    {
        throw CommandLineError("--picture needs --level or --colors");
    }
    if (!options.level && (!options.scripts.empty() || options.find || options.save || options.trace ||
                           options.names || options.language || options.project))
    {
        throw CommandLineError(
            "--script, --find, --names, --language, --project, --save and --trace need --level");
    }
    if (!options.names && (options.language || options.project) && options.scripts.empty())
    {
        throw CommandLineError("--language and --project need --names or a script");
    }
    if (options.level && !options.headless)
    {
        throw CommandLineError("this editor has no window yet: give --headless");
    }
}

} // namespace

EditorOptions parseCommandLine(int argc, const char* const* argv)
{
    try
    {
        EditorOptions options = toOptions(readCommandLine(argc, argv));
        if (!options.help)
        {
            expectOneJob(options);
        }
        return options;
    }
    catch (const po::error& error)
    {
        throw CommandLineError(error.what());
    }
}

std::string helpText()
{
    std::ostringstream text;
    text << "tern_editor --headless --level FILE [--script FILE...] [--find QUERY] [--save FILE]\n"
            "            [--names] [--language NAME] [--project DIR] [--max-ticks N] [--trace FILE]\n"
            "            [--picture FILE [--size WxH] [--camera KEY=VALUE...]]\n\n"
            "Opens a level and runs command scripts on it, tick by tick: a command starts when the one "
            "before it\n"
            "is done, at most one a tick. File names in scripts are relative to the working directory.\n\n"
            "Opens the resources of a list, files below the working directory, and starts a new editor "
            "process for\n"
            "those that this one does not take.\n\n"
            "Prints colours with each one's smallest distance from another: of hue, and as seen "
            "(CIEDE2000).\n\n"
         << describeOptions() << "\nCommands\n"
         << commandHelp()
         << "\nExit code\n"
            "  0  every command ran and nothing was reported\n"
            "  1  something was reported, failed or was left undone\n"
            "  2  the command line is wrong\n";
    return text.str();
}
