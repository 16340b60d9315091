#include "tern_common/command_object.hpp"

#include "tests/support/reports.hpp"

#include <gtest/gtest.h>
