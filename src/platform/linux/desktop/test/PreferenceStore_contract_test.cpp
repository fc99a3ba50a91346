// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/testing/MemoryPreferenceStore.h"
#include "base/testing/TestFoundation.h"
#include "platform/linux/desktop/JsonPreferenceStore.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

using namespace lorvane;

namespace {

class PreferenceStoreContract : public ::testing::TestWithParam<bool> {
 protected:
    PreferenceStoreContract() {
        if (GetParam()) {
            store = std::make_unique<JsonPreferenceStore>(folder.path(), foundation.log);
        } else {
            store = std::make_unique<MemoryPreferenceStore>();
        }
    }
    QTemporaryDir folder;
    TestFoundation foundation;
    std::unique_ptr<PreferenceStore> store;
};

TEST_P(PreferenceStoreContract, AnAbsentKeyIsUndefined) { EXPECT_TRUE(store->value("none").isUndefined()); }

TEST_P(PreferenceStoreContract, EveryTypeComesBackAsItWas) {
    const std::vector<QJsonValue> values{QJsonValue("text"),
                                         QJsonValue(""),
                                         QJsonValue(QString::fromUtf8("\u00e9\u4e2d\U0001F600\n\"")),
                                         QJsonValue(true),
                                         QJsonValue(false),
                                         QJsonValue(0),
                                         QJsonValue(-7),
                                         QJsonValue(0.1),
                                         QJsonValue(789012345.678901),
                                         QJsonValue(QJsonArray{"a", "b"}),
                                         QJsonValue(QJsonArray{}),
                                         QJsonValue(QJsonObject{{"in", 1}})};
    for (const QJsonValue& value : values) {
        store->setValue("key", value);
        EXPECT_EQ(store->value("key"), value);
    }
}

TEST_P(PreferenceStoreContract, AnUndefinedValueRemovesTheKey) {
    store->setValue("key", "x");
    store->setValue("key", QJsonValue(QJsonValue::Undefined));
    EXPECT_TRUE(store->value("key").isUndefined());
}

TEST_P(PreferenceStoreContract, AChangeIsToldOnceAndWithTheNewValueInPlace) {
    QStringList told;
    const Handle subscription = store->subscribe(
        [&](const QString& key) { told.append(key + "=" + store->value(key).toString("removed")); });
    store->setValue("key", "x");
    store->setValue("key", "x");
    store->setValue("other", "y");
    store->setValue("key", QJsonValue(QJsonValue::Undefined));
    store->setValue("key", QJsonValue(QJsonValue::Undefined));
    EXPECT_EQ(told, (QStringList{"key=x", "other=y", "key=removed"}));
}

TEST_P(PreferenceStoreContract, AnEndedSubscriptionIsNotTold) {
    int told = 0;
    Handle subscription = store->subscribe([&](const QString&) { ++told; });
    subscription.reset();
    store->setValue("key", "x");
    EXPECT_EQ(told, 0);
}

TEST_P(PreferenceStoreContract, AnObserverMayWriteAnotherKey) {
    const Handle subscription = store->subscribe([&](const QString& key) {
        if (key == "key") {
            store->setValue("copy", store->value("key"));
        }
    });
    store->setValue("key", "x");
    EXPECT_EQ(store->value("copy"), QJsonValue("x"));
}

INSTANTIATE_TEST_SUITE_P(Stores, PreferenceStoreContract, ::testing::Bool(), [](const auto& with) {
    return with.param ? "JsonPreferenceStore" : "MemoryPreferenceStore";
});

TEST(JsonPreferenceStoreThreads, ReadsAreSafeWhileTheMainThreadWrites) {
    const QTemporaryDir folder;
    TestFoundation foundation;
    JsonPreferenceStore store(folder.path(), foundation.log);
    store.setValue("key", 0);
    std::atomic<bool> ending{false};
    std::atomic<int> wrong{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back([&] {
            while (!ending) {
                wrong += store.value("key").isDouble() ? 0 : 1;
            }
        });
    }
    for (int i = 1; i <= 100; ++i) {
        store.setValue("key", i);
    }
    ending = true;
    for (auto& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(wrong, 0);
}

} // namespace
