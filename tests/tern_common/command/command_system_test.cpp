#include "tern_common/command_system.hpp"

#include "tests/support/reports.hpp"

#include <gtest/gtest.h>
