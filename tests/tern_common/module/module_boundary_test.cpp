// The library loaded at run time, used, and unloaded: nothing of it may be left. The loading program links
// the platform alone, so that the library comes and goes with its plug-in.

#include "kodo/chunk/chunk_manager.hpp"
#include "kodo/core/async_manager.hpp"
#include "tern/meta_object.hpp"
#include "tern/property_change_notifier.hpp"
#include "tests/support/allocation_hook.hpp"
#include "tests/support/plugin.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/resource_tree.hpp"
#include "tests/support/test_space.hpp"
#include "vell/meta_type.hpp"
#include "vell/variant_converter.hpp"

#include <gtest/gtest.h>

#include <link.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

namespace
{

/// What a library can leave behind.
struct Census
{
    std::vector<const vell::MetaType*> types = vell::MetaType::registered();
    std::size_t converters = vell::VariantConverter::registeredCount();
    std::size_t metaObjects = tern::MetaObjectManager::instance().registeredCount();
    std::size_t cacheSlots = Kodo::ChunkSpace::registeredCacheCount();
    std::size_t spaces = Kodo::ChunkManager::instance().spaceCount();
    std::size_t listeners = tern::PropertyChangeNotifier::listenerCount();
    std::size_t jobs = Kodo::AsyncManager::pendingCount();
    int mappedObjects = 0;

    Census()
    {
        dl_iterate_phdr(
            [](dl_phdr_info*, std::size_t, void* count)
            {
                ++*static_cast<int*>(count);
                return 0;
            },
            &mappedObjects);
    }
    friend bool operator==(const Census&, const Census&) = default;
};

TEST(ModuleBoundaryTest, ALoadedLibraryIsRegistered)
{
    const Census before;
    const Plugin plugin(TERN_MODULE_PLUGIN);
    const Census loaded;
    EXPECT_EQ(loaded.converters, before.converters + 1);
    EXPECT_EQ(loaded.cacheSlots, before.cacheSlots + 1);
    EXPECT_GE(loaded.types.size(), before.types.size() + 7);
    EXPECT_NE(tern::MetaObjectManager::instance().find("CurveViewControlPoint"), nullptr);
}

TEST(ModuleBoundaryTest, AThousandTimesLoadedUsedAndUnloadedNothingIsLeft)
{
    const ResourceTree tree;
    tree.writeCatalogue("v", {{"tug", "Harbour tug"}});
    tree.writeVehicles("ships", "<tug><userString>#v:tug</userString></tug>");
    tree.write("count.script", "count(1)\n");
    const std::wstring script = (tree.path() / "count.script").wstring();
    const auto cycle = [&script]
    {
        const Plugin plugin(TERN_MODULE_PLUGIN);
        ASSERT_EQ(plugin.entry<int(const wchar_t*)>("useAll")(script.c_str()), 15);
    };
    for (int warmUp = 0; warmUp < 20; ++warmUp)
    {
        cycle();
    }
    const Census before;
    const std::size_t heapBefore = liveHeapBytes();
    for (int i = 0; i < 1000; ++i)
    {
        cycle();
        ASSERT_FALSE(isMapped(TERN_COMMON_LIBRARY)) << "in cycle " << i;
        ASSERT_EQ(Census(), before) << "in cycle " << i;
    }
    EXPECT_EQ(liveHeapBytes(), heapBefore);
    EXPECT_EQ(tern::MetaObjectManager::instance().find("CurveViewControlPoint"), nullptr);
}

TEST(ModuleBoundaryTest, CachesGoWithTheLibraryAndTheirSpacesStay)
{
    const TestSpace first(1);
    const TestSpace second(2);
    const auto cycle = [&]
    {
        const Plugin plugin(TERN_MODULE_PLUGIN);
        ASSERT_GT(plugin.entry<int(int)>("useSpace")(first.id), 0);
        ASSERT_GT(plugin.entry<int(int)>("useSpace")(second.id), 0);
        ASSERT_NE(first.chunkSpace().cache(0), nullptr);
    };
    for (int warmUp = 0; warmUp < 20; ++warmUp)
    {
        cycle();
    }
    const Census before;
    const std::size_t heapBefore = liveHeapBytes();
    for (int i = 0; i < 200; ++i)
    {
        cycle();
        ASSERT_FALSE(isMapped(TERN_COMMON_LIBRARY)) << "in cycle " << i;
        ASSERT_EQ(Census(), before) << "in cycle " << i;
        ASSERT_EQ(first.chunkSpace().cache(0), nullptr);
        ASSERT_EQ(second.chunkSpace().cache(0), nullptr);
        ASSERT_EQ(first.itemCount() + second.itemCount(), 0U);
        ASSERT_EQ(first.scene().objectCount() + second.scene().objectCount(), 0U);
    }
    EXPECT_EQ(liveHeapBytes(), heapBefore);
}

TEST(ModuleBoundaryTest, WorkDeferredToTheMainThreadGoesWithItsViewBeforeTheLibraryDoes)
{
    const TestSpace space;
    ASSERT_EQ(space.itemCount(), 0U); // makes the space
    const Census before;
    for (int i = 0; i < 100; ++i)
    {
        {
            const Plugin plugin(TERN_MODULE_PLUGIN);
            ASSERT_EQ(plugin.entry<int(int)>("deferInThread")(space.id), 1);
        }
        ASSERT_FALSE(isMapped(TERN_COMMON_LIBRARY)) << "in cycle " << i;
        Kodo::AsyncManager::runMainThreadJobs();
        ASSERT_EQ(Census(), before) << "in cycle " << i;
    }
}

TEST(ModuleBoundaryTest, OtherThreadsMayLookTypesUpWhileTheLibraryComesAndGoes)
{
    using Item = Kodo::ChunkItemBase;
    std::atomic<bool> done = false;
    std::atomic<int> found = 0;
    std::thread looking(
        [&done, &found]
        {
            while (!done)
            {
                // What is found may be gone by now: it is not looked at.
                found += vell::MetaType::find(typeid(std::shared_ptr<Item>)) != nullptr ? 1 : 0;
                found += tern::MetaObjectManager::instance().find("CurveViewControlPoint") != nullptr ? 1 : 0;
                found += vell::VariantConverter::registeredCount() != 0 ? 1 : 0;
            }
        });
    for (int i = 0; i < 200 || found == 0; ++i)
    {
        const Plugin plugin(TERN_MODULE_PLUGIN);
    }
    done = true;
    looking.join();
    EXPECT_EQ(vell::MetaType::find(typeid(std::shared_ptr<Item>)), nullptr);
}

} // namespace
