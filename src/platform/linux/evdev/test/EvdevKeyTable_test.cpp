// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/evdev/EvdevKeyTable.h"

#include "input/HoldKeys.h"
#include "input/Hotkey.h"
#include "input/KeyEvents.h"

#include <linux/input-event-codes.h>

#include <gtest/gtest.h>

#include <set>

namespace lorvane {

namespace {

TEST(EvdevKeyTable, EveryHotkeyHasAPlaceOfItsOwn) {
    std::set<EvdevCode> places;
    for (const Hotkey key : allHotkeys) {
        const auto place = evdevCodeOf(codeOf(key), KEY_COMPOSE);
        ASSERT_TRUE(place.has_value()) << codeOf(key);
        EXPECT_EQ(keyCodeOf(*place, KEY_COMPOSE), codeOf(key));
        places.insert(*place);
    }
    EXPECT_EQ(places.size(), allHotkeys.size());
}

TEST(EvdevKeyTable, RightKeysAreTheRightOnes) {
    EXPECT_EQ(evdevCodeOf(keyCode::rightControl, {}), EvdevCode{KEY_RIGHTCTRL});
    EXPECT_EQ(evdevCodeOf(keyCode::rightOption, {}), EvdevCode{KEY_RIGHTALT});
    EXPECT_EQ(evdevCodeOf(keyCode::rightShift, {}), EvdevCode{KEY_RIGHTSHIFT});
    EXPECT_EQ(evdevCodeOf(keyCode::rightCommand, {}), EvdevCode{KEY_RIGHTMETA});
    EXPECT_EQ(evdevCodeOf(keyCode::escape, {}), EvdevCode{KEY_ESC});
}

TEST(EvdevKeyTable, LeftTwinsHaveCodesOfTheirOwnWithTheSameBit) {
    EXPECT_EQ(keyCodeOf(KEY_LEFTCTRL, {}), keyCode::leftControl);
    EXPECT_EQ(modifierMaskOf(*keyCodeOf(KEY_LEFTCTRL, {})), modifierMaskOf(keyCode::rightControl));
}

TEST(EvdevKeyTable, TypedKeysCannotBeToldFromEachOther) {
    EXPECT_EQ(keyCodeOf(KEY_A, {}), keyCodeOf(KEY_ENTER, {}));
    EXPECT_EQ(modifierMaskOf(*keyCodeOf(KEY_A, {})), 0U);
}

TEST(EvdevKeyTable, CapsLockAndButtonsAreNeverTold) {
    EXPECT_EQ(keyCodeOf(KEY_CAPSLOCK, {}), std::nullopt);
    EXPECT_EQ(keyCodeOf(BTN_LEFT, {}), std::nullopt);
    EXPECT_EQ(keyCodeOf(0xffff, {}), std::nullopt);
}

TEST(EvdevKeyTable, ExtraKeyIsTheOneThatIsNamed) {
    EXPECT_EQ(evdevExtraKey(QStringLiteral("Menu")), EvdevCode{KEY_COMPOSE});
    EXPECT_EQ(evdevExtraKey(QStringLiteral("F24")), EvdevCode{KEY_F24});
    EXPECT_EQ(evdevExtraKey(QStringLiteral("Enter")), std::nullopt);
    EXPECT_EQ(keyCodeOf(KEY_PAUSE, KEY_PAUSE), keyCode::fn);
    EXPECT_EQ(evdevCodeOf(keyCode::fn, {}), std::nullopt);
}

TEST(EvdevKeyTable, MouseAndPowerButtonAreNoKeyboardsAndAPedalIsOne) {
    EvdevKeys keys;
    EXPECT_FALSE(isKeyboard(keys));
    keys.set(KEY_POWER);
    EXPECT_FALSE(isKeyboard(keys));
    keys.set(KEY_F13);
    EXPECT_TRUE(isKeyboard(keys));
}

} // namespace

} // namespace lorvane
