// The typed call behind a command's name: its parameters, its callable, and what goes wrong with either.

#include "tern_common/command_object.hpp"

#include "tests/support/futures.hpp"
#include "tests/support/reports.hpp"
#include "tests/tern_common/command/call_command.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

static_assert(!std::is_copy_constructible_v<Command> && !std::is_copy_assignable_v<Command>);
static_assert(std::is_nothrow_move_constructible_v<Command> && std::is_nothrow_move_assignable_v<Command>);
static_assert(!std::has_virtual_destructor_v<Command> && !std::is_polymorphic_v<Command>);
static_assert(std::has_virtual_destructor_v<Command::WrapperBase> &&
              std::is_abstract_v<Command::WrapperBase>);

TEST(CommandTest, TakesTypedParametersByValueAndByConstReference)
{
    CommandObject object;
    std::string seen;
    object.addCommand("c",
                      [&seen](int number, const std::string& text, bool flag, std::string copy)
                      {
                          seen = std::to_string(number) + text + (flag ? "yes" : "no") + copy;
                          return readyFuture();
                      });
    EXPECT_EQ(object.findCommand("c")->argc(), 4U);
    call(object, "c", {12, "name", true, "x"}).get();
    EXPECT_EQ(seen, "12nameyesx");
}

std::future<void> plainFunction(int value)
{
    return value == 7 ? readyFuture() : failedFuture<std::runtime_error>("not seven");
}

TEST(CommandTest, WrapsFunctionPointers)
{
    CommandObject object;
    object.addCommand("c", &plainFunction);
    EXPECT_EQ(object.findCommand("c")->argc(), 1U);
    EXPECT_NO_THROW(call(object, "c", {7}).get());
    EXPECT_THROW(call(object, "c", {8}).get(), std::runtime_error);
}

std::future<void> quietFunction(int value) noexcept
{
    return plainFunction(value);
}

TEST(CommandTest, WrapsFunctionsThatAreNoexcept)
{
    CommandObject object;
    object.addCommand("c", &quietFunction);
    object.addCommand("byName", quietFunction);
    EXPECT_NO_THROW(call(object, "c", {7}).get());
    EXPECT_NO_THROW(call(object, "byName", {7}).get());
}

TEST(CommandTest, WrapsMoveOnlyMutableAndNoexceptCallables)
{
    CommandObject object;
    auto owned = std::make_unique<int>(5);
    int seen = 0;
    object.addCommand("moveOnly",
                      [owned = std::move(owned), &seen]
                      {
                          seen = *owned;
                          return readyFuture();
                      });
    object.addCommand("mutable",
                      [count = 0, &seen]() mutable
                      {
                          seen = ++count;
                          return readyFuture();
                      });
    object.addCommand("noexcept",
                      [&seen](int value) noexcept
                      {
                          seen = value;
                          return readyFuture();
                      });
    object.addCommand("function", std::function<std::future<void>(int)>(&plainFunction));

    call(object, "moveOnly").get();
    EXPECT_EQ(seen, 5);
    call(object, "mutable").get();
    call(object, "mutable").get();
    EXPECT_EQ(seen, 2);
    call(object, "noexcept", {9}).get();
    EXPECT_EQ(seen, 9);
    EXPECT_NO_THROW(call(object, "function", {7}).get());
}

TEST(CommandTest, CallsAnOperatorThatIsOnlyCallableOnLvalues)
{
    struct LvalueOnly
    {
        std::future<void> operator()(int) & { return readyFuture(); }
    };
    struct ConstLvalueOnly
    {
        std::future<void> operator()() const& { return readyFuture(); }
    };
    CommandObject object;
    object.addCommand("a", LvalueOnly());
    object.addCommand("b", ConstLvalueOnly());
    EXPECT_NO_THROW(call(object, "a", {1}).get());
    EXPECT_NO_THROW(call(object, "b").get());
}

