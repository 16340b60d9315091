// Loads a plug-in at run time, lets a script use its command, and unloads it again.

#include "tern_common/command_system.hpp"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace
{

using PluginEntry = void (*)(CommandObject& root);

/// A plug-in, loaded for the lifetime of this object.
class Plugin
{
public:
    explicit Plugin(const std::filesystem::path& file)
#if defined(_WIN32)
        : m_library(LoadLibraryW(file.c_str()))
#else
        : m_library(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL))
#endif
    {
    }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    ~Plugin()
    {
        if (m_library != nullptr)
        {
#if defined(_WIN32)
            FreeLibrary(m_library);
#else
            dlclose(m_library);
#endif
        }
    }

    PluginEntry entry(const char* name) const
    {
#if defined(_WIN32)
        return m_library == nullptr
                   ? nullptr
                   : reinterpret_cast<PluginEntry>(reinterpret_cast<void*>(GetProcAddress(m_library, name)));
#else
        return m_library == nullptr ? nullptr : reinterpret_cast<PluginEntry>(dlsym(m_library, name));
#endif
    }

private:
#if defined(_WIN32)
    HMODULE m_library;
#else
    void* m_library;
#endif
};

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        std::cerr << "usage: plugin_host_example PLUGIN\n";
        return 2;
    }
    CommandSystem system;
    {
        const Plugin plugin(argv[1]);
        const PluginEntry load = plugin.entry("pluginLoad");
        const PluginEntry unload = plugin.entry("pluginUnload");
        if (load == nullptr || unload == nullptr)
        {
            std::cerr << argv[1] << " is no plug-in of this host\n";
            return 1;
        }
        load(system.rootObject());

        const std::filesystem::path script =
            std::filesystem::temp_directory_path() / "plugin_host_example.txt";
        std::ofstream(script) << "greeter.greet(\"the host\")\n";
        system.parseScriptFile(script.wstring());
        std::filesystem::remove(script);
        while (!system.isIdle())
        {
            system.tick();
        }
        unload(system.rootObject());
    }
    const bool gone = system.rootObject().findChild("greeter") == nullptr;
    std::cout << (gone ? "The plug-in is gone.\n" : "The plug-in left something behind.\n");
    return gone ? 0 : 1;
}
