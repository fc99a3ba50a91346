// SPDX-License-Identifier: GPL-3.0-or-later
#include "DictationDesk.h"
#include "support/UserSession.h"

#include <QJsonDocument>

namespace lorvane {

namespace {

using std::chrono::milliseconds;
using Gestures = DictationDesk;

const QString heard = QStringLiteral("Hello from the desk.");

TEST_F(Gestures, AHoldPutsTheTextIntoTheEditor) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    holdFor();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
    EXPECT_EQ(takes().size(), 1U);
}

TEST_F(Gestures, ATapOfTheHoldKeySendsNothing) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    holdFor(milliseconds(200));
    EXPECT_TRUE(goesThrough(tapped()));
    holdFor(); // what the tap had started would come before this
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
    EXPECT_EQ(takes().size(), 1U);
}

TEST_F(Gestures, AnotherKeyWithinTheFirstSecondCancelsAndTheReleaseDoesNothing) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    hand.press(holdKey);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording"))) << program->log().toStdString();
    hand.tap(keycode::pause);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("idle")));
    hand.release(holdKey);
    holdFor(); // what the release had done would come before this
    EXPECT_TRUE(goesThrough(dropped + delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
    EXPECT_EQ(takes().size(), 1U);
}

TEST_F(Gestures, AKeyAfterTheFirstSecondChangesNothing) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    hand.press(holdKey);
    stay(milliseconds(1200));
    hand.tap(keycode::pause);
    stay(milliseconds(200));
    hand.release(holdKey);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
}

TEST_F(Gestures, EscapeWhileRecordingThrowsTheTakeAway) {
    startHearing(heard);
    hand.press(holdKey);
    stay(milliseconds(1200));
    hand.tap(keycode::escape);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("idle")));
    hand.release(holdKey);
    EXPECT_TRUE(goesThrough(dropped));
    EXPECT_EQ(takes().size(), 0U);
    EXPECT_TRUE(waitUntil([&] {
        return program->log().contains(QStringLiteral("cancelled by Escape while recording"));
    })) << program->log().toStdString();
}

TEST_F(Gestures, EscapeWhileProcessingInsertsNothingAndClosesTheRequest) {
    const auto editor = DesktopApp::mousepad(QStringLiteral("old"));
    backend.script("/api/register", answer::token(secretToken));
    backend.script("/api/dictate-stream", answer::never());
    start();
    holdFor();
    ASSERT_TRUE(waitUntil([&] { return takes().size() == 1; })) << program->phase().toStdString();
    hand.tap(keycode::escape);
    EXPECT_TRUE(
        goesThrough({QStringLiteral("recording"), QStringLiteral("processing"), QStringLiteral("idle")}));
    EXPECT_TRUE(waitUntil([&] { return backend.lastClosedByClient().has_value(); }));
    EXPECT_EQ(editor->text(), QStringLiteral("old"));
}

TEST_F(Gestures, ATapOfTheHandsFreeKeyStartsAndAnotherEnds) {
    const auto editor = DesktopApp::mousepad();
    // In KWin a modifier's tap may be any command, so the user has the extra key for this.
    const bool isExtraKey = session::name() == QLatin1String("kwin");
    const QJsonObject extraKey{{QStringLiteral("tirra.mac.toggleHotkey"), QStringLiteral("fn")}};
    const auto tap = [&] { hand.hold(isExtraKey ? keycode::menu : handsFreeKey, milliseconds(100)); };
    startHearing(heard, isExtraKey ? extraKey : QJsonObject());
    tap();
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    stay(milliseconds(600));
    tap();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
}

TEST_F(Gestures, TheHoldKeyEndsAHandsFreeTakeAtItsPress) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    tapHandsFree();
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    stay(milliseconds(600));
    hand.press(holdKey);
    EXPECT_TRUE(waitUntil([&] { return takes().size() == 1; }));
    EXPECT_TRUE(hand.isDown(holdKey));
    hand.release(holdKey);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
}

TEST_F(Gestures, TheLeftTwinOfTheHoldKeyDoesNothing) {
    startHearing(heard);
    hand.hold(keycode::leftControl, milliseconds(1000));
    holdFor(milliseconds(200)); // the proof that the watch was on
    EXPECT_TRUE(goesThrough(dropped));
}

TEST_F(Gestures, KeysThatAProgramTypesDoNothing) {
    startHearing(heard);
    for (const char* const step : {"keydown", "keyup"}) {
        ASSERT_EQ(
            runTool(QStringLiteral("xdotool"), {QLatin1String(step), QStringLiteral("Control_R")}).status, 0);
        stay(milliseconds(500));
    }
    holdFor(milliseconds(200));
    EXPECT_TRUE(goesThrough(dropped));
}

TEST_F(Gestures, ANoticeOnScreenBlocksANewTake) {
    backend.script("/api/register", answer::token(secretToken));
    backend.script("/api/dictate-stream", answer::error(QStringLiteral("no_speech")));
    start();
    holdFor();
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("notice")));
    holdFor(milliseconds(500));
    EXPECT_TRUE(goesThrough({QStringLiteral("recording"), QStringLiteral("processing"),
                             noticePhase(QStringLiteral("Didn't catch any speech — try again.")),
                             QStringLiteral("idle")}));
    EXPECT_EQ(takes().size(), 1U);
    holdFor(milliseconds(200));
    EXPECT_TRUE(goesThrough(dropped));
}

TEST_F(Gestures, TheCommandLineStartsAndStops) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    EXPECT_EQ(program->run({QStringLiteral("start")}), 0);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    QByteArray said;
    EXPECT_EQ(program->run({QStringLiteral("status")}, &said), 0);
    EXPECT_EQ(said, "recording\n");
    EXPECT_EQ(program->run({QStringLiteral("status"), QStringLiteral("--json")}, &said), 0);
    const QJsonObject status = QJsonDocument::fromJson(said).object();
    EXPECT_EQ(status.value(QStringLiteral("phase")).toString(), QStringLiteral("recording"))
        << said.constData();
    EXPECT_TRUE(status.value(QStringLiteral("permissionsGranted")).toBool()) << said.constData();
    stay(milliseconds(400));
    EXPECT_EQ(program->run({QStringLiteral("stop")}), 0);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
}

TEST_F(Gestures, TheCommandLineTogglesAndCancels) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    EXPECT_EQ(program->run({QStringLiteral("toggle")}), 0);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    EXPECT_EQ(program->run({QStringLiteral("cancel")}), 0);
    EXPECT_TRUE(goesThrough(dropped));
    EXPECT_EQ(program->run({QStringLiteral("toggle")}), 0);
    stay(milliseconds(500));
    EXPECT_EQ(program->run({QStringLiteral("toggle")}), 0);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
    EXPECT_EQ(takes().size(), 1U);
}

TEST_F(Gestures, ASecondStartHandsOverAndEndsAndQuitEndsTheFirst) {
    startHearing(heard);
    EXPECT_EQ(program->run({}), 0);
    EXPECT_TRUE(program->isRunning());
    EXPECT_EQ(program->phase(), QStringLiteral("idle"));
    EXPECT_EQ(program->run({QStringLiteral("quit")}), 0);
    EXPECT_TRUE(waitUntil([&] { return !program->isRunning(); }));
    EXPECT_EQ(program->exitCode(), 0);
    QByteArray said;
    EXPECT_EQ(program->run({QStringLiteral("status")}, &said), 1) << said.constData();
}

} // namespace

} // namespace lorvane
