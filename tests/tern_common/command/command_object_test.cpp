#include "tern_common/command_object.hpp"

#include "tests/support/futures.hpp"
#include "tests/support/reports.hpp"
#include "tests/tern_common/command/call_command.hpp"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace
{

static_assert(std::is_copy_constructible_v<CommandObject> && std::is_copy_assignable_v<CommandObject>);
static_assert(std::has_virtual_destructor_v<CommandObject>);

TEST(CommandObjectTest, NamesAreHashedByFnv1aOverTheirBytes)
{
    const TernCommonDetail::NameHash hash;
    EXPECT_EQ(hash(""), 0xcbf29ce484222325U);
    EXPECT_EQ(hash("a"), 0xaf63dc4c8601ec8cU);
    EXPECT_EQ(hash("foobar"), 0x85944171f73967e8U);
    EXPECT_NE(hash("\xff"), hash("\x7f"));
}

TEST(CommandObjectTest, FindsWhatWasAddedByExactName)
{
    CommandObject root;
    CommandObject upper;
    CommandObject lower;
    root.addChild("Obj", &upper);
    root.addChild("obj", &lower);
    root.addChild("m\xC3\xB6we", &upper);

    EXPECT_EQ(root.findChild("Obj"), &upper);
    EXPECT_EQ(root.findChild("obj"), &lower);
    EXPECT_EQ(root.findChild("m\xC3\xB6we"), &upper);
    EXPECT_EQ(root.findChild("OBJ"), nullptr);
    EXPECT_EQ(root.findChild(""), nullptr);
    EXPECT_EQ(root.findCommand("obj"), nullptr);
}

TEST(CommandObjectTest, AddingANullChildReportsAndInsertsIt)
{
    CommandObject root;
    CommandObject child;
    {
        ExpectReports reports{"object"};
        root.addChild("a", nullptr);
    }
    EXPECT_EQ(root.findChild("a"), nullptr);
    ExpectReports reports{"m_children.find(name) == std::end(m_children)"};
    root.addChild("a", &child); // the name is taken, by null
    EXPECT_EQ(root.findChild("a"), nullptr);
}

TEST(CommandObjectTest, AddingAChildUnderATakenNameReportsAndKeepsTheFirst)
{
    CommandObject root;
    CommandObject first;
    CommandObject second;
    root.addChild("a", &first);
    ExpectReports reports{"m_children.find(name) == std::end(m_children)"};
    root.addChild("a", &second);
    EXPECT_EQ(root.findChild("a"), &first);
}

TEST(CommandObjectTest, AddingNullUnderATakenNameReportsBothMistakesInOrder)
{
    CommandObject root;
    CommandObject first;
    root.addChild("a", &first);
    ExpectReports reports{"object", "m_children.find(name) == std::end(m_children)"};
    root.addChild("a", nullptr);
    EXPECT_EQ(root.findChild("a"), &first);
}

TEST(CommandObjectTest, RemovingAChildLeavesItAliveAndReachableElsewhere)
{
    CommandObject root;
    CommandObject other;
    CommandObject child;
    child.addCommand("c", [] { return readyFuture(); });
    root.addChild("child", &child);
    other.addChild("child", &child);

    root.removeChild("child");

    EXPECT_EQ(root.findChild("child"), nullptr);
    ASSERT_EQ(other.findChild("child"), &child);
    EXPECT_NE(other.findChild("child")->findCommand("c"), nullptr);
}

TEST(CommandObjectTest, RemovingAnUnknownChildReportsAndChangesNothing)
{
    CommandObject root;
    CommandObject child;
    root.addChild("a", &child);
    ExpectReports reports{"m_children.find(name) != std::end(m_children)"};
    root.removeChild("b");
    EXPECT_EQ(root.findChild("a"), &child);
}

TEST(CommandObjectTest, DestroyingAParentLeavesTheChildAlive)
{
    CommandObject child;
    child.addCommand("c", [] { return readyFuture(); });
    {
        CommandObject root;
        root.addChild("a", &child);
    }
    EXPECT_NE(child.findCommand("c"), nullptr);
}

TEST(CommandObjectTest, RegisteringUnderATakenNameReportsAndKeepsTheFirst)
{
    CommandObject object;
    std::string called;
    object.addCommand("c",
                      [&called]
                      {
                          called += "first";
                          return readyFuture();
                      });
    {
        ExpectReports reports{"m_commands.find(name) == std::end(m_commands)"};
        object.addCommand("c",
                          [&called]
                          {
                              called += "second";
                              return readyFuture();
                          });
    }
    call(object, "c").get();
    EXPECT_EQ(called, "first");
}

TEST(CommandObjectTest, CopiesShareCommandsAndChildren)
{
    CommandObject source;
    CommandObject child;
    int calls = 0;
    source.addChild("child", &child);
    source.addCommand("count",
                      [&calls]
                      {
                          ++calls;
                          return readyFuture();
                      });

    CommandObject copy(source);
    CommandObject assigned;
    assigned = source;

    EXPECT_EQ(copy.findChild("child"), &child);
    EXPECT_EQ(copy.findCommand("count"), source.findCommand("count"));
    EXPECT_EQ(assigned.findCommand("count"), source.findCommand("count"));
    call(copy, "count").get();
    call(assigned, "count").get();
    call(source, "count").get();
    EXPECT_EQ(calls, 3);
}

TEST(CommandObjectTest, ACopyIsIndependentOfItsSource)
{
    CommandObject copy;
    CommandObject child;
    {
        CommandObject source;
        source.addCommand("c", [] { return readyFuture(); });
        copy = source;
        source.addChild("later", &child);
    }
    EXPECT_EQ(copy.findChild("later"), nullptr);
    EXPECT_NO_THROW(call(copy, "c").get());
}

} // namespace
