#include "tern/annotation_scopes.hpp"
#include "tern/annotations.hpp"
#include "tern/meta_object.hpp"
#include "tern/object.hpp"
#include "tern/property_change_notifier.hpp"
#include "tern/reflected_object.hpp"
#include "tern/setter_flag.hpp"

#include "qua/flags.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using tern::Annotations;
using tern::AnnotationScopes;
using tern::MetaObjectManager;
using tern::PropertyChangeNotifier;
using tern::ReflectedObject;

namespace
{

class Lamp : public tern::Object
{
public:
    std::int64_t brightness = 3;
};

class HarbourLamp : public Lamp
{
};

class Crane : public tern::Object
{
};

std::string textOf(const vell::Variant& value)
{
    std::string text;
    EXPECT_TRUE(value.tryCast(text));
    return text;
}

} // namespace

template <>
class tern::StaticMetaObject<Lamp> : public tern::BaseStaticMetaObject<0>
{
public:
    StaticMetaObject()
        : BaseStaticMetaObject(typeid(Lamp), "Lamp", Annotations({std::string("Plain Lamp")}), Bases())
    {
        addProperty({"brightness",
                     [](const Object& object) -> vell::Variant
                     { return static_cast<const Lamp&>(object).brightness; },
                     [](Object& object, const vell::Variant& value)
                     { return value.tryCast(static_cast<Lamp&>(object).brightness); },
                     Annotations()});
        addProperty({"kind", [](const Object&) -> vell::Variant { return "lamp"; }, {}, Annotations()});
        MetaObjectManager::instance().registerType(*this);
    }
};

template <>
class tern::StaticMetaObject<HarbourLamp> : public tern::BaseStaticMetaObject<1>
{
public:
    StaticMetaObject()
        : BaseStaticMetaObject(typeid(HarbourLamp), "HarbourLamp", Annotations(), {&staticMetaObject<Lamp>()})
    {
        addProperty(
            {"kind", [](const Object&) -> vell::Variant { return "harbour lamp"; }, {}, Annotations()});
        MetaObjectManager::instance().registerType(*this);
    }
};

namespace
{

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

/// What was announced, as "changing kind" and "changed kind".
class Announcements
{
public:
    const std::vector<std::string>& heard() const { return m_heard; }

private:
    PropertyChangeNotifier::Listener noting(const char* what)
    {
        return [this, what](const ReflectedObject&, const std::vector<std::string>& properties)
        { m_heard.push_back(what + properties.at(0)); };
    }

