// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/EscapeWatch.h"

#include "base/testing/VirtualClock.h"
#include "input/testing/FakeKeyEvents.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

class EscapeWatchTest : public ::testing::Test {
 protected:
    void SetUp() override {
        watch.onEscape = [this] { ++escapes; };
    }
    bool press(std::uint32_t flags) {
        const bool kept = keyboard.send({KeyEventKind::keyDown, keyCode::escape, flags, clock.now()});
        clock.settle();
        return kept;
    }
    VirtualClock clock;
    FakeKeyEvents keyboard{clock};
    EscapeWatch watch{clock, keyboard};
    int escapes = 0;
};

TEST_F(EscapeWatchTest, HasNoMonitorsUntilWanted) {
    EXPECT_EQ(keyboard.monitorCount(), 0U);
    watch.watch(true);
    watch.watch(true);
    EXPECT_EQ(keyboard.monitorCount(), 2U);
    watch.watch(false);
    EXPECT_EQ(keyboard.monitorCount(), 0U);
}

TEST_F(EscapeWatchTest, ReactsAfterTheEventAndNotInsideIt) {
    watch.watch(true);
    keyboard.keyDown(keyCode::escape);
    EXPECT_EQ(escapes, 0);
    clock.settle();
    EXPECT_EQ(escapes, 1);
}

TEST_F(EscapeWatchTest, ReactionRunsThoughTheWatchHasEndedMeanwhile) {
    watch.watch(true);
    keyboard.keyDown(keyCode::escape);
    watch.watch(false);
    clock.settle();
    EXPECT_EQ(escapes, 1);
}

TEST_F(EscapeWatchTest, OtherKeysDoNotCount) {
    watch.watch(true);
    keyboard.keyDown(36);
    clock.settle();
    EXPECT_EQ(escapes, 0);
}

TEST_F(EscapeWatchTest, EscapeWithCommandAndOptionIsLeftToTheSystem) {
    watch.watch(true);
    press(modifierFlag::command | modifierFlag::option);
    press(modifierFlag::command | modifierFlag::option | modifierFlag::shift);
    EXPECT_EQ(escapes, 0);
}

TEST_F(EscapeWatchTest, EscapeWithOneOfThemCounts) {
    watch.watch(true);
    press(modifierFlag::command);
    press(modifierFlag::option);
    press(modifierFlag::shift);
    EXPECT_EQ(escapes, 3);
}

TEST_F(EscapeWatchTest, OwnWindowsDoNotSeeTheEscapeThatCounts) {
    keyboard.programHasFocus = true;
    watch.watch(true);
    EXPECT_TRUE(press(0));
    EXPECT_FALSE(press(modifierFlag::command | modifierFlag::option));
    EXPECT_FALSE(keyboard.keyDown(36));
    EXPECT_EQ(escapes, 1);
}

} // namespace

} // namespace lorvane
