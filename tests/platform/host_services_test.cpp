#include "kodo/core/kodo_random.hpp"
#include "kodo/render/colour.hpp"
#include "vell/asset_registry.hpp"
#include "vell/i_command_line_parser.hpp"
#include "vell/i_editor_manager.hpp"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstring>
#include <limits>
#include <thread>

using Kodo::KodoRandom;
using Kodo::Render::Colour32Bit;
using Kodo::Render::ColourRGBAFloat;

TEST(KodoRandomTest, TheSequenceOfASeedIsFixed)
{
    // The standard fixes the 10,000th number of the twister with its default seed: 4123659995.
    KodoRandom random(KodoRandom::DEFAULT_SEED);
    float drawn = 0;
    for (int i = 0; i < 10'000; ++i)
    {
        drawn = random(0.0F, 1.0F);
    }
    EXPECT_EQ(drawn, static_cast<float>(4123659995.0 / 4294967295.0));
}

TEST(KodoRandomTest, SeedingStartsASequenceAnew)
{
    KodoRandom& shared = KodoRandom::instance();
    EXPECT_EQ(&shared, &KodoRandom::instance());
    shared.seed(7);
    const float first = shared(0.0F, 360.0F);
    shared.seed(7);
    EXPECT_EQ(shared(0.0F, 360.0F), first);
    EXPECT_EQ(KodoRandom(7)(0.0F, 360.0F), first);
    EXPECT_NE(KodoRandom(8)(0.0F, 360.0F), first);
}

RC_GTEST_PROP(KodoRandomTest, DrawsStayWithinTheirBounds, (std::uint32_t seed, float a, float b))
{
    KodoRandom random(seed);
    for (int i = 0; i < 100; ++i)
    {
        const float drawn = random(a, b);
        RC_ASSERT(drawn >= std::min(a, b) && drawn <= std::max(a, b));
    }
}

TEST(KodoRandomTest, NarrowAndHugeRangesKeepTheirBounds)
{
    KodoRandom random;
    const float next = std::nextafter(90.0F, 100.0F);
    constexpr float MOST = std::numeric_limits<float>::max();
    for (int i = 0; i < 10'000; ++i)
    {
        const float narrow = random(90.0F, next);
        EXPECT_TRUE(narrow == 90.0F || narrow == next);
        const float huge = random(-MOST, MOST);
        EXPECT_TRUE(huge >= -MOST && huge <= MOST);
        EXPECT_EQ(random(3.0F, 3.0F), 3.0F);
    }
}

TEST(ColourTest, PackedColoursUnfoldToFloats)
{
    constexpr Colour32Bit PACKED(0xFF2C00A6);
    static_assert(PACKED.a() == 0xFF && PACKED.r() == 0x2C && PACKED.g() == 0x00 && PACKED.b() == 0xA6);
    const ColourRGBAFloat colour = PACKED;
    EXPECT_EQ(colour, ColourRGBAFloat(44.0F / 255.0F, 0.0F, 166.0F / 255.0F, 1.0F));
    EXPECT_EQ(ColourRGBAFloat(), ColourRGBAFloat(0.0F, 0.0F, 0.0F, 0.0F));
}

TEST(AssetRegistryTest, TheTypeIsThatOfTheExtension)
{
    vell::AssetRegistry registry;
    registry.setType("curve", "Curve");
    registry.setType("GPX", "Track");
    EXPECT_EQ(registry.typeOf("roads/main road.curve"), "Curve");
    EXPECT_EQ(registry.typeOf("A.CURVE"), "Curve");
    EXPECT_EQ(registry.typeOf("race.gpx"), "Track");
    EXPECT_EQ(registry.typeOf("a.b.curve"), "Curve");
    registry.setType("json", "Data");
    registry.setType("curve.json", "CurveData");
    EXPECT_EQ(registry.typeOf("a.b.curve.JSON"), "CurveData");
    EXPECT_EQ(registry.typeOf("a.json"), "Data");
    EXPECT_EQ(registry.typeOf(".curve.json"), "Data");
}

TEST(AssetRegistryTest, PathsWithoutAKnownExtensionHaveNoType)
{
    vell::AssetRegistry registry;
    registry.setType("curve", "Curve");
    for (const char* path :
         {"", "curve", ".curve", "a.curve/", "dir.curve/file", "a.curve.", "a.txt", "a.curve "})
    {
        EXPECT_EQ(registry.typeOf(path), "") << path;
    }
}

TEST(AssetRegistryTest, TypesCanBeReplacedAndTakenOut)
{
    vell::AssetRegistry registry;
    registry.setType("curve", "Curve");
    registry.setType("Curve", "Path");
    EXPECT_EQ(registry.typeOf("a.curve"), "Path");
    registry.setType("CURVE", "");
    EXPECT_EQ(registry.typeOf("a.curve"), "");
    registry.setType("", "Nothing");
    EXPECT_EQ(registry.typeOf("a."), "");
    EXPECT_EQ(registry.typeOf("a"), "");
}

TEST(AssetRegistryTest, ThereIsOneSharedRegistryAndThreadsMayUseIt)
{
    vell::AssetRegistry& registry = vell::AssetRegistry::instance();
    EXPECT_EQ(&registry, &vell::AssetRegistry::instance());
    std::thread writing(
        [&registry]
        {
            for (int i = 0; i < 1000; ++i)
            {
                const std::string extension = std::to_string(i);
                registry.setType(extension, "X");
                registry.setType(extension, "");
            }
        });
    for (int i = 0; i < 1000; ++i)
    {
        EXPECT_EQ(registry.typeOf("a.curve"), "");
    }
    writing.join();
}

#if defined(__GXX_ABI_VERSION)
namespace
{

/// The function's place among the virtual ones, counted from 1, with the destructor as the first. In this ABI
/// the destructor takes the places 0 and 1 of the table, so that the second function stands at 2, and a
/// member pointer to a virtual function holds 1 plus its offset.
template <class Function>
std::ptrdiff_t placeOf(Function function)
{
    std::ptrdiff_t offset = 0;
    static_assert(sizeof function >= sizeof offset);
    std::memcpy(&offset, &function, sizeof offset);
    return (offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

} // namespace

TEST(HostInterfaceTest, TheCommandLineParsersFunctionsStandInTheirPlaces)
{
    EXPECT_EQ(placeOf(&vell::ICommandLineParser::argc), 2);
    EXPECT_EQ(placeOf(&vell::ICommandLineParser::argv), 3);
    EXPECT_EQ(placeOf(&vell::ICommandLineParser::getFlag), 4);
}

TEST(HostInterfaceTest, TheEditorManagersFunctionsStandInTheirPlaces)
{
    EXPECT_EQ(placeOf(&IEditorManager::editorCount), 2);
    EXPECT_EQ(placeOf(&IEditorManager::openResource), 4);
    EXPECT_EQ(placeOf(&IEditorManager::closeAll), 13);
    EXPECT_EQ(placeOf(&IEditorManager::allowsNewInstance), 14);
}
#endif

TEST(HostInterfaceTest, TheOpenFlagsAreAWordOfSixteenBits)
{
    static_assert(sizeof(IEditorManager::OpenFlags) == 2);
    SUCCEED();
}
