// SPDX-License-Identifier: GPL-3.0-or-later
#include "Items.h"
#include "base/testing/VirtualClock.h"
#include "history/MacHistoryStore.h"
#include "history/testing/FakeStateFile.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds persistDelay(250);

QByteArray fileOf(std::vector<HistoryItem> items, QSet<QUuid> deleted = {}) {
    return *encodeBackup({FileDate{1}, HistoryList(std::move(items)), std::move(deleted)});
}

class Store : public ::testing::Test {
 protected:
    explicit Store(StateFile::Content content = StateFile::Absent()) : file(std::move(content)) { start(); }

    void start() { store = std::make_unique<MacHistoryStore>(clock, file); }
    /// What is on the file once everything that was due has been written; ends the store.
    std::optional<Backup> lastWritten() {
        store.reset();
        const auto written = file.written();
        return written.empty() ? std::nullopt : decodeBackup(written.back());
    }
    std::size_t attempts() {
        store.reset();
        return file.attempts();
    }

    VirtualClock clock;
    FakeStateFile file;
    std::unique_ptr<MacHistoryStore> store;
};

TEST_F(Store, IsEmptyWithoutAFile) {
    EXPECT_TRUE(store->items().isEmpty());
    EXPECT_EQ(store->revision(), 0);
    EXPECT_TRUE(store->deletedIDs().isEmpty());
    clock.advance(std::chrono::hours(1));
    EXPECT_EQ(attempts(), 0U);
}

TEST_F(Store, AddPutsAnItemFirstEvenWhenItIsOlder) {
    store->add(bareItem(5));
    store->add(bareItem(1));
    EXPECT_EQ(numbersOf(store->items()), (std::vector{1, 5}));
    EXPECT_EQ(store->revision(), 2);
}

TEST_F(Store, UpdateTextChangesTheFirstWithTheIdAndNothingElseOfIt) {
    store->add(fullItem(1));
    store->add(fullItem(1));
    store->updateText(uuid(1), QStringLiteral("new"));
    HistoryItem wanted = fullItem(1);
    wanted.text = QStringLiteral("new");
    EXPECT_EQ(store->items(), HistoryList({wanted, fullItem(1)}));
    EXPECT_EQ(store->revision(), 3);
}

TEST_F(Store, SetCategoryGivesALabelAndTakesIt) {
    store->add(bareItem(1));
    store->setCategory(uuid(1), QStringLiteral("home"));
    EXPECT_EQ(store->items().begin()->category, QStringLiteral("home"));
    store->setCategory(uuid(1), std::nullopt);
    EXPECT_EQ(store->items(), HistoryList({bareItem(1)}));
    EXPECT_EQ(store->revision(), 3);
}

TEST_F(Store, AnUnknownIdChangesNothingAtAll) {
    store->changed = [] { FAIL(); };
    const Handle told = store->subscribe([](const HistoryList&) { FAIL(); });
    store->updateText(uuid(1), QStringLiteral("new"));
    store->setCategory(uuid(1), QStringLiteral("home"));
    store->remove(QSet<QUuid>());
    EXPECT_EQ(store->revision(), 0);
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(attempts(), 0U);
}

TEST_F(Store, RemoveTakesEveryItemWithTheIdAndKeepsTheId) {
    store->add(bareItem(1));
    store->add(bareItem(2));
    store->add(bareItem(1));
    store->remove(uuid(1));
    EXPECT_EQ(numbersOf(store->items()), std::vector{2});
    EXPECT_EQ(store->deletedIDs(), QSet<QUuid>{uuid(1)});
    EXPECT_EQ(store->revision(), 4);
}

TEST_F(Store, RemovingAnIdThatNoItemHasKeepsItAndIsWritten) {
    store->remove(uuid(9));
    EXPECT_EQ(store->deletedIDs(), QSet<QUuid>{uuid(9)});
    EXPECT_EQ(store->revision(), 1);
    clock.advance(persistDelay);
    const auto written = lastWritten();
    ASSERT_TRUE(written);
    EXPECT_EQ(written->deleted, QSet<QUuid>{uuid(9)});
}

TEST_F(Store, ASelectionIsRemovedInOneWriteWithARevisionForEach) {
    for (const int number : {1, 2, 3}) {
        store->add(bareItem(number));
    }
    store->remove({uuid(1), uuid(3), uuid(8)});
    EXPECT_EQ(numbersOf(store->items()), std::vector{2});
    EXPECT_EQ(store->deletedIDs(), (QSet<QUuid>{uuid(1), uuid(3), uuid(8)}));
    EXPECT_EQ(store->revision(), 6);
    clock.advance(persistDelay);
    EXPECT_EQ(attempts(), 1U);
}

