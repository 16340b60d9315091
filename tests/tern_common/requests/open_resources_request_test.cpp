#include "tern_common/requests/open_resources_request.hpp"

#include "kodo/fs/multi_file_system.hpp"
#include "kodo/fs/utils.hpp"
#include "tests/support/allocation_hook.hpp"
#include "tests/support/scripted_command_line.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <type_traits>

using vell::OpenResourcesRequest;

namespace
{

using Texts = std::vector<std::string>;

static_assert(!std::is_polymorphic_v<OpenResourcesRequest>);
static_assert(std::is_copy_constructible_v<OpenResourcesRequest>);
static_assert(std::is_copy_assignable_v<OpenResourcesRequest>);
static_assert(std::is_nothrow_move_constructible_v<OpenResourcesRequest>);
static_assert(std::is_nothrow_move_assignable_v<OpenResourcesRequest>);
static_assert(sizeof(OpenResourcesRequest) == sizeof(std::vector<std::string>) + sizeof(void*));

class RequestWithQueryString : public OpenResourcesRequest
{
public:
    using OpenResourcesRequest::queryString;
};

std::unique_ptr<OpenResourcesRequest> requestFrom(Texts arguments, Texts flags = {})
{
    return OpenResourcesRequest::createFromArgs(ScriptedCommandLine(std::move(arguments), std::move(flags)));
}

} // namespace

TEST(OpenResourcesRequestTest, ANewRequestIsEmptyAndNotUnique)
{
    const OpenResourcesRequest request;
    EXPECT_TRUE(request.empty());
    EXPECT_EQ(request.resources(), Texts{});
    EXPECT_FALSE(request.isUniquePerApp());
}

TEST(OpenResourcesRequestTest, ResourcesAreKeptAsTheyAreGiven)
{
    OpenResourcesRequest request;
    request.addResource(" a ");
    request.addResource("");
    request.addResource(" a ");
    request.addResource("\xFF,\"");
    EXPECT_EQ(request.resources(), (Texts{" a ", "", " a ", "\xFF,\""}));
    EXPECT_FALSE(request.empty());
    request.setResources({"b"});
    EXPECT_EQ(request.resources(), Texts{"b"});
    request.setResources({});
    EXPECT_TRUE(request.empty());
}

TEST(OpenResourcesRequestTest, WhatMadeItUniqueCanBeTakenBack)
{
    OpenResourcesRequest request;
    request.setUniquePerApp(true);
    EXPECT_TRUE(request.isUniquePerApp());
    request.setUniquePerApp(false);
    EXPECT_FALSE(request.isUniquePerApp());
}

TEST(OpenResourcesRequestTest, CopiesAndMovesTakeBothFields)
{
    OpenResourcesRequest request;
    request.setResources({"a", "b"});
    request.setUniquePerApp(true);
    const OpenResourcesRequest copy(request);
    OpenResourcesRequest assigned;
    assigned = copy;
    OpenResourcesRequest moved(std::move(request));
    OpenResourcesRequest moveAssigned;
    moveAssigned = std::move(moved);
    for (const OpenResourcesRequest& each : {copy, assigned, moveAssigned})
    {
        EXPECT_EQ(each.resources(), (Texts{"a", "b"}));
        EXPECT_TRUE(each.isUniquePerApp());
    }
}

TEST(CreateFromArgsTest, WithoutAFirstArgumentTheRequestIsEmptyAndTheSwitchIsNotAskedFor)
{
    for (const Texts& arguments : {Texts{}, Texts{"editor"}, Texts{"editor", ""}, Texts{"editor", "", "a"}})
    {
        const ScriptedCommandLine line(arguments, {"-uniquePerApp"});
        const auto request = OpenResourcesRequest::createFromArgs(line);
        ASSERT_NE(request, nullptr);
        EXPECT_TRUE(request->empty());
        EXPECT_FALSE(request->isUniquePerApp());
        EXPECT_EQ(line.flagQuestions, 0);
    }
}

TEST(CreateFromArgsTest, TheFirstArgumentIsSplitAtEveryComma)
{
    EXPECT_EQ(requestFrom({"editor", "a"})->resources(), (Texts{"a"}));
    EXPECT_EQ(requestFrom({"editor", "a,,b"})->resources(), (Texts{"a", "", "b"}));
    EXPECT_EQ(requestFrom({"editor", "a,"})->resources(), (Texts{"a", ""}));
    EXPECT_EQ(requestFrom({"editor", ",a"})->resources(), (Texts{"", "a"}));
    EXPECT_EQ(requestFrom({"editor", ","})->resources(), (Texts{"", ""}));
    EXPECT_EQ(requestFrom({"editor", "a b, c;d"})->resources(), (Texts{"a b", " c;d"}));
}

TEST(CreateFromArgsTest, FurtherArgumentsAreNoResources)
{
    EXPECT_EQ(requestFrom({"editor", "a,b", "c,d"})->resources(), (Texts{"a", "b"}));
}