TEST(CommandTest, AWrongArgumentCountIsReportedTwiceAndTheCallIsMade)
{
    CommandObject object;
    std::vector<int> seen;
    object.addCommand("c",
                      [&seen](int a, int b)
                      {
                          seen = {a, b};
                          return readyFuture();
                      });
    const Command& command = *object.findCommand("c");
    const std::vector<vell::Variant> arguments{1, 2, 3};
    {
        ExpectReports reports{"argc == this->argc()", "argc == sizeof...(Args)"};
        command.invoke(0, nullptr).get();
        EXPECT_EQ(seen, (std::vector{0, 0}));
        ASSERT_EQ(reports.reports().size(), 2U);
        EXPECT_EQ(reports.reports()[0].path, "command_object.cpp");
        EXPECT_EQ(reports.reports()[1].path, "command_object.hpp");
    }
    {
        ExpectReports reports{"argc == this->argc()", "argc == sizeof...(Args)"};
        command.invoke(1, arguments.data()).get();
        EXPECT_EQ(seen, (std::vector{1, 0}));
    }
    ExpectReports reports{"argc == this->argc()", "argc == sizeof...(Args)"};
    command.invoke(3, arguments.data()).get();
    EXPECT_EQ(seen, (std::vector{1, 2}));
}

TEST(CommandTest, AnArgumentThatDoesNotCastIsReportedAndPassesAValueInitialisedParameter)
{
    CommandObject object;
    int number = -1;
    std::string text = "before";
    object.addCommand("c",
                      [&](int a, const std::string& b)
                      {
                          number = a;
                          text = b;
                          return readyFuture();
                      });
    ExpectReports reports{"argv->tryCast(a)", "argv->tryCast(a)"};
    call(object, "c", {"twelve", 12}).get();
    EXPECT_EQ(number, 0);
    EXPECT_EQ(text, "");
    EXPECT_EQ(reports.reports()[0].path, "command_object.hpp");
    EXPECT_TRUE(reports.reports()[0].critical);
    EXPECT_EQ(reports.reports()[0].whole, "ASSERTION FAILED: argv->tryCast(a)\r\ncommand_object.hpp(" +
                                              std::to_string(reports.reports()[0].line) + ")\r\n");
}

TEST(CommandTest, OneBadArgumentLeavesTheOthersAsTheyAre)
{
    CommandObject object;
    std::vector<int> seen;
    object.addCommand("c",
                      [&seen](int a, int b, int c)
                      {
                          seen = {a, b, c};
                          return readyFuture();
                      });
    ExpectReports reports{"argv->tryCast(a)"};
    call(object, "c", {1, true, 3}).get();
    EXPECT_EQ(seen, (std::vector{1, 0, 3}));
}

TEST(CommandTest, IntegersAreTestedAgainstTheParametersRange)
{
    CommandObject object;
    std::int64_t seen = -1;
    object.addCommand("int",
                      [&seen](int a)
                      {
                          seen = a;
                          return readyFuture();
                      });
    object.addCommand("short",
                      [&seen](std::int16_t a)
                      {
                          seen = a;
                          return readyFuture();
                      });
    object.addCommand("unsigned",
                      [&seen](std::uint32_t a)
                      {
                          seen = a;
                          return readyFuture();
                      });
    object.addCommand("wide",
                      [&seen](std::int64_t a)
                      {
                          seen = a;
                          return readyFuture();
                      });
    object.addCommand("size",
                      [&seen](std::uint64_t a)
                      {
                          seen = static_cast<std::int64_t>(a);
                          return readyFuture();
                      });
    struct Case
    {
        const char* command;
        std::int64_t value;
        bool fits;
    };
    const Case cases[] = {
        {"int", 2147483647, true},
        {"int", 2147483648, false},
        {"int", -2147483648, true},
        {"int", -2147483649, false},
        {"short", 32767, true},
        {"short", 32768, false},
        {"short", -32769, false},
        {"unsigned", 4294967295, true},
        {"unsigned", 4294967296, false},
        {"unsigned", -1, false},
        {"size", -1, false},
        {"size", 5, true},
        {"wide", std::numeric_limits<std::int64_t>::min(), true},
    };
    for (const Case& one : cases)
    {
        SCOPED_TRACE(std::string(one.command) + " " + std::to_string(one.value));
        seen = -1;
        ExpectReports reports(one.fits ? std::vector<std::string>{}
                                       : std::vector<std::string>{"argv->tryCast(a)"});
        call(object, one.command, {one.value}).get();
        EXPECT_EQ(seen, one.fits ? one.value : 0);
    }
}

