#include "vell/variant.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using vell::Variant;

struct Lamp
{
    int watts = 60;
};
struct Cable
{
};
enum Unscoped
{
    ENUMERATOR
};

static_assert(std::is_nothrow_default_constructible_v<Variant>);
static_assert(std::is_nothrow_move_constructible_v<Variant>);
static_assert(std::is_nothrow_move_assignable_v<Variant>);
static_assert(std::is_copy_constructible_v<Variant>);
static_assert(std::is_copy_assignable_v<Variant>);
static_assert(std::is_nothrow_destructible_v<Variant>);
static_assert(std::is_nothrow_copy_constructible_v<vell::VariantCastError>);

template <class T>
constexpr bool HELD = std::is_convertible_v<T, Variant>;

static_assert(HELD<bool> && HELD<int> && HELD<std::int64_t> && HELD<long long> && HELD<std::uint32_t>);
static_assert(HELD<signed char> && HELD<unsigned char> && HELD<short> && HELD<unsigned short>);
static_assert(HELD<std::string> && HELD<const char*> && HELD<char*> && HELD<const char (&)[4]>);
static_assert(HELD<Lamp*> && HELD<const Lamp*> && HELD<const volatile void*> && HELD<std::shared_ptr<Lamp>>);
static_assert(HELD<std::shared_ptr<const Lamp>> && HELD<std::shared_ptr<Lamp>*>);
// Neither a number nor a text may turn into something else on the way in.
static_assert(!HELD<double> && !HELD<float>);
static_assert(!HELD<char> && !HELD<wchar_t> && !HELD<char8_t> && !HELD<char16_t> && !HELD<char32_t>);
static_assert(!HELD<std::uint64_t> && !HELD<unsigned long long>, "its upper half has no counterpart");
static_assert(!HELD<Unscoped> && !HELD<std::vector<bool>::reference>);
static_assert(!HELD<Lamp> && !HELD<std::unique_ptr<Lamp>> && !HELD<void (*)()> && !HELD<int Lamp::*>);
static_assert(!HELD<volatile char*>);
static_assert(!std::is_constructible_v<Variant, std::nullptr_t>, "a null pointer of which type?");

template <class T>
concept CastTarget = requires(const Variant& variant, T& out)
{
    variant.tryCast(out);
};

static_assert(CastTarget<bool> && CastTarget<std::int8_t> && CastTarget<std::uint64_t>);
static_assert(CastTarget<std::string> && CastTarget<const Lamp*> && CastTarget<std::shared_ptr<Lamp>>);
static_assert(!CastTarget<double> && !CastTarget<char> && !CastTarget<Lamp> && !CastTarget<const char*>);

/// The value that @p variant casts to, or @p untouched when it does not cast.
template <class T>
T castOr(const Variant& variant, T untouched)
{
    const T before = untouched;
    if (!variant.tryCast(untouched))
    {
        EXPECT_EQ(untouched, before) << "a failed cast leaves its target alone";
    }
    return untouched;
}

TEST(VariantTest, HoldsNothingAtFirst)
{
    const Variant variant;

    EXPECT_TRUE(variant.isVoid());
    EXPECT_TRUE(variant.type().type() == typeid(void));
    EXPECT_STREQ(variant.type().name(), "void");
    EXPECT_EQ(castOr(variant, true), true);
    EXPECT_EQ(castOr(variant, 7), 7);
    EXPECT_EQ(castOr<std::string>(variant, "before"), "before");
    EXPECT_EQ(castOr<const volatile void*>(variant, &variant), &variant);
}

TEST(VariantTest, HoldsABool)
{
    const Variant variant = true;

    EXPECT_FALSE(variant.isVoid());
    EXPECT_TRUE(variant.type().type() == typeid(bool));
    EXPECT_EQ(castOr(variant, false), true);
    EXPECT_EQ(castOr(Variant(false), true), false);
}

TEST(VariantTest, KeepsBoolsAndIntegersApart)
{
    EXPECT_EQ(castOr(Variant(true), 7), 7);
    EXPECT_EQ(castOr(Variant(1), false), false);
    EXPECT_EQ(castOr<std::string>(Variant(1), "before"), "before");
    EXPECT_EQ(castOr(Variant("1"), 7), 7);
}

