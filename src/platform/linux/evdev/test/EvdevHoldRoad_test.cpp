// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/evdev/EvdevHoldRoad.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "input/HoldKeys.h"
#include "input/KeyEvents.h"
#include "platform/linux/evdev/test/FakeKeyDevices.h"
#include "support/Wait.h"

#include <QStringList>
#include <gtest/gtest.h>

#include <random>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

constexpr int control = keyCode::rightControl;

class EvdevHoldRoadTest : public ::testing::Test {
 protected:
    void SetUp() override {
        base.clock.advance(seconds(1000));
        base.preferences.set(readKeyDevices, true);
        devices.plugIn(first);
        watchKeys();
    }
    void watchKeys() {
        watch = road.watch({control, keyCode::escape}, [this](const HoldEdge& edge) {
            static const QStringList kinds{"down", "up", "lost"};
            edges.append(QStringLiteral("%1 %2").arg(edge.keyCode).arg(kinds[static_cast<int>(edge.kind)]));
            times.push_back(edge.time);
        });
    }
    QByteArray key(int code, int value) {
        return eventBytes(EV_KEY, code, value, base.clock.now()) + eventBytes(EV_SYN, SYN_REPORT, 0);
    }
    /// Each of these ends with a key that shows that everything before it was read.
    void write(const QString& name, const QByteArray& bytes) {
        const auto before = edges.count(marker);
        devices.write(name, bytes + key(KEY_A, 1) + key(KEY_A, 0));
        ASSERT_TRUE(waitUntil([&] { return edges.count(marker) > before; }))
            << edges.join(u',').toStdString();
        edges.removeLast();
        times.pop_back();
    }
    std::optional<bool> isHeld(int code) {
        std::optional<bool> answer;
        const TaskHandle task = startTask(
            [&, this](TaskScope scope) -> QCoro::Task<void> { answer = co_await road.isHeld(code, scope); });
        return answer;
    }

    const QString first = QStringLiteral("event1");
    const QString second = QStringLiteral("event2");
    const QString marker = QStringLiteral("256 down");
    TestFoundation base;
    FakeKeyDevices devices;
    EvdevHoldRoad road{base.foundation, devices};
    QStringList edges;
    std::vector<Instant> times;
    Handle watch;
};

TEST_F(EvdevHoldRoadTest, PressAndReleaseAreToldWithTheirTimes) {
    const Instant pressed = base.clock.now();
    const QByteArray down = key(KEY_RIGHTCTRL, 1);
    base.clock.advance(milliseconds(300));
    const QByteArray up = key(KEY_RIGHTCTRL, 0);
    base.clock.advance(seconds(5)); // a busy main thread
    write(first, down + up);
    EXPECT_EQ(edges, QStringList({"62 down", "62 up"}));
    EXPECT_EQ(times, std::vector({pressed, pressed + milliseconds(300)}));
}

TEST_F(EvdevHoldRoadTest, TimesThatCannotBeTrueAreTheTimeOfReading) {
    write(first, eventBytes(EV_KEY, KEY_RIGHTCTRL, 1, base.clock.now() + seconds(10)) +
                     eventBytes(EV_KEY, KEY_RIGHTCTRL, 0, Instant()));
    EXPECT_EQ(times, std::vector({base.clock.now(), base.clock.now()}));
    devices.board(first).tellsSteadyTime = false;
    write(first, eventBytes(EV_KEY, KEY_RIGHTCTRL, 1, base.clock.now() - seconds(1)));
    EXPECT_EQ(times.back(), base.clock.now());
}

TEST_F(EvdevHoldRoadTest, ModifiersThatAreHeldAreKnownWhicheverSideAndKeyboard) {
    EXPECT_EQ(road.heldModifiers(), 0U);
    devices.plugIn(second);
    write(first, key(KEY_LEFTSHIFT, 1) + key(KEY_X, 1));
    write(second, key(KEY_RIGHTCTRL, 1));
    EXPECT_EQ(road.heldModifiers(), modifierFlag::shift | modifierFlag::control);
    write(first, key(KEY_LEFTSHIFT, 0));
    EXPECT_EQ(road.heldModifiers(), modifierFlag::control);
    watch.reset();
    EXPECT_EQ(road.heldModifiers(), 0U) << "nothing is read any more";
}

TEST_F(EvdevHoldRoadTest, LeftAndRightAreToldApart) {
    write(first, key(KEY_LEFTCTRL, 1) + key(KEY_LEFTCTRL, 0));
    EXPECT_EQ(edges, QStringList({"59 down", "59 up"}));
}

