#include "tests/platform/module/platform_test_module.hpp"

#include "kodo/core/stack_tracker.hpp"
#include "qua/symbol_visibility.hpp"
#include "tern/meta_object.hpp"
#include "tern/object.hpp"
#include "tern/property_change_notifier.hpp"
#include "tern/reflected_object.hpp"
#include "vell/variant.hpp"

#include <memory>
#include <string>
#include <typeinfo>

namespace
{

/// Known to this module alone.
struct Buoy
{
    int number = 7;
};

bool numberOf(vell::Variant& target, const vell::Variant& source)
{
    target = source.peek<Buoy>()->number;
    return true;
}

const vell::MetaType& buoyRegistered = vell::metaType<Buoy*>();
const vell::MetaType& sharedBuoyRegistered = vell::metaType<std::shared_ptr<Buoy>>();
const vell::VariantConverter converter(&typeid(std::int64_t), &typeid(Buoy*), &numberOf);

/// Captured state whose destructor is the module's code.
struct Captured
{
    std::string text = "long enough to be held by an allocation of the module's own";
};

qua::Connection connectSlot(qua::Signal<void(int)>& signal, int& sum)
{
    return signal.connect([&sum, captured = std::make_shared<Captured>()](int value) { sum += value; });
}

void connectSlotThatCutsItself(qua::Signal<void(int)>& signal, qua::Connection& connection, int& sum)
{
    connection = signal.connect(
        [&connection, &sum, captured = std::make_shared<Captured>()](int value)
        {
            connection.disconnect();
            sum += value;
        });
}

Kodo::DebugMessageSink makeSink(int& count)
{
    return Kodo::DebugMessageSink([&count, captured = std::make_shared<Captured>()](const Kodo::DebugMessage&)
                                  { ++count; });
}

int convertOwnType()
{
    Buoy buoy;
    const vell::Variant variant = &buoy;
    const vell::Variant shared = std::make_shared<Buoy>(buoy);
    int number = -1;
    return variant.tryCast(number) && shared.peek<Buoy>() != nullptr ? number : -1;
}

void profile()
{
    KODO_PROFILE_SCOPE("a scope of the module");
}

int emitOwnSignal()
{
    qua::Signal<void(int&)> signal;
    const qua::Connection connection = signal.connect([](int& value) { ++value; });
    int value = 0;
    signal(value);
    return value;
}

/// Reflected by this module alone.
class Beacon : public tern::Object
{
public:
    int flashes = 1;
};

} // namespace

template <>
class tern::StaticMetaObject<Beacon> : public tern::BaseStaticMetaObject<0>
{
public:
    StaticMetaObject() : BaseStaticMetaObject(typeid(Beacon), "Beacon", Annotations(), Bases())
    {
        addProperty({"flashes",
                     [](const Object& object) -> vell::Variant
                     { return static_cast<const Beacon&>(object).flashes; },
                     [](Object& object, const vell::Variant& value)
                     { return value.tryCast(static_cast<Beacon&>(object).flashes); },
                     Annotations()});
        MetaObjectManager::instance().registerType(*this);
    }
};

namespace
{

const tern::StaticMetaObject<Beacon>& beaconRegistered = tern::staticMetaObject<Beacon>();

Kodo::AsyncManager::Job scheduleJob(int& count)
{
    return Kodo::AsyncManager::sync(false, [&count, captured = std::make_shared<Captured>()]
                                    { return ++count == 2; });
}

qua::Connection connectChanged(int& count)
{
    return tern::PropertyChangeNotifier::connectChanged(
        [&count, captured = std::make_shared<Captured>()](const auto&, const auto&) { ++count; });
}

int setOwnProperty(int value)
{
    const tern::ReflectedObject beacon(std::make_shared<Beacon>(), beaconRegistered);
    int result = -1;
    return beacon.setProperty("flashes", value) && beacon.property("flashes").tryCast(result) ? result : -1;
}

} // namespace

extern "C" QUA_SYMBOL_EXPORT void platformTestModule(PlatformTestModule& module)
{
    module.connectSlot = &connectSlot;
    module.connectSlotThatCutsItself = &connectSlotThatCutsItself;
    module.makeSink = &makeSink;
    module.convertOwnType = &convertOwnType;
    module.profile = &profile;
    module.emitOwnSignal = &emitOwnSignal;
    module.scheduleJob = &scheduleJob;
    module.connectChanged = &connectChanged;
    module.setOwnProperty = &setOwnProperty;
}
