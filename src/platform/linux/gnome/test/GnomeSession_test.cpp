// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/KeyEvents.h"
#include "platform/linux/chords/ChordEditingKeys.h"
#include "platform/linux/chords/ChordPasteKeys.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/gnome/RemoteDesktopKeys.h"
#include "platform/linux/gnome/ShellExtension.h"
#include "platform/linux/gnome/ShellExtensionFocus.h"
#include "platform/linux/gnome/ShellExtensionHoldRoad.h"
#include "platform/linux/gnome/test/RunningShell.h"
#include "support/DesktopApps.h"
#include "support/PhysicalKeyboard.h"

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

const QString program = QStringLiteral("com.ostrand.tirra");

/// In a GNOME Shell that runs.
class InTheShell : public testing::Test {
 protected:
    InTheShell() {
        EXPECT_TRUE(bus.registerService(program));
        if (!gnomeShell::hasExtension()) {
            gnomeShell::loadExtension(QStringLiteral(SHELL_EXTENSION));
        }
        EXPECT_TRUE(waitUntil([this] { return !road.offer().keys.empty(); }));
    }
    ~InTheShell() override { bus.unregisterService(program); }

    /// Waits until the shell has begun to watch.
    Handle watch(std::vector<int> keyCodes) {
        const int first = keyCodes.front();
        Handle watching =
            road.watch(std::move(keyCodes), [this](const HoldEdge& edge) { edges.push_back(edge); });
        EXPECT_TRUE(waitUntil([this, first] { return ask(first).has_value(); }));
        return watching;
    }
    std::optional<bool> ask(int keyCode) {
        std::optional<bool> held;
        const TaskHandle task = startTask(
            [&](TaskScope scope) -> QCoro::Task<void> { held = co_await road.isHeld(keyCode, scope); });
        EXPECT_TRUE(waitUntil([&] { return !task.isRunning(); }));
        return held;
    }
    std::vector<std::pair<int, HoldEdgeKind>> seen() const {
        std::vector<std::pair<int, HoldEdgeKind>> all;
        for (const HoldEdge& edge : edges) {
            all.emplace_back(edge.keyCode, edge.kind);
        }
        return all;
    }
    bool sees(std::size_t count) {
        return waitUntil([this, count] { return edges.size() >= count; });
    }

    QDBusConnection bus = QDBusConnection::sessionBus();
    QtClock clock;
    DiagnosticLog log{clock, std::nullopt, [](const QString&) {}};
    RemoteDesktopKeys keys{bus, clock, log};
    ShellExtensionHoldRoad road{
        bus,
        clock,
        {program, [] { return std::optional(KEY_COMPOSE); }, [this] { return keys.isPosting(); }}};
    PhysicalKeyboard hand;
    std::vector<HoldEdge> edges;
    const HoldEdgeKind down = HoldEdgeKind::down;
    const HoldEdgeKind up = HoldEdgeKind::up;
};

TEST_F(InTheShell, BothEdgesOfAHotkeyAreToldWhileAnotherProgramHasTheFocus) {
    const auto editor = DesktopApp::mousepad();
    const Handle watching = watch({keyCode::rightControl});
    hand.press(keycode::rightControl);
    ASSERT_TRUE(sees(1));
    EXPECT_EQ(ask(keyCode::rightControl), true);
    hand.release(keycode::rightControl);
    ASSERT_TRUE(sees(2));
    EXPECT_EQ(ask(keyCode::rightControl), false);
    const decltype(seen()) expected{{keyCode::rightControl, down}, {keyCode::rightControl, up}};
    EXPECT_EQ(seen(), expected);
}

TEST_F(InTheShell, EveryHotkeyAndEscapeAreTold) {
    const auto editor = DesktopApp::mousepad();
    const std::vector<std::pair<int, int>> all{{keycode::rightControl, keyCode::rightControl},
                                               {keycode::rightShift, keyCode::rightShift},
                                               {keycode::rightAlt, keyCode::rightOption},
                                               {keycode::rightSuper, keyCode::rightCommand},
                                               {keycode::menu, keyCode::fn},
                                               {keycode::escape, keyCode::escape}};
    std::vector<int> codes;
    decltype(seen()) expected;
    for (const auto& [key, code] : all) {
        codes.push_back(code);
        expected.emplace_back(code, down);
        expected.emplace_back(code, up);
    }
    const Handle watching = watch(codes);
    for (const auto& [key, code] : all) {
        hand.tap(key);
    }
    ASSERT_TRUE(sees(expected.size()));
    EXPECT_EQ(seen(), expected);
}

