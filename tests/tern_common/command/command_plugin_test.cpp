// A host that is linked with the library and is lent commands by a plug-in, which it then unloads.

#include "tern_common/command_system.hpp"

#include "tests/support/plugin.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace
{

TEST(CommandPluginTest, APluginsCommandsServeTheHostAndGoWithThePlugin)
{
    CommandSystem system;
    for (int cycle = 0; cycle < 20; ++cycle)
    {
        std::optional<Plugin> plugin(TERN_BOUNDARY_PLUGIN);
        const auto lend = plugin->entry<void(CommandObject&)>("lendCommands");
        const auto takeBack = plugin->entry<int(CommandObject&)>("takeCommandsBack");

        lend(system.rootObject());
        {
            const vell::Variant arguments[] = {std::make_shared<int>(1), "text"};
            const Command* const command = system.rootObject().findChild("lent")->findCommand("count");
            command->invoke(2, arguments).get();
            command->invoke(2, arguments).get();
        }
        EXPECT_EQ(takeBack(system.rootObject()), 2);
        EXPECT_EQ(system.rootObject().findChild("lent"), nullptr);
        plugin.reset();
        ASSERT_FALSE(isMapped(TERN_BOUNDARY_PLUGIN));
        system.tick();
    }
}

} // namespace
