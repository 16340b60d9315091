// tern_editor: the host that shows the library at work.

#include "editor/app/editor_options.hpp"
#include "editor/app/headless_session.hpp"

#include <exception>
#include <iostream>

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
