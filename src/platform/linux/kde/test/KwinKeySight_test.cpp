// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/KwinKeySight.h"

#include "support/Wait.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lorvane {

namespace {

class KwinKeySightTest : public ::testing::Test {
 protected:
    void SetUp() override { ASSERT_TRUE(folder.isValid()); }

    static void write(const QString& path, const QByteArray& content) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    XKeySight sightWith(const QByteArray& value) {
        write(users,
              "[Wayland]\nXwaylandEavesdrops=All\n[Xwayland]\nScale=1\nXwaylandEavesdrops=" + value + '\n');
        return KwinKeySight(session, {users, systems}).sight();
    }
    void tellKwin(const QString& path, const QString& interface, const QString& name) {
        ASSERT_TRUE(session.send(QDBusMessage::createSignal(path, interface, name)));
    }

    QDBusConnection session = QDBusConnection::sessionBus();
    QTemporaryDir folder;
    QString users = folder.filePath(QStringLiteral("kwinrc"));
    QString systems = folder.filePath(QStringLiteral("system-kwinrc"));
};

TEST_F(KwinKeySightTest, ReadsEachChoice) {
    EXPECT_EQ(sightWith("None"), XKeySight::none);
    EXPECT_EQ(sightWith("Modifiers"), XKeySight::modifiers);
    EXPECT_EQ(sightWith("modifiers \r"), XKeySight::modifiers);
    EXPECT_EQ(sightWith("Combinations"), XKeySight::modifiers);
    EXPECT_EQ(sightWith("All"), XKeySight::everything);
    EXPECT_EQ(sightWith("1"), XKeySight::modifiers);
    EXPECT_EQ(sightWith("3"), XKeySight::everything);
    EXPECT_EQ(sightWith("nonsense"), XKeySight::none);
    EXPECT_EQ(sightWith(""), XKeySight::none);
}

TEST_F(KwinKeySightTest, TakesTheUsersChoiceBeforeTheSystems) {
    EXPECT_EQ(KwinKeySight(session, {users, systems}).sight(), XKeySight::none) << "no file is there";
    write(systems, "[Xwayland]\nXwaylandEavesdrops=All\n");
    EXPECT_EQ(KwinKeySight(session, {users, systems}).sight(), XKeySight::everything);
    write(users, "[Xwayland]\nScale=1\n");
    EXPECT_EQ(KwinKeySight(session, {users, systems}).sight(), XKeySight::everything);
    EXPECT_EQ(sightWith("None"), XKeySight::none);
}

TEST_F(KwinKeySightTest, LooksAgainWhenKwinIsTold) {
    KwinKeySight sight(session, {users});
    int changes = 0;
    const Handle change = sight.onChange([&] { ++changes; });
    write(users, "[Xwayland]\nXwaylandEavesdrops=Modifiers\n");
    tellKwin("/kwinrc", "org.kde.kconfig.notify", "ConfigChanged");
    EXPECT_TRUE(waitUntil([&] { return sight.sight() == XKeySight::modifiers; }));
    write(users, "[Xwayland]\nXwaylandEavesdrops=All\n");
    tellKwin("/KWin", "org.kde.KWin", "reloadConfig");
    EXPECT_TRUE(waitUntil([&] { return sight.sight() == XKeySight::everything; }));
    ASSERT_TRUE(QFile::remove(users));
    tellKwin("/kwinrc", "org.kde.kconfig.notify", "ConfigChanged");
    EXPECT_TRUE(waitUntil([&] { return sight.sight() == XKeySight::none; }));
    EXPECT_EQ(changes, 3);
}

} // namespace

} // namespace lorvane
