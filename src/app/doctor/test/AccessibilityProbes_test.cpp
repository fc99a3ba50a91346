// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/AccessibilityProbes.h"
#include "platform/linux/atspi/test/DesktopFixture.h"

#include <QDBusConnection>

namespace lorvane {
namespace {

class AccessibilityProbesTest : public AtspiDesktopTest {
 protected:
    AccessibilityProbesTest() {
        addAccessibilityProbes(probes, bus, clock, QDBusConnection::sessionBus());
        addTrayProbe(probes, QDBusConnection::sessionBus());
    }
    std::optional<WindowFields> fieldsOf(ProcessId process) {
        const auto all =
            finish<std::vector<WindowFields>>([&](TaskScope scope) { return probes.windowFields(scope); });
        for (const auto& one : all) {
            if (one.process == process) {
                return one;
            }
        }
        return std::nullopt;
    }

    DoctorProbes probes;
};

TEST_F(AccessibilityProbesTest, WithoutASessionBusThereIsNoTrayAndNobodyIsWaitedFor) {
    DoctorProbes lonely;
    addTrayProbe(lonely, QDBusConnection(QStringLiteral("nowhere")));
    EXPECT_FALSE(finish<bool>([&](TaskScope scope) { return lonely.tray(scope); }));
}

TEST_F(AccessibilityProbesTest, TheBusAndTheSwitchAreTold) {
    const auto facts =
        finish<AccessibilityFacts>([&](TaskScope scope) { return probes.accessibility(scope); });
    EXPECT_TRUE(facts.busAnswers);
    EXPECT_TRUE(facts.isSwitchedOn);
}

TEST_F(AccessibilityProbesTest, WithoutAWatcherThereIsNoTray) {
    EXPECT_FALSE(finish<bool>([&](TaskScope scope) { return probes.tray(scope); }));
}

TEST_F(AccessibilityProbesTest, FieldsOfOpenWindowsAreCountedPasswordsLeftOut) {
    for (const auto& [program, argument] :
         {std::make_pair(QStringLiteral(QT_FIELDS), QString()),
          std::make_pair(QStringLiteral(GTK_FIELDS), QStringLiteral("3"))}) {
        const Program fields(program, {argument});
        std::optional<WindowFields> seen;
        EXPECT_TRUE(until([&] {
            seen = fieldsOf(fields.id());
            return seen && seen->readable == 2 && seen->writable == 2;
        })) << program.toStdString()
            << ": readable " << (seen ? seen->readable : -1) << ", writable " << (seen ? seen->writable : -1);
    }
}

TEST_F(AccessibilityProbesTest, AProgramThatShowsNothingHasNoFields) {
    const Program terminal(QStringLiteral("xterm"));
    EXPECT_FALSE(fieldsOf(terminal.id()));
}

TEST_F(AccessibilityProbesTest, AProgramIsToldByWhatItIsMadeOf) {
    const Program fields(QStringLiteral(QT_FIELDS));
    EXPECT_TRUE(until([&] { return probes.programOf(fields.id()) == WindowProgram::qt; }));
    const Program other(QStringLiteral(GTK_FIELDS), {QStringLiteral("3")});
    EXPECT_EQ(probes.programOf(other.id()), WindowProgram::unknown);
}

} // namespace
} // namespace lorvane
