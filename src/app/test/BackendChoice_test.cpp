// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/BackendChoice.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "support/Wait.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

class BackendChoiceTest : public ::testing::Test {
 protected:
    BackendChoiceTest() { qunsetenv("LORVANE_BACKEND_URL"); }
    ~BackendChoiceTest() override { qunsetenv("LORVANE_BACKEND_URL"); }

    /// A program that says where it listens, as the backend does, and stays.
    QString talkingBackend() {
        QFile file(folder.filePath(QStringLiteral("backend")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\necho 'listening on http://127.0.0.1:4321'\nexec sleep 60\n");
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return file.fileName();
    }
    QString missingBackend() const { return folder.filePath(QStringLiteral("nothing")); }
    std::unique_ptr<BackendChoice> choose(const QString& bundled) {
        return std::make_unique<BackendChoice>(
            world.foundation, bundled,
            BackendChoice::Callbacks{[this](const QUrl& url) { used.append(url.toString()); },
                                     [this] { ++surrenders; }});
    }

    QTemporaryDir folder;
    TestFoundation world;
    QStringList used;
    int surrenders = 0;
};

TEST_F(BackendChoiceTest, EnvironmentGoesBeforeThePreference) {
    qputenv("LORVANE_BACKEND_URL", "http://127.0.0.1:1");
    world.preferences.set(preference::backendURL, QString("http://127.0.0.1:2"));
    const auto choice = choose(missingBackend());
    EXPECT_EQ(used, QStringList{"http://127.0.0.1:1"});
}

TEST_F(BackendChoiceTest, PreferenceGoesBeforeTheBundledOne) {
    world.preferences.set(preference::backendURL, QString("https://backend.example"));
    const auto choice = choose(missingBackend());
    EXPECT_EQ(used, QStringList{"https://backend.example"});
    EXPECT_EQ(surrenders, 0);
}

TEST_F(BackendChoiceTest, WithoutASettingTheBundledOneIsStarted) {
    const auto choice = choose(talkingBackend());
    EXPECT_TRUE(waitUntil([this] { return !used.isEmpty(); }));
    EXPECT_EQ(used, QStringList{"http://127.0.0.1:4321"});
}

TEST_F(BackendChoiceTest, BundledOneThatCannotBeStartedIsGivenUp) {
    const auto choice = choose(missingBackend());
    EXPECT_TRUE(waitUntil([this] { return surrenders == 1; })) << surrenders;
    EXPECT_EQ(used, QStringList());
}

TEST_F(BackendChoiceTest, SettingThatIsNoAddressGetsNoOtherBackendInItsPlace) {
    for (const char* const garbage :
         {"garbage", "http://[bad", "ftp://backend.example", "http://", "127.0.0.1:80"}) {
        used.clear();
        world.lines.clear();
        qputenv("LORVANE_BACKEND_URL", garbage);
        const auto choice = choose(talkingBackend());
        EXPECT_EQ(used, QStringList{QString()}) << garbage;
        EXPECT_EQ(world.lines.filter("is not the address of a backend").size(), 1) << garbage;
    }
}

TEST_F(BackendChoiceTest, BlanksAroundAnAddressDoNotCount) {
    qputenv("LORVANE_BACKEND_URL", " http://127.0.0.1:1\n");
    const auto choice = choose(missingBackend());
    EXPECT_EQ(used, QStringList{"http://127.0.0.1:1"});
}

TEST_F(BackendChoiceTest, ChangeOfThePreferenceIsFollowedToAndFro) {
    const auto choice = choose(talkingBackend());
    ASSERT_TRUE(waitUntil([this] { return used.size() == 1; }));
    world.preferences.set(preference::backendURL, QString("http://127.0.0.1:2"));
    EXPECT_EQ(used.last(), "http://127.0.0.1:2");
    world.preferences.set(preference::backendURL, QString(""));
    EXPECT_TRUE(waitUntil([this] { return used.size() == 3; }));
    EXPECT_EQ(used.last(), "http://127.0.0.1:4321");
}

TEST_F(BackendChoiceTest, ChangeOfThePreferenceMeansNothingUnderTheEnvironment) {
    qputenv("LORVANE_BACKEND_URL", "http://127.0.0.1:1");
    const auto choice = choose(missingBackend());
    world.preferences.set(preference::backendURL, QString("http://127.0.0.1:2"));
    EXPECT_EQ(used, QStringList{"http://127.0.0.1:1"});
}

TEST_F(BackendChoiceTest, IsKnownOnceThereIsAnAddress) {
    const auto choice = choose(talkingBackend());
    bool known = false;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        co_await choice->known(scope);
        known = true;
    });
    EXPECT_FALSE(known);
    EXPECT_TRUE(waitUntil([&] { return known; }));
    EXPECT_EQ(used.size(), 1);
}

} // namespace

} // namespace lorvane