TEST_F(EvdevHoldRoadTest, OfOtherKeysItIsOnlyToldThatOneWentDown) {
    write(first, key(KEY_X, 1) + key(KEY_X, 2) + key(KEY_X, 0) + key(KEY_ESC, 1) + key(KEY_ESC, 0));
    EXPECT_EQ(edges, QStringList({"256 down", "53 down", "53 up"}));
    EXPECT_FALSE(base.lines.join(u'\n').contains(QStringLiteral("45"))); // KEY_X
}

TEST_F(EvdevHoldRoadTest, KeyThatTwoKeyboardsHoldIsUpWhenBothLetGo) {
    devices.plugIn(second);
    write(first, key(KEY_RIGHTCTRL, 1));
    write(second, key(KEY_RIGHTCTRL, 1));
    write(first, key(KEY_RIGHTCTRL, 0));
    EXPECT_EQ(edges, QStringList({"62 down"}));
    write(second, key(KEY_RIGHTCTRL, 0));
    EXPECT_EQ(edges, QStringList({"62 down", "62 up"}));
}

TEST_F(EvdevHoldRoadTest, KeyboardThatIsPluggedInLaterIsRead) {
    devices.plugIn(second);
    write(second, key(KEY_RIGHTCTRL, 1));
    EXPECT_EQ(edges, QStringList({"62 down"}));
}

TEST_F(EvdevHoldRoadTest, KeyboardThatIsUnpluggedLosesTheKeysItHeld) {
    devices.plugIn(second);
    write(second, key(KEY_RIGHTCTRL, 1) + key(KEY_X, 1));
    edges.clear();
    devices.unplug(second);
    EXPECT_TRUE(waitUntil([this] { return !edges.isEmpty(); }));
    EXPECT_EQ(edges, QStringList({"62 lost"}));
    write(first, key(KEY_RIGHTCTRL, 1));
    EXPECT_EQ(edges, QStringList({"62 lost", "62 down"}));
}

TEST_F(EvdevHoldRoadTest, KeyboardThatComesBackUnderTheSameNameIsReadAnew) {
    for (const bool isOnly : {true, false}) {
        edges.clear();
        if (!isOnly) {
            devices.plugIn(second);
        }
        devices.unplug(first);
        devices.plugIn(first);
        write(first, key(KEY_RIGHTCTRL, 1) + key(KEY_RIGHTCTRL, 0));
        EXPECT_EQ(edges, QStringList({"62 down", "62 up"})) << isOnly;
    }
}

TEST_F(EvdevHoldRoadTest, DeviceThatEndsWithoutAWordIsTriedAgain) {
    devices.plugIn(second);
    shutdown(devices.board(first).ends[0], SHUT_WR);
    ASSERT_TRUE(waitUntil([this] { return devices.board(first).openNow == 0; }));
    EXPECT_EQ(devices.board(first).opened, 1);
    base.clock.advance(seconds(1));
    EXPECT_EQ(devices.board(first).opened, 2);
}

TEST_F(EvdevHoldRoadTest, DroppedEventsAreMadeUpForByTheState) {
    write(first, key(KEY_RIGHTCTRL, 1) + key(KEY_LEFTSHIFT, 1));
    devices.board(first).down->set(KEY_RIGHTALT);
    devices.board(first).down->set(KEY_LEFTSHIFT);
    devices.board(first).down->set(KEY_X);
    edges.clear();
    write(first, eventBytes(EV_SYN, SYN_DROPPED, 0) + key(KEY_RIGHTCTRL, 1));
    EXPECT_EQ(edges, QStringList({"62 up", "61 down"}));
}

TEST_F(EvdevHoldRoadTest, DroppedEventsOfADeviceThatTellsNoStateLoseItsKeys) {
    write(first, key(KEY_RIGHTCTRL, 1));
    devices.board(first).down.reset();
    edges.clear();
    write(first, eventBytes(EV_SYN, SYN_DROPPED, 0) + eventBytes(EV_SYN, SYN_REPORT, 0));
    EXPECT_EQ(edges, QStringList({"62 lost"}));
}

TEST_F(EvdevHoldRoadTest, HeldIsWhatAnyKeyboardHolds) {
    devices.plugIn(second);
    EXPECT_EQ(isHeld(control), false);
    devices.board(second).down->set(KEY_RIGHTCTRL);
    EXPECT_EQ(isHeld(control), true);
    EXPECT_EQ(isHeld(keyCode::rightOption), false);
    EXPECT_EQ(isHeld(12345), std::nullopt);
    watch.reset();
    EXPECT_EQ(isHeld(control), std::nullopt);
}

