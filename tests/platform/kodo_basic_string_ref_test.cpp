#include "kodo/core/basic_string_ref.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>

using Ref = Kodo::BasicStringRef<char>;

static_assert(std::is_trivially_copyable_v<Ref>);
static_assert(std::is_nothrow_default_constructible_v<Ref>);
static_assert(std::is_convertible_v<const char*, Ref> && std::is_convertible_v<const std::string&, Ref>);
static_assert(Ref("constant") == Ref("constant tail", 8));

TEST(BasicStringRefTest, RefersToCStringsStringsAndPartsOfThem)
{
    const std::string text = "list.xml";
    const Ref whole = text;
    EXPECT_EQ(whole.data(), text.data()) << "no copy";
    EXPECT_EQ(whole.size(), 8U);
    EXPECT_EQ(Ref("list.xml"), whole);
    EXPECT_EQ(Ref(text.data(), 4), "list");
    EXPECT_EQ(Ref(text.data(), 4).toString(), "list");
    EXPECT_EQ(std::string(whole.begin(), whole.end()), text);
    EXPECT_EQ(whole[4], '.');
}

TEST(BasicStringRefTest, NothingIsTheEmptyText)
{
    const char* const none = nullptr;
    for (const Ref empty : {Ref(), Ref(none), Ref(""), Ref(std::string_view())})
    {
        EXPECT_TRUE(empty.empty());
        EXPECT_EQ(empty.begin(), empty.end());
        EXPECT_EQ(empty.toString(), "");
        EXPECT_EQ(empty, Ref());
    }
}

TEST(BasicStringRefTest, NulsCountWhereTheLengthIsTold)
{
    const std::string text("a\0b", 3);
    EXPECT_EQ(Ref(text).size(), 3U);
    EXPECT_EQ(Ref(text).toString(), text);
    EXPECT_EQ(Ref(text.c_str()), "a");
}

TEST(BasicStringRefTest, ComparesAsStringsDo)
{
    const std::string texts[] = {"", "a", "a\xC3\xA4", "ab", "b", std::string("a\0", 2)};
    for (const std::string& a : texts)
    {
        for (const std::string& b : texts)
        {
            EXPECT_EQ(Ref(a) == Ref(b), a == b);
            EXPECT_EQ(Ref(a) != b, a != b);
            EXPECT_EQ(Ref(a) < Ref(b), a < b);
            EXPECT_EQ(Ref(a) >= b.c_str(), Ref(a) >= Ref(b.c_str()));
        }
    }
}

TEST(BasicStringRefTest, HoldsWideTextAsWell)
{
    const std::wstring text = L"wide";
    EXPECT_EQ(Kodo::BasicStringRef<wchar_t>(text).toString(), text);
    EXPECT_EQ(Kodo::BasicStringRef<wchar_t>(L"wide"), text);
}
