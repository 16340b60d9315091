#include "qua/signal.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace
{

TEST(SignalTest, CallsSlotsInTheOrderOfConnection)
{
    qua::Signal<void(int)> signal;
    std::vector<int> calls;
    const qua::Connection first = signal.connect([&](int value) { calls.push_back(value); });
    const qua::Connection second = signal.connect([&](int value) { calls.push_back(value * 10); });

    signal(4);

    EXPECT_EQ(calls, (std::vector{4, 40}));
}

TEST(SignalTest, DisconnectingReleasesTheCallableAtOnce)
{
    qua::Signal<void()> signal;
    auto captured = std::make_shared<int>(1);
    qua::Connection connection = signal.connect([captured] {});
    ASSERT_EQ(captured.use_count(), 2);

    connection.disconnect();

    EXPECT_EQ(captured.use_count(), 1);
    EXPECT_FALSE(connection.connected());
}

} // namespace
