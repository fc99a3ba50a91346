// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11KeyEvents.h"

#include "input/Hotkey.h"
#include "platform/linux/x11/test/X11DesktopFixture.h"

#include <QRegularExpression>

namespace lorvane {

namespace {

QString describe(const KeyEvent& event) {
    return QStringLiteral("%1 %2 %3")
        .arg(event.kind == KeyEventKind::keyDown ? "down" : "flags")
        .arg(event.keyCode)
        .arg(event.flags, 0, 16);
}

class X11KeyEventsTest : public X11DesktopFixture {
 protected:
    void SetUp() override {
        ASSERT_TRUE(keys.isWatchingPossible());
        for (const KeyEventKind kind : {KeyEventKind::flagsChanged, KeyEventKind::keyDown}) {
            monitors.push_back(keys.addGlobalMonitor(kind, [this](const KeyEvent& event) {
                seen.append(describe(event));
                times.push_back(event.time);
            }));
        }
    }
    /// Everything that was seen of what the hand did so far.
    QStringList seenSoFar() {
        connection.sync();
        return seen;
    }
    /// The number by which the X server knows the ordinary keyboard.
    QString ordinaryKeyboard() {
        const QString list = QString::fromUtf8(runTool("xinput", {"list", "--short"}).output);
        const QRegularExpression row("↳ (?!.*XTEST).*id=(\\d+).*slave\\s+keyboard");
        return row.match(list).captured(1);
    }
    /// From here on the server tells us of no key, as if its release had been lost.
    void stopRawEvents() {
        struct {
            xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
            std::uint32_t mask = 0;
        } nothing;
        xcb_input_xi_select_events(connection.xcb(), connection.root(), 1, &nothing.head);
        connection.sync();
    }
    void setFloating(const QString& keyboard, bool floating) {
        const auto result = floating ? runTool("xinput", {"float", keyboard})
                                     : runTool("xinput", {"reattach", keyboard, "Virtual core keyboard"});
        ASSERT_EQ(result.status, 0) << result.errors.constData();
    }

