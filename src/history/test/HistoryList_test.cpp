// SPDX-License-Identifier: GPL-3.0-or-later
#include "Items.h"

#include <gtest/gtest.h>

#include <random>

namespace lorvane {

namespace {

std::vector<HistoryItem> manyItems(int count) {
    std::vector<HistoryItem> items;
    for (int number = 0; number < count; ++number) {
        items.push_back(bareItem(number));
    }
    return items;
}

std::vector<HistoryItem> contentOf(const HistoryList& list) { return {list.begin(), list.end()}; }

TEST(HistoryList, IsEmptyAtFirst) {
    const HistoryList list;
    EXPECT_TRUE(list.isEmpty());
    EXPECT_TRUE(list.begin() == list.end());
    EXPECT_EQ(list.find(uuid(1)), nullptr);
}

TEST(HistoryList, AroundTheSizeOfAChunkNothingIsLost) {
    for (const int count : {1, 255, 256, 257, 511, 512, 513, 1'000}) {
        const auto items = manyItems(count);
        const HistoryList list(items);
        EXPECT_EQ(list.size(), items.size());
        EXPECT_EQ(contentOf(list), items) << count;
    }
}

TEST(HistoryList, ACopyStaysAsItWas) {
    const auto items = manyItems(600);
    HistoryList list(items);
    const HistoryList copy = list;
    list.prepend(bareItem(9'000));
    list.update(uuid(300), [](HistoryItem& item) { item.text = QStringLiteral("changed"); });
    list.remove({uuid(10), uuid(599)});
    EXPECT_EQ(contentOf(copy), items);
    EXPECT_EQ(list.size(), 599U);
    EXPECT_FALSE(list == copy);
}

TEST(HistoryList, EqualItemsMakeEqualListsHoweverTheyCameToBe) {
    HistoryList list;
    for (int number = 599; number >= 0; --number) {
        list.prepend(bareItem(number));
    }
    EXPECT_EQ(list, HistoryList(manyItems(600)));
}

TEST(HistoryList, UpdateChangesTheFirstWithTheIdAndRemoveTakesAll) {
    HistoryList list(manyItems(400));
    list.prepend(bareItem(390));
    EXPECT_TRUE(list.update(uuid(390), [](HistoryItem& item) { item.text = QStringLiteral("first"); }));
    EXPECT_EQ(list.begin()->text, QStringLiteral("first"));
    list.remove({uuid(390)});
    EXPECT_EQ(list.size(), 399U);
    EXPECT_EQ(list.find(uuid(390)), nullptr);
    EXPECT_FALSE(list.update(uuid(390), [](HistoryItem&) { FAIL(); }));
}

TEST(HistoryList, RandomChangesGiveWhatAPlainVectorGives) {
    std::mt19937 random(11);
    for (int run = 0; run < 5; ++run) {
        std::vector<HistoryItem> model = manyItems(static_cast<int>(random() % 700));
        HistoryList list(model);
        for (int step = 0; step < 1'000; ++step) {
            const QUuid id = uuid(static_cast<int>(random() % 900));
            const auto has = [&](const HistoryItem& item) { return item.id == id; };
            if (const auto what = random() % 3; what == 0) {
                HistoryItem item = bareItem(0);
                item.id = id;
                list.prepend(item);
                model.insert(model.begin(), item);
            } else if (what == 1) {
                const QString text = QString::number(step);
                const auto found = std::ranges::find_if(model, has);
                EXPECT_EQ(list.update(id, [&](HistoryItem& item) { item.text = text; }),
                          found != model.end());
                if (found != model.end()) {
                    found->text = text;
                }
            } else {
                list.remove({id});
                std::erase_if(model, has);
            }
        }
        EXPECT_EQ(contentOf(list), model);
        EXPECT_EQ(list.size(), model.size());
    }
}

} // namespace

} // namespace lorvane
