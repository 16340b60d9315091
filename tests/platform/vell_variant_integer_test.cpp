#include "vell/variant.hpp"

#include "tests/support/property.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>

namespace
{

using vell::Variant;

/// Casts @p value to @p T and compares with plain arithmetic in the widest type: the value arrives when it
/// lies in T's range, else the target stays.
template <class T>
bool castsAsItsRangeSays(std::int64_t value)
{
    using Limits = std::numeric_limits<T>;
    const bool aboveLowest =
        Limits::min() == 0 ? value >= 0 : value >= static_cast<std::int64_t>(Limits::min());
    const bool belowHighest =
        value < 0 || static_cast<std::uint64_t>(value) <= static_cast<std::uint64_t>(Limits::max());
    const bool fits = aboveLowest && belowHighest;

    T out = 42;
    const bool cast = Variant(value).tryCast(out);
    return cast == fits && (fits ? static_cast<std::int64_t>(out) == value : out == 42);
}

bool castsRightToEveryWidth(std::int64_t value)
{
    return castsAsItsRangeSays<std::int8_t>(value) && castsAsItsRangeSays<std::uint8_t>(value) &&
           castsAsItsRangeSays<std::int16_t>(value) && castsAsItsRangeSays<std::uint16_t>(value) &&
           castsAsItsRangeSays<std::int32_t>(value) && castsAsItsRangeSays<std::uint32_t>(value) &&
           castsAsItsRangeSays<std::int64_t>(value) && castsAsItsRangeSays<std::uint64_t>(value) &&
           castsAsItsRangeSays<long>(value) && castsAsItsRangeSays<unsigned long>(value) &&
           castsAsItsRangeSays<long long>(value) && castsAsItsRangeSays<unsigned long long>(value);
}

TEST(VariantIntegerTest, AnIntTakesExactlyItsRange)
{
    int out = 7;
    EXPECT_TRUE(Variant(std::int64_t{2147483647}).tryCast(out));
    EXPECT_EQ(out, 2147483647);
    EXPECT_TRUE(Variant(std::int64_t{-2147483648}).tryCast(out));
    EXPECT_EQ(out, std::numeric_limits<int>::min());

    out = 7;
    EXPECT_FALSE(Variant(std::int64_t{2147483648}).tryCast(out));
    EXPECT_FALSE(Variant(std::int64_t{-2147483649}).tryCast(out));
    EXPECT_EQ(out, 7);
}

TEST(VariantIntegerTest, CastsRightAtTheEdgesOfEveryWidth)
{
    for (const int bits : {0, 7, 8, 15, 16, 31, 32, 62})
    {
        const std::int64_t edge = std::int64_t{1} << bits;
        for (const std::int64_t value : {-edge - 1, -edge, -edge + 1, edge - 1, edge, edge + 1})
        {
            EXPECT_TRUE(castsRightToEveryWidth(value)) << value;
        }
    }
    EXPECT_TRUE(castsRightToEveryWidth(std::numeric_limits<std::int64_t>::min()));
    EXPECT_TRUE(castsRightToEveryWidth(std::numeric_limits<std::int64_t>::max()));
}

RC_GTEST_PROP(VariantIntegerTest, CastsRightToEveryWidth, (std::int64_t value))
{
    const int shift = *rc::gen::inRange(0, 64); // as many small values as large ones
    RC_ASSERT(castsRightToEveryWidth(value >> shift));
}

TEST(VariantIntegerTest, ReadsThroughAPointerToAnInteger)
{
    std::int64_t value = 5;
    int out = 0;

    EXPECT_TRUE(Variant(&value).tryCast(out));
    EXPECT_EQ(out, 5);
    value = -6;
    EXPECT_TRUE(Variant(static_cast<const std::int64_t*>(&value)).tryCast(out));
    EXPECT_EQ(out, -6);
}

TEST(VariantIntegerTest, DoesNotReadThroughOtherPointers)
{
    std::int64_t value = 5;
    int narrow = 5;
    std::int64_t large = std::int64_t{1} << 31;
    int out = 7;

    EXPECT_FALSE(Variant(static_cast<volatile std::int64_t*>(&value)).tryCast(out));
    EXPECT_FALSE(Variant(static_cast<const volatile std::int64_t*>(&value)).tryCast(out));
    EXPECT_FALSE(Variant(static_cast<std::int64_t*>(nullptr)).tryCast(out));
    EXPECT_FALSE(Variant(static_cast<const std::int64_t*>(nullptr)).tryCast(out));
    EXPECT_FALSE(Variant(&narrow).tryCast(out));
    EXPECT_FALSE(Variant(&large).tryCast(out)) << "out of range";
    EXPECT_EQ(out, 7);
}

TEST(VariantIntegerTest, ReadsThroughASharedPointerToAnInteger)
{
    int out = 0;

    EXPECT_TRUE(Variant(std::make_shared<std::int64_t>(9)).tryCast(out));
    EXPECT_EQ(out, 9);
    EXPECT_FALSE(Variant(std::shared_ptr<std::int64_t>()).tryCast(out));
    EXPECT_EQ(out, 9);
}

} // namespace
