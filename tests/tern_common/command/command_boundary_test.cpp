// The command system across a library boundary: used by a plug-in from within, and lent commands by one. The
// loading program links the platform's reports alone, so that the library comes and goes with its plug-in.

#include "tests/support/plugin.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <string>

namespace
{

TEST(CommandBoundaryTest, TheLibraryIsLoadedUsedAndGoneAgain)
{
    const TemporaryDirectory directory;
    const std::wstring script =
        directory.write("s.txt", "count(1)\nwait(1)\ncount(\"x\")\nunknown()\n").wstring();
    for (int cycle = 0; cycle < 100; ++cycle)
    {
        {
            const Plugin plugin(TERN_BOUNDARY_PLUGIN);
            ExpectReports reports{"argv->tryCast(a)", "command"};
            ASSERT_TRUE(isMapped(TERN_COMMON_LIBRARY));
            ASSERT_EQ(plugin.entry<int(const wchar_t*)>("runScript")(script.c_str()), 202);
        }
        ASSERT_FALSE(isMapped(TERN_BOUNDARY_PLUGIN)) << "in cycle " << cycle;
        ASSERT_FALSE(isMapped(TERN_COMMON_LIBRARY)) << "in cycle " << cycle;
    }
}

} // namespace