TEST_F(Store, ObserversAreToldOfEachAssignmentAndThenOfTheChange) {
    std::vector<std::string> order;
    store->changed = [&] { order.push_back("changed at " + std::to_string(store->revision())); };
    const Handle told = store->subscribe(
        [&](const HistoryList& items) { order.push_back(std::to_string(items.size()) + " items"); });
    store->add(bareItem(1));
    store->setCategory(uuid(1), std::nullopt); // no other value, an assignment all the same
    store->remove(uuid(1));
    EXPECT_EQ(order, (std::vector<std::string>{"1 items", "changed at 1", "1 items", "changed at 2",
                                               "0 items", "changed at 3"}));
}

TEST_F(Store, AnObserverMayChangeTheItems) {
    const Handle told = store->subscribe([&](const HistoryList& items) {
        if (items.size() == 1) {
            store->add(bareItem(2));
            EXPECT_EQ(items.size(), 1U);
        }
    });
    store->add(bareItem(1));
    EXPECT_EQ(numbersOf(store->items()), (std::vector{2, 1}));
    clock.advance(persistDelay);
    EXPECT_EQ(lastWritten()->history, HistoryList({bareItem(2), bareItem(1)}));
}

TEST_F(Store, TheWholeHistoryIsWrittenAQuarterSecondAfterTheChange) {
    store->add(fullItem(1));
    clock.advance(persistDelay - milliseconds(1));
    EXPECT_EQ(file.attempts(), 0U);
    clock.advance(milliseconds(1));
    ASSERT_TRUE(file.waitForAttempts(1));
    const auto written = lastWritten();
    ASSERT_TRUE(written);
    EXPECT_EQ(written->history, HistoryList({fullItem(1)}));
    // The moment of the change, not of the write.
    EXPECT_EQ(written->exportedAt, FileDate::of(clock.wallNow() - persistDelay));
}

TEST_F(Store, TenEditsWithinATenthOfASecondAreOneWriteOfTheTenthState) {
    store->add(bareItem(1));
    clock.advance(persistDelay);
    ASSERT_TRUE(file.waitForAttempts(1));
    for (int edit = 1; edit <= 10; ++edit) {
        store->updateText(uuid(1), QStringLiteral("edit %1").arg(edit));
        clock.advance(milliseconds(10));
    }
    clock.advance(std::chrono::seconds(5));
    EXPECT_EQ(lastWritten()->history, HistoryList({bareItem(1, QStringLiteral("edit 10"))}));
    EXPECT_EQ(file.attempts(), 2U);
}

TEST_F(Store, AChangeLessThanAQuarterSecondBeforeTheEndIsLost) {
    store->add(bareItem(1));
    clock.advance(persistDelay - milliseconds(1));
    EXPECT_EQ(attempts(), 0U);
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(file.attempts(), 0U);
}

TEST_F(Store, WhatWaitsToBeWrittenIsWrittenAtOnceWhenAskedForAndNotAgain) {
    store->add(bareItem(1));
    store->writeNow();
    EXPECT_EQ(file.attempts(), 1U);
    clock.advance(std::chrono::seconds(1));
    store->writeNow();
    EXPECT_EQ(file.attempts(), 1U);
    EXPECT_EQ(lastWritten()->history.size(), 1U);
}

TEST_F(Store, AWriteThatHasBegunFinishesBeforeTheNextOne) {
    file.setHeld(true);
    store->add(bareItem(1));
    clock.advance(persistDelay);
    ASSERT_TRUE(file.waitForHeldWrite());
    store->add(bareItem(2));
    clock.advance(persistDelay);
    file.setHeld(false);
    EXPECT_EQ(lastWritten()->history.size(), 2U);
    ASSERT_EQ(file.written().size(), 2U);
    EXPECT_EQ(decodeBackup(file.written().front())->history.size(), 1U);
}

TEST_F(Store, AWriteThatWaitsBehindASlowOneGivesWayToALaterChange) {
    file.setHeld(true);
    for (const int number : {1, 2, 3}) { // the first is held, the second never begins
        store->add(bareItem(number));
        clock.advance(persistDelay);
        ASSERT_TRUE(file.waitForHeldWrite());
    }
    file.setHeld(false);
    EXPECT_EQ(lastWritten()->history.size(), 3U);
    EXPECT_EQ(file.attempts(), 2U);
}