    bool ownFocus = false;
    X11KeyEvents keys{connection, foundation, [this] { return ownFocus; }};
    QStringList seen;
    std::vector<Instant> times;
    std::vector<Handle> monitors;
};

const QStringList fiveKeys{"flags 54 100000", "flags 54 0", "flags 61 80000", "flags 61 0",
                           "flags 60 20000",  "flags 60 0", "flags 62 40000", "flags 62 0",
                           "flags 63 800000", "flags 63 0"};
constexpr int fiveCodes[]{keycode::rightSuper, keycode::rightAlt, keycode::rightShift, keycode::rightControl,
                          keycode::menu};
constexpr int leftSuper = 133;
constexpr int capsLock = 66;

TEST_F(X11KeyEventsTest, FiveKeysAreSeenGoingDownAndUp) {
    for (const int key : fiveCodes) {
        hand.tap(key);
    }
    EXPECT_EQ(seenSoFar(), fiveKeys);
}

TEST_F(X11KeyEventsTest, FiveKeysAreSeenWhileAnotherProgramHasGrabbedTheKeyboard) {
    const auto screen = xcb_setup_roots_iterator(xcb_get_setup(other));
    auto* const grab =
        xcb_grab_keyboard_reply(other,
                                xcb_grab_keyboard(other, 0, screen.data->root, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr);
    ASSERT_NE(grab, nullptr);
    EXPECT_EQ(grab->status, XCB_GRAB_STATUS_SUCCESS);
    std::free(grab);
    for (const int key : fiveCodes) {
        hand.tap(key);
    }
    EXPECT_EQ(seenSoFar(), fiveKeys);
    xcb_ungrab_keyboard(other, XCB_CURRENT_TIME);
    syncOther();
}

TEST_F(X11KeyEventsTest, EventsArriveByTheEventLoopAlone) {
    hand.tap(keycode::rightControl);
    EXPECT_TRUE(waitUntil([this] { return seen.size() == 2; })) << seen.join(", ").toStdString();
}

TEST_F(X11KeyEventsTest, SyntheticKeysAreNotSeen) {
    typeSynthetically(keycode::rightControl);
    typeSynthetically(keycode::letterA);
    hand.tap(keycode::letterA);
    EXPECT_EQ(seenSoFar().size(), 1) << seen.join(", ").toStdString();
}

TEST_F(X11KeyEventsTest, SyntheticReleaseDoesNotEndTheHold) {
    hand.press(keycode::rightControl);
    xcb_test_fake_input(other, XCB_KEY_RELEASE, keycode::rightControl, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0,
                        0, 0);
    syncOther();
    EXPECT_FALSE(waitUntil([this] { return seen.size() > 1; }, std::chrono::milliseconds(400)));
    hand.release(keycode::rightControl);
    EXPECT_EQ(seenSoFar(), (QStringList{"flags 62 40000", "flags 62 0"}));
}

TEST_F(X11KeyEventsTest, LeftTwinIsToldByItsCodeAndKeepsTheBit) {
    hand.press(leftSuper);
    hand.tap(keycode::rightSuper);
    hand.release(leftSuper);
    EXPECT_EQ(seenSoFar(),
              (QStringList{"flags 55 100000", "flags 54 100000", "flags 54 100000", "flags 55 0"}));
}

TEST_F(X11KeyEventsTest, OtherKeysAreSeenGoingDownWithTheModifiers) {
    hand.chord({keycode::rightControl, keycode::letterA});
    hand.tap(keycode::escape);
    EXPECT_EQ(seenSoFar(), (QStringList{"flags 62 40000", "down 294 40000", "flags 62 0", "down 53 0"}));
}

TEST_F(X11KeyEventsTest, CapsLockIsNotTold) {
    hand.tap(capsLock);
    hand.tap(capsLock);
    EXPECT_EQ(seenSoFar(), QStringList());
}

TEST_F(X11KeyEventsTest, HeldKeyIsToldOnce) {
    hand.press(keycode::letterA); // repeats after 660 ms, every 40 ms
    hand.press(keycode::rightControl);
    EXPECT_FALSE(waitUntil([this] { return seen.size() > 2; }, std::chrono::milliseconds(900)));
    hand.release(keycode::rightControl);
    hand.release(keycode::letterA);
    EXPECT_EQ(seenSoFar(), (QStringList{"down 294 0", "flags 62 40000", "flags 62 0"}));
}

TEST_F(X11KeyEventsTest, LayoutChangesNothing) {
    setLayout({"us,ru", "-option", "grp:rctrl_toggle"});
    hand.tap(keycode::rightControl); // the second group from here on
    hand.tap(keycode::rightControl);
    setLayout({"de"});
    hand.tap(keycode::rightAlt);
    setLayout({"us", "-option", ""});
    EXPECT_EQ(seenSoFar(), (QStringList{"flags 62 40000", "flags 62 0", "flags 62 40000", "flags 62 0",
                                        "flags 61 80000", "flags 61 0"}));
}

TEST_F(X11KeyEventsTest, TimeIsThatOfTheKeyAndNotOfItsArrival) {
    const Instant before = clock.now();
    hand.hold(keycode::rightControl, std::chrono::milliseconds(300));
    const Instant after = clock.now();
    // Read late, as by a main thread that was busy meanwhile.
    while (clock.now() < after + std::chrono::milliseconds(500)) {
    }
    connection.sync();
    ASSERT_EQ(times.size(), 2U);
    constexpr Duration grain = std::chrono::milliseconds(25);
    EXPECT_GE(times[0], before - grain);
    EXPECT_LE(times[1], after + grain);
    EXPECT_NEAR(inSeconds(times[1] - times[0]), 0.3, 0.1);
}

TEST_F(X11KeyEventsTest, ReleaseWithoutAnEventIsFoundByState) {
    hand.press(keycode::rightControl);
    EXPECT_EQ(seenSoFar(), QStringList{"flags 62 40000"});
    stopRawEvents();
    hand.release(keycode::rightControl);
    EXPECT_TRUE(waitUntil([this] { return seen.size() == 2; }));
    EXPECT_EQ(seen.last(), "flags 62 0");
}

TEST_F(X11KeyEventsTest, HeldKeyIsBelievedWithoutEvents) {
    hand.press(keycode::rightControl);
    EXPECT_EQ(seenSoFar(), QStringList{"flags 62 40000"});
    stopRawEvents();
    EXPECT_FALSE(waitUntil([this] { return seen.size() > 1; }, std::chrono::milliseconds(350)));
    hand.release(keycode::rightControl);
}

TEST_F(X11KeyEventsTest, KeyboardThatIsTakenAwayLetsItsKeysGo) {
    const QString keyboard = ordinaryKeyboard();
    ASSERT_FALSE(keyboard.isEmpty());
    hand.press(keycode::rightControl);
    setFloating(keyboard, true);
    EXPECT_TRUE(waitUntil([this] { return seen.size() == 2; }));
    hand.release(keycode::rightControl);
    setFloating(keyboard, false);
    EXPECT_EQ(seenSoFar(), (QStringList{"flags 62 40000", "flags 62 0"}));
    hand.tap(keycode::rightControl);
    EXPECT_EQ(seenSoFar().size(), 4) << seen.join(", ").toStdString();
}

TEST_F(X11KeyEventsTest, DisabledKeyboardLetsItsKeysGo) {
    const QString keyboard = ordinaryKeyboard();
    hand.press(keycode::rightSuper);
    ASSERT_EQ(runTool("xinput", {"disable", keyboard}).status, 0);
    EXPECT_TRUE(waitUntil([this] { return seen.size() == 2; })) << seen.join(", ").toStdString();
    ASSERT_EQ(runTool("xinput", {"enable", keyboard}).status, 0);
    hand.release(keycode::rightSuper);
    EXPECT_EQ(seenSoFar().mid(0, 2), (QStringList{"flags 54 100000", "flags 54 0"}));
}

TEST_F(X11KeyEventsTest, KeyboardThatComesOrGoesChangesNothing) {
    ASSERT_EQ(runTool("xinput", {"create-master", "second"}).status, 0);
    hand.press(keycode::rightControl);
    ASSERT_EQ(runTool("xinput", {"remove-master", "second keyboard"}).status, 0);
    EXPECT_FALSE(waitUntil([this] { return seen.size() > 1; }, std::chrono::milliseconds(300)));
    hand.release(keycode::rightControl);
    EXPECT_EQ(seenSoFar(), (QStringList{"flags 62 40000", "flags 62 0"}));
}

TEST_F(X11KeyEventsTest, KeysOfOwnWindowsGoToLocalMonitors) {
    QStringList local;
    monitors.push_back(keys.addLocalMonitor(KeyEventKind::flagsChanged, [&local](const KeyEvent& event) {
        local.append(describe(event));
        return false;
    }));
    ownFocus = true;
    hand.tap(keycode::rightControl);
    EXPECT_EQ(seenSoFar(), QStringList());
    EXPECT_EQ(local, (QStringList{"flags 62 40000", "flags 62 0"}));
}

TEST_F(X11KeyEventsTest, NothingIsSeenOnceTheMonitorsHaveEnded) {
    monitors.clear();
    EXPECT_TRUE(waitUntil([this] {
        seen.clear();
        hand.tap(keycode::letterA);
        return seenSoFar().isEmpty();
    }));
    EXPECT_EQ(seen, QStringList());
}

TEST_F(X11KeyEventsTest, KeyThatIsDownAtTheStartIsKnown) {
    monitors.clear();
    hand.press(leftSuper);
    X11KeyEvents late(connection, foundation, [] { return false; });
    QStringList heard;
    const Handle monitor = late.addGlobalMonitor(
        KeyEventKind::flagsChanged, [&heard](const KeyEvent& event) { heard.append(describe(event)); });
    hand.tap(keycode::rightSuper);
    hand.release(leftSuper);
    connection.sync();
    EXPECT_EQ(heard, (QStringList{"flags 54 100000", "flags 54 100000", "flags 55 0"}));
}

TEST(X11KeyEvents, WithoutADisplayNothingIsWatchedAndNothingFails) {
    QtClock clock;
    MemoryPreferenceStore store;
    Preferences preferences(store);
    const Localisation words;
    DiagnosticLog log(clock, std::nullopt, [](const QString&) {});
    X11Connection connection(log, ":97531");
    EXPECT_FALSE(connection.isAlive());
    X11KeyEvents keys(connection, {clock, preferences, words, log}, [] { return false; });
    EXPECT_FALSE(keys.isWatchingPossible());
    const Handle monitor = keys.addGlobalMonitor(KeyEventKind::keyDown, [](const KeyEvent&) {});
    EXPECT_TRUE(monitor);
}

} // namespace

} // namespace lorvane
