#include "tern_common/utils/color_generator.hpp"

#include "kodo/core/kodo_random.hpp"
#include "tern_common/utils/color_hue.hpp"
#include "tests/support/plain_color_generator.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <type_traits>

namespace
{

using Color = Kodo::Render::ColourRGBAFloat;
using Kodo::KodoRandom;

static_assert(std::is_nothrow_move_constructible_v<ColorGenerator>);
static_assert(std::is_nothrow_move_assignable_v<ColorGenerator>);
static_assert(std::is_copy_constructible_v<ColorGenerator> && std::is_copy_assignable_v<ColorGenerator>);
static_assert(!std::is_polymorphic_v<ColorGenerator>);

constexpr float MIN_DISTANCE = 0.5235988F;

std::uint32_t testSeed()
{
    const char* const given = std::getenv("TERN_TEST_SEED");
    return given == nullptr ? 1U : static_cast<std::uint32_t>(std::strtoul(given, nullptr, 10));
}

/// How many draws lead from one state of a generator to another, up to @p most.
std::size_t drawsBetween(KodoRandom before, const KodoRandom& after, std::size_t most = 100'000)
{
    const auto preview = [](KodoRandom random)
    {
        std::array<float, 4> next{};
        std::generate(next.begin(), next.end(), [&random] { return random(0.0F, 1.0F); });
        return next;
    };
    const auto target = preview(after);
    for (std::size_t count = 0; count <= most; ++count)
    {
        if (preview(before) == target)
        {
            return count;
        }
        before(0.0F, 1.0F);
    }
    return std::numeric_limits<std::size_t>::max();
}

float distance(const Color& a, const Color& b)
{
    return ColorHue::distance(ColorHue::hueOf(a), ColorHue::hueOf(b));
}

void expectSaturatedAndBright(const Color& color)
{
    EXPECT_EQ(color.a(), 1.0F);
    EXPECT_EQ(std::min({color.r(), color.g(), color.b()}), 0.0F);
    const float max = std::max({color.r(), color.g(), color.b()});
    EXPECT_GE(max, std::nextafter(0.9F, 0.0F));
    EXPECT_LE(max, 1.0F);
}

class ColorGeneratorTest : public testing::Test
{
protected:
    void SetUp() override { m_random.seed(7); }

    /// Calls until one takes more draws than a single attempt needs thousands of times; gives its draws.
    std::size_t callUntilColorsAreForgotten(ColorGenerator& generator)
    {
        for (int call = 0; call < 20; ++call)
        {
            const KodoRandom before = m_random;
            generator();
            const std::size_t draws = drawsBetween(before, m_random);
            if (draws > 20'000)
            {
                return draws;
            }
        }
        return 0;
    }

    KodoRandom& m_random = KodoRandom::instance();
};

} // namespace

TEST_F(ColorGeneratorTest, TheFirstCallDrawsAValueAndThenAHueAndTakesThem)
{
    KodoRandom copy = m_random;
    const float value = copy(90.0F, 100.0F);
    const float hue = copy(0.0F, 360.0F);
    const KodoRandom before = m_random;

    ColorGenerator generator;
    const Color color = generator();

    EXPECT_EQ(drawsBetween(before, m_random), 2U);
    const float max = std::max({color.r(), color.g(), color.b()});
    EXPECT_NEAR(max, value / 100.0F, 1e-6F);
    const float sector = std::floor(hue / 60.0F);
    const std::array<float, 6> tops{color.r(), color.g(), color.g(), color.b(), color.b(), color.r()};
    EXPECT_EQ(tops.at(static_cast<std::size_t>(sector)), max);
    KodoRandom same(7);
    EXPECT_EQ(color, PlainColorGenerator(same)());
}

TEST_F(ColorGeneratorTest, ColorsAreOpaqueSaturatedAndBright)
{
    for (int i = 0; i < 300; ++i)
    {
        m_random.seed(static_cast<std::uint32_t>(i));
        ColorGenerator generator;
        expectSaturatedAndBright(generator());
        expectSaturatedAndBright(generator());
    }
}

TEST_F(ColorGeneratorTest, ColorsKeepTheirDistanceUntilEarlierOnesAreForgotten)
{
    ColorGenerator generator;
    std::vector<Color> colors;
    for (;;)
    {
        const KodoRandom before = m_random;
        const Color color = generator();
        if (drawsBetween(before, m_random) > 20'000)
        {
            break;
        }
        for (const Color& earlier : colors)
        {
            EXPECT_GE(distance(earlier, color), MIN_DISTANCE);
        }
        colors.push_back(color);
        ASSERT_LE(colors.size(), 9U) << "no more fit";
    }
    EXPECT_GE(colors.size(), 4U);
}

TEST_F(ColorGeneratorTest, EarlierColorsAreForgottenAtExactlyTheTenThousandthRejection)
{
    ColorGenerator generator;
    EXPECT_EQ(callUntilColorsAreForgotten(generator), 2U * 10'001U)
        << "without bans the first candidate afterwards is taken";
}

TEST_F(ColorGeneratorTest, BansStayWhenEarlierColorsAreForgotten)
{
    const Color green(0.0F, 1.0F, 0.0F, 1.0F);
    ColorGenerator generator;
    generator.banColor(green);
    for (int call = 0; call < 60; ++call)
    {
        EXPECT_GE(distance(green, generator()), MIN_DISTANCE);
    }
}

TEST_F(ColorGeneratorTest, ColorsAndDrawsAreThoseOfThePlainRuleForAMillionDraws)
{
    const std::uint32_t firstSeed = testSeed();
    SCOPED_TRACE("TERN_TEST_SEED=" + std::to_string(firstSeed));
    std::size_t draws = 0;
    for (std::uint32_t seed = firstSeed; seed < firstSeed + 1000; ++seed)
    {
        KodoRandom plainRandom(seed);
        m_random.seed(seed);
        PlainColorGenerator plain(plainRandom);
        ColorGenerator generator;
        for (std::uint32_t ban = 0; ban < seed % 4; ++ban)
        {
            KodoRandom random(seed * 4 + ban);
            const Color color(random(0.0F, 1.0F), random(0.0F, 1.0F), random(0.0F, 1.0F), 1.0F);
            plain.banColor(color);
            generator.banColor(color);
        }
        while (plain.drawCount() < 1000)
        {
            ASSERT_EQ(generator(), plain()) << "seed " << seed;
        }
        draws += plain.drawCount();
        ASSERT_EQ(drawsBetween(plainRandom, m_random, 0), 0U) << "seed " << seed;
    }
    EXPECT_GE(draws, 1'000'000U);
}

TEST_F(ColorGeneratorTest, AGreyBanBlocksNoCandidate)
{
    // Its hue is 0, while every candidate's lies between pi/3 and 5 pi/3.
    for (std::uint32_t seed = 0; seed < 50; ++seed)
    {
        m_random.seed(seed);
        ColorGenerator free;
        std::vector<Color> expected;
        std::generate_n(std::back_inserter(expected), 12, std::ref(free));

        m_random.seed(seed);
        ColorGenerator banned;
        banned.banColor({0.5F, 0.5F, 0.5F, 1.0F});
        std::vector<Color> colors;
        std::generate_n(std::back_inserter(colors), 12, std::ref(banned));
        EXPECT_EQ(colors, expected);
    }
}

TEST_F(ColorGeneratorTest, ABanIsMeasuredByGreensFormulaWhereRedAndGreenTie)
{
    const Color yellow(1.0F, 1.0F, 0.0F, 1.0F);
    ColorGenerator generator;
    generator.banColor(yellow);
    for (int call = 0; call < 40; ++call)
    {
        EXPECT_GE(ColorHue::distance(1.0471976F, ColorHue::hueOf(generator())), MIN_DISTANCE);
    }
}

TEST_F(ColorGeneratorTest, ADistanceOfExactlyTheMinimumIsAcceptedAndTheNextSmallerRejected)
{
    int found = 0;
    for (std::uint32_t seed = 0; seed < 200 && found < 5; ++seed)
    {
        m_random.seed(seed);
        const Color first = ColorGenerator()();
        // Green tops without blue have hues of (2 - red) pi/3: look for one exactly that far ahead. (Behind
        // the candidate the distance goes through 2 pi, where floats are too coarse to hit the minimum.)
        const float hue = ColorHue::hueOf(first);
        float red = 2.0F - (hue + MIN_DISTANCE) / ColorHue::THIRD_OF_PI;
        if (!(hue > 1.0F && red > 0.01F))
        {
            continue;
        }
        red += 1e-5F;
        const auto banAt = [](float r) { return Color(r, 1.0F, 0.0F, 1.0F); };
        while (distance(banAt(red), first) < MIN_DISTANCE)
        {
            red = std::nextafter(red, 0.0F);
        }
        if (distance(banAt(red), first) != MIN_DISTANCE)
        {
            continue;
        }
        ++found;
        m_random.seed(seed);
        ColorGenerator accepting;
        accepting.banColor(banAt(red));
        EXPECT_EQ(accepting(), first);

        while (distance(banAt(red), first) >= MIN_DISTANCE)
        {
            red = std::nextafter(red, 1.0F);
        }
        m_random.seed(seed);
        ColorGenerator rejecting;
        rejecting.banColor(banAt(red));
        EXPECT_NE(rejecting(), first);
    }
    EXPECT_EQ(found, 5);
}

TEST_F(ColorGeneratorTest, ABanThatIsNoNumberBlocksNothing)
{
    const Color expected = ColorGenerator()();
    m_random.seed(7);
    ColorGenerator generator;
    constexpr float NAN_F = std::numeric_limits<float>::quiet_NaN();
    constexpr float INF = std::numeric_limits<float>::infinity();
    generator.banColor({NAN_F, NAN_F, NAN_F, 1.0F});
    generator.banColor({INF, 0.0F, 0.0F, 1.0F});
    EXPECT_EQ(generator(), expected);
}

TEST_F(ColorGeneratorTest, ACopyHasTheHistoryAndTheBans)
{
    ColorGenerator generator;
    generator.banColor({0.0F, 0.0F, 1.0F, 1.0F});
    generator();
    generator();
    ColorGenerator copy(generator);
    ColorGenerator assigned;
    assigned();
    assigned = generator;
    const auto next = [this](ColorGenerator& from)
    {
        m_random.seed(99);
        std::vector<Color> colors;
        std::generate_n(std::back_inserter(colors), 12, std::ref(from));
        return colors;
    };
    const std::vector<Color> expected = next(generator);
    EXPECT_EQ(next(copy), expected);
    EXPECT_EQ(next(assigned), expected);
}

TEST_F(ColorGeneratorTest, AMovedFromGeneratorIsAsNew)
{
    const auto twelve = [this](ColorGenerator& from)
    {
        m_random.seed(99);
        std::vector<Color> colors;
        std::generate_n(std::back_inserter(colors), 12, std::ref(from));
        return colors;
    };
    ColorGenerator fresh;
    const std::vector<Color> expectedOfFresh = twelve(fresh);

    ColorGenerator source;
    source.banColor({0.0F, 0.0F, 1.0F, 1.0F});
    source();
    ColorGenerator reference(source);
    const std::vector<Color> expectedOfSource = twelve(reference);

    ColorGenerator moved(std::move(source));
    ColorGenerator assigned;
    assigned();
    ColorGenerator copy(moved);
    assigned = std::move(copy);
    EXPECT_EQ(twelve(moved), expectedOfSource);
    EXPECT_EQ(twelve(assigned), expectedOfSource);
    EXPECT_EQ(twelve(source), expectedOfFresh); // NOLINT(bugprone-use-after-move): promised
    EXPECT_EQ(twelve(copy), expectedOfFresh);   // NOLINT(bugprone-use-after-move): promised
}

TEST_F(ColorGeneratorTest, AssigningAGeneratorToItselfChangesNothing)
{
    ColorGenerator generator;
    generator.banColor({0.0F, 0.0F, 1.0F, 1.0F});
    generator();
    ColorGenerator copy(generator);
    ColorGenerator& same = generator;
    generator = same;
    generator = std::move(same);
    m_random.seed(5);
    const Color expected = copy();
    m_random.seed(5);
    EXPECT_EQ(generator(), expected);
}
