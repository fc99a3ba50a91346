// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/gnome/ShellExtensionHoldRoad.h"

#include "input/KeyEvents.h"
#include "platform/linux/gnome/test/PrivateBus.h"

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

const QString service = QStringLiteral("com.ostrand.tirra.ShellKeys");
const QString object = QStringLiteral("/com/ostrand/tirra/ShellKeys");
const QString interface = QStringLiteral("com.ostrand.tirra.ShellKeys1");
const QString program = QStringLiteral("com.ostrand.tirra");

class ShellExtensionRoad : public PrivateBus {
 protected:
    void bringExtension() {
        extension = std::make_unique<ScriptedService>(address, object);
        extension->take(service);
        ASSERT_TRUE(waitUntil([this] { return !road.offer().keys.empty(); }));
    }
    Handle watch(std::vector<int> keys) {
        return road.watch(std::move(keys), [this](const HoldEdge& edge) { edges.push_back(edge); });
    }
    void tell(int inputCode, bool down, bool isVirtual = false, Duration age = Duration::zero()) {
        const auto time =
            std::chrono::floor<std::chrono::milliseconds>((clock.now() - age).time_since_epoch());
        extension->emitSignal(
            object, interface, QStringLiteral("Key"),
            {static_cast<uint>(inputCode), down, static_cast<uint>(time.count()), isVirtual});
    }
    std::optional<bool> ask(int keyCode) {
        std::optional<bool> held;
        const TaskHandle task = startTask(
            [&](TaskScope scope) -> QCoro::Task<void> { held = co_await road.isHeld(keyCode, scope); });
        EXPECT_TRUE(waitUntil([&] { return !task.isRunning(); }));
        return held;
    }
    bool called(const QString& call) {
        return waitUntil([&] { return extension->calls().contains(call); });
    }

    std::optional<int> extraKey = KEY_COMPOSE;
    bool isPosting = false;
    ShellExtensionHoldRoad road{
        bus, clock, {program, [this] { return extraKey; }, [this] { return isPosting; }}};
    std::unique_ptr<ScriptedService> extension;
    std::vector<HoldEdge> edges;
};

TEST_F(ShellExtensionRoad, WithoutTheExtensionNothingIsOfferedAndTheObstacleIsNamed) {
    EXPECT_TRUE(road.offer().keys.empty());
    EXPECT_FALSE(road.offer().obstacle.isEmpty());
    EXPECT_EQ(ask(keyCode::rightControl), std::nullopt);
}

TEST_F(ShellExtensionRoad, OffersEveryHotkeyAndEscapeOnceTheExtensionIsThere) {
    int changes = 0;
    const Handle changed = road.onChange([&changes] { ++changes; });
    bringExtension();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(road.offer().keys.size(), 6U);
    EXPECT_TRUE(road.offer().obstacle.isEmpty());
    extraKey.reset();
    EXPECT_EQ(road.offer().keys.size(), 5U);
}

TEST_F(ShellExtensionRoad, NothingIsAskedOfTheExtensionUntilSomebodyWatches) {
    bringExtension();
    extension->forgetCalls();
    {
        const Handle watching = watch({keyCode::rightControl});
        EXPECT_TRUE(called(QStringLiteral("Watch:[97],[]")));
    }
    EXPECT_TRUE(called(QStringLiteral("Unwatch:")));
    EXPECT_EQ(extension->calls().size(), 2);
}

TEST_F(ShellExtensionRoad, TheExtraKeyIsKeptFromEverybodyElse) {
    bringExtension();
    const Handle watching = watch({keyCode::fn, keyCode::escape});
    EXPECT_TRUE(called(QStringLiteral("Watch:[127 1],[127]")));
}

TEST_F(ShellExtensionRoad, EdgesComeWithTheTimeAtWhichTheKeyMoved) {
    bringExtension();
    const Handle watching = watch({keyCode::rightControl});
    const Instant before = clock.now();
    tell(KEY_RIGHTCTRL, true, false, std::chrono::milliseconds(400));
    tell(KEY_RIGHTCTRL, false);
    ASSERT_TRUE(waitUntil([this] { return edges.size() == 2; }));
    EXPECT_EQ(edges[0].keyCode, keyCode::rightControl);
    EXPECT_EQ(edges[0].kind, HoldEdgeKind::down);
    EXPECT_NEAR(inSeconds(before - edges[0].time), 0.4, 0.1);
    EXPECT_EQ(edges[1].kind, HoldEdgeKind::up);
}

TEST_F(ShellExtensionRoad, ATimeThatCannotBeIsTheTimeOfArrival) {
    bringExtension();
    const Handle watching = watch({keyCode::rightControl});
    const Instant before = clock.now();
    tell(KEY_RIGHTCTRL, true, false, std::chrono::hours(3));
    tell(KEY_RIGHTCTRL, false, false, -std::chrono::hours(3));
    ASSERT_TRUE(waitUntil([this] { return edges.size() == 2; }));
    EXPECT_GE(edges[0].time, before);
    EXPECT_GE(edges[1].time, before);
    EXPECT_LE(edges[1].time, clock.now());
}