TEST(CommandTest, BoolAndIntegerAreDifferentTypes)
{
    CommandObject object;
    bool flag = true;
    object.addCommand("c",
                      [&flag](bool a)
                      {
                          flag = a;
                          return readyFuture();
                      });
    ExpectReports reports{"argv->tryCast(a)"};
    call(object, "c", {1}).get();
    EXPECT_FALSE(flag);
}

TEST(CommandTest, AnIntegerParameterReadsThroughAPointerToAnInteger)
{
    CommandObject object;
    int seen = -1;
    object.addCommand("c",
                      [&seen](int a)
                      {
                          seen = a;
                          return readyFuture();
                      });
    std::int64_t value = 41;
    const std::int64_t constant = 42;
    call(object, "c", {&value}).get();
    EXPECT_EQ(seen, 41);
    call(object, "c", {&constant}).get();
    EXPECT_EQ(seen, 42);
    value = 2147483648;
    ExpectReports reports{"argv->tryCast(a)", "argv->tryCast(a)"};
    call(object, "c", {&value}).get();
    EXPECT_EQ(seen, 0);
    call(object, "c", {static_cast<std::int64_t*>(nullptr)}).get();
}

TEST(CommandTest, AnIntegerParameterTriesTheRegisteredConversion)
{
    CommandObject object;
    int seen = -1;
    object.addCommand("c",
                      [&seen](int a)
                      {
                          seen = a;
                          return readyFuture();
                      });
    const vell::VariantConverter fromText(&typeid(std::int64_t), &typeid(std::string),
                                          [](vell::Variant& target, const vell::Variant& source)
                                          {
                                              const auto* text = source.peek<std::string>();
                                              if (*text == "none")
                                              {
                                                  return false;
                                              }
                                              target =
                                                  vell::Variant(static_cast<std::int64_t>(std::stoll(*text)));
                                              return true;
                                          });
    call(object, "c", {"17"}).get();
    EXPECT_EQ(seen, 17);
    ExpectReports reports{"argv->tryCast(a)", "argv->tryCast(a)"};
    call(object, "c", {"2147483648"}).get();
    EXPECT_EQ(seen, 0);
    call(object, "c", {"none"}).get();
}

struct Crane
{
    int load = 0;
};

TEST(CommandTest, TakesRegisteredPointers)
{
    CommandObject object;
    object.addCommand("raw",
                      [](Crane* crane)
                      {
                          crane->load += 1;
                          return readyFuture();
                      });
    object.addCommand("shared",
                      [](const std::shared_ptr<Crane>& crane)
                      {
                          crane->load += 10;
                          return readyFuture();
                      });
    object.addCommand("reader",
                      [](const Crane* crane) {
                          return crane->load == 21 ? readyFuture() : failedFuture<std::runtime_error>("load");
                      });
    const auto crane = std::make_shared<Crane>();
    call(object, "raw", {crane.get()}).get();
    call(object, "shared", {crane}).get();
    EXPECT_EQ(crane->load, 11);
    crane->load = 20;
    call(object, "raw", {crane}).get(); // a smart pointer gives its plain pointer
    EXPECT_NO_THROW(call(object, "reader", {crane.get()}).get());
}

TEST(CommandTest, AConstPointerDoesNotBecomeAMutableOne)
{
    CommandObject object;
    Crane* seen = nullptr;
    object.addCommand("c",
                      [&seen](Crane* crane)
                      {
                          seen = crane;
                          return readyFuture();
                      });
    const Crane crane;
    ExpectReports reports{"argv->tryCast(a)"};
    call(object, "c", {&crane}).get();
    EXPECT_EQ(seen, nullptr);
}

TEST(CommandTest, WhatACallableThrowsLeavesInvoke)
{
    CommandObject object;
    object.addCommand("c", []() -> std::future<void> { throw std::logic_error("no"); });
    EXPECT_THROW(call(object, "c"), std::logic_error);
}

TEST(CommandTest, MovesWithItsCallable)
{
    using Wrapper = Command::Wrapper<std::future<void> (*)(int), std::future<void>(int)>;
    Command command(std::make_unique<Wrapper>(&plainFunction));
    Command moved(std::move(command));
    EXPECT_EQ(moved.argc(), 1U);
    command = std::move(moved);
    const vell::Variant seven(7);
    EXPECT_NO_THROW(command.invoke(1, &seven).get());
}

} // namespace
