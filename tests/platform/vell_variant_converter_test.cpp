#include "vell/variant_converter.hpp"

#include "vell/variant.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>

namespace
{

using vell::Variant;
using vell::VariantConverter;

static_assert(!std::is_copy_constructible_v<VariantConverter>);

struct Lamp
{
    std::int64_t watts = 0;
};

bool wattsOf(Variant& target, const Variant& source)
{
    *target.peek<std::int64_t>() = source.peek<Lamp>()->watts;
    return true;
}

bool givesUp(Variant& target, const Variant&)
{
    *target.peek<std::int64_t>() = 99;
    return false;
}

bool leavesText(Variant& target, const Variant&)
{
    target = "text";
    return true;
}

bool leavesNothing(Variant& target, const Variant&)
{
    target = Variant();
    return true;
}

bool always8(Variant& target, const Variant&)
{
    target = 8;
    return true;
}

bool always9(Variant& target, const Variant&)
{
    target = 9;
    return true;
}

constexpr const std::type_info* INTEGER = &typeid(std::int64_t);
constexpr const std::type_info* LAMP = &typeid(Lamp*);

TEST(VariantConverterTest, WithoutARegistrationNothingConverts)
{
    Lamp lamp{60};
    int out = 7;

    EXPECT_FALSE(Variant(&lamp).tryCast(out));
    EXPECT_EQ(out, 7);
}

TEST(VariantConverterTest, ARegisteredConversionServesIntegersOfEveryWidth)
{
    const VariantConverter converter(INTEGER, LAMP, &wattsOf);
    Lamp lamp{60};
    int out = 0;
    std::uint8_t narrow = 0;

    EXPECT_TRUE(Variant(&lamp).tryCast(out));
    EXPECT_EQ(out, 60);
    EXPECT_TRUE(Variant(&lamp).tryCast(narrow));
    EXPECT_EQ(narrow, 60);
}

TEST(VariantConverterTest, AConversionsResultMustFitTheTargetAsAnyInteger)
{
    const VariantConverter converter(INTEGER, LAMP, &wattsOf);
    Lamp lamp{std::int64_t{1} << 31};
    int out = 7;
    std::int64_t wide = 0;

    EXPECT_FALSE(Variant(&lamp).tryCast(out));
    EXPECT_EQ(out, 7);
    EXPECT_TRUE(Variant(&lamp).tryCast(wide));
    EXPECT_EQ(wide, std::int64_t{1} << 31);
    lamp.watts = std::numeric_limits<int>::min();
    EXPECT_TRUE(Variant(&lamp).tryCast(out));
    EXPECT_EQ(out, std::numeric_limits<int>::min());
}

TEST(VariantConverterTest, AConversionThatGivesUpLeavesTheTargetAlone)
{
    const VariantConverter converter(INTEGER, LAMP, &givesUp);
    Lamp lamp;
    int out = 7;

    EXPECT_FALSE(Variant(&lamp).tryCast(out));
    EXPECT_EQ(out, 7);
}

TEST(VariantConverterTest, AConversionThatLeavesAnotherTypeBehindHasFailed)
{
    Lamp lamp;
    int out = 7;
    {
        const VariantConverter converter(INTEGER, LAMP, &leavesText);
        EXPECT_FALSE(Variant(&lamp).tryCast(out));
    }
    {
        const VariantConverter converter(INTEGER, LAMP, &leavesNothing);
        EXPECT_FALSE(Variant(&lamp).tryCast(out));
    }
    EXPECT_EQ(out, 7);
}

TEST(VariantConverterTest, AValueOfTheTypeItselfIsNeverConverted)
{
    const VariantConverter converter(INTEGER, INTEGER, &always8);
    std::int64_t referred = std::int64_t{1} << 40;
    int out = 7;

    EXPECT_TRUE(Variant(5).tryCast(out));
    EXPECT_EQ(out, 5);
    EXPECT_FALSE(Variant(std::int64_t{1} << 40).tryCast(out));
    EXPECT_FALSE(Variant(&referred).tryCast(out));
    EXPECT_EQ(out, 5);
}

TEST(VariantConverterTest, APointerThatCannotBeReadIsConvertedWhereRegistered)
{
    const VariantConverter converter(INTEGER, &typeid(volatile std::int64_t*), &always8);
    volatile std::int64_t value = 5;
    int out = 0;

    EXPECT_TRUE(Variant(&value).tryCast(out));
    EXPECT_EQ(out, 8);
}

TEST(VariantConverterTest, ConvertsTowardsTheTargetOnly)
{
    const VariantConverter converter(INTEGER, LAMP, &wattsOf);
    Lamp* out = nullptr;

    EXPECT_FALSE(Variant(5).tryCast(out));
}

TEST(VariantConverterTest, ConvertsBoolsTextsAndPointersToo)
{
    const VariantConverter toText(&typeid(std::string), INTEGER,
                                  [](Variant& target, const Variant& source)
                                  {
                                      target = std::to_string(*source.peek<std::int64_t>());
                                      return true;
                                  });
    const VariantConverter toShared(&typeid(std::shared_ptr<Lamp>), LAMP,
                                    [](Variant& target, const Variant& source)
                                    {
                                        target = std::make_shared<Lamp>(*source.peek<Lamp>());
                                        return true;
                                    });
    Lamp lamp{60};
    std::string text;
    std::shared_ptr<Lamp> shared;

    EXPECT_TRUE(Variant(5).tryCast(text));
    EXPECT_EQ(text, "5");
    EXPECT_TRUE(Variant(&lamp).tryCast(shared));
    EXPECT_EQ(shared->watts, 60);
}

TEST(VariantConverterTest, TheOldestRegistrationOfAPairIsUsed)
{
    const std::size_t before = VariantConverter::registeredCount();
    Lamp lamp;
    auto first = std::make_unique<VariantConverter>(INTEGER, LAMP, &always8);
    auto second = std::make_unique<VariantConverter>(INTEGER, LAMP, &always9);
    EXPECT_EQ(VariantConverter::registeredCount(), before + 2);
    EXPECT_EQ(Variant(&lamp).cast<int>(), 8);

    first.reset();
    EXPECT_EQ(Variant(&lamp).cast<int>(), 9);
    second.reset();
    EXPECT_THROW(static_cast<void>(Variant(&lamp).cast<int>()), vell::VariantCastError);
    EXPECT_EQ(VariantConverter::registeredCount(), before);
}

TEST(VariantConverterTest, AConversionMayConvertAndRegisterItself)
{
    const VariantConverter outer(&typeid(std::string), LAMP,
                                 [](Variant& target, const Variant& source)
                                 {
                                     const VariantConverter inner(INTEGER, LAMP, &wattsOf);
                                     target = std::to_string(source.cast<int>());
                                     return true;
                                 });
    Lamp lamp{60};

    EXPECT_EQ(Variant(&lamp).cast<std::string>(), "60");
}

TEST(VariantConverterTest, AConversionsExceptionReachesTheCaller)
{
    Lamp lamp;
    int out = 7;
    {
        const VariantConverter converter(INTEGER, LAMP,
                                         [](Variant&, const Variant&) -> bool
                                         { throw std::runtime_error("out of a conversion"); });
        EXPECT_THROW(Variant(&lamp).tryCast(out), std::runtime_error);
    }
    EXPECT_EQ(out, 7);
}

std::promise<void>* entered = nullptr;
std::atomic<bool> conversionReturned = false;

TEST(VariantConverterTest, RemovalWaitsForAConversionThatRunsInAnotherThread)
{
    std::promise<void> hasEntered;
    entered = &hasEntered;
    auto converter =
        std::make_unique<VariantConverter>(INTEGER, LAMP,
                                           [](Variant&, const Variant&)
                                           {
                                               entered->set_value();
                                               // Long enough for a destructor that does not wait to come back
                                               // first.
                                               std::this_thread::sleep_for(std::chrono::milliseconds(20));
                                               conversionReturned = true;
                                               return true;
                                           });
    std::thread other(
        []
        {
            Lamp lamp;
            int out = 0;
            EXPECT_TRUE(Variant(&lamp).tryCast(out));
        });
    hasEntered.get_future().wait();

    converter.reset();

    EXPECT_TRUE(conversionReturned);
    other.join();
}

} // namespace
