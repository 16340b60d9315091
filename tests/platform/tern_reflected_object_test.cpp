#include "tern/reflected_object.hpp"

#include "qua/flags.hpp"
#include "tern/property_change_notifier.hpp"
#include "tern/setter_flag.hpp"
#include "tests/platform/reflected_lamp.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using tern::PropertyChangeNotifier;
using tern::ReflectedObject;

namespace
{

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
