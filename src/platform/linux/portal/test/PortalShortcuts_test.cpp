// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/portal/PortalShortcuts.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

TEST(PortalShortcuts, ExtraKeysHaveTheNamesOfTheirSymbols) {
    EXPECT_EQ(triggerFor(QStringLiteral("Menu")), QStringLiteral("Menu"));
    EXPECT_EQ(triggerFor(QStringLiteral("ScrollLock")), QStringLiteral("Scroll_Lock"));
    EXPECT_EQ(triggerFor(QStringLiteral("F13")), QStringLiteral("F13"));
    EXPECT_EQ(triggerFor(QStringLiteral("F24")), QStringLiteral("F24"));
}

TEST(PortalShortcuts, WhatIsNoExtraKeyIsNoTrigger) {
    for (const char* const name : {"F12", "F25", "Enter", "", "F13 "}) {
        EXPECT_EQ(triggerFor(QString::fromLatin1(name)), QString()) << name;
    }
}

TEST(PortalShortcuts, AnswerOfAnotherTypeIsNoList) {
    EXPECT_FALSE(shortcutsFrom(QVariant()));
    EXPECT_FALSE(shortcutsFrom(QStringLiteral("dictate")));
    EXPECT_FALSE(shortcutsFrom(QStringList({QStringLiteral("dictate")})));
}

} // namespace

} // namespace lorvane