TEST_F(InTheShell, AChordIsToldAndStillWorksInTheApplication) {
    const auto editor = DesktopApp::mousepad(QStringLiteral("all of it"));
    const Handle watching = watch({keyCode::rightControl});
    hand.chord({keycode::rightControl, keycode::letterA});
    ASSERT_TRUE(sees(3));
    EXPECT_EQ(edges[1].kind, down);
    EXPECT_GE(edges[1].keyCode, 0x100);
    EXPECT_EQ(edges[2].keyCode, keyCode::rightControl);
    hand.tap(keycode::letterQ);
    EXPECT_EQ(editor->waitForText(QStringLiteral("q")), QStringLiteral("q"));
}

TEST_F(InTheShell, TheLeftTwinIsToldApart) {
    const Handle watching = watch({keyCode::rightControl});
    hand.tap(keycode::leftControl);
    ASSERT_TRUE(sees(2));
    EXPECT_NE(edges[0].keyCode, keyCode::rightControl);
    EXPECT_EQ(ask(keyCode::rightControl), false);
}

TEST_F(InTheShell, TheExtraKeyReachesNoApplicationWhileItIsWatched) {
    const auto editor = DesktopApp::mousepad();
    const Handle watching = watch({keyCode::fn});
    hand.tap(keycode::menu);
    ASSERT_TRUE(sees(2));
    // A menu would have the keyboard.
    hand.tap(keycode::letterQ);
    EXPECT_EQ(editor->waitForText(QStringLiteral("q")), QStringLiteral("q"));
}

TEST_F(InTheShell, AHeldKeyStaysKnownWhenAnotherIsWatchedToo) {
    Handle watching = watch({keyCode::rightControl});
    hand.press(keycode::rightControl);
    ASSERT_TRUE(sees(1));
    watching = watch({keyCode::rightControl, keyCode::escape});
    EXPECT_EQ(ask(keyCode::rightControl), true);
    hand.release(keycode::rightControl);
    EXPECT_TRUE(sees(2));
}

TEST_F(InTheShell, NothingIsToldOnceNobodyWatches) {
    Handle watching = watch({keyCode::rightControl});
    watching.reset();
    ASSERT_TRUE(waitUntil([this] { return !ask(keyCode::rightControl).has_value(); }));
    hand.tap(keycode::rightControl);
    const Handle again = watch({keyCode::rightShift});
    hand.tap(keycode::rightShift);
    ASSERT_TRUE(sees(2));
    EXPECT_EQ(edges.front().keyCode, keyCode::rightShift);
}

TEST_F(InTheShell, AnExtensionThatIsSwitchedOffAndOnAgainIsFollowed) {
    const Handle watching = watch({keyCode::rightControl});
    hand.press(keycode::rightControl);
    ASSERT_TRUE(sees(1));
    gnomeShell::switchExtensionOff();
    ASSERT_TRUE(sees(2));
    EXPECT_EQ(edges.back().kind, HoldEdgeKind::lost);
    hand.release(keycode::rightControl);
    gnomeShell::switchExtensionOn();
    EXPECT_TRUE(waitUntil([this] { return ask(keyCode::rightControl).has_value(); }));
    hand.tap(keycode::rightControl);
    EXPECT_TRUE(sees(4));
}

TEST_F(InTheShell, AKeyIsToldThatMovesBeforeABusyShellKnowsWhoWatches) {
    gnomeShell::keepBusy(std::chrono::milliseconds(300));
    const Handle watching =
        road.watch({keyCode::rightControl}, [this](const HoldEdge& edge) { edges.push_back(edge); });
    hand.tap(keycode::rightControl);
    ASSERT_TRUE(sees(2));
    const decltype(seen()) expected{{keyCode::rightControl, down}, {keyCode::rightControl, up}};
    EXPECT_EQ(seen(), expected);
}

TEST_F(InTheShell, AThousandPressesWithOtherKeysInBetweenLoseNoEdge) {
    const Handle watching = watch({keyCode::rightControl});
    std::size_t expected = 0;
    for (int press = 0; press < 1000; ++press) {
        hand.press(keycode::rightControl);
        if (press % 3 == 0) {
            hand.tap(keycode::letterZ);
            ++expected;
        }
        hand.release(keycode::rightControl);
        expected += 2;
    }
    ASSERT_TRUE(sees(expected));
    EXPECT_EQ(edges.size(), expected);
    EXPECT_EQ(road.modifierFlags(), 0U);
    EXPECT_EQ(ask(keyCode::rightControl), false);
}

bool hasProcess(const ShellExtensionFocus& focus, const DesktopApp& app) {
    return waitUntil([&] { return focus.active() && focus.active()->processId == app.pid(); });
}

TEST_F(InTheShell, TheWindowThatHasTheKeyboardIsKnownAndNoneIsOnceThereIsNone) {
    const ShellExtensionFocus focus(bus, program);
    auto terminal = DesktopApp::foot();
    ASSERT_TRUE(hasProcess(focus, *terminal));
    EXPECT_EQ(focus.active()->applicationId, QStringLiteral("foot"));
    auto editor = DesktopApp::mousepad();
    EXPECT_TRUE(hasProcess(focus, *editor));
    editor.reset();
    EXPECT_TRUE(hasProcess(focus, *terminal));
    terminal.reset();
    EXPECT_TRUE(waitUntil([&] { return !focus.active(); }));
}

