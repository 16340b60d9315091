#include "tern_common/command_parser.hpp"

#include "tests/support/reports.hpp"

#include <gtest/gtest.h>
