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

    X11PasteKeys keys{connection, clock};
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

TEST_F(X11PasteKeysTest, CapsLockChangesNothing) {
    constexpr int capsLock = 66;
    hand.tap(capsLock);
    expectPasteInEditor();
    hand.tap(capsLock);
}

TEST_F(X11PasteKeysTest, PastesIntoATerminalByControlShiftV) {
    offer("clipboard", "into a terminal");
    QTemporaryDir folder;
    const QString file = folder.filePath("received");
    const auto terminal = DesktopApp::command(
        "xfce4-terminal", {"--disable-server", "-e", "sh -c \"stty raw -echo; exec cat >'" + file + "'\""});
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(file); }));
    EXPECT_EQ(post(PasteRoute::terminal), KeysOutcome::posted);
    EXPECT_TRUE(waitUntil([&] {
        QFile received(file);
        return received.open(QIODevice::ReadOnly) && received.readAll().contains("into a terminal");
    }));
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
    X11PasteKeys gone(nowhere, clock);
    std::optional<KeysOutcome> posted;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        posted = co_await gone.post([] { return PasteRoute::standard; }, scope);
    });
    EXPECT_EQ(posted, KeysOutcome::notPosted);
}

} // namespace

} // namespace lorvane
