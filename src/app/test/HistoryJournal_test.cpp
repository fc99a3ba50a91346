// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/HistoryJournal.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "history/testing/FakeStateFile.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

class Journal : public ::testing::Test {
 protected:
    DeliveredTake take(const QString& text) {
        DeliveredTake delivered;
        delivered.id = newUuid();
        delivered.text = text;
        delivered.raw = QStringLiteral("as it was said");
        delivered.createdAt = world.clock.wallNow();
        delivered.durationSec = 4.25;
        delivered.device = QStringLiteral("mac");
        return delivered;
    }

    TestFoundation world;
    FakeStateFile file;
    MacHistoryStore history{world.clock, file};
    HistoryJournal journal{history, world.preferences};
};

TEST_F(Journal, ATakeBecomesAnItemWithAllItHas) {
    DeliveredTake taken = take(QStringLiteral("text"));
    taken.category = QStringLiteral("work");
    journal.add(taken);
    HistoryItem wanted;
    wanted.id = QUuid(taken.id);
    wanted.text = QStringLiteral("text");
    wanted.raw = QStringLiteral("as it was said");
    wanted.createdAt = FileDate::of(world.clock.wallNow());
    wanted.category = QStringLiteral("work");
    wanted.durationSec = 4.25;
    wanted.device = QStringLiteral("mac");
    EXPECT_EQ(history.items(), HistoryList({wanted}));
    EXPECT_FALSE(wanted.id.isNull());
}

TEST_F(Journal, TheNewestTakeIsFirst) {
    journal.add(take(QStringLiteral("older")));
    journal.add(take(QStringLiteral("newer")));
    EXPECT_EQ(history.items().size(), 2U);
    EXPECT_EQ(history.items().begin()->text, QStringLiteral("newer"));
    EXPECT_EQ(history.items().begin()->category, std::nullopt);
}

TEST_F(Journal, TheStreakIsKeptAndNoUseCounted) {
    journal.recordHit(QStringLiteral("Editor"), 3);
    EXPECT_EQ(world.preferences.stored(preference::goalStreak), std::nullopt);
    for (const int streak : {0, 7}) {
        journal.setGoalStreak(streak);
        EXPECT_EQ(world.preferences.stored(preference::goalStreak), streak);
    }
    EXPECT_EQ(history.revision(), 0);
}

} // namespace

} // namespace lorvane
