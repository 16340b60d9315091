#pragma once

#include "kodo/core/async_manager.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "qua/signal.hpp"

/// What the module offers by name to the test that loads it. Everything it hands out keeps the module's code
/// in the process's structures until it is dropped.
struct PlatformTestModule
{
    qua::Connection (*connectSlot)(qua::Signal<void(int)>& signal, int& sum);
    /// The slot cuts the connection it is given in its first call.
    void (*connectSlotThatCutsItself)(qua::Signal<void(int)>& signal, qua::Connection& connection, int& sum);
    Kodo::DebugMessageSink (*makeSink)(int& count);
    /// Casts a value of a type that only the module knows to an integer; -1 when that fails.
    int (*convertOwnType)();
    /// Opens and closes a profiling scope whose texts are the module's.
    void (*profile)();
    /// Emits a signal that the module made and connected itself.
    int (*emitOwnSignal)();
    /// Schedules work that counts.
    Kodo::AsyncManager::Job (*scheduleJob)(int& count);
    /// Counts what is announced of objects that change.
    qua::Connection (*connectChanged)(int& count);
    /// Sets a property of an object of the module's own, which it registered when it was loaded, and gives
    /// the value read back.
    int (*setOwnProperty)(int value);
};

extern "C" using PlatformTestModuleEntry = void(PlatformTestModule & module);
