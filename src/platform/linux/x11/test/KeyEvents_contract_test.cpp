// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/testing/KeyEventsContract.h"
#include "platform/linux/x11/X11KeyEvents.h"
#include "platform/linux/x11/test/X11DesktopFixture.h"

namespace lorvane {

namespace {

int placeOf(Hotkey key) {
    switch (key) {
    case Hotkey::rightCommand:
        return keycode::rightSuper;
    case Hotkey::rightOption:
        return keycode::rightAlt;
    case Hotkey::rightShift:
        return keycode::rightShift;
    case Hotkey::rightControl:
        return keycode::rightControl;
    case Hotkey::fn:
        break;
    }
    return keycode::menu;
}

int leftPlaceOf(Hotkey key) {
    constexpr int leftSuper = 133;
    constexpr int leftAlt = 64;
    switch (key) {
    case Hotkey::rightCommand:
        return leftSuper;
    case Hotkey::rightOption:
        return leftAlt;
    case Hotkey::rightShift:
        return keycode::leftShift;
    default:
        return keycode::leftControl;
    }
}

struct RealKeyboard {
    void press(Hotkey key) { hand.press(placeOf(key)); }
    void release(Hotkey key) { hand.release(placeOf(key)); }
    void pressLeftTwin(Hotkey key) { hand.press(leftPlaceOf(key)); }
    void releaseLeftTwin(Hotkey key) { hand.release(leftPlaceOf(key)); }
    void tapEscape() { hand.tap(keycode::escape); }
    void tapLetter() { hand.tap(keycode::letterA); }
    // What went before still belongs to the focus as it was.
    void setOwnFocus(bool focus) {
        settle();
        ownFocus = focus;
    }
    void settle() { connection.sync(); }

    QtClock clock;
    MemoryPreferenceStore store;
    Preferences preferences{store};
    Localisation words;
    DiagnosticLog log{clock, std::nullopt, [](const QString&) {}};
    X11Connection connection{log};
    PhysicalKeyboard hand;
    bool ownFocus = false;
    X11KeyEvents keys{connection, {clock, preferences, words, log}, [this] { return ownFocus; }};
};

INSTANTIATE_TYPED_TEST_SUITE_P(X11, KeyEventsContract, RealKeyboard);

} // namespace

} // namespace lorvane
