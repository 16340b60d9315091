// tern_editor: the host that shows the library at work.

#include "editor/app/editor_options.hpp"
#include "editor/app/headless_session.hpp"
#include "editor/app/open_session.hpp"
#include "editor/palette/palette.hpp"

#include <cstdint>
#include <exception>
#include <iostream>
#include <locale>
#include <stdexcept>

namespace
{

/// Scripts are UTF-8, in whatever language the user's system runs: the command system reads them with the
/// global locale. Numbers and messages stay as in the classic one. Where there is no such locale, scripts are
/// ASCII.
void readTextAsUtf8()
{
    for (const char* const name : {"C.UTF-8", ".UTF-8"})
    {
        try
        {
            std::locale::global(std::locale(std::locale::classic(), name, std::locale::ctype));
            return;
        }
        catch (const std::runtime_error&) // not known to this system
        {
        }
    }
}

/// Says so where what was printed is lost, as on a full disk.
bool outputArrived()
{
    if (std::cout.flush())
    {
        return true;
    }
    std::cerr << "tern_editor: the output cannot be written\n";
    return false;
}

int runPaletteJob(const EditorOptions& options)
{
    PaletteOptions palette;
    palette.colors = *options.colors;
    palette.seed = options.seed;
    for (const std::uint32_t color : options.banned)
    {
        palette.banned.emplace_back(0xFF000000U | color);
    }
    palette.pictureFile = options.picture ? options.picture->string() : std::string();
    return runPalette(palette, std::cout) ? 0 : 1;
}

int runJob(const EditorOptions& options, const char* program)
{
    if (!options.resources.empty())
    {
        return runOpenSession(options, program, std::cout, std::cerr);
    }
    if (options.colors)
    {
        return runPaletteJob(options);
    }
    return HeadlessSession(options, std::cout, std::cerr).run();
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        const EditorOptions options = parseCommandLine(argc, argv);
        if (options.help)
        {
            std::cout << helpText();
            return outputArrived() ? 0 : 1;
        }
        readTextAsUtf8(); // not before: the names on the command line are in the system's encoding
        const int result = runJob(options, argv[0]);
        return outputArrived() ? result : 1;
    }
    catch (const CommandLineError& error)
    {
        std::cerr << "tern_editor: " << error.what() << "\nTry --help.\n";
        return 2;
    }
    catch (const std::exception& error)
    {
        std::cerr << "tern_editor: " << error.what() << '\n';
        return 1;
    }
}
