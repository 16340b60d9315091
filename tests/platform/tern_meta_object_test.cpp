#include "tern/meta_object.hpp"

#include "tern/annotation_scopes.hpp"
#include "tern/annotations.hpp"
#include "tests/platform/reflected_lamp.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using tern::Annotations;
using tern::AnnotationScopes;
using tern::MetaObjectManager;

namespace
{

class Crane : public tern::Object
{
};

using LampMeta = tern::StaticMetaObject<Lamp>;
using HarbourLampMeta = tern::StaticMetaObject<HarbourLamp>;

TEST(AnnotationsTest, KeepTheirOrder)
{
    Annotations annotations({std::string("Road"), true});
    annotations.add(7);
    ASSERT_EQ(annotations.size(), 3U);
    EXPECT_EQ(textOf(annotations[0]), "Road");
    EXPECT_NE(annotations[1].peek<bool>(), nullptr);
    EXPECT_NE(annotations[2].peek<std::int64_t>(), nullptr);
}

TEST(AnnotationScopesTest, OneScopeIsLeftWhenAllThatWereOpenedAreClosed)
{
    AnnotationScopes scopes;
    EXPECT_EQ(scopes.size(), 1U);
    scopes.add("the class");
    scopes.push();
    scopes.add("a property");
    scopes.push();
    EXPECT_EQ(scopes.size(), 3U);
    scopes.add("its editor");

    EXPECT_EQ(textOf(scopes.pop()[0]), "its editor");
    const Annotations property = scopes.pop();
    ASSERT_EQ(property.size(), 1U);
    EXPECT_EQ(textOf(property[0]), "a property");
    EXPECT_EQ(scopes.size(), 1U);

    EXPECT_EQ(scopes.pop().size(), 0U) << "the class's scope is not closed";
    EXPECT_EQ(scopes.size(), 1U);
    const Annotations whole = scopes.finish();
    ASSERT_EQ(whole.size(), 1U);
    EXPECT_EQ(textOf(whole[0]), "the class");
    EXPECT_EQ(scopes.finish().size(), 0U);
}

TEST(AnnotationScopesTest, FinishingDropsWhatIsStillOpen)
{
    AnnotationScopes scopes;
    scopes.add("the class");
    scopes.push();
    scopes.add("forgotten");
    EXPECT_EQ(scopes.finish().size(), 1U);
    EXPECT_EQ(scopes.size(), 1U);
}

TEST(MetaObjectTest, TellsWhatItWasBuiltFrom)
{
    const LampMeta meta;
    EXPECT_TRUE(meta.type() == typeid(Lamp));
    EXPECT_EQ(meta.className(), "Lamp");
    ASSERT_EQ(meta.annotations().size(), 1U);
    EXPECT_EQ(textOf(meta.annotations()[0]), "Plain Lamp");
    EXPECT_TRUE(meta.bases().empty());
    ASSERT_EQ(meta.properties().size(), 2U);
    EXPECT_EQ(meta.properties()[0].name, "brightness");
}

TEST(MetaObjectTest, FindsPropertiesInTheClassAndThenInItsBases)
{
    const HarbourLampMeta meta;
    const HarbourLamp lamp;
    ASSERT_NE(meta.findProperty("kind"), nullptr);
    EXPECT_EQ(textOf(meta.findProperty("kind")->getter(lamp)), "harbour lamp");
    EXPECT_NE(meta.findProperty("brightness"), nullptr);
    EXPECT_EQ(meta.findProperty("colour"), nullptr);
    EXPECT_EQ(meta.properties().size(), 1U) << "its own alone";
}

TEST(MetaObjectTest, AKindIsToldByTheTypeNotByTheMetaObject)
{
    const HarbourLampMeta harbourLamp;
    const LampMeta anotherLamp;
    EXPECT_TRUE(harbourLamp.isKindOf(harbourLamp));
    EXPECT_TRUE(harbourLamp.isKindOf(anotherLamp));
    EXPECT_TRUE(anotherLamp.isKindOf(tern::staticMetaObject<Lamp>()));
    EXPECT_FALSE(anotherLamp.isKindOf(harbourLamp));
    const tern::BaseStaticMetaObject<0> crane(typeid(Crane), "Lamp", Annotations(), {});
    EXPECT_FALSE(crane.isKindOf(anotherLamp)) << "the class's name does not count";
}

TEST(MetaObjectManagerTest, RegistrationEndsWithTheObject)
{
    MetaObjectManager& manager = MetaObjectManager::instance();
    const std::size_t before = manager.registeredCount();
    {
        const tern::BaseStaticMetaObject<0> crane(typeid(Crane), "Crane", Annotations(), {});
        EXPECT_EQ(manager.find("Crane"), nullptr) << "building alone registers nothing";
        manager.registerType(crane);
        manager.registerType(crane);
        EXPECT_EQ(manager.registeredCount(), before + 1);
        EXPECT_EQ(manager.find("Crane"), &crane);
        EXPECT_EQ(manager.find(typeid(Crane)), &crane);
    }
    EXPECT_EQ(manager.registeredCount(), before);
    EXPECT_EQ(manager.find("Crane"), nullptr);
    EXPECT_EQ(manager.find(typeid(Crane)), nullptr);
}

TEST(MetaObjectManagerTest, OfSeveralRegistrationsTheOldestThatIsLeftIsFound)
{
    MetaObjectManager& manager = MetaObjectManager::instance();
    using CraneMeta = tern::BaseStaticMetaObject<0>;
    std::optional<CraneMeta> first(std::in_place, typeid(Crane), "Crane", Annotations(), CraneMeta::Bases());
    std::optional<CraneMeta> second(std::in_place, typeid(Crane), "Crane", Annotations(), CraneMeta::Bases());
    const CraneMeta third(typeid(Crane), "Crane", Annotations(), {});
    manager.registerType(*first);
    manager.registerType(*second);
    manager.registerType(third);

    EXPECT_EQ(manager.find("Crane"), &*first);
    second.reset();
    EXPECT_EQ(manager.find("Crane"), &*first);
    first.reset();
    EXPECT_EQ(manager.find("Crane"), &third);
    EXPECT_EQ(manager.find(typeid(Crane)), &third);
}

TEST(MetaObjectManagerTest, TheStaticMetaObjectIsBuiltOnce)
{
    const auto& meta = tern::staticMetaObject<HarbourLamp>();
    EXPECT_EQ(&meta, &tern::staticMetaObject<HarbourLamp>());
    EXPECT_EQ(MetaObjectManager::instance().find("HarbourLamp"), &meta);
    EXPECT_EQ(meta.bases()[0], &tern::staticMetaObject<Lamp>());
}

TEST(MetaObjectManagerTest, ThreadsRegisterAndFind)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
    {
        threads.emplace_back(
            []
            {
                for (int round = 0; round < 200; ++round)
                {
                    const tern::BaseStaticMetaObject<0> crane(typeid(Crane), "Crane", Annotations(), {});
                    MetaObjectManager::instance().registerType(crane);
                    EXPECT_NE(MetaObjectManager::instance().find("Crane"), nullptr);
                    EXPECT_NE(MetaObjectManager::instance().find(typeid(Crane)), nullptr);
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(MetaObjectManager::instance().find("Crane"), nullptr);
}

/// Looks its class up when the program ends, behind the end of main.
struct LateUser
{
    ~LateUser()
    {
        if (MetaObjectManager::instance().find("HarbourLamp") == nullptr)
        {
            std::abort();
        }
    }
};

TEST(MetaObjectManagerTest, IsThereWhenTheProgramEnds)
{
    tern::staticMetaObject<HarbourLamp>();
    static const LateUser lateUser;
    EXPECT_NE(MetaObjectManager::instance().find("HarbourLamp"), nullptr);
}

} // namespace
