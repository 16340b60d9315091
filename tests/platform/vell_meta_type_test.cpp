#include "vell/meta_type.hpp"

#include "vell/variant.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

namespace
{

struct Lamp
{
};

static_assert(!std::is_copy_constructible_v<vell::MetaType>);
static_assert(std::is_abstract_v<vell::MetaType>);
static_assert(vell::MetaType::CONST_QUALIFIER == 1 && vell::MetaType::VOLATILE_QUALIFIER == 2);

TEST(MetaTypeTest, PlainTypesAreKnownFromTheStart)
{
    using vell::MetaType;
    EXPECT_EQ(MetaType::find(typeid(void)), &vell::metaType<void>());
    EXPECT_EQ(MetaType::find(typeid(bool)), &vell::metaType<bool>());
    EXPECT_EQ(MetaType::find(typeid(std::int64_t)), &vell::metaType<std::int64_t>());
    EXPECT_EQ(MetaType::find(typeid(std::string)), &vell::metaType<std::string>());
    EXPECT_NE(MetaType::find(typeid(std::int64_t*)), nullptr);
    EXPECT_NE(MetaType::find(typeid(const std::int64_t*)), nullptr);
}

TEST(MetaTypeTest, DescribesAPlainType)
{
    const vell::MetaType& type = vell::metaType<std::string>();

    EXPECT_TRUE(type.type() == typeid(std::string));
    EXPECT_EQ(type.size(), sizeof(std::string));
    EXPECT_EQ(type.underlyingType(), nullptr);
    EXPECT_EQ(type.qualifiers(), 0U);
    EXPECT_EQ(vell::metaType<void>().size(), 0U);
}

TEST(MetaTypeTest, DescribesPointersByWhatTheyReferTo)
{
    EXPECT_TRUE(*vell::metaType<Lamp*>().underlyingType() == typeid(Lamp));
    EXPECT_EQ(vell::metaType<Lamp*>().size(), sizeof(void*));
    EXPECT_EQ(vell::metaType<Lamp*>().qualifiers(), 0U);
    EXPECT_TRUE(*vell::metaType<const Lamp*>().underlyingType() == typeid(Lamp));
    EXPECT_EQ(vell::metaType<const Lamp*>().qualifiers(), 1U);
    EXPECT_EQ(vell::metaType<volatile Lamp*>().qualifiers(), 2U);
    EXPECT_TRUE(*vell::metaType<const volatile void*>().underlyingType() == typeid(void));
    EXPECT_EQ(vell::metaType<const volatile void*>().qualifiers(), 3U);
}

TEST(MetaTypeTest, DescribesSmartPointersAsPointers)
{
    const vell::MetaType& shared = vell::metaType<std::shared_ptr<Lamp>>();
    EXPECT_TRUE(*shared.underlyingType() == typeid(Lamp));
    EXPECT_EQ(shared.size(), sizeof(void*));
    EXPECT_EQ(vell::metaType<std::shared_ptr<const Lamp>>().qualifiers(), 1U);

    const vell::MetaType& pointerToShared = vell::metaType<const std::shared_ptr<Lamp>*>();
    EXPECT_TRUE(*pointerToShared.underlyingType() == typeid(std::shared_ptr<Lamp>));
    EXPECT_EQ(pointerToShared.qualifiers(), 1U);
}

TEST(MetaTypeTest, NamesAreAsAPersonWritesThem)
{
    EXPECT_STREQ(vell::metaType<bool>().name(), "bool");
    EXPECT_STREQ(vell::metaType<std::string>().name(), "std::string");
    EXPECT_EQ(vell::typeName(typeid(int)), "int");
    EXPECT_EQ(vell::typeName(typeid(std::string)), "std::string");
    EXPECT_NE(vell::typeName(typeid(const Lamp*)).find("Lamp"), std::string::npos);
}

TEST(MetaTypeTest, AnUnknownTypeIsNotFound)
{
    struct NeverRegistered
    {
    };
    EXPECT_EQ(vell::MetaType::find(typeid(NeverRegistered*)), nullptr);
}

TEST(MetaTypeTest, ATypeIsRegisteredOnFirstUseAndOnce)
{
    struct Fresh
    {
    };
    const std::size_t before = vell::MetaType::registeredCount();

    const vell::MetaType* const first = &vell::metaType<Fresh*>();
    const vell::MetaType* const second = &vell::Variant(static_cast<Fresh*>(nullptr)).type();

    EXPECT_EQ(first, second);
    EXPECT_EQ(vell::MetaType::find(typeid(Fresh*)), first);
    EXPECT_EQ(vell::MetaType::registeredCount(), before + 1);
}

TEST(MetaTypeTest, OfSeveralRegistrationsTheOldestThatIsLeftIsFound)
{
    struct Shared
    {
    };
    using Registration = vell::MetaTypeImpl<Shared*>;
    const std::size_t before = vell::MetaType::registeredCount();
    auto first = std::make_unique<Registration>();
    auto second = std::make_unique<Registration>();
    auto third = std::make_unique<Registration>();
    EXPECT_EQ(vell::MetaType::registeredCount(), before + 3);
    EXPECT_EQ(vell::MetaType::find(typeid(Shared*)), first.get());

    first.reset();
    EXPECT_EQ(vell::MetaType::find(typeid(Shared*)), second.get());
    third.reset();
    EXPECT_EQ(vell::MetaType::find(typeid(Shared*)), second.get());
    second.reset();
    EXPECT_EQ(vell::MetaType::find(typeid(Shared*)), nullptr);
    EXPECT_EQ(vell::MetaType::registeredCount(), before);
}

TEST(MetaTypeTest, HandlesPointersOfTwoWordsInStorageOfOne)
{
    const vell::MetaType& type = vell::metaType<std::shared_ptr<Lamp>>();
    auto lamp = std::make_shared<Lamp>();
    ASSERT_EQ(type.size(), sizeof(void*));
    alignas(void*) std::byte first[sizeof(void*)];
    alignas(void*) std::byte second[sizeof(void*)];
    alignas(void*) std::byte third[sizeof(void*)];

    vell::PointerStorage<std::shared_ptr<Lamp>>::store(first, std::shared_ptr<Lamp>(lamp));
    type.copyConstruct(second, first);
    EXPECT_EQ(lamp.use_count(), 3);
    EXPECT_EQ(type.address(second), lamp.get());
    EXPECT_NE(type.value(second), type.value(first));
    EXPECT_EQ(*static_cast<const std::shared_ptr<Lamp>*>(type.value(second)), lamp);
    type.destroy(second);

    type.moveConstruct(second, first);
    EXPECT_EQ(lamp.use_count(), 2);
    EXPECT_EQ(type.address(second), lamp.get());
    EXPECT_EQ(type.address(first), nullptr);
    EXPECT_EQ(type.value(first), nullptr);
    type.copyConstruct(third, first);
    EXPECT_EQ(type.value(third), nullptr);
    type.destroy(third);
    type.moveConstruct(third, first);
    EXPECT_EQ(type.value(third), nullptr);
    for (void* storage : {static_cast<void*>(first), static_cast<void*>(second), static_cast<void*>(third)})
    {
        type.destroy(storage);
    }
    EXPECT_EQ(lamp.use_count(), 1);
}

TEST(MetaTypeTest, HandlesPointersOfOneWordInPlace)
{
    Lamp lamp;
    const vell::MetaType& type = vell::metaType<Lamp*>();
    alignas(void*) std::byte first[sizeof(void*)];
    alignas(void*) std::byte second[sizeof(void*)];

    vell::PointerStorage<Lamp*>::store(first, &lamp);
    type.moveConstruct(second, first);
    EXPECT_EQ(type.value(second), static_cast<const void*>(second));
    EXPECT_EQ(type.address(second), &lamp);
    type.destroy(first);
    type.destroy(second);
}

TEST(MetaTypeTest, APlainTypeHasNoAddressToReferTo)
{
    const std::int64_t value = 5;
    alignas(std::int64_t) std::byte storage[sizeof(value)];

    vell::metaType<std::int64_t>().copyConstruct(storage, &value);
    EXPECT_EQ(vell::metaType<std::int64_t>().address(storage), nullptr);
    vell::metaType<std::int64_t>().destroy(storage);
}

} // namespace