TEST_F(Store, AfterAFailedWriteTheNextChangeWritesEverything) {
    file.setFailing(true);
    store->add(bareItem(1));
    clock.advance(persistDelay);
    ASSERT_TRUE(file.waitForAttempts(1));
    file.setFailing(false);
    clock.advance(std::chrono::hours(1)); // nothing tries again by itself
    EXPECT_EQ(file.attempts(), 1U);
    store->add(bareItem(2));
    clock.advance(persistDelay);
    EXPECT_EQ(numbersOf(lastWritten()->history), (std::vector{2, 1}));
}

TEST_F(Store, WhatCannotBeEncodedIsDroppedAndTheFileStays) {
    HistoryItem endless = bareItem(1);
    endless.durationSec = std::numeric_limits<double>::infinity();
    store->add(endless);
    clock.advance(persistDelay);
    EXPECT_EQ(attempts(), 0U);
}

class StoreWithAFile : public Store {
 protected:
    StoreWithAFile() : Store(fileOf({bareItem(1), fullItem(7), bareItem(3)}, {uuid(4)})) {}
};

TEST_F(StoreWithAFile, LoadsItInItsOrder) {
    EXPECT_EQ(store->items(), HistoryList({bareItem(1), fullItem(7), bareItem(3)}));
    EXPECT_EQ(store->deletedIDs(), QSet<QUuid>{uuid(4)});
    EXPECT_EQ(store->revision(), 1);
}

TEST_F(StoreWithAFile, TheLoadWritesNothing) {
    clock.advance(std::chrono::hours(1));
    EXPECT_EQ(attempts(), 0U);
}

TEST_F(StoreWithAFile, WritesOverItWithoutKeepingTheOldOne) {
    store->remove(uuid(7));
    clock.advance(persistDelay);
    const auto written = lastWritten();
    EXPECT_EQ(numbersOf(written->history), (std::vector{1, 3}));
    EXPECT_EQ(written->deleted, (QSet<QUuid>{uuid(4), uuid(7)}));
    EXPECT_TRUE(file.setAside().empty());
}

TEST_F(StoreWithAFile, TheNextStartFindsWhatWasWritten) {
    store->updateText(uuid(7), QString::fromUtf8("\"neu\" ü"));
    clock.advance(persistDelay);
    const HistoryList before = store->items();
    store.reset();
    start();
    EXPECT_EQ(store->items(), before);
}

class StoreWithABadFile : public Store {
 protected:
    StoreWithABadFile() : Store(QByteArray(R"({"version":2,"exportedAt":1,"history":[{}]})")) {}
};

TEST_F(StoreWithABadFile, IsEmptyAndLeavesTheFile) {
    EXPECT_TRUE(store->items().isEmpty());
    EXPECT_EQ(store->revision(), 0);
    clock.advance(std::chrono::hours(1));
    EXPECT_EQ(attempts(), 0U);
}

TEST_F(StoreWithABadFile, TheFirstWriteSetsItAsideOnce) {
    for (const int number : {1, 2}) {
        store->add(bareItem(number));
        clock.advance(persistDelay);
        ASSERT_TRUE(file.waitForAttempts(static_cast<std::size_t>(number)));
    }
    EXPECT_EQ(lastWritten()->history.size(), 2U);
    ASSERT_EQ(file.setAside().size(), 1U);
    EXPECT_TRUE(std::get<QByteArray>(file.setAside().front()).contains("[{}]"));
}

TEST_F(StoreWithABadFile, AFirstWriteThatFailsLeavesItToTheNextToSetItAside) {
    file.setFailing(true);
    store->add(bareItem(1));
    clock.advance(persistDelay);
    ASSERT_TRUE(file.waitForAttempts(1));
    file.setFailing(false);
    store->add(bareItem(2));
    clock.advance(persistDelay);
    EXPECT_EQ(lastWritten()->history.size(), 2U);
    EXPECT_EQ(file.setAside().size(), 1U);
}

class StoreWithAnUnreadableFile : public Store {
 protected:
    StoreWithAnUnreadableFile() : Store(StateFile::Unreadable()) {}
};

TEST_F(StoreWithAnUnreadableFile, SetsItAsideAsWell) {
    EXPECT_TRUE(store->items().isEmpty());
    store->add(bareItem(1));
    clock.advance(persistDelay);
    EXPECT_EQ(lastWritten()->history.size(), 1U);
    EXPECT_EQ(file.setAside().size(), 1U);
}

} // namespace

} // namespace lorvane
