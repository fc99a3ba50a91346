// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11PasteKeys.h"

#include "platform/linux/x11/test/X11DesktopFixture.h"
#include "support/DesktopApps.h"

#include <QProcess>

namespace lorvane {

namespace {

const QString wanted = QStringLiteral("geliehen — 日本 😀");

class X11PasteKeysTest : public X11DesktopFixture {
 protected:
    ~X11PasteKeysTest() override {
        runTool("setxkbmap", {"us", "-option", ""});
        clipboard.kill();
        clipboard.waitForFinished();
    }
    /// Another program that owns a selection until the test is over.
    void offer(const QString& selection, const QString& text) {
        clipboard.start("xclip", {"-quiet", "-selection", selection});
        clipboard.write(text.toUtf8());
        clipboard.closeWriteChannel();
        ASSERT_TRUE(waitUntil([&] {
            const auto result = runTool("xclip", {"-o", "-selection", selection});
            return QString::fromUtf8(result.output) == text;
        }));
    }
    std::optional<KeysOutcome> post(PasteRoute route) {
        std::optional<KeysOutcome> posted;
        const TaskHandle task = startTask([&, this](TaskScope scope) -> QCoro::Task<void> {
            posted = co_await keys.post([route] { return route; }, scope);
        });
        EXPECT_TRUE(waitUntil([&] { return !task.isRunning(); }));
        return posted;
    }
    void expectPasteInEditor() {
        offer("clipboard", wanted);
        const auto editor = DesktopApp::mousepad();
        EXPECT_EQ(post(PasteRoute::standard), KeysOutcome::posted);
        EXPECT_EQ(editor->waitForText(wanted), wanted);
    }
    bool isAnythingDown() {
        for (const int key : {keycode::leftControl, keycode::leftShift, keycode::letterV, 118}) {
            if (hand.isDown(key)) {
                return true;
            }
        }
        return false;
    }

    TypingLayout layout{connection};
    /// What another program sees on each key.
    std::vector<xcb_keysym_t> symbols() {
        auto* const map =
            xcb_get_keyboard_mapping_reply(other, xcb_get_keyboard_mapping(other, 8, 248), nullptr);
        const auto* const first = xcb_get_keyboard_mapping_keysyms(map);
        std::vector<xcb_keysym_t> symbols(first, first + xcb_get_keyboard_mapping_keysyms_length(map));
        std::free(map);
        return symbols;
    }
    void set(XKeyCode key, xcb_keysym_t symbol) {
        xcb_change_keyboard_mapping(other, 1, key, 1, &symbol);
        syncOther();
        connection.sync();
    }
    /// Another program has put something on every key that was to be had.
    std::vector<XKeyCode> occupySpareKeys() {
        EXPECT_TRUE(layout.refresh());
        std::vector<XKeyCode> taken;
        for (std::size_t key = 0; key < 256; ++key) {
            if (layout.borrowed().keys().all()[key]) {
                taken.push_back(static_cast<XKeyCode>(key));
                set(taken.back(), XKB_KEY_ellipsis);
            }
        }
        layout.borrowed().survey();
        return taken;
    }

