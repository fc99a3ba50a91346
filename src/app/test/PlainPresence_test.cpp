// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PlainPresence.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

TEST(NoWindows, FirstRunIsOverSomeMomentsAfterItWasAskedFor) {
    TestFoundation world;
    NoWindows windows(world.foundation);
    int over = 0;
    windows.onFirstRunOver = [&] { ++over; };
    windows.presentOnboarding();
    EXPECT_EQ(over, 0);
    EXPECT_EQ(world.preferences.stored(preference::onboarded), std::nullopt);
    world.clock.settle();
    EXPECT_EQ(over, 1);
    EXPECT_EQ(world.preferences.stored(preference::onboarded), true);
}

TEST(NoWindows, FirstRunEndsSilentlyWithTheProgram) {
    TestFoundation world;
    {
        NoWindows windows(world.foundation);
        windows.onFirstRunOver = [] { FAIL(); };
        windows.presentOnboarding();
    }
    world.clock.settle();
    EXPECT_FALSE(world.preferences.get(preference::onboarded));
}

TEST(NoWindows, EachWindowThatIsMissingIsSaid) {
    TestFoundation world;
    NoWindows windows(world.foundation);
    windows.openHomeWindow();
    windows.openFeedback(QStringLiteral("menu"));
    windows.openWhatsNew();
    EXPECT_EQ(world.lines, (QStringList{"[lorvane] there is no home window yet",
                                        "[lorvane] there is no feedback window yet",
                                        "[lorvane] there is no what's new window yet"}));
}

TEST(StreakJournal, KeepsTheStreakAndNoTake) {
    TestFoundation world;
    StreakJournal journal(world.preferences);
    journal.add({});
    journal.recordHit(QStringLiteral("Editor"), 3);
    EXPECT_EQ(world.preferences.stored(preference::goalStreak), std::nullopt);
    journal.setGoalStreak(0);
    EXPECT_EQ(world.preferences.stored(preference::goalStreak), 0);
    journal.setGoalStreak(7);
    EXPECT_EQ(world.preferences.stored(preference::goalStreak), 7);
}

} // namespace

} // namespace lorvane
