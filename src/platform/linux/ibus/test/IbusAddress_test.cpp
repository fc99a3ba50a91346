// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/IbusAddress.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

const QString config = QStringLiteral("/home/u/.config");
const QString stem = QStringLiteral("/home/u/.config/ibus/bus/0123-");

QStringList filesFor(const std::vector<std::pair<const char*, const char*>>& variables) {
    QProcessEnvironment environment;
    for (const auto& [name, value] : variables) {
        environment.insert(QString::fromLatin1(name), QString::fromLatin1(value));
    }
    return ibusAddressPlaces(environment, config, QStringLiteral("0123")).files;
}

TEST(IbusAddress, TheFileOfTheWaylandDisplayComesBeforeThatOfTheXDisplay) {
    const QStringList expected{stem + QStringLiteral("unix-wayland-1"), stem + QStringLiteral("unix-7")};
    EXPECT_EQ(filesFor({{"WAYLAND_DISPLAY", "wayland-1"}, {"DISPLAY", ":7.0"}}), expected);
}

TEST(IbusAddress, ARemoteXDisplayIsNamedByItsHost) {
    EXPECT_EQ(filesFor({{"DISPLAY", "far:10.1"}}), QStringList(stem + QStringLiteral("far-10")));
}

TEST(IbusAddress, WithoutADisplayThereIsNoFile) {
    EXPECT_TRUE(filesFor({}).isEmpty());
    EXPECT_TRUE(filesFor({{"DISPLAY", "nonsense"}}).isEmpty());
    EXPECT_TRUE(filesFor({{"DISPLAY", ":"}}).isEmpty());
}

TEST(IbusAddress, AFileThatIsNamedIsTheOnlyOne) {
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("IBUS_ADDRESS_FILE"), QStringLiteral("/run/u/x"));
    environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":0"));
    const IbusAddressPlaces places = ibusAddressPlaces(environment, config, QStringLiteral("0123"));
    EXPECT_EQ(places.files, QStringList("/run/u/x"));
    EXPECT_EQ(places.folder, QStringLiteral("/run/u"));
}

TEST(IbusAddress, TheAddressIsReadFromTheFile) {
    EXPECT_EQ(addressInFile("# This file\nIBUS_ADDRESS=unix:path=/a=b,guid=c\nIBUS_DAEMON_PID=5\n"),
              QStringLiteral("unix:path=/a=b,guid=c"));
    EXPECT_TRUE(addressInFile("IBUS_DAEMON_PID=5").isEmpty());
    EXPECT_TRUE(addressInFile("").isEmpty());
}

} // namespace

} // namespace lorvane