    X11PasteKeys keys{connection, clock, layout};
    QProcess clipboard;
};

TEST_F(X11PasteKeysTest, PastesIntoAnEditor) {
    expectPasteInEditor();
    EXPECT_FALSE(isAnythingDown());
}

TEST_F(X11PasteKeysTest, PastesWithAnotherScriptInForce) {
    setLayout({"us,ru", "-option", "grp:rctrl_toggle"});
    hand.tap(keycode::rightControl);
    expectPasteInEditor();
}

TEST_F(X11PasteKeysTest, PastesWithDvorak) {
    setLayout({"us", "-variant", "dvorak"});
    expectPasteInEditor();
}

TEST_F(X11PasteKeysTest, PastesWithDvorakAsTheSecondLayout) {
    setLayout({"us,us", "-variant", ",dvorak", "-option", "grp:rctrl_toggle"});
    hand.tap(keycode::rightControl);
    expectPasteInEditor();
}

TEST_F(X11PasteKeysTest, PastesWhereTheLayoutHasNoV) {
    setLayout({"ru"});
    expectPasteInEditor();
}

TEST_F(X11PasteKeysTest, PastesIntoQtAndChromiumWhereTheLayoutHasNoV) {
    setLayout({"ru"});
    offer("clipboard", wanted);
    for (const bool isQt : {true, false}) {
        const auto application = isQt ? DesktopApp::featherpad() : DesktopApp::chromium();
        EXPECT_FALSE(keys.readsPrimary(PasteRoute::standard));
        EXPECT_EQ(post(PasteRoute::standard), KeysOutcome::posted);
        EXPECT_EQ(application->waitForText(wanted), wanted);
    }
}

TEST_F(X11PasteKeysTest, CapsLockChangesNothing) {
    constexpr int capsLock = 66;
    hand.tap(capsLock);
    expectPasteInEditor();
    hand.tap(capsLock);
}

TEST_F(X11PasteKeysTest, PastesIntoATerminalByControlShiftV) {
    offer("clipboard", "into a terminal");
    const auto terminal = DesktopApp::xfceTerminal();
    EXPECT_FALSE(keys.readsPrimary(PasteRoute::terminal));
    EXPECT_EQ(post(PasteRoute::terminal), KeysOutcome::posted);
    EXPECT_EQ(terminal->waitForText("into a terminal"), "into a terminal");
}

TEST_F(X11PasteKeysTest, PastesIntoATerminalWhereTheLayoutHasNoVAndTypesNoLetter) {
    setLayout({"ru"});
    offer("clipboard", "into a terminal");
    const auto terminal = DesktopApp::xfceTerminal();
    const auto before = symbols();
    EXPECT_FALSE(keys.readsPrimary(PasteRoute::terminal));
    EXPECT_EQ(post(PasteRoute::terminal), KeysOutcome::posted);
    EXPECT_EQ(terminal->waitForText("into a terminal"), "into a terminal");
    EXPECT_NE(symbols(), before) << "an application that is slow finds the key by its symbol still";
    EXPECT_TRUE(waitUntil([&] { return symbols() == before; }));
    EXPECT_EQ(terminal->text(), "into a terminal");
}

TEST_F(X11PasteKeysTest, AKeyThatIsBorrowedWithoutAnyTimeLeftIsKnownAllTheSame) {
    setLayout({"ru"});
    offer("clipboard", "at once");
    const auto terminal = DesktopApp::xfceTerminal();
    for (int i = 1; i <= 5; ++i) {
        const auto before = symbols();
        EXPECT_EQ(post(PasteRoute::terminal), KeysOutcome::posted);
        const QString expected = QStringLiteral("at once").repeated(i);
        EXPECT_EQ(terminal->waitForText(expected), expected);
        EXPECT_TRUE(waitUntil([&] { return symbols() == before; }));
    }
}

TEST_F(X11PasteKeysTest, ATerminalReadsTheOtherSelectionWhereNoKeyCanBeBorrowed) {
    setLayout({"ru"});
    const auto taken = occupySpareKeys();
    offer("primary", "by the other selection");
    const auto terminal = DesktopApp::xfceTerminal();
    EXPECT_TRUE(keys.readsPrimary(PasteRoute::terminal));
    EXPECT_EQ(post(PasteRoute::terminal), KeysOutcome::posted);
    EXPECT_EQ(terminal->waitForText("by the other selection"), "by the other selection");
    for (const XKeyCode key : taken) {
        set(key, XKB_KEY_NoSymbol);
    }
}

TEST_F(X11PasteKeysTest, PastesThePrimarySelectionIntoXterm) {
    offer("primary", "into xterm");
    const auto terminal = DesktopApp::xterm();
    EXPECT_EQ(post(PasteRoute::primaryTerminal), KeysOutcome::posted);
    EXPECT_EQ(terminal->waitForText("into xterm"), "into xterm");
}

TEST_F(X11PasteKeysTest, WaitsForAHeldModifier) {
    offer("clipboard", wanted);
    const auto editor = DesktopApp::mousepad();
    hand.press(keycode::rightShift);
    const Handle release =
        clock.after(std::chrono::milliseconds(150), [this] { hand.release(keycode::rightShift); });
    const Instant before = clock.now();
    EXPECT_EQ(post(PasteRoute::standard), KeysOutcome::posted);
    EXPECT_GE(clock.now() - before, std::chrono::milliseconds(150));
    EXPECT_EQ(editor->waitForText(wanted), wanted);
}

TEST_F(X11PasteKeysTest, LiftsWhatIsHeldTooLong) {
    offer("clipboard", wanted);
    const auto editor = DesktopApp::mousepad();
    hand.press(keycode::rightControl);
    hand.press(keycode::rightShift);
    EXPECT_EQ(post(PasteRoute::standard), KeysOutcome::posted);
    EXPECT_EQ(editor->waitForText(wanted), wanted);
    hand.release(keycode::rightShift);
    hand.release(keycode::rightControl);
    EXPECT_FALSE(isAnythingDown());
}

TEST_F(X11PasteKeysTest, AimIsTakenOnceTheModifiersAreUpAndBeforeTheFirstKey) {
    hand.press(keycode::rightControl);
    ASSERT_TRUE(waitUntil([this] { return hand.isDown(keycode::rightControl); }));
    std::optional<bool> wasAnythingDown;
    const PasteKeys::Aim aim = [&, this] {
        wasAnythingDown = isAnythingDown() || hand.isDown(keycode::rightControl);
        return PasteRoute::standard;
    };
    const TaskHandle task =
        startTask([&, this](TaskScope scope) -> QCoro::Task<void> { co_await keys.post(aim, scope); });
    EXPECT_FALSE(wasAnythingDown);
    hand.release(keycode::rightControl);
    EXPECT_TRUE(waitUntil([&] { return !task.isRunning(); }));
    EXPECT_EQ(wasAnythingDown, false);
}

TEST_F(X11PasteKeysTest, KeysAreLetGoWhenTheOwnerEnds) {
    {
        const TaskHandle task = startTask([this](TaskScope scope) -> QCoro::Task<void> {
            const TaskScope shielded = scope.shielded();
            (void)co_await keys.post([] { return PasteRoute::standard; }, shielded);
        });
        EXPECT_TRUE(task.isRunning());
        connection.sync();
        EXPECT_TRUE(isAnythingDown());
    }
    connection.sync();
    EXPECT_FALSE(isAnythingDown());
}

TEST_F(X11PasteKeysTest, CancellationDoesNotCutAShieldedPasteShort) {
    std::optional<KeysOutcome> posted;
    TaskHandle task = startTask([&, this](TaskScope scope) -> QCoro::Task<void> {
        const TaskScope shielded = scope.shielded();
        posted = co_await keys.post([] { return PasteRoute::standard; }, shielded);
    });
    task.cancel();
    EXPECT_TRUE(waitUntil([&] { return !task.isRunning(); }));
    EXPECT_EQ(posted, KeysOutcome::posted);
}

TEST_F(X11PasteKeysTest, WithoutADisplayThereIsNoChord) {
    X11Connection nowhere(log, ":97531");
    TypingLayout unknown(nowhere);
    X11PasteKeys gone(nowhere, clock, unknown);
    std::optional<KeysOutcome> posted;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        posted = co_await gone.post([] { return PasteRoute::standard; }, scope);
    });
    EXPECT_EQ(posted, KeysOutcome::notPosted);
}

} // namespace

} // namespace lorvane