TEST_F(ShellExtensionRoad, TwinsAndOtherKeysAreToldApartFromTheHotkey) {
    bringExtension();
    const Handle watching = watch({keyCode::rightControl});
    tell(KEY_LEFTCTRL, true);
    tell(0, true);
    ASSERT_TRUE(waitUntil([this] { return edges.size() == 2; }));
    EXPECT_EQ(edges[0].keyCode, 59);
    EXPECT_GE(edges[1].keyCode, 0x100);
    EXPECT_EQ(road.modifierFlags(), modifierFlag::control);
    EXPECT_EQ(road.heldModifiers(), std::vector<int>{KEY_LEFTCTRL});
}

TEST_F(ShellExtensionRoad, WhatTheProgramPostsItselfIsLeftOut) {
    bringExtension();
    const Handle watching = watch({keyCode::rightControl});
    isPosting = true;
    tell(KEY_LEFTCTRL, true, true);
    tell(KEY_RIGHTSHIFT, true, false);
    ASSERT_TRUE(waitUntil([this] { return edges.size() == 1; }));
    EXPECT_EQ(edges[0].keyCode, keyCode::rightShift);
    isPosting = false;
    tell(KEY_LEFTCTRL, true, true);
    EXPECT_TRUE(waitUntil([this] { return edges.size() == 2; }));
}

TEST_F(ShellExtensionRoad, AKeyThatIsHeldWhenTheExtensionGoesIsLost) {
    bringExtension();
    const Handle watching = watch({keyCode::rightControl});
    tell(KEY_RIGHTCTRL, true);
    ASSERT_TRUE(waitUntil([this] { return edges.size() == 1; }));
    extension.reset();
    ASSERT_TRUE(waitUntil([this] { return edges.size() == 2; }));
    EXPECT_EQ(edges[1].kind, HoldEdgeKind::lost);
    EXPECT_EQ(edges[1].keyCode, keyCode::rightControl);
    EXPECT_TRUE(road.offer().keys.empty());
    EXPECT_EQ(road.modifierFlags(), 0U);
}

TEST_F(ShellExtensionRoad, TheWatchGoesOnWhenTheExtensionIsBack) {
    bringExtension();
    const Handle watching = watch({keyCode::rightControl});
    extension.reset();
    ASSERT_TRUE(waitUntil([this] { return road.offer().keys.empty(); }));
    bringExtension();
    EXPECT_TRUE(called(QStringLiteral("Watch:[97],[]")));
    tell(KEY_RIGHTCTRL, true);
    EXPECT_TRUE(waitUntil([this] { return edges.size() == 1; }));
}

TEST_F(ShellExtensionRoad, TheWatchIsAskedForAnewOnceTheProgramHasItsName) {
    bringExtension();
    extension->answer = [](const QDBusMessage& call) {
        return call.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"), QString());
    };
    const Handle watching = watch({keyCode::rightControl});
    ASSERT_TRUE(called(QStringLiteral("Watch:[97],[]")));
    extension->forgetCalls();
    ASSERT_TRUE(bus.registerService(program));
    EXPECT_TRUE(called(QStringLiteral("Watch:[97],[]")));
}

TEST_F(ShellExtensionRoad, ANewWatchTakesThePlaceOfTheOldOne) {
    bringExtension();
    Handle first = watch({keyCode::rightControl});
    const Handle second = watch({keyCode::rightShift});
    ASSERT_TRUE(called(QStringLiteral("Watch:[54],[]")));
    first.reset();
    tell(KEY_RIGHTSHIFT, true);
    ASSERT_TRUE(waitUntil([this] { return edges.size() == 1; }));
    EXPECT_FALSE(extension->calls().contains(QStringLiteral("Unwatch:")));
}

TEST_F(ShellExtensionRoad, TheStateIsTheExtensionsAnswerAndAbsentWithoutOne) {
    bringExtension();
    const Handle watching = watch({keyCode::rightControl});
    extension->answer = [](const QDBusMessage& call) { return call.createReply(true); };
    EXPECT_EQ(ask(keyCode::rightControl), true);
    EXPECT_TRUE(called(QStringLiteral("IsDown:97")));
    extension->answer = [](const QDBusMessage& call) { return call.createReply(QStringLiteral("well")); };
    EXPECT_EQ(ask(keyCode::rightControl), std::nullopt);
    extension->answer = [](const QDBusMessage& call) {
        return call.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.Failed"), QString());
    };
    EXPECT_EQ(ask(keyCode::rightControl), std::nullopt);
    extension->answer = [](const QDBusMessage&) { return QDBusMessage(); };
    EXPECT_EQ(ask(keyCode::rightControl), std::nullopt);
}

} // namespace

} // namespace lorvane
