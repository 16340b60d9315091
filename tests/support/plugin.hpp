#pragma once

#include <gtest/gtest.h>

#include <dlfcn.h>

/// A plug-in, loaded for the lifetime of this object. Link the test with CMAKE_DL_LIBS.
class Plugin
{
public:
    explicit Plugin(const char* library) : m_handle(dlopen(library, RTLD_NOW | RTLD_LOCAL))
    {
        EXPECT_NE(m_handle, nullptr) << dlerror();
    }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    ~Plugin()
    {
        if (m_handle != nullptr)
        {
            dlclose(m_handle);
        }
    }

    /// The plug-in's function of that name.
    template <class Function>
    Function* entry(const char* name) const
    {
        return reinterpret_cast<Function*>(dlsym(m_handle, name));
    }

private:
    void* m_handle;
};

/// Whether a library is in the process's memory.
inline bool isMapped(const char* library)
{
    void* const handle = dlopen(library, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr)
    {
        dlclose(handle);
    }
    return handle != nullptr;
}
