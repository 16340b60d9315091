// A host that is linked with the library and is lent commands by a plug-in, which it then unloads.

#include "tern_common/command_system.hpp"

#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <memory>

namespace
{

TEST(CommandPluginTest, APluginsCommandsServeTheHostAndGoWithThePlugin)
{
    CommandSystem system;
    for (int cycle = 0; cycle < 20; ++cycle)
    {
        void* const plugin = dlopen(TERN_BOUNDARY_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(plugin, nullptr) << dlerror();
        const auto lend = reinterpret_cast<void (*)(CommandObject&)>(dlsym(plugin, "lendCommands"));
        const auto takeBack = reinterpret_cast<int (*)(CommandObject&)>(dlsym(plugin, "takeCommandsBack"));

        lend(system.rootObject());
        {
            const vell::Variant arguments[] = {std::make_shared<int>(1), "text"};
            const Command* const command = system.rootObject().findChild("lent")->findCommand("count");
            command->invoke(2, arguments).get();
            command->invoke(2, arguments).get();
        }
        EXPECT_EQ(takeBack(system.rootObject()), 2);
        EXPECT_EQ(system.rootObject().findChild("lent"), nullptr);
        dlclose(plugin);
        ASSERT_EQ(dlopen(TERN_BOUNDARY_PLUGIN, RTLD_NOW | RTLD_NOLOAD), nullptr);
        system.tick();
    }
}

} // namespace
