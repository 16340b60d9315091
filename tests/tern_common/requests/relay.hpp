#pragma once

/// With this environment variable the test program acts as an editor that opens nothing itself: it hands the
/// resources of its command line to a new process of its own.
inline constexpr const char* RELAY = "TERN_TEST_RELAY";
/// With this value of it, the program first puts a new file in its own place, as an update does.
inline constexpr const char* AFTER_UPDATE = "after update";