TEST(CreateFromArgsTest, TheSwitchMakesTheRequestUnique)
{
    EXPECT_TRUE(requestFrom({"editor", "a"}, {"-uniquePerApp"})->isUniquePerApp());
    EXPECT_FALSE(requestFrom({"editor", "a"}, {"-uniqueperapp"})->isUniquePerApp());
    EXPECT_EQ(requestFrom({"editor", "-uniquePerApp"}, {"-uniquePerApp"})->resources(),
              Texts{"-uniquePerApp"})
        << "the first argument is the list, whatever it looks like";
}

TEST(CreateFromArgsTest, BytesThatAreNoTextStayAsTheyAre)
{
    EXPECT_EQ(requestFrom({"editor", "\xC3\xA4,\xFF\xFE"})->resources(), (Texts{"\xC3\xA4", "\xFF\xFE"}));
}

TEST(QueryStringTest, TheLineIsTheApplicationAndTheListInQuotes)
{
    const std::string application = Kodo::FS::Utils::appPath();
    RequestWithQueryString request;
    EXPECT_EQ(request.queryString({}), application + " \"\"");
    EXPECT_EQ(request.queryString({"a"}), application + " \"a\"");
    EXPECT_EQ(request.queryString({"a", "b c", ""}), application + " \"a,b c,\"");
    request.setUniquePerApp(true);
    EXPECT_EQ(request.queryString({}), application + " \"\" -uniquePerApp");
    EXPECT_EQ(request.queryString({"a", "b"}), application + " \"a,b\" -uniquePerApp");
}

TEST(QueryStringTest, ItemsAreNotEscapedAndTheRequestsOwnListDoesNotMatter)
{
    RequestWithQueryString request;
    request.addResource("not asked for");
    EXPECT_EQ(request.queryString({"a\"b", "c,d\\"}), Kodo::FS::Utils::appPath() + " \"a\"b,c,d\\\"");
}

TEST(QueryStringTest, TheLineIsBuiltInOneAllocation)
{
    const Texts resources(10'000, "levels/a rather long name of a road.curve");
    const AllocationCount ofApplication;
    static_cast<void>(Kodo::FS::Utils::appPath());
    const std::size_t applicationPath = ofApplication.count();

    RequestWithQueryString request;
    request.setUniquePerApp(true);
    const AllocationCount all;
    const std::string line = request.queryString(resources);
    EXPECT_EQ(all.count(), applicationPath + 1);
    EXPECT_GT(line.size(), 400'000U);
}

class DissolveResourcesTest : public testing::Test
{
protected:
    DissolveResourcesTest()
    {
        m_disk.write("front/a.curve");
        m_disk.write("back/a.curve");
        m_disk.write("back/roads/b c.curve");
        m_disk.write("outside.curve");
        Kodo::FS::fileSystem().addRoot((m_disk / "front").string());
        Kodo::FS::fileSystem().addRoot((m_disk / "back").string());
    }
    ~DissolveResourcesTest() override { Kodo::FS::fileSystem().clearRoots(); }

    Texts dissolve(Texts resources)
    {
        OpenResourcesRequest request;
        request.setUniquePerApp(true);
        request.setResources(std::move(resources));
        request.dissolveResources();
        EXPECT_TRUE(request.isUniquePerApp());
        return request.resources();
    }

    std::string onDisk(std::string_view name) const { return (m_disk / name).string(); }

    TemporaryDirectory m_disk;
};

TEST_F(DissolveResourcesTest, PathsBecomeTheNamesOfTheFileSystemInOrderAndWithDoubles)
{
    EXPECT_EQ(dissolve({onDisk("back/roads/b c.curve"), "a.curve", onDisk("front/a.curve")}),
              (Texts{"roads/b c.curve", "a.curve", "a.curve"}));
}

TEST_F(DissolveResourcesTest, WhatIsNotThereIsDropped)
{
    EXPECT_EQ(dissolve({"none", onDisk("front/none"), "a.curve/", "roads/none"}), Texts{"a.curve"});
    EXPECT_EQ(dissolve({"none", ""}), Texts{});
    EXPECT_EQ(dissolve({}), Texts{});
}

TEST_F(DissolveResourcesTest, WhatIsThereWithoutANameIsDropped)
{
    ASSERT_TRUE(Kodo::FS::Utils::fileExists(onDisk("back/a.curve")));
    EXPECT_EQ(dissolve({onDisk("back/a.curve"), onDisk("front")}), Texts{});
}

TEST_F(DissolveResourcesTest, PathsThatLeadOutOfTheRootsAreDropped)
{
    EXPECT_EQ(
        dissolve({onDisk("outside.curve"), "../outside.curve", "/etc/passwd", std::string("a.curve\0", 8)}),
        Texts{});
}
