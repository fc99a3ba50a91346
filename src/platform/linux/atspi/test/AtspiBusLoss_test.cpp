// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/AtspiAccessibility.h"
#include "platform/linux/atspi/test/DesktopFixture.h"

#include <QDBusConnectionInterface>

#include <csignal>

namespace lorvane {
namespace {

class AtspiBusLossTest : public AtspiDesktopTest {
 protected:
    TestFoundation world;
    AtspiAccessibility accessibility{world.foundation, bus, accessibilitySwitch, [] { return true; },
                                     QDBusConnection::sessionBus()};
};

// The launcher takes its bus with it; the next call starts both again.
TEST_F(AtspiBusLossTest, ABusThatDiesIsNoticedAndReachedAgain) {
    ASSERT_TRUE(accessibility.isTrusted());
    int lost = 0;
    const Handle watch = accessibility.subscribe([&] { lost += accessibility.isTrusted() ? 0 : 1; });
    const uint launcher =
        QDBusConnection::sessionBus().interface()->servicePid(QStringLiteral("org.a11y.Bus")).value();
    ASSERT_GT(launcher, 1U);
    ::kill(static_cast<pid_t>(launcher), SIGTERM);
    ASSERT_TRUE(until([&] { return lost > 0; }));
    ASSERT_TRUE(until([&] { return accessibility.isTrusted(); })) << "connected: " << bus.isConnected();
    const Program fields(QStringLiteral(QT_FIELDS));
    EXPECT_TRUE(reads(fields.id(), 0, 0, QString()));
}

} // namespace
} // namespace lorvane
