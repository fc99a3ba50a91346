// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/AtspiAccessibility.h"
#include "platform/linux/atspi/test/DesktopFixture.h"

#include <QDBusPendingCall>
#include <QDBusVariant>

namespace lorvane {
namespace {

class AtspiAccessibilityTest : public AtspiDesktopTest {
 protected:
    static void setSwitch(bool on) {
        auto set = QDBusMessage::createMethodCall(
            QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
            QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"));
        set.setArguments({QStringLiteral("org.a11y.Status"), QStringLiteral("IsEnabled"),
                          QVariant::fromValue(QDBusVariant(on))});
        QDBusConnection::sessionBus().call(set);
    }

    TestFoundation world;
    bool keys = true;
    AtspiAccessibility accessibility{world.foundation, bus, accessibilitySwitch, [this] { return keys; },
                                     QDBusConnection::sessionBus()};
};

TEST_F(AtspiAccessibilityTest, TrustedNeedsTheBusTheSwitchAndKeys) {
    EXPECT_TRUE(accessibility.isTrusted());
    keys = false;
    EXPECT_FALSE(accessibility.isTrusted());
}

TEST_F(AtspiAccessibilityTest, TheSwitchIsFollowedAndSwitchedOnAgainByTheUsersConsent) {
    int told = 0;
    const Handle watch = accessibility.subscribe([&told] { ++told; });
    setSwitch(false);
    EXPECT_TRUE(until([this] { return !accessibility.isTrusted(); }));
    EXPECT_EQ(told, 1);
    accessibility.openAccessibilitySettings();
    EXPECT_TRUE(until([this] { return accessibility.isTrusted(); }));
    EXPECT_EQ(told, 2);
    ASSERT_EQ(world.lines.size(), 1);
    EXPECT_TRUE(world.lines.first().contains(QStringLiteral("Accessibility is switched on now")));
}

TEST_F(AtspiAccessibilityTest, ASilentApplicationMaySwitchItOn) {
    setSwitch(false);
    EXPECT_TRUE(until([this] { return !accessibility.isTrusted(); }));
    access.requestManualAccessibility(1);
    EXPECT_TRUE(until([this] { return accessibility.isTrusted(); }));
}

TEST_F(AtspiAccessibilityTest, WithoutSyntheticKeysTheAdviceIsTheSession) {
    keys = false;
    accessibility.openAccessibilitySettings();
    ASSERT_EQ(world.lines.size(), 1);
    EXPECT_TRUE(world.lines.first().contains(QStringLiteral("X11")));
}

} // namespace
} // namespace lorvane
