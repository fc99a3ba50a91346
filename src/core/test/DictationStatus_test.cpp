// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/DictationStatus.h"

#include "base/testing/VirtualClock.h"
#include "core/testing/FakePresence.h"
#include "input/testing/FakeAccessibility.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

class DictationStatusTest : public ::testing::Test {
 protected:
    void advance(double duration) { clock.advance(seconds(duration)); }
    VirtualClock clock;
    FakePill pill;
    FakeWindows windows;
    FakeAccessibility accessibility;
    ScreenPresence screen{clock, pill, windows};
    DictationStatus status{clock, screen, accessibility};
};

TEST_F(DictationStatusTest, BeginsIdle) { EXPECT_EQ(status.phase.get(), Phase(Idle{})); }

TEST_F(DictationStatusTest, NoticesAreEqualByTextAndSeverity) {
    const Phase warning = Notice{"a", NoticeSeverity::warning};
    EXPECT_EQ(warning, Phase(Notice{"a", NoticeSeverity::warning}));
    EXPECT_NE(warning, Phase(Notice{"b", NoticeSeverity::warning}));
    EXPECT_NE(warning, Phase(Notice{"a", NoticeSeverity::error}));
}

TEST_F(DictationStatusTest, ObserversAreToldOfChangesOnly) {
    int told = 0;
    const Handle observer = status.phase.subscribe([&](const Phase&) { ++told; });
    status.phase.set(Recording{});
    status.phase.set(Recording{});
    EXPECT_EQ(told, 1);
}

TEST_F(DictationStatusTest, NoticeShowsThePillThoughTheBarIsHidden) {
    screen.hideBar(seconds(3600));
    status.showNotice("Look", NoticeSeverity::error);
    EXPECT_TRUE(pill.isShown);
    advance(1.4);
    EXPECT_EQ(status.phase.get(), Phase(Idle{}));
    EXPECT_FALSE(pill.isShown);
}

TEST_F(DictationStatusTest, HideDelayLeavesAnotherPhaseAloneAndRefreshesThePill) {
    status.showPhase(Done{}, briefly);
    status.phase.set(Processing{});
    const int shows = pill.shows;
    advance(1.4);
    EXPECT_EQ(status.phase.get(), Phase(Processing{}));
    EXPECT_EQ(pill.shows, shows + 1);
}

TEST_F(DictationStatusTest, LaterNoticeHasItsOwnTime) {
    status.showNotice("first", NoticeSeverity::warning);
    advance(1);
    status.showNotice("second", NoticeSeverity::warning, seconds(6));
    advance(5.9);
    EXPECT_EQ(status.phase.get(), Phase(Notice{"second", NoticeSeverity::warning}));
    advance(0.1);
    EXPECT_EQ(status.phase.get(), Phase(Idle{}));
}

TEST_F(DictationStatusTest, SameNoticeAgainStartsItsTimeAnew) {
    status.showNotice("again", NoticeSeverity::warning);
    advance(1);
    status.showNotice("again", NoticeSeverity::warning);
    advance(1.3);
    EXPECT_NE(status.phase.get(), Phase(Idle{}));
    advance(0.1);
    EXPECT_EQ(status.phase.get(), Phase(Idle{}));
}

TEST_F(DictationStatusTest, CancelledHideLeavesWhatIsOnScreen) {
    status.showPhase(Done{}, briefly);
    status.cancelHide();
    advance(10);
    EXPECT_EQ(status.phase.get(), Phase(Done{}));
}

TEST_F(DictationStatusTest, PermissionIsToldAsGrantedOnlyWhenItBecameTrue) {
    int granted = 0;
    accessibility.setTrusted(false);
    status.watchPermissions([&] { ++granted; });
    accessibility.setTrusted(true);
    accessibility.setTrusted(true);
    accessibility.setTrusted(false);
    EXPECT_EQ(granted, 1);
    EXPECT_FALSE(status.permissionsGranted.get());
}

TEST_F(DictationStatusTest, PillIsAwayOnlyInIdleWhileTheBarIsHidden) {
    screen.hideBar(seconds(10));
    for (const Phase& phase : {Phase(Recording{}), Phase(Processing{}), Phase(Done{}), Phase(Notice{})}) {
        screen.refreshPill(phase);
        EXPECT_TRUE(pill.isShown);
    }
    screen.refreshPill(Idle{});
    EXPECT_FALSE(pill.isShown);
    advance(10);
    screen.refreshPill(Idle{});
    EXPECT_TRUE(pill.isShown);
}

} // namespace

} // namespace lorvane
