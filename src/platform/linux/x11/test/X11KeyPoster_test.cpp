// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11KeyPoster.h"

#include "platform/linux/x11/X11KeyEvents.h"
#include "platform/linux/x11/X11Properties.h"
#include "platform/linux/x11/test/TypingFixture.h"

namespace lorvane {

namespace {

const QString ascii =
    QStringLiteral("The Quick (brown) fox, 7 > 3 & \"so\" \\ #1 {a}[b] ~user@host.org; it's 100%!");
const QString accents = QStringLiteral("Zażółć gęślą jaźń, ÉTÉ où ça œuvre — “Straße” ñandú €5…");
const QString cyrillic =
    QStringLiteral("Съешь же ещё этих мягких французских булок, да выпей чаю. Ґанок, Їжак!");
const QString greek = QStringLiteral("Ξεσκεπάζω τὴν ψυχοφθόρα βδελυγμία");
const QString chinese = QStringLiteral("今天下午三点开会，请把报告发给我。");
const QString japanese = QStringLiteral("これは日本語の文章です。カタカナ、漢字が「混」");
const QString emoji =
    QStringLiteral("👍🏽 👩‍👩‍👧‍👦 🏳️‍🌈 ❤️ ok 😀😀 👨‍💻");
const QString everything = ascii + accents + cyrillic + greek + chinese + japanese + emoji;

constexpr int capsLock = 66;

class X11KeyPosterTest : public TypingFixture {
 protected:
    ~X11KeyPosterTest() override {
        if (capsIsLocked()) {
            hand.tap(capsLock);
        }
    }
    bool capsIsLocked() {
        PostingKeyboard keyboard(connection);
        const auto moment = keyboard.moment();
        return moment && moment->capsLock;
    }
    void useLayout(const QStringList& arguments) {
        setLayout(arguments);
        connection.sync();
    }
};

TEST_F(X11KeyPosterTest, TypesEveryScriptIntoAGtkEditor) {
    const auto editor = DesktopApp::mousepad();
    expectTyped(*editor, everything);
    const auto moment = PostingKeyboard(connection).moment();
    ASSERT_TRUE(moment);
    EXPECT_TRUE(moment->down.none());
}

TEST_F(X11KeyPosterTest, TypesEveryScriptIntoAQt5Editor) {
    settleTime = Duration::zero();
    const auto editor = DesktopApp::featherpad();
    expectTyped(*editor, everything);
}

TEST_F(X11KeyPosterTest, TypesEveryScriptIntoQt6) {
    settleTime = Duration::zero();
    const auto editor = DesktopApp::command(QStringLiteral(QT_FIELDS), {});
    expectTyped(*editor, everything);
}

TEST_F(X11KeyPosterTest, TypesEveryScriptIntoChromium) {
    const auto browser = DesktopApp::chromium();
    expectTyped(*browser, everything);
}

TEST_F(X11KeyPosterTest, CapsLockChangesNothingAndStaysOn) {
    const auto editor = DesktopApp::mousepad();
    hand.tap(capsLock);
    expectTyped(*editor, everything);
    EXPECT_TRUE(capsIsLocked());
}

TEST_F(X11KeyPosterTest, CapsLockChangesNothingInQtAndChromium) {
    hand.tap(capsLock);
    {
        const auto fields = DesktopApp::command(QStringLiteral(QT_FIELDS), {});
        expectTyped(*fields, everything);
    }
    const auto browser = DesktopApp::chromium();
    expectTyped(*browser, everything);
}

TEST_F(X11KeyPosterTest, SecondLayoutIsTypedOnInChromium) {
    useLayout({"us,ru", "-option", "grp:rctrl_toggle"});
    hand.tap(keycode::rightControl);
    const auto browser = DesktopApp::chromium();
    expectTyped(*browser, everything);
}

TEST_F(X11KeyPosterTest, NothingIsWaitedForWhereNoKeyIsChanged) {
    const auto editor = DesktopApp::mousepad();
    editor->hang();
    settleTime = std::chrono::seconds(10);
    EXPECT_EQ(post(*editor, "late"), PostOutcome::posted);
    editor->wake();
    EXPECT_EQ(editor->waitForText("late"), "late");
}

TEST_F(X11KeyPosterTest, ApplicationThatHangsIsWaitedForABoundedTime) {
    const auto editor = DesktopApp::mousepad();
    EXPECT_EQ(post(*editor, "ж"), PostOutcome::posted);
    EXPECT_EQ(editor->waitForText("ж"), "ж");
    editor->hang();
    const Instant before = clock.now();
    EXPECT_EQ(post(*editor, "я"), PostOutcome::posted);
    EXPECT_GE(clock.now() - before, std::chrono::milliseconds(100));
    editor->wake();
    EXPECT_EQ(editor->waitForText("жя"), "жя");
}

TEST_F(X11KeyPosterTest, CancelledTypingEndsBeforeItsKeysGoOut) {
    const auto editor = DesktopApp::mousepad();
    settleTime = std::chrono::seconds(10);
    const PostingTarget target{{editor->pid(), {}, {}}, FieldElement(QStringLiteral("field")), 0};
    TaskHandle task = startTask([&, this](TaskScope scope) -> QCoro::Task<void> {
        (void)co_await poster.post(target, QStringLiteral("жя"), scope);
    });
    ASSERT_TRUE(task.isRunning());
    task.cancel();
    EXPECT_FALSE(task.isRunning());
    EXPECT_EQ(post(*editor, "ok"), PostOutcome::posted);
    EXPECT_EQ(editor->waitForText("ok"), "ok");
}

TEST(X11KeyPoster, WithoutADisplayEverythingIsRefused) {
    QtClock clock;
    DiagnosticLog log(clock, std::nullopt, [](const QString&) {});
    X11Connection connection(log, ":97531");
    TypingLayout layout(connection);
    X11KeyPoster poster(connection, clock, layout,
                        [](const RunningApplication&) { return Duration::zero(); });
    const PostingTarget target{{}, FieldElement(QString()), 0};
    std::optional<bool> can;
    std::optional<PostOutcome> outcome;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        can = co_await poster.canPost(target, scope);
        outcome = co_await poster.post(target, QStringLiteral("a"), scope);
    });
    EXPECT_EQ(can, false);
    EXPECT_EQ(outcome, PostOutcome::refused);
    poster.finish();
}

