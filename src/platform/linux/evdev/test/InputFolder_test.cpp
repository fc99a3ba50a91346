// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/evdev/InputFolder.h"

#include "support/Wait.h"

#include <sys/stat.h>

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

class InputFolderTest : public ::testing::Test {
 protected:
    void makePipe(const QString& name) {
        ASSERT_EQ(mkfifo(QFile::encodeName(folder.filePath(name)).constData(), 0600), 0);
    }

    QTemporaryDir folder;
    InputFolder devices{folder.path()};
    int changes = 0;
    Handle watch = devices.onChange([this] { ++changes; });
};

TEST_F(InputFolderTest, TellsOfDevicesThatComeAndGo) {
    makePipe(QStringLiteral("event3"));
    EXPECT_TRUE(waitUntil([this] { return changes > 0; }));
    EXPECT_EQ(devices.names(), std::vector<QString>({QStringLiteral("event3")}));
    changes = 0;
    QFile::remove(folder.filePath(QStringLiteral("event3")));
    EXPECT_TRUE(waitUntil([this] { return changes > 0; }));
    EXPECT_EQ(devices.names(), std::vector<QString>());
}

TEST_F(InputFolderTest, TellsOfPermissionsThatChange) {
    makePipe(QStringLiteral("event3"));
    EXPECT_TRUE(waitUntil([this] { return changes > 0; }));
    changes = 0;
    ASSERT_EQ(chmod(QFile::encodeName(folder.filePath(QStringLiteral("event3"))).constData(), 0640), 0);
    EXPECT_TRUE(waitUntil([this] { return changes > 0; }));
}

TEST_F(InputFolderTest, WhatIsNoKeyDeviceIsNotOpened) {
    makePipe(QStringLiteral("event3"));
    makePipe(QStringLiteral("mouse0"));
    QFile file(folder.filePath(QStringLiteral("event4")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(devices.names(), std::vector<QString>({QStringLiteral("event3"), QStringLiteral("event4")}));
    for (const QString& name : devices.names()) {
        EXPECT_EQ(devices.open(name), nullptr);
    }
    EXPECT_EQ(devices.open(QStringLiteral("event9")), nullptr);
    EXPECT_EQ(devices.access(), KeyDevices::Access::none);
}

TEST(InputFolder, FolderThatIsMissingHasNoDevices) {
    const InputFolder devices(QStringLiteral("/nonexistent/input"));
    EXPECT_EQ(devices.access(), KeyDevices::Access::none);
}

} // namespace

} // namespace lorvane
