// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/DiskSetupWorld.h"

#include "base/testing/TestFoundation.h"
#include "platform/linux/evdev/EvdevHoldRoad.h"
#include "platform/linux/portal/PortalKeyboard.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

class DiskSetupWorldTest : public ::testing::Test {
 protected:
    [[nodiscard]] std::optional<QByteArray> contentOf(const QString& file) const {
        const auto reading = world.read(file);
        EXPECT_TRUE(reading) << reading.error().toStdString();
        return *reading;
    }

    QTemporaryDir folder;
    TestFoundation base;
    DiskSetupWorld world{base.foundation, QDBusConnection(QStringLiteral("none"))};
    const QString path = folder.filePath(QStringLiteral("a/b/file"));
};

TEST_F(DiskSetupWorldTest, FileIsWrittenWithItsFoldersAndRemovedWithThem) {
    EXPECT_EQ(contentOf(path), std::nullopt);
    const QStringList made = world.foldersToMake(path);
    EXPECT_EQ(made,
              QStringList({folder.filePath(QStringLiteral("a")), folder.filePath(QStringLiteral("a/b"))}));
    EXPECT_TRUE(world.write(path, QByteArray("x\0y", 3)));
    EXPECT_EQ(contentOf(path), QByteArray("x\0y", 3));
    EXPECT_EQ(world.foldersToMake(path), QStringList());
    EXPECT_TRUE(world.remove(path, made));
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(QStringLiteral("a"))));
    EXPECT_TRUE(QFileInfo::exists(folder.path()));
    EXPECT_TRUE(world.remove(path, made));
}

TEST_F(DiskSetupWorldTest, FolderWithOtherFilesOrOfOthersStays) {
    EXPECT_TRUE(world.write(path, "x"));
    EXPECT_TRUE(world.write(folder.filePath(QStringLiteral("a/other")), "x"));
    EXPECT_TRUE(
        world.remove(path, {folder.filePath(QStringLiteral("a")), folder.filePath(QStringLiteral("a/b"))}));
    EXPECT_TRUE(QFileInfo::exists(folder.filePath(QStringLiteral("a/other"))));
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(QStringLiteral("a/b"))));
    EXPECT_TRUE(world.write(path, "x"));
    EXPECT_TRUE(world.remove(path, {}));
    EXPECT_TRUE(QFileInfo::exists(folder.filePath(QStringLiteral("a/b"))));
}

// Root may read everything, so this is a thing that nobody can.
TEST_F(DiskSetupWorldTest, WhatCannotBeReadIsNotMissing) {
    const auto reading = world.read(folder.path());
    ASSERT_FALSE(reading);
    EXPECT_FALSE(reading.error().isEmpty());
}

TEST_F(DiskSetupWorldTest, PermissionsAndLinksStay) {
    EXPECT_TRUE(world.write(path, "x"));
    const auto owner = QFile::ReadOwner | QFile::WriteOwner;
    ASSERT_TRUE(QFile::setPermissions(path, owner));
    const QString link = folder.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(path, link));
    EXPECT_TRUE(world.write(link, "y"));
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(contentOf(path), QByteArray("y"));
    EXPECT_FALSE(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther));
}

TEST_F(DiskSetupWorldTest, ProgramsOutputIsGivenWhenItEndsWell) {
    EXPECT_EQ(world.run({QStringLiteral("echo"), QStringLiteral("hello")}), QByteArray("hello\n"));
    EXPECT_EQ(world.run({QStringLiteral("false")}), std::nullopt);
    EXPECT_EQ(world.run({QStringLiteral("/nonexistent/program")}), std::nullopt);
}

TEST_F(DiskSetupWorldTest, DevicesAreSwitchedByTheirPreference) {
    world.switchDevices(true);
    EXPECT_TRUE(base.preferences.get(readKeyDevices));
    world.switchDevices(false);
    EXPECT_EQ(base.preferences.stored(readKeyDevices), std::nullopt);
}

TEST_F(DiskSetupWorldTest, WithoutABusThePortalSaysNoAndItsWordIsForgotten) {
    EXPECT_FALSE(world.askPortal(true));
    base.preferences.set(remoteDesktopToken, QStringLiteral("x"));
    EXPECT_TRUE(world.askPortal(false));
    EXPECT_EQ(base.preferences.stored(remoteDesktopToken), std::nullopt);
}

} // namespace

} // namespace lorvane
