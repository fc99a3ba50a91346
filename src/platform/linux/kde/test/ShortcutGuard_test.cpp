// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/ShortcutGuard.h"

#include "platform/linux/kde/test/FakeKGlobalAccel.h"
#include "support/Wait.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lorvane {

namespace {

void dieOnWatch(const QStringList& names) {
    const pid_t child = fork();
    if (child == 0) {
        const ShortcutGuard guard(QStringLiteral("lorvane"), names);
        kill(getpid(), SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
}

TEST(ShortcutGuard, LetsShortcutsGoWhenItsProcessIsKilled) {
    FakeKGlobalAccel service;
    service.appear();
    dieOnWatch({"one", "two words"});
    EXPECT_TRUE(waitUntil([&] { return service.calls == QStringList({"unregister", "unregister"}); }));
}

TEST(ShortcutGuard, StandsDownAtAProperEnd) {
    FakeKGlobalAccel service;
    service.appear();
    {
        const ShortcutGuard guard(QStringLiteral("lorvane"), {"one", "two", "three"});
        ASSERT_TRUE(guard.isOnWatch());
    }
    // A guard that begins later is through by then.
    dieOnWatch({"last"});
    EXPECT_TRUE(waitUntil([&] { return service.unregistered.contains("last"); }));
    EXPECT_EQ(service.unregistered, QStringList{"last"});
}

} // namespace

} // namespace lorvane
