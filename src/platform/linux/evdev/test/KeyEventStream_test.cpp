// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/evdev/KeyEventStream.h"

#include "platform/linux/evdev/test/FakeKeyDevices.h"

#include <gtest/gtest.h>

#include <random>

namespace lorvane {

namespace {

using Item = KeyEventStream::Item;
using Kind = Item::Kind;

const Instant someTime(std::chrono::milliseconds(12345));

/// A press and release of right Ctrl as a keyboard gives it: scan code, key, report; with repeats in between.
QByteArray recordedPress() {
    QByteArray all;
    for (const int value : {1, 2, 2, 0}) {
        if (value != 2) {
            all += eventBytes(EV_MSC, MSC_SCAN, 0x700e4, someTime);
        }
        all += eventBytes(EV_KEY, KEY_RIGHTCTRL, value, someTime);
        all += eventBytes(EV_SYN, SYN_REPORT, value == 2 ? 1 : 0, someTime);
    }
    return all;
}

const std::vector<Item> pressAndRelease{{Kind::down, KEY_RIGHTCTRL, someTime},
                                        {Kind::up, KEY_RIGHTCTRL, someTime}};

TEST(KeyEventStream, GivesPressesAndReleasesWithTheirTimesAndNoRepeats) {
    KeyEventStream stream;
    EXPECT_EQ(stream.take(recordedPress()), pressAndRelease);
}

TEST(KeyEventStream, EventThatComesInPiecesCountsOnceItIsWhole) {
    KeyEventStream stream;
    std::vector<Item> items;
    for (const char byte : recordedPress()) {
        const auto some = stream.take(QByteArray(1, byte));
        items.insert(items.end(), some.begin(), some.end());
    }
    EXPECT_EQ(items, pressAndRelease);
}

TEST(KeyEventStream, AfterDroppedEventsNothingCountsUpToTheNextReport) {
    KeyEventStream stream;
    const auto items = stream.take(eventBytes(EV_KEY, KEY_RIGHTCTRL, 1) + eventBytes(EV_SYN, SYN_REPORT, 0) +
                                   eventBytes(EV_SYN, SYN_DROPPED, 0) + eventBytes(EV_KEY, KEY_RIGHTCTRL, 0) +
                                   eventBytes(EV_KEY, KEY_A, 1) + eventBytes(EV_SYN, SYN_REPORT, 0) +
                                   eventBytes(EV_KEY, KEY_B, 1));
    EXPECT_EQ(items, std::vector<Item>({{Kind::down, KEY_RIGHTCTRL, Instant()},
                                        {Kind::dropped, 0, Instant()},
                                        {Kind::down, KEY_B, Instant()}}));
}

TEST(KeyEventStream, OtherEventsAndValuesThatNoKeyHasArePassedOver) {
    KeyEventStream stream;
    EXPECT_EQ(stream.take(eventBytes(EV_REL, REL_X, 1) + eventBytes(EV_ABS, ABS_X, 0) +
                          eventBytes(EV_LED, LED_CAPSL, 1) + eventBytes(EV_KEY, KEY_A, 7) +
                          eventBytes(EV_KEY, KEY_A, -1) + eventBytes(0xffff, KEY_A, 1)),
              std::vector<Item>());
}

TEST(KeyEventStream, GarbageGivesNoMoreThanItHasRoomFor) {
    std::mt19937 random{7};
    KeyEventStream stream;
    std::size_t given = 0;
    qsizetype written = 0;
    for (int i = 0; i < 2000; ++i) {
        QByteArray bytes(std::uniform_int_distribution(0, 500)(random), Qt::Uninitialized);
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        written += bytes.size();
        given += stream.take(bytes).size();
    }
    EXPECT_LE(given, written / sizeof(input_event));
}

} // namespace

} // namespace lorvane
