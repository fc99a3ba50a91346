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

const QString program = QStringLiteral("org.example.dictation");

ShortcutGuard::Owner ownerOf(const QStringList& names, const QString& programName = program) {
    return {QStringLiteral("lorvane"), names, programName, QStringLiteral(":1.99999")};
}

void dieOnWatch(const QStringList& names, const QString& programName = program) {
    const pid_t child = fork();
    if (child == 0) {
        const ShortcutGuard guard(ownerOf(names, programName));
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

TEST(ShortcutGuard, LeavesTheShortcutsOfARunThatHasStartedSinceAlone) {
    FakeKGlobalAccel service;
    service.appear();
    QDBusConnection bus = QDBusConnection::sessionBus();
    // This process is the later run, and stays it: a guard may look late.
    const QString later = QStringLiteral("org.example.dictation.later");
    ASSERT_TRUE(bus.registerService(later));
    dieOnWatch({"one"}, later);
    // A guard of the run itself does its work, and begins later.
    const ShortcutGuard::Owner self{QStringLiteral("lorvane"), {"its own"}, later, bus.baseService()};
    const pid_t child = fork();
    if (child == 0) {
        const ShortcutGuard guard(self);
        kill(getpid(), SIGKILL);
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_TRUE(waitUntil([&] { return service.unregistered.contains("its own"); }));
    EXPECT_EQ(service.unregistered, QStringList{"its own"});
}

TEST(ShortcutGuard, StandsDownAtAProperEnd) {
    FakeKGlobalAccel service;
    service.appear();
    {
        const ShortcutGuard guard(ownerOf({"one", "two", "three"}));
        ASSERT_TRUE(guard.isOnWatch());
    }
    // A guard that begins later is through by then.
    dieOnWatch({"last"});
    EXPECT_TRUE(waitUntil([&] { return service.unregistered.contains("last"); }));
    EXPECT_EQ(service.unregistered, QStringList{"last"});
}

} // namespace

} // namespace lorvane