TEST_F(InTheShell, TheWindowThatHasTheKeyboardBeforeAnybodyAsksIsKnown) {
    const auto terminal = DesktopApp::foot();
    const ShellExtensionFocus focus(bus, program);
    EXPECT_TRUE(hasProcess(focus, *terminal));
}

TEST_F(InTheShell, WindowsAreToldOnceTheProgramHasItsName) {
    const auto terminal = DesktopApp::foot();
    ASSERT_TRUE(bus.unregisterService(program));
    const ShellExtensionFocus focus(bus, program);
    ASSERT_TRUE(bus.registerService(program));
    EXPECT_TRUE(hasProcess(focus, *terminal));
}

TEST_F(InTheShell, WindowsAreForgottenWithTheExtensionAndKnownAgainWithIt) {
    const auto terminal = DesktopApp::foot();
    const ShellExtensionFocus focus(bus, program);
    ASSERT_TRUE(hasProcess(focus, *terminal));
    gnomeShell::switchExtensionOff();
    EXPECT_TRUE(waitUntil([&] { return !focus.active(); }));
    gnomeShell::switchExtensionOn();
    EXPECT_TRUE(hasProcess(focus, *terminal));
}

TEST_F(InTheShell, AnotherProgramIsToldOfNoWindowWhetherItAsksFirstOrLater) {
    const QString otherName = QStringLiteral("com.ostrand.tirra.Other");
    QDBusConnection otherBus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, otherName);
    ASSERT_TRUE(otherBus.registerService(otherName));
    const ShellExtensionFocus first(otherBus, otherName);
    // What it has asked for is answered before a question that comes later.
    EXPECT_EQ(otherBus.call(shellExtension::call(QStringLiteral("WatchFocus"))).type(),
              QDBusMessage::ReplyMessage);
    const auto terminal = DesktopApp::foot();
    const ShellExtensionFocus focus(bus, program);
    ASSERT_TRUE(hasProcess(focus, *terminal));
    const ShellExtensionFocus later(otherBus, otherName);
    EXPECT_EQ(otherBus.call(shellExtension::call(QStringLiteral("WatchFocus"))).errorName(),
              QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"));
    const auto editor = DesktopApp::mousepad();
    ASSERT_TRUE(hasProcess(focus, *editor));
    EXPECT_EQ(first.active(), std::nullopt);
    EXPECT_EQ(later.active(), std::nullopt);
    QDBusConnection::disconnectFromBus(otherName);
}

TEST_F(InTheShell, EditingKeysMoveTheCaretAndTakeTextAway) {
    const auto editor = DesktopApp::mousepad(QStringLiteral("abc"));
    ChordEditingKeys editing(
        keys, clock,
        {[this] { return road.modifierFlags(); }, [](PasteRoute) { return std::vector<int>(); }});
    ASSERT_TRUE(waitUntil([&] { return editing.canPost(); }));
    ASSERT_TRUE(editor->select(3, 3));
    editing.press(EditingKey::deleteBackward);
    EXPECT_EQ(editor->waitForText(QStringLiteral("ab")), QStringLiteral("ab"));
    ASSERT_TRUE(editor->select(0, 0));
    editing.press(EditingKey::rightArrow);
    editing.press(EditingKey::deleteBackward);
    EXPECT_EQ(editor->waitForText(QStringLiteral("b")), QStringLiteral("b"));
}

TEST_F(InTheShell, TheChordOfATerminalPastesAndIsNotSeenAsTheUsersKeys) {
    const auto terminal = DesktopApp::xfceTerminal();
    const Handle watching = watch({keyCode::rightControl});
    ASSERT_EQ(runTool(QStringLiteral("sh"),
                      {QStringLiteral("-c"), QStringLiteral("printf pasted | xclip -selection clipboard")})
                  .status,
              0);
    ChordPasteKeys paste(keys, clock,
                         {[this] { return road.modifierFlags(); },
                          [](PasteRoute) {
                              return std::vector<int>{KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_V};
                          }});
    std::optional<KeysOutcome> posted;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        posted = co_await paste.post([] { return PasteRoute::terminal; }, scope);
    });
    ASSERT_TRUE(waitUntil([&] { return posted.has_value(); }));
    EXPECT_EQ(posted, KeysOutcome::posted);
    EXPECT_EQ(terminal->waitForText(QStringLiteral("pasted")), QStringLiteral("pasted"));
    EXPECT_TRUE(edges.empty());
}

} // namespace

} // namespace lorvane
