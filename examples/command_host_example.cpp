// A host of its own: registers a command and runs a script with it, tick by tick.

#include "tern_common/command_system.hpp"

#include <exception>
#include <filesystem>
#include <iostream>
#include <string>

namespace
{

/// What a command that is done at once returns.
std::future<void> done()
{
    std::promise<void> promise;
    promise.set_value();
    return promise.get_future();
}

} // namespace

int main(int argc, char** argv)
{
    CommandSystem system;
    int greeted = 0;
    system.rootObject().addCommand("greet",
                                   [&greeted](const std::string& name)
                                   {
                                       std::cout << "Hello, " << name << "!\n";
                                       ++greeted;
                                       return done();
                                   });

    system.parseScriptFile(std::filesystem::path(argc > 1 ? argv[1] : "greetings.txt").wstring());
    int ticks = 0;
    for (; !system.isIdle(); ++ticks) // an editor calls tick() once a frame
    {
        system.tick();
    }
    std::cout << greeted << " greetings in " << ticks << " ticks\n";
    return greeted == 2 ? 0 : 1;
}