    std::vector<std::string> m_heard;
    qua::Connection m_changing = PropertyChangeNotifier::connectChanging(noting("changing "));
    qua::Connection m_changed = PropertyChangeNotifier::connectChanged(noting("changed "));
};

using Heard = std::vector<std::string>;

ReflectedObject makeLamp()
{
    return {std::make_shared<HarbourLamp>(), tern::staticMetaObject<HarbourLamp>()};
}

TEST(ReflectedObjectTest, AnEmptyHandleHasNothing)
{
    const Announcements announcements;
    for (const ReflectedObject& empty :
         {ReflectedObject(), ReflectedObject(nullptr, tern::staticMetaObject<Lamp>())})
    {
        EXPECT_TRUE(empty.isEmpty());
        EXPECT_EQ(empty.object(), nullptr);
        EXPECT_EQ(empty.metaObject(), nullptr);
        EXPECT_TRUE(empty.property("brightness").isVoid());
        EXPECT_FALSE(empty.setProperty("brightness", 1));
    }
    EXPECT_TRUE(announcements.heard().empty());
}

TEST(ReflectedObjectTest, CopiesShareTheObject)
{
    const ReflectedObject lamp = makeLamp();
    const ReflectedObject copy = lamp; // NOLINT(performance-unnecessary-copy-initialization): what is tested
    EXPECT_EQ(lamp, copy);
    EXPECT_NE(lamp, makeLamp());
    EXPECT_TRUE(copy.setProperty("brightness", 9));
    std::int64_t brightness = 0;
    EXPECT_TRUE(lamp.property("brightness").tryCast(brightness));
    EXPECT_EQ(brightness, 9);
    EXPECT_EQ(lamp.metaObject(), &tern::staticMetaObject<HarbourLamp>());
}

TEST(ReflectedObjectTest, SettingIsAnnouncedAroundTheChange)
{
    const ReflectedObject lamp = makeLamp();
    const Announcements announcements;
    EXPECT_TRUE(lamp.setProperty("brightness", 4));
    EXPECT_EQ(announcements.heard(), (Heard{"changing brightness", "changed brightness"}));
}

TEST(ReflectedObjectTest, WhatCannotBeSetIsRefusedAndStays)
{
    const ReflectedObject lamp = makeLamp();
    {
        const Announcements announcements;
        EXPECT_FALSE(lamp.setProperty("kind", "buoy")) << "read-only";
        EXPECT_FALSE(lamp.setProperty("colour", 1)) << "unknown";
        EXPECT_TRUE(announcements.heard().empty());
    }
    EXPECT_FALSE(lamp.setProperty("brightness", "bright"));
    EXPECT_EQ(static_cast<const Lamp*>(lamp.object())->brightness, 3);
    EXPECT_TRUE(lamp.property("colour").isVoid());
}

TEST(ReflectedObjectTest, AListenerMayLetGoOfTheHandle)
{
    auto lamp = std::make_unique<ReflectedObject>(makeLamp());
    const qua::Connection connection =
        PropertyChangeNotifier::connectChanging([&lamp](const auto&, const auto&) { lamp.reset(); });
    EXPECT_TRUE(lamp->setProperty("brightness", 4));
    EXPECT_EQ(lamp, nullptr);
}

TEST(PropertyChangeNotifierTest, AnnouncesAtBothEnds)
{
    const ReflectedObject lamp = makeLamp();
    const Announcements announcements;
    {
        const PropertyChangeNotifier notifier(lamp, {PropertyChangeNotifier::ALL_PROPERTIES});
        EXPECT_EQ(announcements.heard(), Heard{"changing *"});
    }
    EXPECT_EQ(announcements.heard(), (Heard{"changing *", "changed *"}));
}

TEST(PropertyChangeNotifierTest, AnnouncesTheEndOfAChangeThatThrows)
{
    const ReflectedObject lamp = makeLamp();
    const Announcements announcements;
    try
    {
        const PropertyChangeNotifier notifier(lamp, {"brightness"});
        throw std::runtime_error("in the middle of the change");
    }
    catch (const std::runtime_error&)
    {
    }
    EXPECT_EQ(announcements.heard(), (Heard{"changing brightness", "changed brightness"}));
}

TEST(PropertyChangeNotifierTest, OfAnEmptyObjectNothingIsAnnounced)
{
    const Announcements announcements;
    {
        const PropertyChangeNotifier notifier(ReflectedObject(), {"*"});
    }
    EXPECT_TRUE(announcements.heard().empty());
}

TEST(PropertyChangeNotifierTest, ListenersHearWhoChangesAndWhat)
{
    const ReflectedObject lamp = makeLamp();
    int calls = 0;
    const qua::Connection connection = PropertyChangeNotifier::connectChanged(
        [&](const ReflectedObject& object, const std::vector<std::string>& properties)
        {
            ++calls;
            EXPECT_EQ(object, lamp);
            EXPECT_EQ(properties, (Heard{"brightness", "kind"}));
        });
    {
        const PropertyChangeNotifier notifier(lamp, {"brightness", "kind"});
    }
    EXPECT_EQ(calls, 1);
}

TEST(PropertyChangeNotifierTest, AListenerThatThrowsAtTheEndKeepsNothingFromTheOthers)
{
    const qua::Connection connection = PropertyChangeNotifier::connectChanged(
        [](const auto&, const auto&) { throw std::runtime_error("out of a listener"); });
    const Announcements announcements;
    {
        const PropertyChangeNotifier notifier(makeLamp(), {"kind"});
    }
    EXPECT_EQ(announcements.heard(), (Heard{"changing kind", "changed kind"}));
}

TEST(PropertyChangeNotifierTest, AListenerThatThrowsAtTheBeginningEndsTheChange)
{
    const Announcements announcements;
    const qua::Connection connection = PropertyChangeNotifier::connectChanging(
        [](const auto&, const auto&) { throw std::runtime_error("not now"); });
    EXPECT_THROW(const PropertyChangeNotifier notifier(makeLamp(), {"kind"}), std::runtime_error);
    EXPECT_EQ(announcements.heard(), (Heard{"changing kind", "changed kind"}));
}

TEST(PropertyChangeNotifierTest, ListenersConnectDisconnectAndReenter)
{
    const std::size_t before = PropertyChangeNotifier::listenerCount();
    {
        const ReflectedObject lamp = makeLamp();
        qua::Connection own;
        std::vector<qua::Connection> more;
        int laterCalls = 0;
        own = PropertyChangeNotifier::connectChanging(
            [&](const ReflectedObject& object, const std::vector<std::string>&)
            {
                own.disconnect();
                more.push_back(
                    PropertyChangeNotifier::connectChanged([&](const auto&, const auto&) { ++laterCalls; }));
                EXPECT_TRUE(object.setProperty("brightness", 5));
            });
        const Announcements announcements;
        {
            const PropertyChangeNotifier notifier(lamp, {"kind"});
        }
        EXPECT_EQ(announcements.heard(),
                  (Heard{"changing brightness", "changed brightness", "changing kind", "changed kind"}));
        EXPECT_EQ(laterCalls, 2);
        EXPECT_EQ(PropertyChangeNotifier::listenerCount(), before + 3);
    }
    EXPECT_EQ(PropertyChangeNotifier::listenerCount(), before);
    EXPECT_FALSE(PropertyChangeNotifier::connectChanged({}).connected());
    EXPECT_FALSE(PropertyChangeNotifier::connectChanging({}).connected());
}

TEST(SetterFlagTest, FlagsCombine)
{
    qua::Flags<tern::SetterFlag> flags = tern::SetterFlag::Interactive;
    EXPECT_FALSE(flags.contains(tern::SetterFlag::NoUndo));
    flags |= tern::SetterFlag::NoUndo;
    EXPECT_EQ(flags.bits(), 3U);
    EXPECT_TRUE(qua::Flags<tern::SetterFlag>().empty());
}

} // namespace
