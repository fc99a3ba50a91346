// SPDX-License-Identifier: GPL-3.0-or-later
// What the user does while text is being typed, in an application that takes text by insertion and in one
// that takes it by keys.
#include "LiveTypingDesk.h"

#include "support/Corpus.h"

namespace lorvane {

namespace {

using std::chrono::milliseconds;

const QString heard = QStringLiteral("These are the first words");
const QString more = QStringLiteral(", and there is more to come.");

class WhileTyping : public LiveTypingDesk, public ::testing::WithParamInterface<Application> {
 protected:
    /// The program is typing: `heard` stands behind the user's own words.
    LiveStream typeFirstWords() {
        startProgram();
        target = GetParam().open(own);
        const LiveStream stream = dictate();
        EXPECT_TRUE(isTyped(stream, heard, *target)) << program->log().toStdString();
        program->forgetPhases();
        return stream;
    }
    /// The user holds a key while more of the stream comes.
    void holdsWhileTyped(int key) {
        LiveStream stream = typeFirstWords();
        hand.press(key);
        stream.say(more);
        EXPECT_TRUE(
            logs(QStringLiteral("abandon(modifier-held): took back %1 characters").arg(heard.size())));
        EXPECT_TRUE(holds(*target, own));
        hand.release(key);
        stream.finish(heard + more);
        EXPECT_TRUE(goesThrough({QStringLiteral("done"), QStringLiteral("idle")}));
        EXPECT_TRUE(holds(*target, own + heard + more));
    }

    std::unique_ptr<DesktopApp> target;
};

TEST_P(WhileTyping, EscapeTakesBackWhatWasTyped) {
    const LiveStream stream = typeFirstWords();
    hand.tap(keycode::escape);
    EXPECT_TRUE(goesThrough({QStringLiteral("idle")}));
    EXPECT_TRUE(logs(QStringLiteral("abandon(cancelled): took back %1 characters").arg(heard.size())));
    EXPECT_TRUE(holds(*target, own));
}

TEST_P(WhileTyping, AHeldShiftTakesItBackAndTheTextIsPasted) { holdsWhileTyped(keycode::leftShift); }

TEST_P(WhileTyping, AHeldControlTakesItBackAndTheTextIsPasted) { holdsWhileTyped(keycode::leftControl); }

TEST_P(WhileTyping, AModifierThatIsStillHeldAtTheEndDoesNotSpoilThePaste) {
    LiveStream stream = typeFirstWords();
    hand.press(keycode::leftShift);
    stream.say(more);
    EXPECT_TRUE(logs(QStringLiteral("abandon(modifier-held): took back")));
    stream.finish(heard + more);
    EXPECT_TRUE(goesThrough({QStringLiteral("done"), QStringLiteral("idle")}));
    EXPECT_TRUE(holds(*target, own + heard + more));
}

TEST_P(WhileTyping, AnotherWindowInFrontGetsTheWholeText) {
    const auto other = DesktopApp::xterm();
    LiveStream stream = typeFirstWords();
    other->focus();
    stay(milliseconds(300)); // until the program knows as well
    stream.say(more);
    EXPECT_TRUE(logs(QStringLiteral("after %1 characters — stopping there").arg(heard.size())));
    stream.finish(heard + more);
    EXPECT_TRUE(goesThrough({QStringLiteral("done"), QStringLiteral("idle")}));
    EXPECT_TRUE(holds(*other, heard + more));
    EXPECT_TRUE(holds(*target, own + heard));
}

TEST_P(WhileTyping, AStreamThatBreaksIsFinishedByTheUploadWithoutTypingTwice) {
    backend.script("/api/dictate", answer::response(heard + more));
    LiveStream stream = typeFirstWords();
    stream.breakOff();
    EXPECT_TRUE(goesThrough({QStringLiteral("done"), QStringLiteral("idle")}));
    EXPECT_TRUE(holds(*target, own + heard + more));
}

TEST_P(WhileTyping, AHoldRightAfterTypingLastsAsLongAsTheHand) {
    LiveStream stream = typeFirstWords();
    stream.say(more);
    ASSERT_TRUE(holds(*target, own + heard + more));
    stream.finish(heard + more);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("done")));
    hand.press(holdKey);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    stay(milliseconds(1500)); // longer than anything that typing puts back
    EXPECT_EQ(program->phase(), QStringLiteral("recording"));
    EXPECT_TRUE(hand.isDown(holdKey));
    backend.scriptAnew("/api/dictate-stream", answer::done(QStringLiteral(" Next.")));
    hand.release(holdKey);
    EXPECT_TRUE(waitUntil([&] { return takes().size() == 2; }));
    EXPECT_TRUE(program->waitForPhase(QStringLiteral("idle")));
    EXPECT_TRUE(holds(*target, own + heard + more + QStringLiteral("Next.")));
}

