// tern_editor: the host that shows the library at work.

#include "editor/app/editor_options.hpp"
#include "editor/app/headless_session.hpp"

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
        const int result = HeadlessSession(options, std::cout, std::cerr).run();
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
