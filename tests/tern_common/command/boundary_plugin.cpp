// Loaded by command_boundary_test: drives the whole command system from within, and lends commands to a host.

#include "tern_common/command_system.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "qua/symbol_visibility.hpp"
#include "tests/support/futures.hpp"

#include <memory>
#include <string>

namespace
{

std::unique_ptr<CommandObject> lent;
int calls = 0;

} // namespace

extern "C" QUA_SYMBOL_EXPORT int runScript(const wchar_t* path);
extern "C" QUA_SYMBOL_EXPORT void lendCommands(CommandObject& root);
extern "C" QUA_SYMBOL_EXPORT int takeCommandsBack(CommandObject& root);

/// Runs a script that calls count(1), count("x") and unknown(); gives the calls and, times 100, the reports.
int runScript(const wchar_t* path)
{
    int reports = 0;
    const Kodo::DebugMessageSink sink([&reports](const Kodo::DebugMessage&) { ++reports; });
    CommandSystem system;
    int counted = 0;
    system.rootObject().addCommand("count",
                                   [&counted](int)
                                   {
                                       ++counted;
                                       return readyFuture();
                                   });
    system.parseScriptFile(path);
    while (!system.isIdle())
    {
        system.tick();
    }
    return counted + 100 * reports;
}

void lendCommands(CommandObject& root)
{
    lent = std::make_unique<CommandObject>();
    lent->addCommand("count",
                     [](const std::shared_ptr<int>&, const std::string&)
                     {
                         ++calls;
                         return readyFuture();
                     });
    root.addChild("lent", lent.get());
}

int takeCommandsBack(CommandObject& root)
{
    root.removeChild("lent");
    lent.reset();
    return calls;
}