TEST_P(WhileTyping, AHandsFreeTakeRightAfterTypingGoesOn) {
    LiveStream stream = typeFirstWords();
    stream.say(more);
    ASSERT_TRUE(holds(*target, own + heard + more));
    stream.finish(heard + more);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("done")));
    tapHandsFree();
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    stay(milliseconds(1500));
    EXPECT_EQ(program->phase(), QStringLiteral("recording"));
    backend.scriptAnew("/api/dictate-stream", answer::done(QStringLiteral("Next.")));
    tapHandsFree();
    EXPECT_TRUE(waitUntil([&] { return takes().size() == 2; }));
    EXPECT_TRUE(program->waitForPhase(QStringLiteral("idle")));
    EXPECT_TRUE(holds(*target, own + heard + more + QStringLiteral("Next.")));
}

INSTANTIATE_TEST_SUITE_P(, WhileTyping, ::testing::Values(application::mousepad, application::chromium),
                         nameOf);

class LiveTypingAim : public LiveTypingDesk {};

TEST_F(LiveTypingAim, WithTextBehindTheCaretTheWholeIsPasted) {
    startProgram();
    const auto editor = DesktopApp::mousepad(own);
    ASSERT_TRUE(editor->select(3, 3));
    LiveStream stream = dictate();
    stream.say(heard);
    stream.finish(heard);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(logs(QStringLiteral("caret at 3 of %1, real text after it").arg(own.size())));
    EXPECT_TRUE(holds(*editor, own.left(3) + heard + own.mid(3)));
}

TEST_F(LiveTypingAim, BlanksBehindTheCaretStayBehindTheText) {
    startProgram();
    const auto editor = DesktopApp::mousepad(own + QStringLiteral("\n\n"));
    const auto end = static_cast<int>(own.size());
    ASSERT_TRUE(editor->select(end, end));
    LiveStream stream = dictate();
    stream.say(corpus::fragments(heard));
    ASSERT_TRUE(holds(*editor, own + heard + QStringLiteral("\n\n")));
    stream.finish(heard + more);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(logs(QStringLiteral("caret at %1, 2 blank after it").arg(own.size())));
    EXPECT_TRUE(holds(*editor, own + heard + more + QStringLiteral("\n\n")));
}

TEST_F(LiveTypingAim, AnotherFieldOfTheSameWindowGetsNothingOfTheOldOne) {
    startProgram();
    const auto window = application::qtFields.open(own);
    LiveStream stream = dictate();
    ASSERT_TRUE(isTyped(stream, heard, *window));
    window->tell(QStringLiteral("focus 1"));
    ASSERT_TRUE(waitUntil([&] {
        const auto field = window->field();
        return field && field->value(QStringLiteral("text")).toString().isEmpty();
    }));
    stream.say(more);
    stream.finish(heard + more);
    EXPECT_TRUE(endsIn(copied));
    EXPECT_EQ(clipboard::read(), (heard + more).toUtf8());
    EXPECT_EQ(window->field()->value(QStringLiteral("text")).toString(), QString());
    window->tell(QStringLiteral("focus 0"));
    // What was on its way when the focus went is the most that the old field gets.
    constexpr int onePost = 12;
    const QString text = window->waitForText([](const QString& seen) { return seen.startsWith(own); });
    EXPECT_TRUE((own + heard + more.left(onePost)).startsWith(text) && text.startsWith(own + heard))
        << text.toStdString();
}

TEST_F(LiveTypingAim, AClickIntoTheTextNeverSpoilsTheUsersWords) {
    startProgram();
    const auto editor = application::mousepad.open(own);
    LiveStream stream = dictate();
    ASSERT_TRUE(isTyped(stream, heard, *editor));
    ASSERT_TRUE(editor->select(3, 3)); // where a click had put it
    stream.say(more);
    stream.finish(heard + more);
    EXPECT_TRUE(program->waitForPhase(QStringLiteral("idle")));
    const QString text = editor->text();
    const bool isWhole = text == own + heard + more;
    const bool isHandedOver = program->phases().contains(noticePhase(copied));
    EXPECT_TRUE((own + heard + more).startsWith(text) && text.startsWith(own + heard)) << text.toStdString();
    EXPECT_NE(isWhole, isHandedOver) << text.toStdString() << program->log().toStdString();
}

} // namespace

} // namespace lorvane
