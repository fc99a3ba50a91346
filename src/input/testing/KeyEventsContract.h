// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/Hotkey.h"
#include "input/KeyEvents.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lorvane {

/// What every source of key events keeps. `Keyboard` is default constructible and has `clock` and `keys` (the
/// source), `press`, `release`, `pressLeftTwin` and `releaseLeftTwin` of a Hotkey, `tapEscape`, `tapLetter`,
/// `setOwnFocus`, and `settle`, after which everything that was done has been told.
template <typename Keyboard>
class KeyEventsContract : public ::testing::Test {
 protected:
    static constexpr Hotkey hotkeys[]{Hotkey::rightCommand, Hotkey::rightOption, Hotkey::rightShift,
                                      Hotkey::rightControl, Hotkey::fn};

    void watchGlobally(KeyEventKind kind) {
        monitors.push_back(
            keyboard.keys.addGlobalMonitor(kind, [this](const KeyEvent& event) { global.push_back(event); }));
    }
    void watchLocally(KeyEventKind kind) {
        monitors.push_back(keyboard.keys.addLocalMonitor(kind, [this](const KeyEvent& event) {
            local.push_back(event);
            return true;
        }));
    }
    void tap(Hotkey key) {
        keyboard.press(key);
        keyboard.settle();
        keyboard.release(key);
        keyboard.settle();
    }

    Keyboard keyboard;
    std::vector<KeyEvent> global;
    std::vector<KeyEvent> local;
    std::vector<Handle> monitors;
};
TYPED_TEST_SUITE_P(KeyEventsContract);

TYPED_TEST_P(KeyEventsContract, HotkeysAreToldGoingDownAndUp) {
    this->watchGlobally(KeyEventKind::flagsChanged);
    for (const Hotkey key : this->hotkeys) {
        this->global.clear();
        this->tap(key);
        ASSERT_EQ(this->global.size(), 2U) << codeOf(key);
        for (const KeyEvent& event : this->global) {
            EXPECT_EQ(event.kind, KeyEventKind::flagsChanged);
            EXPECT_EQ(event.keyCode, codeOf(key));
        }
        EXPECT_EQ(this->global[0].flags, maskOf(key));
        EXPECT_EQ(this->global[1].flags, 0U);
    }
}

TYPED_TEST_P(KeyEventsContract, BitStaysWhileTheLeftTwinIsDown) {
    this->watchGlobally(KeyEventKind::flagsChanged);
    for (const Hotkey key :
         {Hotkey::rightCommand, Hotkey::rightOption, Hotkey::rightShift, Hotkey::rightControl}) {
        this->global.clear();
        this->keyboard.pressLeftTwin(key);
        this->tap(key);
        this->keyboard.releaseLeftTwin(key);
        this->keyboard.settle();
        // A source may tell the key itself once more when its bit goes at last.
        ASSERT_GE(this->global.size(), 4U) << codeOf(key);
        EXPECT_NE(this->global[0].keyCode, codeOf(key));
        EXPECT_EQ(this->global[3].keyCode, this->global[0].keyCode);
        EXPECT_EQ(this->global[2].keyCode, codeOf(key));
        EXPECT_EQ(this->global[2].flags, maskOf(key));
        EXPECT_EQ(this->global[3].flags, 0U);
    }
}

TYPED_TEST_P(KeyEventsContract, OtherKeysAreToldOnceWithTheModifiersThatAreDown) {
    this->watchGlobally(KeyEventKind::keyDown);
    this->keyboard.press(Hotkey::rightControl);
    this->keyboard.press(Hotkey::rightShift);
    this->keyboard.tapEscape();
    this->keyboard.release(Hotkey::rightShift);
    this->keyboard.release(Hotkey::rightControl);
    this->keyboard.tapLetter();
    this->keyboard.settle();
    ASSERT_EQ(this->global.size(), 2U);
    EXPECT_EQ(this->global[0].kind, KeyEventKind::keyDown);
    EXPECT_EQ(this->global[0].keyCode, keyCode::escape);
    EXPECT_EQ(this->global[0].flags, modifierFlag::control | modifierFlag::shift);
    EXPECT_NE(this->global[1].keyCode, keyCode::escape);
    EXPECT_EQ(this->global[1].flags, 0U);
}

TYPED_TEST_P(KeyEventsContract, FocusDecidesBetweenGlobalAndLocalMonitors) {
    this->watchGlobally(KeyEventKind::keyDown);
    this->watchLocally(KeyEventKind::keyDown);
    this->keyboard.tapEscape();
    this->keyboard.settle();
    EXPECT_EQ(this->global.size(), 1U);
    EXPECT_EQ(this->local.size(), 0U);
    this->keyboard.setOwnFocus(true);
    this->keyboard.tapEscape();
    this->keyboard.settle();
    EXPECT_EQ(this->global.size(), 1U);
    EXPECT_EQ(this->local.size(), 1U);
}

TYPED_TEST_P(KeyEventsContract, MonitorIsToldOfItsKindAlone) {
    this->watchGlobally(KeyEventKind::keyDown);
    this->tap(Hotkey::rightControl);
    EXPECT_EQ(this->global.size(), 0U);
    this->monitors.clear();
    this->watchGlobally(KeyEventKind::flagsChanged);
    this->keyboard.tapEscape();
    this->keyboard.settle();
    EXPECT_EQ(this->global.size(), 0U);
}

TYPED_TEST_P(KeyEventsContract, MonitorsAreToldInTheOrderOfTheirAdding) {
    std::string order;
    for (const char name : {'a', 'b', 'c'}) {
        this->monitors.push_back(this->keyboard.keys.addGlobalMonitor(
            KeyEventKind::keyDown, [&order, name](const KeyEvent&) { order += name; }));
    }
    this->keyboard.tapEscape();
    this->keyboard.settle();
    EXPECT_EQ(order, "abc");
}

TYPED_TEST_P(KeyEventsContract, EndedMonitorIsNotToldNotEvenOfTheEventThatEndsIt) {
    Handle second;
    int told = 0;
    const Handle first = this->keyboard.keys.addGlobalMonitor(KeyEventKind::keyDown,
                                                              [&second](const KeyEvent&) { second.reset(); });
    second =
        this->keyboard.keys.addGlobalMonitor(KeyEventKind::keyDown, [&told](const KeyEvent&) { ++told; });
    this->keyboard.tapEscape();
    this->keyboard.tapEscape();
    this->keyboard.settle();
    EXPECT_EQ(told, 0);
}

TYPED_TEST_P(KeyEventsContract, TimesAreInOrderAndNeverAheadOfNow) {
    this->watchGlobally(KeyEventKind::flagsChanged);
    this->tap(Hotkey::rightControl);
    this->tap(Hotkey::rightOption);
    ASSERT_EQ(this->global.size(), 4U);
    for (std::size_t i = 1; i < this->global.size(); ++i) {
        EXPECT_LE(this->global[i - 1].time, this->global[i].time);
    }
    EXPECT_LE(this->global.back().time, this->keyboard.clock.now());
}

REGISTER_TYPED_TEST_SUITE_P(KeyEventsContract, HotkeysAreToldGoingDownAndUp, BitStaysWhileTheLeftTwinIsDown,
                            OtherKeysAreToldOnceWithTheModifiersThatAreDown,
                            FocusDecidesBetweenGlobalAndLocalMonitors, MonitorIsToldOfItsKindAlone,
                            MonitorsAreToldInTheOrderOfTheirAdding,
                            EndedMonitorIsNotToldNotEvenOfTheEventThatEndsIt,
                            TimesAreInOrderAndNeverAheadOfNow);

} // namespace lorvane
