// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/DesktopEntry.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

TEST(DesktopEntry, PlainPathStandsAsItIs) {
    EXPECT_EQ(execWord(QStringLiteral("/usr/bin/lorvane")), "/usr/bin/lorvane");
    EXPECT_EQ(execWord(QStringLiteral("/home/zoë/lorvane")), "/home/zoë/lorvane");
}

TEST(DesktopEntry, PathWithABlankStandsInQuotes) {
    EXPECT_EQ(execWord(QStringLiteral("/home/ada/my programs/lorvane")), "\"/home/ada/my programs/lorvane\"");
    EXPECT_EQ(execWord(QStringLiteral("/opt/a;b'c/lorvane")), "\"/opt/a;b'c/lorvane\"");
}

TEST(DesktopEntry, WhatMeansSomethingInQuotesIsEscapedTwice) {
    EXPECT_EQ(execWord(QStringLiteral("/a\"b")), R"("/a\\"b")");
    EXPECT_EQ(execWord(QStringLiteral("/a$b`c")), R"("/a\\$b\\`c")");
    EXPECT_EQ(execWord(QStringLiteral("/a\\b")), R"("/a\\\\b")");
    EXPECT_EQ(execWord(QStringLiteral("/a\nb")), R"("/a\nb")");
}

TEST(DesktopEntry, PercentSignIsNoFieldCode) {
    EXPECT_EQ(execWord(QStringLiteral("/opt/100%/lorvane")), "/opt/100%%/lorvane");
}

TEST(DesktopEntry, HasOneExecLine) {
    EXPECT_EQ(hiddenDesktopEntry(QStringLiteral("Lorvane"), QStringLiteral("/a b"), "X-Key=1"),
              "[Desktop Entry]\nType=Application\nName=Lorvane\nExec=\"/a b\"\nNoDisplay=true\nX-Key=1\n");
}

} // namespace

} // namespace lorvane
