#include "qua/flags.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

namespace
{

enum class Access : std::uint16_t
{
    None = 0,
    Read = 1,
    Write = 2,
    Both = 3,
    Top = 0x8000
};

enum class Signed : int
{
    Lowest = 1,
    All = -1
};

using Accesses = qua::Flags<Access>;

static_assert(std::is_trivially_copyable_v<Accesses>);
static_assert(sizeof(Accesses) == sizeof(Access));
static_assert(std::is_same_v<Accesses::Bits, std::uint16_t>);
static_assert(std::is_nothrow_default_constructible_v<Accesses>);
static_assert(std::is_convertible_v<Access, Accesses>);
static_assert(!std::is_convertible_v<std::uint16_t, Accesses>, "bare bits are taken explicitly only");
static_assert(std::is_constructible_v<Accesses, std::uint16_t>);
static_assert(!std::is_constructible_v<Accesses, Signed>);

// A set is a constant expression through and through.
static_assert(Accesses().empty());
static_assert(Accesses().bits() == 0);
static_assert((Accesses(Access::Read) | Access::Write) == Access::Both);
static_assert((Accesses(Access::Both) & Access::Write) == Access::Write);
static_assert((Accesses(Access::Read) & Access::Write).empty());
static_assert(Accesses(Access::Top).bits() == 0x8000);
static_assert(Accesses(std::uint16_t{3}) == Access::Both);

TEST(FlagsTest, ContainsASetWhenEveryBitOfItIsThere)
{
    const Accesses both = Access::Both;

    EXPECT_TRUE(both.contains(Access::Read));
    EXPECT_TRUE(both.contains(Access::Both));
    EXPECT_FALSE(Accesses(Access::Read).contains(Access::Both));
    EXPECT_FALSE(both.contains(Access::Top));
}

TEST(FlagsTest, TheEmptySetIsContainedInEverySet)
{
    EXPECT_TRUE(Accesses().contains(Access::None));
    EXPECT_TRUE(Accesses(Access::Top).contains(Accesses()));
}

TEST(FlagsTest, AccumulatesAndMasksInPlace)
{
    Accesses flags;

    flags |= Access::Read;
    flags |= Access::Top;
    EXPECT_EQ(flags.bits(), 0x8001);
    flags &= Access::Top;
    EXPECT_EQ(flags, Accesses(Access::Top));
    EXPECT_NE(flags, Accesses(Access::Read));
}

TEST(FlagsTest, BitsOfASignedEnumerationAreUnsigned)
{
    EXPECT_EQ(qua::Flags<Signed>(Signed::All).bits(), 0xFFFFFFFFU);
    EXPECT_TRUE(qua::Flags<Signed>(Signed::All).contains(Signed::Lowest));
}

} // namespace
