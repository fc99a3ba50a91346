// SPDX-License-Identifier: GPL-3.0-or-later
// KWin, once it shows the X server beside it Ctrl, Alt and Shift: gestures as under X11.
#include "desktop/program/DictationDesk.h"
#include "support/UserSession.h"

#include <QDir>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

const QString heard = QStringLiteral("Hello from the right side.");

class Sides : public DictationDesk {
 protected:
    void SetUp() override {
        session::beSetUp();
        session::showModifiersToX(true);
        // The program has folders of its own here, and the settings are the session's.
        qputenv("XDG_CONFIG_DIRS", QFile::encodeName(QDir::homePath() + QStringLiteral("/.config:/etc/xdg")));
    }
    bool comesBy(const QString& road) {
        return waitUntil([&] {
            const QString log = program->log();
            const qsizetype last = log.lastIndexOf(QStringLiteral("key 62 comes by "));
            return last >= 0 && log.mid(last).section(u'\n', 0, 0).endsWith(road);
        });
    }
    void startBySides() {
        startHearing(heard);
        ASSERT_TRUE(comesBy(QStringLiteral("with sides by XWayland"))) << program->log().toStdString();
    }
};

TEST_F(Sides, TheRightKeyIsHeldAndItsLeftTwinDoesNothing) {
    const auto editor = DesktopApp::mousepad();
    startBySides();
    hand.hold(keycode::leftControl, milliseconds(1000));
    holdFor();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
    EXPECT_EQ(takes().size(), 1U);
}

TEST_F(Sides, ATapIsToldFromAHold) {
    const auto editor = DesktopApp::mousepad();
    startBySides();
    holdFor(milliseconds(200));
    EXPECT_TRUE(goesThrough(dropped));
    tapHandsFree();
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording"))) << program->log().toStdString();
    stay(milliseconds(600));
    tapHandsFree();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
    EXPECT_EQ(takes().size(), 1U);
}

TEST_F(Sides, AChordEndsWhatBeganAndTheNextHoldIsHeardAlthoughTheXServerMissesItsPress) {
    const auto editor = DesktopApp::mousepad(QStringLiteral("old"));
    startBySides();
    hand.chord({keycode::leftControl, keycode::letterA});
    hand.chord({holdKey, keycode::letterA});
    EXPECT_TRUE(goesThrough(dropped));
    for (int i = 0; i < 2; ++i) {
        holdFor();
        EXPECT_TRUE(goesThrough(delivered)) << i;
    }
    EXPECT_EQ(takes().size(), 2U);
    EXPECT_EQ(editor->waitForText(heard + heard), heard + heard) << "the chord had selected what was there";
}

TEST_F(Sides, EscapeThrowsTheTakeAway) {
    const auto editor = DesktopApp::mousepad();
    startBySides();
    hand.press(holdKey);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    stay(milliseconds(1200));
    hand.tap(keycode::escape);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("idle")));
    hand.release(holdKey);
    EXPECT_TRUE(goesThrough(dropped));
    EXPECT_EQ(takes().size(), 0U);
}

TEST_F(Sides, TheShortcutsStayWhenTheChoiceIsTakenBack) {
    const auto editor = DesktopApp::mousepad();
    startBySides();
    session::showModifiersToX(false);
    ASSERT_TRUE(comesBy(QStringLiteral("by KDE global shortcuts"))) << program->log().toStdString();
    holdFor();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
}

} // namespace

} // namespace lorvane
