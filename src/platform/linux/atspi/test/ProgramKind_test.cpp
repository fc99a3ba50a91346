// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/ProgramKind.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace lorvane {
namespace {

TEST(ProgramKind, QtIsToldByItsLibrary) {
    EXPECT_EQ(kindFrom("7f00-7f01 r-xp 0 08:01 1 /usr/lib/x86_64-linux-gnu/libQt5Gui.so.5.15.8\n", {}),
              ProgramKind::qt);
    EXPECT_EQ(kindFrom("7f00-7f01 r-xp 0 08:01 1 /usr/lib/x86_64-linux-gnu/libQt6Gui.so.6.4.2\n", {}),
              ProgramKind::qt);
}

TEST(ProgramKind, ChromiumIsToldByTheFilesBesideIt) {
    EXPECT_EQ(kindFrom("", {QStringLiteral("icudtl.dat"), QStringLiteral("chrome_100_percent.pak")}),
              ProgramKind::chromium);
    EXPECT_EQ(kindFrom("… /libQt6Gui.so.6", {QStringLiteral("v8_context_snapshot.bin")}),
              ProgramKind::chromium);
}

TEST(ProgramKind, AnythingElseIsUnknown) {
    EXPECT_EQ(kindFrom("… /usr/bin/xterm\n", {QStringLiteral("xterm"), QStringLiteral("ls")}),
              ProgramKind::unknown);
    EXPECT_EQ(programKind(-1), ProgramKind::unknown);
    // This very program links no Gui.
    EXPECT_EQ(programKind(QCoreApplication::applicationPid()), ProgramKind::unknown);
}

} // namespace
} // namespace lorvane
