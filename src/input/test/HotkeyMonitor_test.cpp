// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/HotkeyMonitor.h"

#include "base/testing/VirtualClock.h"
#include "input/testing/FakeKeyEvents.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

constexpr int letterC = 8;

class HotkeyMonitorTest : public ::testing::Test {
 protected:
    void SetUp() override {
        monitor.onHoldBegan = [this] { gestures.append("began"); };
        monitor.onHoldEnded = [this](bool wasTap) { gestures.append(wasTap ? "tap" : "ended"); };
        monitor.onInterrupted = [this] { gestures.append("interrupted"); };
        monitor.onToggle = [this] { gestures.append("toggle"); };
        monitor.start();
    }
    void hold(Hotkey key, double time) {
        keys.press(key);
        clock.advance(seconds(time));
        keys.release(key);
    }

    VirtualClock clock;
    FakeKeyEvents keys{clock};
    HotkeyMonitor monitor{keys};
    QStringList gestures;
};

TEST_F(HotkeyMonitorTest, HoldsRightCommandAndTogglesByRightOptionAtFirst) {
    EXPECT_EQ(monitor.hotkey, Hotkey::rightCommand);
    EXPECT_EQ(monitor.toggleHotkey, Hotkey::rightOption);
    EXPECT_EQ(HotkeyMonitor::tapThreshold, 0.35);
}

TEST_F(HotkeyMonitorTest, HoldBeginsAtThePress) {
    keys.press(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList({"began"}));
}

TEST_F(HotkeyMonitorTest, PressOf034SecondsIsATap) {
    hold(Hotkey::rightCommand, 0.34);
    EXPECT_EQ(gestures, QStringList({"began", "tap"}));
}

TEST_F(HotkeyMonitorTest, PressOf035SecondsIsAHold) {
    hold(Hotkey::rightCommand, 0.35);
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
}

TEST_F(HotkeyMonitorTest, DurationIsThatOfTheKeysAndNotOfTheirArrival) {
    const auto at = [](int milliseconds) { return Instant(std::chrono::milliseconds(milliseconds)); };
    keys.send({KeyEventKind::flagsChanged, keyCode::rightCommand, modifierFlag::command, at(100)});
    clock.jump(seconds(5));
    keys.send({KeyEventKind::flagsChanged, keyCode::rightCommand, 0, at(200)});
    EXPECT_EQ(gestures, QStringList({"began", "tap"}));
}

TEST_F(HotkeyMonitorTest, ShortPressOfTheHandsFreeKeyToggles) {
    hold(Hotkey::rightOption, 0.34);
    EXPECT_EQ(gestures, QStringList({"toggle"}));
}

TEST_F(HotkeyMonitorTest, HandsFreeKeyYieldsNothingBeforeItsRelease) {
    keys.press(Hotkey::rightOption);
    clock.advance(seconds(0.3));
    EXPECT_EQ(gestures, QStringList());
}

TEST_F(HotkeyMonitorTest, PressOfTheHandsFreeKeyOf035SecondsYieldsNothing) {
    hold(Hotkey::rightOption, 0.35);
    EXPECT_EQ(gestures, QStringList());
}

TEST_F(HotkeyMonitorTest, ChordWithTheHandsFreeKeyIsNoTap) {
    keys.press(Hotkey::rightOption);
    keys.keyDown(letterC);
    keys.release(Hotkey::rightOption);
    EXPECT_EQ(gestures, QStringList());
}

TEST_F(HotkeyMonitorTest, TapOfTheHandsFreeKeyAfterAChordTogglesAgain) {
    keys.press(Hotkey::rightOption);
    keys.keyDown(letterC);
    keys.release(Hotkey::rightOption);
    hold(Hotkey::rightOption, 0.1);
    EXPECT_EQ(gestures, QStringList({"toggle"}));
}

TEST_F(HotkeyMonitorTest, ChordWithinASecondInterruptsAndTheReleaseIsSilent) {
    keys.press(Hotkey::rightCommand);
    clock.advance(seconds(0.999));
    keys.keyDown(letterC);
    keys.release(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList({"began", "interrupted"}));
}

