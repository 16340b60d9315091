// What the command system takes from the heap.

#include "tern_common/command_system.hpp"

#include "tests/support/allocation_hook.hpp"
#include "tests/support/futures.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace
{

TEST(CommandAllocationTest, AnIdleTickAllocatesNothing)
{
    CommandSystem system;
    const AllocationCount allocations;
    system.tick();
    EXPECT_EQ(allocations.count(), 0U);
}

TEST(CommandAllocationTest, ATickThatPollsAnUnreadyFutureAllocatesNothing)
{
    const TemporaryDirectory directory;
    CommandSystem system;
    std::promise<void> promise;
    system.rootObject().addCommand("hold", [&promise] { return promise.get_future(); });
    system.parseScriptFile(directory.write("script.txt", "hold()\n").wstring());
    system.tick();
    const AllocationCount allocations;
    system.tick();
    EXPECT_EQ(allocations.count(), 0U);
    EXPECT_FALSE(system.isIdle());
}

TEST(CommandAllocationTest, AQueuedCommandTakesNoMoreThanItsStringsAndVariants)
{
    // Per line: a queue entry of two vectors and the name, two path names and three arguments, all of them
    // short enough to need no memory of their own.
    constexpr std::size_t LINES = 20000;
    constexpr std::size_t ENTRY =
        sizeof(std::vector<vell::Variant>) + sizeof(std::vector<std::string>) + sizeof(std::string);
    constexpr std::size_t PARTS = 2 * sizeof(std::string) + 3 * sizeof(vell::Variant);
    const TemporaryDirectory directory;
    std::string script;
    for (std::size_t i = 0; i < LINES; ++i)
    {
        script += "world.roads.addPoint(12, \"name\", true)\n";
    }
    const std::wstring path = directory.write("script.txt", script).wstring();
    CommandSystem system;

    const std::size_t before = liveHeapBytes();
    system.parseScriptFile(path);
    const double perCommand = static_cast<double>(liveHeapBytes() - before) / LINES;

    ASSERT_EQ(system.queuedCommandCount(), LINES);
    // The queue keeps entries in blocks, with a pointer to each block: a few bytes an entry.
    EXPECT_GE(perCommand, ENTRY + PARTS);
    EXPECT_LE(perCommand, ENTRY + PARTS + 10);
    RecordProperty("bytes_per_command", std::to_string(perCommand));
}

TEST(CommandAllocationTest, AStringBeyondTheInlineSizeCostsItsTextOnce)
{
    const TemporaryDirectory directory;
    const std::string text(1000, 'x');
    const std::string line = "c(\"" + text + "\")\n";
    const std::wstring one = directory.write("1.txt", line).wstring();
    const std::wstring two = directory.write("2.txt", line + line).wstring();
    CommandSystem system;
    const auto bytesFor = [&system](const std::wstring& path)
    {
        const std::size_t before = liveHeapBytes();
        system.parseScriptFile(path);
        return liveHeapBytes() - before;
    };
    bytesFor(one); // brings the queue's own blocks
    EXPECT_EQ(bytesFor(two) - bytesFor(one), sizeof(vell::Variant) + text.size() + 1);
}

TEST(CommandAllocationTest, AScriptIsQueuedAsAWholeOrNotAtAllWhenMemoryRunsOut)
{
    const TemporaryDirectory directory;
    const std::string text(200, 'x');
    std::string script;
    for (int i = 0; i < 20; ++i)
    {
        script += "obj.c(\"" + text + "\", 1)\n\n";
    }
    const std::wstring path = directory.write("script.txt", script).wstring();
    CommandSystem system;
    CommandObject object;
    int calls = 0;
    object.addCommand("c",
                      [&calls](const std::string&, int)
                      {
                          ++calls;
                          return readyFuture();
                      });
    system.rootObject().addChild("obj", &object);

    std::size_t failures = 0;
    for (bool failed = true; failed; ++failures)
    {
        const std::size_t before = system.queuedCommandCount();
        failed = false;
        try
        {
            const FailingAllocation one(failures);
            system.parseScriptFile(path);
        }
        catch (const std::bad_alloc&)
        {
            failed = true;
        }
        ASSERT_EQ(system.queuedCommandCount() - before, failed ? 0U : 20U) << "at allocation " << failures;
    }
    EXPECT_GT(failures, 50U);
    while (!system.isIdle())
    {
        system.tick();
    }
    EXPECT_EQ(calls, 20);
    EXPECT_EQ(system.startedLine().line, 39U);
}

} // namespace
