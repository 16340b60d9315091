#include "editor/app/editor_options.hpp"

#include <boost/program_options.hpp>

#include <charconv>
#include <sstream>
#include <system_error>

namespace po = boost::program_options;

namespace
{

using Names = std::vector<std::string>;

po::options_description describeOptions()
{
    po::options_description options("Options");
    options.add_options()                                                           //
        ("help,h", "Print this help.")                                              //
        ("headless", "Work without a window.")                                      //
        ("level", po::value<std::string>()->value_name("FILE"), "Open this level.") //
        ("script", po::value<Names>()->value_name("FILE...")->multitoken()->composing(),
         "Run these command scripts on the level, one after another.") //
        ("save", po::value<std::string>()->value_name("FILE"),
         "Save the level there at the end, if nothing went wrong. The file is replaced as a whole or not at "
         "all.") //
        ("max-ticks",
         po::value<std::string>()->value_name("N")->default_value(std::to_string(EditorOptions().maxTicks)),
         "Give up after so many ticks.") //
        ("trace", po::value<std::string>()->value_name("FILE"),
         "Write a profile of the run, for about:tracing or Perfetto.");
    return options;
}

std::filesystem::path pathOf(const std::string& name)
{
    return std::filesystem::path(name); // as the system gave it: a file's name need not be text
}

std::optional<std::filesystem::path> optionalPath(const po::variables_map& values, const char* name)
{
    return values.count(name) == 0 ? std::nullopt : std::optional(pathOf(values[name].as<std::string>()));
}

/// Not left to the option library, to which "-1" is a very large number.
std::uint64_t parseTicks(const std::string& text)
{
    std::uint64_t ticks = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, ticks);
    if (error != std::errc() || next != end)
    {
        throw CommandLineError("--max-ticks takes a number of ticks, which \"" + text + "\" is not");
    }
    return ticks;
}

} // namespace

EditorOptions parseCommandLine(int argc, const char* const* argv)
{
    EditorOptions options;
    po::variables_map values;
    try
    {
        const po::options_description described = describeOptions();
        const int style = po::command_line_style::default_style & ~po::command_line_style::allow_guessing;
        po::store(po::command_line_parser(argc, argv)
                      .options(described)
                      .positional(po::positional_options_description())
                      .style(style)
                      .run(),
                  values);
        po::notify(values);
    }
    catch (const po::error& error)
    {
        throw CommandLineError(error.what());
    }
    options.help = values.count("help") != 0;
    options.headless = values.count("headless") != 0;
    options.level = optionalPath(values, "level");
    options.save = optionalPath(values, "save");
    options.trace = optionalPath(values, "trace");
    options.maxTicks = parseTicks(values["max-ticks"].as<std::string>());
    if (values.count("script") != 0)
    {
        for (const std::string& script : values["script"].as<Names>())
        {
            options.scripts.push_back(pathOf(script));
        }
    }
    if (options.help)
    {
        return options;
    }
    if (!options.headless)
    {
        throw CommandLineError("this editor has no window yet: give --headless");
    }
    if (!options.level)
    {
        throw CommandLineError("--level is missing");
    }
    return options;
}

std::string helpText()
{
    std::ostringstream text;
    text << "tern_editor --headless --level FILE --script FILE... [--save FILE] [--max-ticks N] [--trace "
            "FILE]\n\n"
            "Opens a level and runs command scripts on it, tick by tick: a command starts when the one "
            "before it\n"
            "is done, at most one a tick. File names in scripts are relative to the working directory.\n\n"
         << describeOptions()
         << "\nCommands\n"
            "  level.open(\"file\")               replace the level by a file's\n"
            "  level.save(\"file\")               save the level\n"
            "  level.addCurve(\"name\")           add a curve without points\n"
            "  level.removeCurve(\"name\")        remove a curve and its commands\n"
            "  curves.NAME.addPoint(\"x y z\")    add a point to a curve, in metres\n"
            "  curves.NAME.import(\"file.gpx\")   add the points of a GPX track\n"
            "  log.info(\"text\")                 print a line\n"
            "  wait(n)                          let n ticks pass\n"
            "\nExit code\n"
            "  0  every command ran and nothing was reported\n"
            "  1  something was reported, failed or was left undone\n"
            "  2  the command line is wrong\n";
    return text.str();
}