struct Layout {
    const char* name;
    QStringList arguments;
    bool second = false; ///< the second layout is in force
};

class X11KeyPosterLayout : public X11KeyPosterTest, public ::testing::WithParamInterface<Layout> {};

TEST_P(X11KeyPosterLayout, IsTypedOn) {
    useLayout(GetParam().arguments);
    if (GetParam().second) {
        hand.tap(keycode::rightControl);
    }
    const auto editor = DesktopApp::mousepad();
    expectTyped(*editor, everything);
    const auto fields = DesktopApp::command(QStringLiteral(QT_FIELDS), {});
    expectTyped(*fields, everything);
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, X11KeyPosterLayout,
    ::testing::Values(Layout{"German", {"de"}}, Layout{"French", {"fr"}}, Layout{"Russian", {"ru"}},
                      Layout{"Dvorak", {"us", "-variant", "dvorak"}},
                      Layout{"DeadKeys", {"us", "-variant", "intl"}},
                      Layout{"RussianBesideAmerican", {"us,ru", "-option", "grp:rctrl_toggle"}, true},
                      Layout{"AmericanBesideRussian", {"ru,us", "-option", "grp:rctrl_toggle"}, true}),
    [](const auto& layout) { return std::string(layout.param.name); });

class X11KeyPosterHeld : public X11KeyPosterTest, public ::testing::WithParamInterface<int> {};

