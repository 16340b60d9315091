// What the classes are: sizes, operations and the order of their virtual tables, which callers in other
// libraries rely on.

#include "tern_common/localization/localization.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

namespace
{

static_assert(std::is_abstract_v<ILocalization>);
static_assert(!std::is_destructible_v<ILocalization>,
              "deleting through the interface would not destroy the rest");
static_assert(!std::has_virtual_destructor_v<ILocalization>);
static_assert(sizeof(ILocalization) == sizeof(void*));
static_assert(
    std::is_same_v<decltype(&ILocalization::translate), std::string (ILocalization::*)(const std::string&)>);

static_assert(std::is_base_of_v<ILocalization, Kodo::Inherits<ILocalization>>);
static_assert(std::is_abstract_v<Kodo::Inherits<ILocalization>>);
static_assert(!std::has_virtual_destructor_v<Kodo::Inherits<ILocalization>>);
static_assert(sizeof(Kodo::Inherits<ILocalization>) == sizeof(ILocalization));

static_assert(std::is_base_of_v<Kodo::Inherits<ILocalization>, Localization>);
static_assert(!std::is_abstract_v<Localization>);
static_assert(!std::has_virtual_destructor_v<Localization>);
static_assert(std::is_default_constructible_v<Localization> && std::is_destructible_v<Localization>);
static_assert(!std::is_copy_constructible_v<Localization> && !std::is_copy_assignable_v<Localization>);
static_assert(sizeof(Localization) == sizeof(ILocalization) + sizeof(std::unique_ptr<int>) +
                                          sizeof(std::unordered_map<std::string, std::string>));
static_assert(
    std::is_same_v<decltype(&Localization::translate), std::string (Localization::*)(const std::string&)>);
static_assert(std::is_same_v<decltype(&Localization::translateByCache),
                             std::string (Localization::*)(const std::string&) const>);
static_assert(std::is_same_v<decltype(&Localization::loomTranslate),
                             std::string (Localization::*)(const std::string&) const>);

using Manager = Localization::ResourceManager;
static_assert(std::is_base_of_v<Kodo::Loom::UiResourceManager, Manager>);
static_assert(std::has_virtual_destructor_v<Manager>);
static_assert(sizeof(Manager) == sizeof(Kodo::Loom::UiResourceManager));
static_assert(std::is_same_v<decltype(&Manager::initialize), bool (Kodo::Loom::UiResourceManager::*)()>);
static_assert(std::is_same_v<decltype(&Manager::resourceMapPath), const char* (Manager::*)()>);

TEST(LocalizationShapeTest, TheResourceMapIsAlwaysTheEditors)
{
    Manager manager;
    Kodo::Loom::UiResourceManager& base = manager;
    EXPECT_STREQ(base.resourceMapPath(), "gui/canopy/res_map.json");
    EXPECT_EQ(base.resourceMapPath(), manager.resourceMapPath());
}

/// An interface that cannot be copied by what it declares itself would stay so; this one can.
class Counter
{
public:
    virtual int next() { return ++m_count; }

protected:
    ~Counter() = default;

private:
    int m_count = 0;
};

TEST(LocalizationShapeTest, WhatInheritsAnInterfaceIsAValue)
{
    using Value = Kodo::Inherits<Counter>;
    static_assert(sizeof(Value) == sizeof(Counter) && !std::has_virtual_destructor_v<Value>);
    static_assert(std::is_default_constructible_v<Value> && std::is_copy_constructible_v<Value>);
    static_assert(std::is_copy_assignable_v<Value> && std::is_move_assignable_v<Value>);
    Value first;
    first.next();
    Value second(first);
    EXPECT_EQ(second.next(), 2);
    first = second;
    EXPECT_EQ(first.next(), 3);
    second = std::move(first);
    EXPECT_EQ(second.next(), 4);
}

#if defined(__x86_64__) && !defined(_WIN32)

/// The place of a virtual operation in its class's table, as a pointer to it has it.
template <class Operation>
std::uintptr_t slotOf(Operation operation)
{
    return (std::bit_cast<std::array<std::uintptr_t, 2>>(operation)[0] - 1) / sizeof(void*);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // never made

/// Adds one virtual operation behind those of @p Base.
template <class Base>
class Longer : public Base
{
public:
    virtual void behind() {}
};

#pragma GCC diagnostic pop

TEST(LocalizationShapeTest, TheVirtualTablesHoldWhatCallersExpect)
{
    EXPECT_EQ(slotOf(&ILocalization::translate), 0U);
    EXPECT_EQ(slotOf(&Longer<ILocalization>::behind), 1U);
    EXPECT_EQ(slotOf(&Longer<Kodo::Inherits<ILocalization>>::behind), 1U);
    EXPECT_EQ(slotOf(&Localization::translate), 0U);

    // A virtual destructor takes two places here: for an object as such, and for one made by new.
    EXPECT_EQ(slotOf(&Kodo::Loom::UiResourceManager::initialize), 2U);
    EXPECT_EQ(slotOf(&Manager::resourceMapPath), 3U);
    EXPECT_EQ(slotOf(&Longer<Manager>::behind), 4U);
}

#endif

} // namespace
