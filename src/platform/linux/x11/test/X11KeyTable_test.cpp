// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11KeyTable.h"

#include "input/Hotkey.h"
#include "input/KeyEvents.h"

#include <gtest/gtest.h>

#include <set>

namespace lorvane {

namespace {

constexpr XKeyCode menu = 135;

TEST(X11KeyTable, EachHotkeyHasItsPlaceOnTheKeyboard) {
    const std::pair<Hotkey, XKeyCode> places[]{{Hotkey::rightCommand, 134},
                                               {Hotkey::rightOption, 108},
                                               {Hotkey::rightShift, 62},
                                               {Hotkey::rightControl, 105},
                                               {Hotkey::fn, menu}};
    for (const auto& [hotkey, place] : places) {
        const KeyMeaning meaning = meaningOf(place, menu);
        EXPECT_EQ(meaning.sort, KeyMeaning::Sort::modifier);
        EXPECT_EQ(meaning.code, codeOf(hotkey));
        EXPECT_EQ(meaning.mask, maskOf(hotkey));
    }
}

TEST(X11KeyTable, LeftTwinHasTheMaskAndAnotherCode) {
    const std::pair<Hotkey, XKeyCode> twins[]{{Hotkey::rightCommand, 133},
                                              {Hotkey::rightOption, 64},
                                              {Hotkey::rightShift, 50},
                                              {Hotkey::rightControl, 37}};
    for (const auto& [hotkey, place] : twins) {
        const KeyMeaning meaning = meaningOf(place, menu);
        EXPECT_EQ(meaning.sort, KeyMeaning::Sort::modifier);
        EXPECT_NE(meaning.code, codeOf(hotkey));
        EXPECT_EQ(meaning.mask, maskOf(hotkey));
    }
}

TEST(X11KeyTable, EscapeIsKnown) {
    EXPECT_EQ(meaningOf(9, menu).sort, KeyMeaning::Sort::other);
    EXPECT_EQ(meaningOf(9, menu).code, keyCode::escape);
}

TEST(X11KeyTable, CapsLockIsNeverTold) { EXPECT_EQ(meaningOf(66, menu).sort, KeyMeaning::Sort::lock); }

TEST(X11KeyTable, NoTwoKeysShareACode) {
    std::set<int> codes;
    for (int key = 8; key < 256; ++key) {
        EXPECT_TRUE(codes.insert(meaningOf(static_cast<XKeyCode>(key), menu).code).second) << key;
    }
}

TEST(X11KeyTable, OnlyTheChosenExtraKeyStandsForFn) {
    constexpr XKeyCode pause = 127;
    EXPECT_EQ(meaningOf(menu, pause).sort, KeyMeaning::Sort::other);
    EXPECT_EQ(meaningOf(pause, pause).code, keyCode::fn);
    EXPECT_EQ(meaningOf(menu, std::nullopt).sort, KeyMeaning::Sort::other);
}

TEST(X11KeyTable, ExtraKeysAreFoundByName) {
    EXPECT_EQ(extraKeyFromName("Menu"), XKeyCode{135});
    EXPECT_EQ(extraKeyFromName("Pause"), XKeyCode{127});
    EXPECT_EQ(extraKeyFromName("ScrollLock"), XKeyCode{78});
    for (int n = 13; n <= 24; ++n) {
        EXPECT_EQ(extraKeyFromName(QStringLiteral("F%1").arg(n)), static_cast<XKeyCode>(191 + n - 13));
    }
}

TEST(X11KeyTable, OtherNamesAreNoExtraKeys) {
    for (const char* const name : {"", "menu", "F12", "F25", "a"}) {
        EXPECT_EQ(extraKeyFromName(name), std::nullopt) << name;
    }
}

} // namespace

} // namespace lorvane
