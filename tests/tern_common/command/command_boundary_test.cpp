// The command system across a library boundary: used by a plug-in from within, and lent commands by one. The
// loading program links the platform's reports alone, so that the library comes and goes with its plug-in.

#include "tests/support/reports.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>

namespace
{

/// A plug-in, loaded for the lifetime of this object.
class Plugin
{
public:
    Plugin() : m_handle(dlopen(TERN_BOUNDARY_PLUGIN, RTLD_NOW | RTLD_LOCAL))
    {
        EXPECT_NE(m_handle, nullptr) << dlerror();
    }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    ~Plugin() { dlclose(m_handle); }

    template <class Function>
    Function* entry(const char* name) const
    {
        return reinterpret_cast<Function*>(dlsym(m_handle, name));
    }

private:
    void* m_handle;
};

bool isMapped(const char* library)
{
    void* const handle = dlopen(library, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr)
    {
        dlclose(handle);
    }
    return handle != nullptr;
}

TEST(CommandBoundaryTest, TheLibraryIsLoadedUsedAndGoneAgain)
{
    const TemporaryDirectory directory;
    const std::wstring script =
        directory.write("s.txt", "count(1)\nwait(1)\ncount(\"x\")\nunknown()\n").wstring();
    for (int cycle = 0; cycle < 100; ++cycle)
    {
        {
            const Plugin plugin;
            ExpectReports reports{"argv->tryCast(a)", "command"};
            ASSERT_TRUE(isMapped(TERN_COMMON_LIBRARY));
            ASSERT_EQ(plugin.entry<int(const wchar_t*)>("runScript")(script.c_str()), 202);
        }
        ASSERT_FALSE(isMapped(TERN_BOUNDARY_PLUGIN)) << "in cycle " << cycle;
        ASSERT_FALSE(isMapped(TERN_COMMON_LIBRARY)) << "in cycle " << cycle;
    }
}

} // namespace
