// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/PatienceList.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

const QString hung = QStringLiteral(":1.1");

TEST(PatienceList, AnApplicationThatWasSilentIsLeftAlone) {
    PatienceList list;
    EXPECT_FALSE(list.isAside(hung, Instant()));
    list.putAside(hung, Instant());
    EXPECT_TRUE(list.isAside(hung, Instant()));
    EXPECT_FALSE(list.isAside(QStringLiteral(":1.2"), Instant()));
}

TEST(PatienceList, ItsNextEventBringsItBack) {
    PatienceList list;
    list.putAside(hung, Instant());
    list.heardFrom(hung);
    EXPECT_FALSE(list.isAside(hung, Instant()));
}

TEST(PatienceList, ItIsTriedAgainAfterThreeSeconds) {
    PatienceList list;
    list.putAside(hung, Instant());
    EXPECT_TRUE(list.isAside(hung, Instant() + seconds(2.999)));
    EXPECT_FALSE(list.isAside(hung, Instant() + seconds(3)));
}

TEST(PatienceList, GoingAsideIsToldOnceUntilTheApplicationIsBack) {
    int told = 0;
    PatienceList patience{[&told](const QString& bus) {
        EXPECT_EQ(bus, QStringLiteral(":1.7"));
        ++told;
    }};
    const Instant start{};
    patience.putAside(QStringLiteral(":1.7"), start);
    patience.putAside(QStringLiteral(":1.7"), start);
    EXPECT_EQ(told, 1);
    patience.heardFrom(QStringLiteral(":1.7"));
    patience.putAside(QStringLiteral(":1.7"), start);
    EXPECT_EQ(told, 2);
    patience.putAside(QStringLiteral(":1.7"), start + PatienceList::rest);
    EXPECT_EQ(told, 3);
}

} // namespace
} // namespace lorvane