TEST_P(X11KeyPosterHeld, DoesNotShowInTheText) {
    const auto editor = DesktopApp::mousepad();
    hand.press(GetParam());
    expectTyped(*editor, ascii + cyrillic);
    hand.release(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Modifiers, X11KeyPosterHeld,
                         ::testing::Values(keycode::rightControl, keycode::leftControl, keycode::rightShift,
                                           keycode::leftShift, keycode::rightAlt, keycode::rightSuper));

TEST_F(X11KeyPosterTest, AltGrDoesNotShowInTheText) {
    useLayout({"de"});
    const auto editor = DesktopApp::mousepad();
    hand.press(keycode::rightAlt);
    expectTyped(*editor, ascii + cyrillic);
}

TEST_F(X11KeyPosterTest, LetterThatIsHeldIsTypedAllTheSame) {
    const auto editor = DesktopApp::mousepad();
    hand.press(keycode::letterA);
    ASSERT_EQ(editor->waitForText("a"), "a");
    EXPECT_EQ(post(*editor, "banana"), PostOutcome::posted);
    EXPECT_EQ(editor->waitForText("abanana"), "abanana");
}

TEST_F(X11KeyPosterTest, UserIsNotSeenToPressOrReleaseAnything) {
    QStringList seen;
    X11KeyEvents keys(connection, foundation, [] { return false; });
    const auto note = [&seen](const KeyEvent& event) {
        seen.append(QStringLiteral("%1 %2").arg(event.keyCode).arg(event.flags, 0, 16));
    };
    const Handle flags = keys.addGlobalMonitor(KeyEventKind::flagsChanged, note);
    const Handle downs = keys.addGlobalMonitor(KeyEventKind::keyDown, note);
    const auto editor = DesktopApp::mousepad();
    hand.press(keycode::rightControl);
    expectTyped(*editor, everything);
    // Longer than the watch takes to ask for the state of the key.
    EXPECT_FALSE(waitUntil([&] { return seen.size() > 1; }, std::chrono::milliseconds(300)));
    hand.release(keycode::rightControl);
    connection.sync();
    EXPECT_EQ(seen, (QStringList{"62 40000", "62 0"}));
}

TEST_F(X11KeyPosterTest, KeysAreAsBeforeWhenTheTypingIsOver) {
    const auto editor = DesktopApp::mousepad();
    const QByteArray before = mapOfAllKeys();
    expectTyped(*editor, cyrillic);
    connection.sync();
    EXPECT_NE(mapOfAllKeys(), before);
    poster.finish();
    connection.sync();
    EXPECT_EQ(mapOfAllKeys(), before);
    EXPECT_TRUE(windowProperty(connection, connection.root(), "_LORVANE_BORROWED_KEYS").isEmpty());
}

TEST_F(X11KeyPosterTest, LayoutThatIsChosenMeanwhileIsTypedOn) {
    const auto editor = DesktopApp::mousepad();
    EXPECT_EQ(post(*editor, "Zürich жя"), PostOutcome::posted);
    EXPECT_EQ(editor->waitForText("Zürich жя"), "Zürich жя");
    useLayout({"de"});
    EXPECT_EQ(post(*editor, "yzYZ@ äжя"), PostOutcome::posted);
    EXPECT_EQ(editor->waitForText("Zürich жяyzYZ@ äжя"), "Zürich жяyzYZ@ äжя");
    useLayout({"us"});
    const QByteArray before = mapOfAllKeys();
    poster.finish();
    connection.sync();
    EXPECT_EQ(mapOfAllKeys(), before);
}

TEST_F(X11KeyPosterTest, WhatIsNoTextIsRefused) {
    const auto editor = DesktopApp::mousepad();
    for (const QString& text : {QString("a\n"), QString("\t"), QString(QChar(0xD83D)), QString(13, 'a')}) {
        EXPECT_EQ(post(*editor, text), PostOutcome::refused);
    }
    EXPECT_EQ(post(*editor, "end"), PostOutcome::posted);
    EXPECT_EQ(editor->waitForText("end"), "end");
}

} // namespace

} // namespace lorvane
