#include "tests/platform/module/platform_test_module.hpp"

#include "kodo/core/stack_tracker.hpp"
#include "qua/symbol_visibility.hpp"
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

} // namespace

extern "C" QUA_SYMBOL_EXPORT void platformTestModule(PlatformTestModule& module)
{
    module.connectSlot = &connectSlot;
    module.connectSlotThatCutsItself = &connectSlotThatCutsItself;
    module.makeSink = &makeSink;
    module.convertOwnType = &convertOwnType;
    module.profile = &profile;
    module.emitOwnSignal = &emitOwnSignal;
}