TEST_F(HotkeyMonitorTest, KeyOneSecondIntoAHoldIsIgnored) {
    keys.press(Hotkey::rightCommand);
    clock.advance(seconds(1.0));
    keys.keyDown(letterC);
    keys.release(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
}

TEST_F(HotkeyMonitorTest, OnlyTheFirstKeyOfAChordInterrupts) {
    keys.press(Hotkey::rightCommand);
    keys.keyDown(letterC);
    keys.keyDown(letterC);
    EXPECT_EQ(gestures, QStringList({"began", "interrupted"}));
}

TEST_F(HotkeyMonitorTest, AnotherModifierIsNoChord) {
    keys.press(Hotkey::rightCommand);
    keys.press(Hotkey::rightShift);
    keys.release(Hotkey::rightShift);
    clock.advance(seconds(1));
    keys.release(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
}

TEST_F(HotkeyMonitorTest, TypingInOwnWindowsInterruptsNothing) {
    keys.programHasFocus = true;
    keys.press(Hotkey::rightCommand);
    EXPECT_FALSE(keys.keyDown(letterC));
    keys.release(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList({"began", "tap"}));
}

TEST_F(HotkeyMonitorTest, LeftTwinAloneStartsNothing) {
    keys.pressLeftTwin(Hotkey::rightCommand);
    keys.releaseLeftTwin(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList());
}

TEST_F(HotkeyMonitorTest, ReleaseUnderTheHeldLeftTwinReadsAsAPress) {
    keys.press(Hotkey::rightCommand);
    keys.pressLeftTwin(Hotkey::rightCommand);
    keys.release(Hotkey::rightCommand);
    keys.releaseLeftTwin(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList({"began"}));
    hold(Hotkey::rightCommand, 0.5); // the press is one more of a hold in progress, the release ends it
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
}

TEST_F(HotkeyMonitorTest, PressWithoutReleaseBeforeItBeginsNoSecondHold) {
    const KeyEvent press{KeyEventKind::flagsChanged, keyCode::rightCommand, modifierFlag::command,
                         clock.now()};
    keys.send(press);
    keys.send(press);
    EXPECT_EQ(gestures, QStringList({"began"}));
}

TEST_F(HotkeyMonitorTest, ReleaseWithoutPressIsIgnored) {
    keys.send({KeyEventKind::flagsChanged, keyCode::rightCommand, 0, clock.now()});
    keys.send({KeyEventKind::flagsChanged, keyCode::rightOption, 0, clock.now()});
    EXPECT_EQ(gestures, QStringList());
}

TEST_F(HotkeyMonitorTest, SameKeyForBothGesturesHolds) {
    monitor.toggleHotkey = Hotkey::rightCommand;
    hold(Hotkey::rightCommand, 0.1);
    EXPECT_EQ(gestures, QStringList({"began", "tap"}));
}

TEST_F(HotkeyMonitorTest, WithoutAHandsFreeKeyItsKeyDoesNothing) {
    monitor.toggleHotkey = std::nullopt;
    hold(Hotkey::rightOption, 0.1);
    EXPECT_EQ(gestures, QStringList());
}

TEST_F(HotkeyMonitorTest, EachKeyCanBeTheHoldKey) {
    monitor.toggleHotkey = std::nullopt;
    for (const Hotkey hotkey : allHotkeys) {
        gestures.clear();
        monitor.hotkey = hotkey;
        hold(hotkey, 0.5);
        EXPECT_EQ(gestures, QStringList({"began", "ended"})) << rawName(hotkey).data();
    }
}

TEST_F(HotkeyMonitorTest, ChangeOfTheHoldKeyDuringAHoldWaitsForTheNewKeysRelease) {
    keys.press(Hotkey::rightCommand);
    monitor.hotkey = Hotkey::rightControl;
    keys.release(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList({"began"}));
    hold(Hotkey::rightControl, 0.5);
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
}

TEST_F(HotkeyMonitorTest, StopDuringAHoldIsSilent) {
    keys.press(Hotkey::rightCommand);
    monitor.stop();
    keys.release(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList({"began"}));
    EXPECT_EQ(keys.monitorCount(), 0U);
}

TEST_F(HotkeyMonitorTest, ReleaseAfterARestartDuringAHoldIsIgnored) {
    keys.press(Hotkey::rightCommand);
    monitor.start();
    keys.release(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList({"began"}));
}

TEST_F(HotkeyMonitorTest, StopLeavesThePressOfTheHandsFreeKeyAsItIs) {
    keys.press(Hotkey::rightOption);
    monitor.stop();
    monitor.start();
    keys.release(Hotkey::rightOption);
    EXPECT_EQ(gestures, QStringList({"toggle"}));
}

TEST_F(HotkeyMonitorTest, StartingAgainWatchesOnce) {
    monitor.start();
    monitor.start();
    EXPECT_EQ(keys.monitorCount(), 3U);
    keys.press(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList({"began"}));
}

TEST_F(HotkeyMonitorTest, CallbackMayStopTheMonitor) {
    monitor.onHoldBegan = [this] { monitor.stop(); };
    keys.press(Hotkey::rightCommand);
    keys.release(Hotkey::rightCommand);
    EXPECT_EQ(gestures, QStringList());
}

TEST_F(HotkeyMonitorTest, GestureWithoutCallbackIsDropped) {
    monitor.onHoldBegan = nullptr;
    monitor.onHoldEnded = nullptr;
    monitor.onToggle = nullptr;
    hold(Hotkey::rightCommand, 0.5);
    hold(Hotkey::rightOption, 0.1);
    EXPECT_EQ(gestures, QStringList());
}

TEST(HotkeyMonitor, EndsItsWatchesWithItself) {
    VirtualClock clock;
    FakeKeyEvents keys(clock);
    {
        HotkeyMonitor monitor(keys);
        monitor.start();
        EXPECT_EQ(keys.monitorCount(), 3U);
    }
    EXPECT_EQ(keys.monitorCount(), 0U);
    keys.press(Hotkey::rightCommand);
}

} // namespace

} // namespace lorvane
