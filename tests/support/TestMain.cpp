// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCoreApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// A suite never reads or writes the folders of whoever runs it, and sees the same clock and words everywhere.
void pinEnvironment(const QTemporaryDir& home) {
    qputenv("TZ", "UTC");
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("XDG_CONFIG_HOME", home.filePath("config").toUtf8());
    qputenv("XDG_DATA_HOME", home.filePath("data").toUtf8());
    qputenv("XDG_STATE_HOME", home.filePath("state").toUtf8());
    qputenv("XDG_CACHE_HOME", home.filePath("cache").toUtf8());
}

} // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const QTemporaryDir home;
    pinEnvironment(home);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
