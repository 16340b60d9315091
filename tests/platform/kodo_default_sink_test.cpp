// A program of its own: the other test programs register a sink for all their time.

#include "kodo/core/debug_message_helper.hpp"

#include <gtest/gtest.h>

#include <string>

namespace
{

using Kodo::DebugMessageHelper;
using Kodo::DebugMessageSink;

template <class Action>
std::string standardErrorOf(Action action)
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

TEST(DefaultSinkTest, WithoutASinkMessagesGoToStandardError)
{
    const std::string written =
        standardErrorOf([] { DebugMessageHelper(0, 5).message("the lamp {} is out"); });

    EXPECT_NE(written.find("[tern] [error] the lamp {} is out\n"), std::string::npos) << written;
}

TEST(DefaultSinkTest, MessagesOfEveryPriorityAreWritten)
{
    for (int priority = -1; priority <= 11; ++priority)
    {
        const std::string written =
            standardErrorOf([priority] { DebugMessageHelper(0, priority).message("lamp"); });
        EXPECT_NE(written.find("lamp\n"), std::string::npos) << "of priority " << priority;
    }
}

TEST(DefaultSinkTest, CriticalMessagesAreMarked)
{
    const std::string written = standardErrorOf([] { DebugMessageHelper().criticalMessage("lamp %d", 5); });

    EXPECT_NE(written.find("[critical] lamp 5"), std::string::npos) << written;
}

TEST(DefaultSinkTest, ASinkTakesThePlaceOfStandardErrorWhileItIsThere)
{
    const std::string written = standardErrorOf(
        []
        {
            const DebugMessageSink sink([](const Kodo::DebugMessage&) {}, 5);
            DebugMessageHelper(0, 5).message("heard");
            DebugMessageHelper(0, 4).message("not heard");
            DebugMessageHelper().criticalMessage("critical");
        });
    EXPECT_EQ(written, "");

    EXPECT_NE(standardErrorOf([] { DebugMessageHelper(0, 4).message("again"); }).find("again"),
              std::string::npos);
}

} // namespace
