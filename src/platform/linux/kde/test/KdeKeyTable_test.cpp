// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/KdeKeyTable.h"

#include "input/Hotkey.h"
#include "input/KeyEvents.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

QList<int> keysOf(int code, const char* extraKey = "") {
    const auto key = kdeKeyOf(code, QString::fromLatin1(extraKey));
    return key ? key->qtKeys : QList<int>();
}

TEST(KdeKeyTable, TellsSidesOfNoModifierAndEndsTheirHoldAtAnotherKey) {
    for (const int code : {keyCode::rightControl, keyCode::rightOption, keyCode::rightShift}) {
        const auto key = kdeKeyOf(code, QString());
        ASSERT_TRUE(key);
        EXPECT_EQ(key->offer, (HoldKeyOffer{code, false, ChordSight::endsHold}));
    }
}

TEST(KdeKeyTable, HasNothingForSuperAndForOtherKeys) {
    EXPECT_FALSE(kdeKeyOf(keyCode::rightCommand, QString()));
    EXPECT_FALSE(kdeKeyOf(0x100, QString()));
}

TEST(KdeKeyTable, NamesTheExtraKeyAsThePreferenceDoes) {
    EXPECT_EQ(keysOf(keyCode::fn), QList<int>{Qt::Key_Menu});
    EXPECT_EQ(keysOf(keyCode::fn, "Menu"), QList<int>{Qt::Key_Menu});
    EXPECT_EQ(keysOf(keyCode::fn, "Pause"), QList<int>{Qt::Key_Pause});
    EXPECT_EQ(keysOf(keyCode::fn, "ScrollLock"), QList<int>{Qt::Key_ScrollLock});
    EXPECT_EQ(keysOf(keyCode::fn, "F13"), QList<int>{Qt::Key_F13});
    EXPECT_EQ(keysOf(keyCode::fn, "F24"), QList<int>{Qt::Key_F24});
    EXPECT_TRUE(keysOf(keyCode::fn, "F25").isEmpty());
    EXPECT_TRUE(keysOf(keyCode::fn, "nonsense").isEmpty());
}

TEST(KdeKeyTable, KnowsTheSymbolsThatTheUsualKeymapGivesFunctionKeys) {
    EXPECT_EQ(keysOf(keyCode::fn, "F14"), (QList<int>{Qt::Key_F14, Qt::Key_Launch7}));
    EXPECT_EQ(keysOf(keyCode::fn, "F18"), (QList<int>{Qt::Key_F18, Qt::Key_LaunchB}));
    EXPECT_EQ(keysOf(keyCode::fn, "F19"), QList<int>{Qt::Key_F19});
}

TEST(KdeKeyTable, GivesEachKeyAShortcutOfItsOwn) {
    QStringList actions;
    for (const int code : kdeKeyCodes()) {
        actions.append(kdeKeyOf(code, QString())->action);
    }
    EXPECT_EQ(actions.removeDuplicates(), 0);
    EXPECT_EQ(actions.size(), 5);
}

TEST(KdeKeyTable, HasEscapeWithTheModifierThatIsHeld) {
    EXPECT_EQ(escapeWith(keyCode::rightControl),
              QKeyCombination(Qt::ControlModifier, Qt::Key_Escape).toCombined());
    EXPECT_EQ(escapeWith(keyCode::rightOption),
              QKeyCombination(Qt::AltModifier, Qt::Key_Escape).toCombined());
    EXPECT_EQ(escapeWith(keyCode::rightShift),
              QKeyCombination(Qt::ShiftModifier, Qt::Key_Escape).toCombined());
    EXPECT_EQ(escapeWith(keyCode::fn), Qt::Key_Escape);
}

} // namespace

} // namespace lorvane
