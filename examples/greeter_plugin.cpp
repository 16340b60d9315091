// A plug-in: adds a command to a tree that it is given, and takes it away before it is unloaded.

#include "qua/symbol_visibility.hpp"
#include "tern_common/command_object.hpp"

#include <iostream>
#include <memory>
#include <string>

namespace
{
std::unique_ptr<CommandObject> greeter;
} // namespace

extern "C" QUA_SYMBOL_EXPORT void pluginLoad(CommandObject& root);
extern "C" QUA_SYMBOL_EXPORT void pluginUnload(CommandObject& root);

void pluginLoad(CommandObject& root)
{
    greeter = std::make_unique<CommandObject>();
    greeter->addCommand("greet",
                        [](const std::string& name)
                        {
                            std::cout << "The plug-in greets " << name << ".\n";
                            std::promise<void> promise;
                            promise.set_value();
                            return promise.get_future();
                        });
    root.addChild("greeter", greeter.get());
}

void pluginUnload(CommandObject& root)
{
    root.removeChild("greeter");
    greeter.reset();
}
