// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/EndSignals.h"

#include <QEventLoop>
#include <gtest/gtest.h>

#include <csignal>

namespace lorvane {

namespace {

void deliver() { QEventLoop().processEvents(); }

bool isDefault(int signal) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_DFL;
}

TEST(EndSignals, EachOfThemEndsTheProgramOnTheMainThread) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        int ends = 0;
        const EndSignals signals([&ends] { ++ends; });
        ASSERT_EQ(raise(signal), 0);
        EXPECT_EQ(ends, 0) << "inside the signal " << signal;
        deliver();
        EXPECT_EQ(ends, 1) << signal;
    }
}

TEST(EndSignals, SecondSignalEndsNothingTwice) {
    int ends = 0;
    const EndSignals signals([&ends] { ++ends; });
    raise(SIGTERM);
    raise(SIGHUP);
    deliver();
    raise(SIGTERM);
    deliver();
    EXPECT_EQ(ends, 1);
}

TEST(EndSignals, AfterItsEndTheSignalsDoAsTheyEverDid) {
    {
        const EndSignals signals([] {});
        EXPECT_FALSE(isDefault(SIGTERM));
    }
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        EXPECT_TRUE(isDefault(signal)) << signal;
    }
}

} // namespace

} // namespace lorvane
