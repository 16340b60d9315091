// What a plug-in leaves behind in the platform once its objects are dropped and its code is unmapped:
// nothing.

#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/stack_tracker.hpp"
#include "qua/signal.hpp"
#include "tern/meta_object.hpp"
#include "tern/property_change_notifier.hpp"
#include "tests/platform/module/platform_test_module.hpp"
#include "tests/support/reports.hpp"
#include "vell/meta_type.hpp"
#include "vell/variant_converter.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace
{

/// The module, loaded for as long as this object lives.
class LoadedModule
{
public:
#if defined(_WIN32)
    LoadedModule() : m_handle(LoadLibraryA(TERN_PLATFORM_TEST_MODULE))
    {
        if (m_handle != nullptr)
        {
            reinterpret_cast<PlatformTestModuleEntry*>(GetProcAddress(m_handle, "platformTestModule"))(
                m_module);
        }
    }
    ~LoadedModule()
    {
        FreeLibrary(m_handle);
    }
    static bool isMapped()
    {
        return GetModuleHandleA(TERN_PLATFORM_TEST_MODULE) != nullptr;
    }
#else
    LoadedModule() : m_handle(dlopen(TERN_PLATFORM_TEST_MODULE, RTLD_NOW | RTLD_LOCAL))
    {
        if (m_handle != nullptr)
        {
            reinterpret_cast<PlatformTestModuleEntry*>(dlsym(m_handle, "platformTestModule"))(m_module);
        }
    }
    ~LoadedModule()
    {
        if (m_handle != nullptr)
        {
            dlclose(m_handle);
        }
    }
    static bool isMapped()
    {
        void* const handle = dlopen(TERN_PLATFORM_TEST_MODULE, RTLD_NOW | RTLD_NOLOAD);
        if (handle != nullptr)
        {
            dlclose(handle);
        }
        return handle != nullptr;
    }
#endif
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    const PlatformTestModule* operator->() const
    {
        return &m_module;
    }

private:
#if defined(_WIN32)
    HMODULE m_handle;
#else
    void* m_handle;
#endif
    PlatformTestModule m_module{};
};

class ModuleBoundaryTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_FALSE(LoadedModule::isMapped());
        m_module.emplace();
        ASSERT_TRUE(LoadedModule::isMapped());
    }

    void unload()
    {
        m_module.reset();
        ASSERT_FALSE(LoadedModule::isMapped()) << "something still pins the module";
    }

    std::optional<LoadedModule> m_module;
};

TEST_F(ModuleBoundaryTest, ASignalOutlivesTheCodeOfADisconnectedSlot)
{
    qua::Signal<void(int)> signal;
    int sum = 0;
    int own = 0;
    const qua::Connection ours = signal.connect([&own](int value) { own += value; });
    qua::Connection connection = (*m_module)->connectSlot(signal, sum);
    signal(1);

    connection.disconnect();
    unload();
    signal(10);
    const qua::Connection later = signal.connect([&own](int value) { own += value; });
    signal(100);

    EXPECT_EQ(sum, 1);
    EXPECT_EQ(own, 1 + 10 + 2 * 100);
}

TEST_F(ModuleBoundaryTest, ASlotThatCutItselfIsGoneWithTheEmission)
{
    qua::Signal<void(int)> signal;
    int sum = 0;
    qua::Connection connection;
    (*m_module)->connectSlotThatCutsItself(signal, connection, sum);

    signal(1);
    unload();
    signal(10);

    EXPECT_EQ(sum, 1);
}

TEST_F(ModuleBoundaryTest, AConnectionOfADestroyedSignalOutlivesTheModule)
{
    int sum = 0;
    qua::Connection connection;
    {
        qua::Signal<void(int)> signal;
        connection = (*m_module)->connectSlot(signal, sum);
        signal(1);
    }

    unload();
    EXPECT_FALSE(connection.connected());
    connection.disconnect();

    EXPECT_EQ(sum, 1);
}

TEST_F(ModuleBoundaryTest, TheModulesOwnSignalsLeaveNothing)
{
    EXPECT_EQ((*m_module)->emitOwnSignal(), 1);
    unload();
}

TEST_F(ModuleBoundaryTest, ReportingGoesOnAfterARemovedSinksCodeIsGone)
{
    const ExpectReports reports{"one", "two"};
    int count = 0;
    Kodo::DebugMessageSink sink = (*m_module)->makeSink(count);
    Kodo::DebugMessageHelper(0, 5).message("one");

    sink.remove();
    unload();
    Kodo::DebugMessageHelper(0, 5).message("two");

    EXPECT_EQ(count, 1);
}

TEST_F(ModuleBoundaryTest, RegistrationsEndWithTheModule)
{
    m_module.reset();
    const std::size_t types = vell::MetaType::registeredCount();
    const std::size_t converters = vell::VariantConverter::registeredCount();

    for (int round = 0; round < 3; ++round)
    {
        m_module.emplace();
        EXPECT_GT(vell::MetaType::registeredCount(), types);
        EXPECT_EQ(vell::VariantConverter::registeredCount(), converters + 1);
        EXPECT_EQ((*m_module)->convertOwnType(), 7);

        unload();
        EXPECT_EQ(vell::MetaType::registeredCount(), types);
        EXPECT_EQ(vell::VariantConverter::registeredCount(), converters);
    }
}

TEST_F(ModuleBoundaryTest, AReflectedClassGoesWithTheModule)
{
    const tern::MetaObjectManager& manager = tern::MetaObjectManager::instance();
    m_module.reset();
    const std::size_t classes = manager.registeredCount();

    for (int round = 0; round < 3; ++round)
    {
        m_module.emplace();
        EXPECT_EQ(manager.registeredCount(), classes + 1);
        ASSERT_NE(manager.find("Beacon"), nullptr);
        EXPECT_EQ((*m_module)->setOwnProperty(5), 5);

        unload();
        EXPECT_EQ(manager.registeredCount(), classes);
        EXPECT_EQ(manager.find("Beacon"), nullptr);
    }
}

TEST_F(ModuleBoundaryTest, ACancelledJobLeavesNothing)
{
    int count = 0;
    Kodo::AsyncManager::Job job = (*m_module)->scheduleJob(count);
    Kodo::AsyncManager::runMainThreadJobs();
    job.cancel(true);

    unload();
    Kodo::AsyncManager::runMainThreadJobs();
    EXPECT_EQ(count, 1);
    EXPECT_EQ(Kodo::AsyncManager::pendingCount(), 0U);
}

TEST_F(ModuleBoundaryTest, AnObjectOutlivesTheListenersOfItsChanges)
{
    int count = 0;
    const std::size_t listeners = tern::PropertyChangeNotifier::listenerCount();
    qua::Connection connection = (*m_module)->connectChanged(count);
    EXPECT_EQ((*m_module)->setOwnProperty(2), 2);

    connection.disconnect();
    unload();
    EXPECT_EQ(count, 1);
    EXPECT_EQ(tern::PropertyChangeNotifier::listenerCount(), listeners);
}

TEST_F(ModuleBoundaryTest, TheTextsOfAScopeSurviveTheModule)
{
    Kodo::StackTracker::startRecording();
    (*m_module)->profile();
    unload();
    const auto record = Kodo::StackTracker::stopRecording();

    ASSERT_EQ(record.size(), 1U);
    EXPECT_EQ(record.front().name, "a scope of the module");
    EXPECT_TRUE(record.front().file.ends_with("platform_test_module.cpp"));
}

} // namespace
