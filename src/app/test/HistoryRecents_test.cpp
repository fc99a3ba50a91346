// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/HistoryRecents.h"

#include "base/testing/VirtualClock.h"
#include "history/testing/FakeStateFile.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

HistoryItem said(const QString& text, double at) {
    HistoryItem item;
    item.id = QUuid::createUuid();
    item.text = text;
    item.createdAt = FileDate{at};
    return item;
}

TEST(HistoryRecents, AreTheHeadOfTheHistoryAndToldOfEachChange) {
    VirtualClock clock;
    FakeStateFile file;
    MacHistoryStore history(clock, file);
    HistoryRecents recents(history);
    int changes = 0;
    const Handle subscription = recents.subscribe([&] { ++changes; });
    history.add(said("one", 1));
    history.add(said("two", 2));
    history.add(said("three", 3));
    EXPECT_EQ(changes, 3);
    const auto newest = recents.newest(2);
    ASSERT_EQ(newest.size(), 2U);
    EXPECT_EQ(newest[0], (RecentDictation{"three", FileDate{3}.time()}));
    EXPECT_EQ(newest[1].text, QStringLiteral("two"));
    EXPECT_EQ(recents.newest(9).size(), 3U);
}

} // namespace

} // namespace lorvane
