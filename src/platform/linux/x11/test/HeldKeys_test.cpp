// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/HeldKeys.h"

#include "input/KeyEvents.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

constexpr XDeviceId desk = 7;
constexpr XDeviceId laptop = 9;
constexpr XKeyCode rightControl = 105;
constexpr XKeyCode leftControl = 37;

TEST(HeldKeys, PressAndReleaseMoveTheKey) {
    HeldKeys keys;
    EXPECT_TRUE(keys.press(desk, rightControl, modifierFlag::control));
    EXPECT_EQ(keys.flags(), modifierFlag::control);
    EXPECT_TRUE(keys.release(desk, rightControl));
    EXPECT_EQ(keys.flags(), 0U);
}

TEST(HeldKeys, SecondPressOfAHeldKeyMovesNothing) {
    HeldKeys keys;
    EXPECT_TRUE(keys.press(desk, rightControl, modifierFlag::control));
    EXPECT_FALSE(keys.press(desk, rightControl, modifierFlag::control));
    EXPECT_TRUE(keys.release(desk, rightControl));
    EXPECT_TRUE(keys.all().empty());
}

TEST(HeldKeys, BitStaysWhileTheTwinIsDown) {
    HeldKeys keys;
    keys.press(desk, leftControl, modifierFlag::control);
    keys.press(desk, rightControl, modifierFlag::control);
    EXPECT_TRUE(keys.release(desk, rightControl));
    EXPECT_EQ(keys.flags(), modifierFlag::control);
}

TEST(HeldKeys, KeyHeldOnTwoKeyboardsIsUpWhenBothLetGo) {
    HeldKeys keys;
    EXPECT_TRUE(keys.press(desk, rightControl, modifierFlag::control));
    EXPECT_FALSE(keys.press(laptop, rightControl, modifierFlag::control));
    EXPECT_FALSE(keys.release(desk, rightControl));
    EXPECT_TRUE(keys.release(laptop, rightControl));
}

TEST(HeldKeys, ReleaseOfAnUnknownPressIsTold) {
    HeldKeys keys;
    EXPECT_TRUE(keys.release(desk, rightControl));
}

TEST(HeldKeys, EndingAPressLeavesTheNextOneAlone) {
    HeldKeys keys;
    keys.press(desk, rightControl, modifierFlag::control);
    const HeldKeys::Held first = keys.all().front();
    keys.release(desk, rightControl);
    keys.press(desk, rightControl, modifierFlag::control);
    EXPECT_FALSE(keys.endPress(first));
    EXPECT_EQ(keys.flags(), modifierFlag::control);
    const HeldKeys::Held second = keys.all().front();
    EXPECT_TRUE(keys.endPress(second));
    EXPECT_EQ(keys.flags(), 0U);
}

} // namespace

} // namespace lorvane
