// tern_editor: the host that shows the library at work.

#include "editor/app/editor_options.hpp"
#include "editor/app/headless_session.hpp"
#include "editor/app/open_session.hpp"
#include "editor/palette/palette.hpp"

#include <cstdint>
#include <exception>
#include <iostream>

namespace
{

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

} // namespace

int main(int argc, char** argv)
{
    try
    {
        const EditorOptions options = parseCommandLine(argc, argv);
        if (options.help)
        {
            std::cout << helpText();
            return 0;
        }
        if (!options.resources.empty())
        {
            return runOpenSession(options, argv[0], std::cout, std::cerr);
        }
        if (options.colors)
        {
            return runPaletteJob(options);
        }
        return HeadlessSession(options, std::cout, std::cerr).run();
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
