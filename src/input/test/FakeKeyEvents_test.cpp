// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/testing/FakeKeyEvents.h"

#include "base/testing/VirtualClock.h"
#include "input/testing/KeyEventsContract.h"

namespace lorvane {

namespace {

struct FakeKeyboard {
    void press(Hotkey key) { keys.press(key); }
    void release(Hotkey key) { keys.release(key); }
    void pressLeftTwin(Hotkey key) { keys.pressLeftTwin(key); }
    void releaseLeftTwin(Hotkey key) { keys.releaseLeftTwin(key); }
    void tapEscape() { keys.keyDown(keyCode::escape); }
    void tapLetter() { keys.keyDown(294); }
    void setOwnFocus(bool focus) { keys.programHasFocus = focus; }
    void settle() { clock.advance(std::chrono::milliseconds(1)); }

    VirtualClock clock;
    FakeKeyEvents keys{clock};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, KeyEventsContract, FakeKeyboard);

} // namespace

} // namespace lorvane
