// What is registered from the moment the library is loaded. This program uses none of the library's classes
// before main, and the first tests none at all.

#include "tern_common/module/chunk_item_conversion.hpp"

#include "kodo/chunk/chunk_item_base.hpp"
#include "kodo/chunk/chunk_space.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "tern/meta_object.hpp"
#include "tern_common/curve_view/curve_view_space_cache.hpp"
#include "tern_common/localization/definition_directories.hpp"
#include "vell/meta_type.hpp"
#include "vell/variant.hpp"
#include "vell/variant_converter.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace
{

using Item = Kodo::ChunkItemBase;
using SharedItem = std::shared_ptr<Item>;
using SmartItem = Kodo::SmartPointer<Item>;
using vell::MetaType;
using vell::Variant;

/// What the process knew when main began, before this program made any of it.
struct FirstLook
{
    std::vector<const MetaType*> types = MetaType::registered();
    std::size_t converters = vell::VariantConverter::registeredCount();
    std::size_t cacheSlots = Kodo::ChunkSpace::registeredCacheCount();
    bool hasItem = tern::MetaObjectManager::instance().find("EditorCustomChunkItem") != nullptr;
    bool hasControlPoint = tern::MetaObjectManager::instance().find("CurveViewControlPoint") != nullptr;
};

const FirstLook& firstLook()
{
    static const FirstLook look;
    return look;
}

struct Expected
{
    const std::type_info* type;
    const std::type_info* underlying;
    std::uint32_t qualifiers;
};
const std::vector<Expected>& expectedTypes()
{
    static const std::vector<Expected> types = {{&typeid(SmartItem), &typeid(Item), 0},
                                                {&typeid(Item*), &typeid(Item), 0},
                                                {&typeid(const SharedItem*), &typeid(SharedItem), 1},
                                                {&typeid(SmartItem*), &typeid(SmartItem), 0},
                                                {&typeid(SharedItem), &typeid(Item), 0},
                                                {&typeid(const Item*), &typeid(Item), 1},
                                                {&typeid(const volatile void*), &typeid(void), 3}};
    return types;
}

TEST(ModuleTest, SevenTypesAreKnownFromTheStartInTheirOrder)
{
    std::vector<std::string> order;
    for (const MetaType* known : firstLook().types)
    {
        const auto found =
            std::find_if(expectedTypes().begin(), expectedTypes().end(),
                         [known](const Expected& expected) { return *expected.type == known->type(); });
        if (found != expectedTypes().end())
        {
            order.push_back(found->type->name());
        }
    }
    std::vector<std::string> expected;
    for (const Expected& type : expectedTypes())
    {
        expected.push_back(type.type->name());
    }
    EXPECT_EQ(order, expected);
}

TEST(ModuleTest, EachTypeIsDescribedAsAPointerOfOneWord)
{
    for (const Expected& expected : expectedTypes())
    {
        const MetaType* const type = MetaType::find(*expected.type);
        ASSERT_NE(type, nullptr) << expected.type->name();
        EXPECT_EQ(type->size(), 8U) << type->name();
        EXPECT_TRUE(*type->underlyingType() == *expected.underlying) << type->name();
        EXPECT_EQ(type->qualifiers(), expected.qualifiers) << type->name();
    }
}

TEST(ModuleTest, TheMetaObjectsTheConverterAndTheSlotAreThereFromTheStart)
{
    EXPECT_EQ(firstLook().converters, 1U);
    EXPECT_EQ(firstLook().cacheSlots, 1U);
    EXPECT_TRUE(firstLook().hasItem);
    EXPECT_TRUE(firstLook().hasControlPoint);
    EXPECT_EQ(CurveViewSpaceCache::instance.slot(), 0U);
}

TEST(ModuleTest, TheDirectoriesOfDefinitionsAreBuilt)
{
    EXPECT_EQ(DefinitionDirectories::VEHICLES, "scripts/item_defs/vehicles/");
    EXPECT_EQ(DefinitionDirectories::ARENAS, "scripts/arena_defs/");
}

// --- The conversion
// -------------------------------------------------------------------------------------------

class Lamp : public Item
{
public:
    Lamp() : Item(nullptr, WANTS_NOTHING) {}
};

SharedItem shared(const SmartItem& item)
{
    return {item.get(), [held = item](Item*) {}};
}

class ChunkItemConversionTest : public testing::Test
{
protected:
    SmartItem lamp = new Lamp;
    SmartItem other = new Lamp;
};

TEST_F(ChunkItemConversionTest, ASharedItemCastsToASmartPointer)
{
    const Variant source(shared(lamp));
    SmartItem result = other;
    EXPECT_TRUE(source.tryCast(result));
    EXPECT_EQ(result, lamp);
    EXPECT_EQ(lamp->refCount(), 3) << "here, in the source and in the result";
    EXPECT_EQ(other->refCount(), 1) << "the item held before is let go";
}

TEST_F(ChunkItemConversionTest, AnEmptySharedItemHasNoCounterpart)
{
    const Variant source{SharedItem()};
    SmartItem result = other;
    EXPECT_FALSE(source.tryCast(result));
    EXPECT_EQ(result, other);
    Variant target(other);
    EXPECT_FALSE(TernCommonDetail::smartPointerFromShared(target, source));
    EXPECT_EQ(*target.peek<SmartItem>(), other);
}

TEST_F(ChunkItemConversionTest, PointersToEitherWillDo)
{
    SmartItem result = other;
    const SharedItem held = shared(lamp);
    Variant target(&result);
    EXPECT_TRUE(TernCommonDetail::smartPointerFromShared(target, Variant(&held)));
    EXPECT_EQ(result, lamp);
}

TEST_F(ChunkItemConversionTest, NullPointersChangeNothing)
{
    SmartItem result = other;
    const SharedItem held = shared(lamp);
    Variant nowhere(static_cast<SmartItem*>(nullptr));
    EXPECT_TRUE(TernCommonDetail::smartPointerFromShared(nowhere, Variant(&held)));
    Variant target(&result);
    EXPECT_TRUE(
        TernCommonDetail::smartPointerFromShared(target, Variant(static_cast<const SharedItem*>(nullptr))));
    EXPECT_EQ(result, other);
}

TEST_F(ChunkItemConversionTest, WhatWasMovedOutChangesNothing)
{
    Variant source(shared(lamp));
    const Variant taken(std::move(source));
    Variant target(other);
    EXPECT_TRUE(TernCommonDetail::smartPointerFromShared(target, source));
    EXPECT_EQ(*target.peek<SmartItem>(), other);
    SmartItem result = other;
    EXPECT_TRUE(source.tryCast(result));
    EXPECT_EQ(result, nullptr) << "as of any smart pointer that was moved out";
    EXPECT_TRUE(taken.tryCast(result));
    EXPECT_EQ(result, lamp);
}

std::string castErrorOf(Variant& target, const Variant& source)
{
    try
    {
        TernCommonDetail::smartPointerFromShared(target, source);
    }
    catch (const vell::VariantCastError& error)
    {
        return error.what();
    }
    return "none";
}

std::string castErrorText(const char* actual, const char* expected)
{
    try
    {
        Variant::castError(actual, expected);
    }
    catch (const vell::VariantCastError& error)
    {
        return error.what();
    }
}

TEST_F(ChunkItemConversionTest, OtherContentRaisesTheCastErrorOfTargetThenSource)
{
    const char* const smartName = "Kodo::SmartPointer<Kodo::ChunkItemBase>*";
    const char* const sharedName = "const std::shared_ptr<Kodo::ChunkItemBase>*";
    Variant number(5);
    Variant nothing;
    Variant target(other);
    const Variant source(shared(lamp));
    EXPECT_EQ(castErrorOf(number, source), castErrorText(number.type().name(), smartName));
    EXPECT_EQ(castErrorOf(nothing, number), castErrorText("void", smartName));
    EXPECT_EQ(castErrorOf(target, number), castErrorText(number.type().name(), sharedName));
    EXPECT_EQ(castErrorOf(target, target), castErrorText(target.type().name(), sharedName));
    const SmartItem constant = other;
    Variant toConstant(&constant);
    EXPECT_EQ(castErrorOf(toConstant, source), castErrorText(toConstant.type().name(), smartName));
    EXPECT_EQ(*target.peek<SmartItem>(), other);
}

} // namespace
