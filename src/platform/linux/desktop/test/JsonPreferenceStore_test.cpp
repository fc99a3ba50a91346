// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/JsonPreferenceStore.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "support/Wait.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>
#include <sys/stat.h>

using namespace lorvane;

namespace {

class JsonPreferences : public ::testing::Test {
 protected:
    void start() { store = std::make_unique<JsonPreferenceStore>(folder.path(), foundation.log); }
    [[nodiscard]] QString path(const QString& suffix = {}) const {
        return folder.path() + "/Tirra/preferences.json" + suffix;
    }
    static QByteArray read(const QString& name) {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(absent)");
    }
    void write(const QByteArray& bytes) const {
        QDir().mkpath(folder.path() + "/Tirra");
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    void replace(const QByteArray& bytes) const {
        QSaveFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        ASSERT_TRUE(file.commit());
    }
    QJsonObject stored() const { return QJsonDocument::fromJson(read(path())).object(); }

    QTemporaryDir folder;
    TestFoundation foundation;
    std::unique_ptr<JsonPreferenceStore> store;
};

TEST_F(JsonPreferences, AWriteIsOnTheDiskWhenItReturns) {
    start();
    store->setValue("tirra.mac.token", "t");
    const QJsonObject expected{{"tirra.mac.token", "t"}};
    EXPECT_EQ(stored(), expected);
    EXPECT_EQ(store->filePath(), path());
}

TEST_F(JsonPreferences, OnlyTheOwnerMayReadThem) {
    start();
    store->setValue("key", 1);
    const auto everyone = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther |
                          QFile::WriteOther | QFile::ExeOther;
    EXPECT_EQ(QFile::permissions(path()) & everyone, QFile::Permissions());
    EXPECT_EQ(QFile::permissions(folder.path() + "/Tirra") & everyone, QFile::Permissions());
}

TEST_F(JsonPreferences, ALooseModeIsTightened) {
    write("{}");
    QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther | QFile::ReadGroup);
    start();
    EXPECT_EQ(QFile::permissions(path()) & (QFile::ReadOther | QFile::ReadGroup), QFile::Permissions());
    store->setValue("key", 1);
    EXPECT_EQ(QFile::permissions(path()) & (QFile::ReadOther | QFile::ReadGroup), QFile::Permissions());
}

TEST_F(JsonPreferences, ASecondStartReadsWhatTheFirstWrote) {
    start();
    store->setValue("key", "x");
    start();
    EXPECT_EQ(store->value("key"), QJsonValue("x"));
}

TEST_F(JsonPreferences, KeysOfOthersAreKept) {
    write(R"({"someone.else":{"deep":[1,2.5,null]},"tirra.mac.hotkey":"fn"})");
    start();
    store->setValue("tirra.mac.hotkey", "rightShift");
    const QJsonObject expected{{"someone.else", QJsonObject{{"deep", QJsonArray{1, 2.5, QJsonValue()}}}},
                               {"tirra.mac.hotkey", "rightShift"}};
    EXPECT_EQ(stored(), expected);
}

TEST_F(JsonPreferences, AnEditInPlaceIsPickedUpAndTold) {
    write(R"({"a":1,"b":2,"c":3})");
    start();
    QStringList told;
    const Handle subscription = store->subscribe([&](const QString& key) { told.append(key); });
    write(R"({"a":1,"b":7,"d":4})");
    ASSERT_TRUE(waitUntil([&] { return told.size() == 3; })) << told.join(' ').toStdString();
    told.sort();
    EXPECT_EQ(told, (QStringList{"b", "c", "d"}));
    EXPECT_EQ(store->value("b"), QJsonValue(7));
    EXPECT_TRUE(store->value("c").isUndefined());
}

TEST_F(JsonPreferences, AtomicReplacementsArePickedUpOneAfterTheOther) {
    start();
    store->setValue("a", 0);
    for (int i = 1; i <= 3; ++i) {
        replace("{\"a\":" + QByteArray::number(i) + "}");
        EXPECT_TRUE(waitUntil([&] { return store->value("a") == QJsonValue(i); })) << i;
    }
}

TEST_F(JsonPreferences, AFileThatAppearsLaterIsPickedUp) {
    start();
    write(R"({"a":1})");
    EXPECT_TRUE(waitUntil([&] { return store->value("a") == QJsonValue(1); }));
}

TEST_F(JsonPreferences, AnEditThatNobodyHasToldOfYetSurvivesAWrite) {
    start();
    store->setValue("a", 1);
    replace(R"({"a":1,"outside":true})");
    store->setValue("b", 2);
    const QJsonObject expected{{"a", 1}, {"b", 2}, {"outside", true}};
    EXPECT_EQ(stored(), expected);
    EXPECT_EQ(store->value("outside"), QJsonValue(true));
}

TEST_F(JsonPreferences, AnUnreadableFileIsSetAsideAtTheStart) {
    for (const char* content : {"{\"a\":", "[1]", "", "\xff"}) {
        QDir(folder.path() + "/Tirra").removeRecursively();
        foundation.lines.clear();
        write(content);
        start();
        EXPECT_TRUE(store->value("a").isUndefined());
        EXPECT_EQ(read(path(".unreadable")), content);
        EXPECT_EQ(foundation.lines.filter("unreadable").size(), 1) << content;
        store->setValue("a", 2);
        const QJsonObject expected{{"a", 2}};
        EXPECT_EQ(stored(), expected);
        EXPECT_EQ(read(path(".unreadable")), content);
    }
}

TEST_F(JsonPreferences, AFolderOrAPipeInPlaceOfTheFileIsSetAside) {
    ASSERT_TRUE(QDir().mkpath(path()));
    start();
    EXPECT_TRUE(QFileInfo(path(".unreadable")).isDir());
    store->setValue("a", 2);
    EXPECT_EQ(stored(), (QJsonObject{{"a", 2}}));
    ASSERT_TRUE(QFile::remove(path()));
    ASSERT_EQ(::mkfifo(qPrintable(path()), 0600), 0);
    start();
    EXPECT_TRUE(QFileInfo::exists(path(".unreadable-2")));
    store->setValue("a", 3);
    EXPECT_EQ(stored(), (QJsonObject{{"a", 3}}));
}

TEST_F(JsonPreferences, AFileLargerThanAnyPreferencesIsSetAside) {
    write("{\"a\":1" + QByteArray(17 * 1024 * 1024, ' ') + "}");
    start();
    EXPECT_TRUE(store->value("a").isUndefined());
    EXPECT_TRUE(QFileInfo::exists(path(".unreadable")));
}

TEST_F(JsonPreferences, AnEndlessFileIsNotRead) {
    ASSERT_TRUE(QDir().mkpath(folder.path() + "/Tirra"));
    ASSERT_TRUE(QFile::link("/dev/zero", path()));
    start();
    store->setValue("a", 2);
    EXPECT_EQ(stored(), (QJsonObject{{"a", 2}}));
}

TEST_F(JsonPreferences, ASecondUnreadableFileDoesNotReplaceTheFirst) {
    write("first");
    start();
    write("second");
    start();
    EXPECT_EQ(read(path(".unreadable")), "first");
    EXPECT_EQ(read(path(".unreadable-2")), "second");
}

TEST_F(JsonPreferences, AHalfWrittenEditChangesNothingAndIsSetAsideBeforeAWrite) {
    start();
    store->setValue("a", 1);
    write("{\"a\":2,");
    EXPECT_EQ(store->value("a"), QJsonValue(1));
    store->setValue("b", 2);
    const QJsonObject expected{{"a", 1}, {"b", 2}};
    EXPECT_EQ(stored(), expected);
    EXPECT_EQ(read(path(".unreadable")), "{\"a\":2,");
}

TEST_F(JsonPreferences, AVanishedFileIsWrittenWholeAgain) {
    start();
    store->setValue("a", 1);
    ASSERT_TRUE(QFile::remove(path()));
    store->setValue("b", 2);
    const QJsonObject expected{{"a", 1}, {"b", 2}};
    EXPECT_EQ(stored(), expected);
}

TEST_F(JsonPreferences, AVanishedFolderIsMadeAgain) {
    start();
    ASSERT_TRUE(QDir(folder.path() + "/Tirra").removeRecursively());
    store->setValue("b", 2);
    const QJsonObject expected{{"b", 2}};
    EXPECT_EQ(stored(), expected);
}

TEST_F(JsonPreferences, WhatCannotBeWrittenIsLoggedAndHoldsForThisRun) {
    QFile blocker(folder.path() + "/Tirra");
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    start();
    store->setValue("tirra.mac.token", "s3cret");
    EXPECT_EQ(store->value("tirra.mac.token"), QJsonValue("s3cret"));
    EXPECT_EQ(foundation.lines.filter("could not be written").size(), 1);
    EXPECT_TRUE(foundation.lines.filter("s3cret").isEmpty());
}

TEST_F(JsonPreferences, DoublesKeepEveryBit) {
    start();
    const double value = 789012345.67890118;
    store->setValue("tirra.mac.nudgeLast", value);
    start();
    EXPECT_EQ(Preferences(*store).get(preference::nudgeLast), value);
}

} // namespace