TEST(VariantTest, HoldsEveryIntegerAsA64BitOne)
{
    EXPECT_TRUE(Variant(std::int8_t{-1}).type().type() == typeid(std::int64_t));
    EXPECT_EQ(castOr<std::int64_t>(Variant(std::int8_t{-1}), 0), -1);
    EXPECT_EQ(castOr<std::int64_t>(Variant(std::numeric_limits<std::uint32_t>::max()), 0), 0xFFFFFFFF);
    EXPECT_EQ(castOr<std::int64_t>(Variant(std::numeric_limits<std::int64_t>::min()), 0),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(castOr<long long>(Variant(5LL), 0), 5);
    EXPECT_EQ(castOr<long>(Variant(5L), 0), 5);
}

TEST(VariantTest, HoldsTextOfAnyContent)
{
    const std::string text("a\0b\xff", 4);

    EXPECT_EQ(castOr<std::string>(Variant(text), ""), text);
    EXPECT_EQ(castOr<std::string>(Variant("literal"), ""), "literal");
    EXPECT_EQ(castOr<std::string>(Variant(std::string()), "before"), "");
    EXPECT_TRUE(Variant("literal").type().type() == typeid(std::string));
}

TEST(VariantTest, HoldsAPointerWithoutOwningIt)
{
    Lamp lamp;
    const Variant variant = &lamp;

    EXPECT_EQ(castOr<Lamp*>(variant, nullptr), &lamp);
    EXPECT_EQ(castOr<const Lamp*>(variant, nullptr), &lamp);
    EXPECT_EQ(castOr<volatile Lamp*>(variant, nullptr), &lamp);
    EXPECT_EQ(castOr<const volatile Lamp*>(variant, nullptr), &lamp);
    EXPECT_EQ(castOr<Cable*>(variant, nullptr), nullptr);
    EXPECT_EQ(castOr<void*>(variant, nullptr), nullptr);
}

TEST(VariantTest, APointerIsNeverCastToALessQualifiedOne)
{
    Lamp lamp;
    const Variant constant = static_cast<const Lamp*>(&lamp);
    const Variant unstable = static_cast<volatile Lamp*>(&lamp);
    const Variant both = static_cast<const volatile Lamp*>(&lamp);

    EXPECT_EQ(castOr<Lamp*>(constant, nullptr), nullptr);
    EXPECT_EQ(castOr<volatile Lamp*>(constant, nullptr), nullptr);
    EXPECT_EQ(castOr<const Lamp*>(constant, nullptr), &lamp);
    EXPECT_EQ(castOr<const volatile Lamp*>(constant, nullptr), &lamp);
    EXPECT_EQ(castOr<const Lamp*>(unstable, nullptr), nullptr);
    EXPECT_EQ(castOr<volatile Lamp*>(unstable, nullptr), &lamp);
    EXPECT_EQ(castOr<const Lamp*>(both, nullptr), nullptr);
    EXPECT_EQ(castOr<volatile Lamp*>(both, nullptr), nullptr);
    EXPECT_EQ(castOr<const volatile Lamp*>(both, nullptr), &lamp);
}

TEST(VariantTest, ANullPointerIsAValueThatCastsToNull)
{
    Lamp lamp;
    const Variant variant = static_cast<Lamp*>(nullptr);

    EXPECT_FALSE(variant.isVoid());
    EXPECT_EQ(castOr<Lamp*>(variant, &lamp), nullptr);
    EXPECT_EQ(variant.peek<Lamp>(), nullptr);
}

TEST(VariantTest, SharesWhatASmartPointerHolds)
{
    auto lamp = std::make_shared<Lamp>();
    {
        const Variant variant = lamp;
        const Variant copy = variant; // NOLINT(performance-unnecessary-copy-initialization): counted below
        EXPECT_EQ(lamp.use_count(), 3);

        std::shared_ptr<Lamp> out;
        EXPECT_TRUE(copy.tryCast(out));
        EXPECT_EQ(out, lamp);
        EXPECT_EQ(lamp.use_count(), 4);
        EXPECT_EQ(castOr<Lamp*>(variant, nullptr), lamp.get());
        EXPECT_EQ(castOr<const Lamp*>(variant, nullptr), lamp.get());
    }
    EXPECT_EQ(lamp.use_count(), 1);
}

TEST(VariantTest, APlainPointerDoesNotTurnIntoASmartOne)
{
    Lamp lamp;
    std::shared_ptr<Lamp> out;

    EXPECT_FALSE(Variant(&lamp).tryCast(out));
    EXPECT_EQ(out, nullptr);
}

TEST(VariantTest, ReadsASmartPointerThroughAPointerToIt)
{
    auto lamp = std::make_shared<Lamp>();
    const Variant variant = static_cast<const std::shared_ptr<Lamp>*>(&lamp);

    std::shared_ptr<Lamp> out;
    EXPECT_TRUE(variant.tryCast(out));
    EXPECT_EQ(out, lamp);
}

TEST(VariantTest, PeekingGivesTheValueItself)
{
    Variant number = 5;
    Variant text = "text";
    Lamp lamp;
    Variant pointer = &lamp;
    Variant constant = static_cast<const Lamp*>(&lamp);

    *number.peek<std::int64_t>() = 6;
    EXPECT_EQ(castOr(number, 0), 6);
    EXPECT_EQ(number.peek<bool>(), nullptr);
    EXPECT_EQ(*text.peek<std::string>(), "text");
    EXPECT_EQ(pointer.peek<Lamp>(), &lamp);
    EXPECT_EQ(*pointer.peek<Lamp*>(), &lamp);
    EXPECT_EQ(constant.peek<Lamp>(), nullptr) << "no way to change what is constant";
    EXPECT_EQ(std::as_const(constant).peek<Lamp>(), &lamp);
}

/// One variant of every kind.
std::vector<Variant> oneOfEachKind()
{
    static Lamp lamp;
    return {Variant(),
            Variant(true),
            Variant(5),
            Variant(std::string(50, 'x')),
            Variant("sm"),
            Variant(&lamp),
            Variant(std::make_shared<Lamp>())};
}

/// What can be seen of a variant.
std::string show(const Variant& variant)
{
    std::shared_ptr<Lamp> shared;
    variant.tryCast(shared);
    std::string text = variant.type().name();
    text += ' ' + std::to_string(castOr(variant, false)) + ' ' + std::to_string(castOr(variant, 0)) + ' ' +
            castOr<std::string>(variant, "");
    text += ' ' + std::to_string(castOr<Lamp*>(variant, nullptr) == nullptr ? 0 : 60);
    return text;
}

TEST(VariantTest, CopiesAndMovesBetweenAllKinds)
{
    for (std::size_t from = 0; from < oneOfEachKind().size(); ++from)
    {
        for (std::size_t to = 0; to < oneOfEachKind().size(); ++to)
        {
            const Variant source = oneOfEachKind()[from];
            Variant copied = oneOfEachKind()[to];
            copied = source;
            EXPECT_EQ(show(copied), show(source)) << from << " to " << to;

            Variant moved = oneOfEachKind()[to];
            moved = std::move(copied);
            EXPECT_EQ(show(moved), show(source)) << from << " to " << to;
            copied = moved; // what was moved from can be given a value again
            EXPECT_EQ(show(copied), show(source)) << from << " to " << to;
        }
    }
}

TEST(VariantTest, SurvivesAssignmentToItself)
{
    for (Variant& variant : oneOfEachKind())
    {
        const std::string before = show(variant);
        Variant& same = variant;

        variant = same;
        EXPECT_EQ(show(variant), before);
        variant = std::move(same);
        EXPECT_EQ(show(variant), before);
    }
}

TEST(VariantTest, TakesAValueOutOfWhatItReleasesItself)
{
    struct Node
    {
        Variant next;
    };
    for (const Variant& kind : oneOfEachKind())
    {
        auto node = std::make_shared<Node>(Node{kind});
        Variant& inNode = node->next;
        Variant head = std::move(node);

        head = std::move(inNode); // the last share of the node that `inNode` stands in goes with it
        EXPECT_EQ(show(head), show(kind));

        node = std::make_shared<Node>(Node{kind});
        const Variant& alsoInNode = node->next;
        head = std::move(node);
        head = alsoInNode;
        EXPECT_EQ(show(head), show(kind));
    }
}

TEST(VariantTest, CastYieldsTheValueOrThrowsNamingBothTypes)
{
    EXPECT_EQ(Variant(5).cast<int>(), 5);
    EXPECT_EQ(Variant("text").cast<std::string>(), "text");
    try
    {
        static_cast<void>(Variant("text").cast<int>());
        FAIL() << "no exception";
    }
    catch (const std::bad_cast& error)
    {
        EXPECT_STREQ(error.what(), "a variant that holds std::string was asked for int");
    }
}

TEST(VariantTest, TheCastErrorNamesTheTypesItIsGiven)
{
    try
    {
        Variant::castError("Lamp", "Cable*");
    }
    catch (const vell::VariantCastError& error)
    {
        const vell::VariantCastError copy = error;
        EXPECT_STREQ(copy.what(), "a variant that holds Lamp was asked for Cable*");
    }
}

TEST(VariantTest, ASharedPointerThatWasMovedOutIsNullAndCanBeUsedOn)
{
    const auto lamp = std::make_shared<Lamp>();
    Variant source(lamp);
    const Variant taken = std::move(source);
    EXPECT_EQ(lamp.use_count(), 2);

    std::shared_ptr<Lamp> shared = lamp;
    EXPECT_TRUE(source.tryCast(shared));
    EXPECT_EQ(shared, nullptr);
    Lamp* plain = lamp.get();
    EXPECT_TRUE(source.tryCast(plain));
    EXPECT_EQ(plain, nullptr);
    EXPECT_EQ(source.peek<std::shared_ptr<Lamp>>(), nullptr);
    EXPECT_EQ(source.peek<Lamp>(), nullptr);
    EXPECT_STREQ(source.type().name(), taken.type().name());

    const Variant copy = source;
    EXPECT_FALSE(copy.isVoid());
    EXPECT_EQ(copy.cast<std::shared_ptr<Lamp>>(), nullptr);
    source = taken;
    EXPECT_EQ(source.cast<std::shared_ptr<Lamp>>(), lamp);
}

} // namespace
