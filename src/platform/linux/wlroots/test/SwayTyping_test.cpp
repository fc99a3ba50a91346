// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/WlrootsEditingKeys.h"
#include "platform/linux/wlroots/WlrootsPasteKeys.h"
#include "platform/linux/wlroots/test/SwayFixture.h"
#include "support/Corpus.h"

namespace lorvane {

namespace {

using SwayTyping = SwayFixture;

const QString plane =
    QStringLiteral("The Quick (brown) fox, 7 > 3 & \"so\" \\ {a}[b] Zażółć ÉTÉ œuvre — “Straße” "
                   "€5… Съешь же ещё, Їжак! Ξεσκεπάζω 今天下午三点开会。 これは日本語");
const QString everything =
    plane + QStringLiteral("👍🏽 👩‍👩‍👧‍👦 ❤️ ok 😀😀 👨‍💻");

TEST_F(SwayTyping, InputMethodTypesEveryScriptIntoGtk) {
    const auto editor = DesktopApp::mousepad();
    expectTyped(inputMethod, *editor, everything);
}

TEST_F(SwayTyping, InputMethodTypesEveryScriptIntoChromium) {
    const auto browser = DesktopApp::chromium();
    expectTyped(inputMethod, *browser, everything);
}

TEST_F(SwayTyping, InputMethodTypesEveryScriptIntoFirefox) {
    const auto browser = DesktopApp::firefox();
    expectTyped(inputMethod, *browser, everything);
}

TEST_F(SwayTyping, TwoThousandCharactersGoIntoChromiumWithoutOneWrong) {
    const auto browser = DesktopApp::chromium();
    const QString text = corpus::mixed(2000);
    ASSERT_TRUE(canPost(inputMethod, *browser));
    const QString typed = type(inputMethod, *browser, text);
    EXPECT_EQ(corpus::wrongCharacters(typed, text), 0);
}

TEST_F(SwayTyping, InputMethodIsNotOfferedInQt) {
    const auto fields = DesktopApp::command(QStringLiteral(QT_FIELDS), {});
    EXPECT_FALSE(canPost(inputMethod, *fields));
    EXPECT_EQ(post(inputMethod, *fields, "lost"), PostOutcome::refused);
}

TEST_F(SwayTyping, UsersInputMethodIsLeftAloneAndOursIsGoneBetweenTakes) {
    const auto editor = DesktopApp::mousepad();
    {
        WaylandConnection other{fakes.log};
        WaylandSeat otherSeat{other};
        ASSERT_TRUE(other.awaitGlobals(clock, std::chrono::seconds(10)));
        InputMethodPoster users(other, otherSeat, clock);
        EXPECT_TRUE(canPost(users, *editor));
        EXPECT_FALSE(canPost(inputMethod, *editor));
        users.finish();
        settle(other);
        EXPECT_TRUE(canPost(inputMethod, *editor));
        EXPECT_FALSE(canPost(users, *editor));
        inputMethod.finish();
        settle(connection);
        EXPECT_TRUE(canPost(users, *editor));
    }
}

TEST_F(SwayTyping, VirtualKeyboardTypesIntoGtkAndQt) {
    {
        const auto editor = DesktopApp::mousepad();
        expectTyped(keyPoster, *editor, plane);
    }
    const auto fields = DesktopApp::command(QStringLiteral(QT_FIELDS), {});
    expectTyped(keyPoster, *fields, plane);
}

TEST_F(SwayTyping, VirtualKeyboardTypesIntoChromiumAndRefusesEmoji) {
    const auto browser = DesktopApp::chromium();
    expectTyped(keyPoster, *browser, plane);
    EXPECT_EQ(post(keyPoster, *browser, "😀"), PostOutcome::refused);
}

TEST_F(SwayTyping, BrowserStartsWhileTheKeyboardOfOursWasTheLastOne) {
    {
        const auto editor = DesktopApp::mousepad();
        expectTyped(keyPoster, *editor, "ж");
    }
    // Chromium reads the name of the layout in force when it starts.
    const auto browser = DesktopApp::chromium();
    EXPECT_EQ(browser->text(), "");
}

TEST_F(SwayTyping, HeldKeyIsNotDisturbedAndDoesNotShowInTheText) {
    const auto editor = DesktopApp::mousepad();
    hand.press(keycode::rightControl);
    expectTyped(inputMethod, *editor, "by method");
    EXPECT_EQ(post(keyPoster, *editor, ", by keys"), PostOutcome::posted);
    EXPECT_EQ(editor->waitForText("by method, by keys"), "by method, by keys");
    EXPECT_TRUE(hand.isDown(keycode::rightControl));
    hand.release(keycode::rightControl);
    hand.tap(keycode::letterA);
    EXPECT_EQ(editor->waitForText("by method, by keysa"), "by method, by keysa");
}

TEST_F(SwayTyping, EditingKeysActBareWhateverIsHeld) {
    const auto editor = DesktopApp::mousepad(QStringLiteral("one two"));
    WlrootsEditingKeys editing(keyboard, [] { return 0U; });
    ASSERT_TRUE(editing.canPost());
    hand.tap(keycode::end);
    hand.press(keycode::leftControl);
    editing.press(EditingKey::deleteBackward);
    EXPECT_EQ(editor->waitForText("one tw"), "one tw");
    hand.release(keycode::leftControl);
    ASSERT_TRUE(editor->select(0, 0));
    editing.press(EditingKey::rightArrow);
    EXPECT_TRUE(waitUntil([&] { return editor->field() && (*editor->field())["caret"].toInt() == 1; }));
}

class SwayPaste : public SwayFixture {
 protected:
    bool press(PasteRoute route) {
        WlrootsPasteKeys paste(keyboard, connection, clock);
        auto outcome = KeysOutcome::notPosted;
        const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
            outcome = co_await paste.post([route] { return route; }, scope);
        });
        EXPECT_TRUE(waitClosely([&] { return !task.isRunning(); }));
        return outcome == KeysOutcome::posted;
    }
    static void copy(const QString& text) { EXPECT_EQ(runTool("wl-copy", {text}).status, 0); }
};

TEST_F(SwayPaste, ControlVPastesAlsoWhileAModifierIsHeld) {
    const auto editor = DesktopApp::mousepad();
    copy("pasted ж");
    EXPECT_TRUE(press(PasteRoute::standard));
    EXPECT_EQ(editor->waitForText("pasted ж"), "pasted ж");
    hand.press(keycode::rightShift);
    EXPECT_TRUE(press(PasteRoute::standard));
    EXPECT_EQ(editor->waitForText("pasted жpasted ж"), "pasted жpasted ж");
    hand.release(keycode::rightShift);
}

TEST_F(SwayPaste, TerminalTakesItsOwnKeys) {
    const auto terminal = DesktopApp::xfceTerminal();
    copy("typed by paste");
    EXPECT_TRUE(press(PasteRoute::terminal));
    EXPECT_EQ(terminal->waitForText("typed by paste"), "typed by paste");
}

} // namespace

} // namespace lorvane
