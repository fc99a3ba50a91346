// SPDX-License-Identifier: GPL-3.0-or-later
// Anything in any order, against the rules in their simplest form.
#include "Items.h"
#include "base/testing/VirtualClock.h"
#include "history/MacHistoryStore.h"
#include "history/testing/FakeStateFile.h"

#include <gtest/gtest.h>

#include <random>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds persistDelay(250);

/// What the store has to hold, with what the file has to hold at the end.
struct Model {
    std::vector<HistoryItem> items;
    QSet<QUuid> deleted;
    qint64 revision = 0;
    std::vector<HistoryItem> onFile;
    std::size_t writes = 0;
    bool hasWaiting = false;
    milliseconds sinceChange{0};

    void change(qint64 times = 1) {
        revision += times;
        hasWaiting = true;
        sinceChange = milliseconds(0);
    }
    HistoryItem* find(const QUuid& id) {
        const auto found = std::ranges::find(items, id, &HistoryItem::id);
        return found == items.end() ? nullptr : &*found;
    }
    void pass(milliseconds time) {
        sinceChange += time;
        if (hasWaiting && sinceChange >= persistDelay) {
            onFile = items;
            ++writes;
            hasWaiting = false;
        }
    }
};

class RandomUse {
 public:
    explicit RandomUse(unsigned seed) : random_(seed) {}

    void step(MacHistoryStore& store, Model& model, VirtualClock& clock) {
        const QUuid id = uuid(pick(30));
        const QString text = QString::number(pick(1'000));
        switch (pick(6)) {
        case 0:
        case 1: {
            HistoryItem item = pick(2) == 0 ? fullItem(pick(30)) : bareItem(pick(30));
            store.add(item);
            model.items.insert(model.items.begin(), item);
            model.change();
            break;
        }
        case 2:
            store.updateText(id, text);
            if (HistoryItem* const item = model.find(id)) {
                item->text = text;
                model.change();
            }
            break;
        case 3: {
            const auto label = pick(2) == 0 ? std::optional(text) : std::nullopt;
            store.setCategory(id, label);
            if (HistoryItem* const item = model.find(id)) {
                item->category = label;
                model.change();
            }
            break;
        }
        case 4:
            remove(store, model);
            break;
        default: {
            const milliseconds time(pick(400));
            clock.advance(time);
            model.pass(time);
        }
        }
    }

 private:
    int pick(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }

    void remove(MacHistoryStore& store, Model& model) {
        QSet<QUuid> ids;
        for (int count = pick(3); count >= 0; --count) {
            ids.insert(uuid(pick(30)));
        }
        if (ids.size() == 1) {
            store.remove(*ids.begin());
        } else {
            store.remove(ids);
        }
        std::erase_if(model.items, [&](const HistoryItem& item) { return ids.contains(item.id); });
        model.deleted.unite(ids);
        model.change(ids.size());
    }

    std::mt19937 random_;
};

TEST(StoreAtRandom, DoesWhatTheSimplestModelDoes) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        VirtualClock clock;
        FakeStateFile file;
        auto store = std::make_unique<MacHistoryStore>(clock, file);
        Model model;
        RandomUse use(seed);
        for (int step = 0; step < 300; ++step) {
            use.step(*store, model, clock);
            ASSERT_TRUE(
                file.waitForAttempts(model.writes)); // a later change would stop one that has not begun
            ASSERT_EQ(store->items(), HistoryList(model.items)) << "seed " << seed << ", step " << step;
            ASSERT_EQ(store->deletedIDs(), model.deleted);
            ASSERT_EQ(store->revision(), model.revision);
        }
        store.reset();
        EXPECT_EQ(file.attempts(), model.writes);
        const MacHistoryStore next(clock, file);
        EXPECT_EQ(next.items(), HistoryList(model.onFile)) << "seed " << seed;
    }
}

} // namespace

} // namespace lorvane