TEST_F(EvdevHoldRoadTest, DevicesAreOpenOnlyWhileSomebodyWatches) {
    EXPECT_EQ(devices.board(first).openNow, 1);
    watch.reset();
    EXPECT_EQ(devices.board(first).openNow, 0);
    devices.plugIn(second);
    EXPECT_EQ(devices.board(second).opened, 0);
}

TEST_F(EvdevHoldRoadTest, WatchThatIsReplacedLosesNoKey) {
    write(first, key(KEY_RIGHTCTRL, 1));
    watchKeys();
    EXPECT_EQ(devices.board(first).opened, 1);
    write(first, key(KEY_RIGHTCTRL, 0));
    EXPECT_EQ(edges, QStringList({"62 down", "62 up"}));
}

TEST_F(EvdevHoldRoadTest, NothingIsOpenedUnlessTheUserHasSwitchedItOn) {
    base.preferences.set(readKeyDevices, false);
    EXPECT_EQ(devices.board(first).openNow, 0);
    EXPECT_TRUE(road.offer().keys.empty());
    EXPECT_FALSE(road.offer().obstacle.isEmpty());
    devices.plugIn(second);
    EXPECT_EQ(devices.board(second).opened, 0);
    base.preferences.set(readKeyDevices, true);
    EXPECT_EQ(devices.board(second).openNow, 1);
}

TEST_F(EvdevHoldRoadTest, ReadingIsOffByDefault) {
    TestFoundation fresh;
    FakeKeyDevices others;
    others.plugIn(first);
    const EvdevHoldRoad off(fresh.foundation, others);
    EXPECT_TRUE(off.offer().keys.empty());
}

TEST_F(EvdevHoldRoadTest, OfferFollowsThePermissionsAndTheDevices) {
    int changes = 0;
    const Handle told = road.onChange([&changes] { ++changes; });
    EXPECT_EQ(road.offer().keys.size(), 6U);
    for (const HoldKeyOffer& offered : road.offer().keys) {
        EXPECT_TRUE(offered.tellsSides);
        EXPECT_EQ(offered.chords, ChordSight::told);
    }
    devices.setReadable(false);
    EXPECT_TRUE(road.offer().keys.empty());
    devices.setReadable(true);
    EXPECT_EQ(changes, 2);
    devices.unplug(first);
    EXPECT_EQ(changes, 3);
    EXPECT_TRUE(road.offer().keys.empty());
}

TEST_F(EvdevHoldRoadTest, ExtraKeyIsToldAsTheOneItStandsFor) {
    base.preferences.set(preference::extraKey, QStringLiteral("F13"));
    write(first, key(KEY_F13, 1) + key(KEY_F13, 0));
    EXPECT_EQ(edges, QStringList({"63 down", "63 up"}));
    base.preferences.set(preference::extraKey, QStringLiteral("Enter"));
    EXPECT_EQ(road.offer().keys.size(), 5U);
}

TEST_F(EvdevHoldRoadTest, ObserverMayEndTheWatchInTheMiddleOfAnEvent) {
    int told = 0;
    watch = road.watch({control}, [this, &told](const HoldEdge&) {
        ++told;
        watch.reset();
    });
    devices.write(first, key(KEY_RIGHTCTRL, 1) + key(KEY_RIGHTCTRL, 0));
    EXPECT_TRUE(waitUntil([&told] { return told > 0; }));
    EXPECT_EQ(told, 1);
    EXPECT_EQ(devices.board(first).openNow, 0);
}

TEST_F(EvdevHoldRoadTest, GarbageEndsNothing) {
    std::mt19937 random{11};
    const auto any = [&random](int least, int most) {
        return std::uniform_int_distribution(least, most)(random);
    };
    for (int i = 0; i < 100; ++i) {
        QByteArray bytes;
        for (int event = 0; event < 20; ++event) {
            bytes += eventBytes(any(0, 5), any(0, 0x300), any(-1, 3));
        }
        for (int byte = 0; byte < 24; ++byte) {
            bytes += static_cast<char>(any(0, 255));
        }
        write(first, bytes + eventBytes(EV_SYN, SYN_REPORT, 0));
    }
    write(first, key(KEY_RIGHTCTRL, 0));
    write(first, key(KEY_RIGHTCTRL, 1));
    EXPECT_EQ(edges.last(), QStringLiteral("62 down"));
}

} // namespace

} // namespace lorvane
