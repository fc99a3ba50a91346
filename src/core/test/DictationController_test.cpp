// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

class DictationControllerTest : public ::testing::Test, public DictationWorld {
 protected:
    void SetUp() override { start(); }
    /// A backend that does not answer before its time.
    void slowBackend(double delay = 5) {
        backend.streams.push_back(FakeDictationEndpoints::answer(backend.otherwise, {}, seconds(delay)));
    }
    void startRecordingByToggle() {
        tapToggle();
        ASSERT_TRUE(isRecording());
        speak(1);
    }
};

// --- The way of one take ---------------------------------------------------------------------------------

TEST_F(DictationControllerTest, HoldSpeakAndLetGoPastesTheText) {
    slowBackend(0.5);
    keyboard.press(Hotkey::rightCommand);
    EXPECT_TRUE(isRecording());
    EXPECT_TRUE(recorder.isRecording());
    speak(2);
    keyboard.release(Hotkey::rightCommand);
    EXPECT_TRUE(isProcessing());
    EXPECT_FALSE(recorder.isRecording());
    advance(0.5);
    EXPECT_TRUE(isProcessing());
    advance(0.15);
    EXPECT_TRUE(isDone());
    EXPECT_EQ(pasted, QStringList{"Hello there."});
    EXPECT_EQ(controller.lastText(), "Hello there.");
}

TEST_F(DictationControllerTest, DoneHidesAfterItsDelay) {
    holdFor(1);
    advance(0.15);
    ASSERT_TRUE(isDone());
    advance(1.39);
    EXPECT_TRUE(isDone());
    advance(0.01);
    EXPECT_TRUE(isIdle());
    EXPECT_TRUE(pill.isShown);
}

TEST_F(DictationControllerTest, TakeIsLoggedWithItsSourceAndLength) {
    holdFor(1.2);
    ASSERT_EQ(logged("take by").size(), 1);
    EXPECT_EQ(logged("take by").last().toStdString(), "[tirra-dictate] take by hold (right ⌘), 1.2s");
    advance(5);
    controller.setHotkey(Hotkey::rightShift);
    startRecordingByToggle();
    tapToggle();
    EXPECT_EQ(logged("take by").last().toStdString(), "[tirra-dictate] take by hands-free (right ⌥), 1.1s");
}

// --- Gestures --------------------------------------------------------------------------------------------

TEST_F(DictationControllerTest, ShortPressOfTheHoldKeyLeavesNothingBehind) {
    holdFor(0.34);
    EXPECT_TRUE(isIdle());
    advance(5);
    EXPECT_EQ(phases, (std::vector<Phase>{Recording{}, Idle{}}));
    EXPECT_EQ(chime.plays, 0);
    EXPECT_TRUE(backend.streamRequests.empty());
    EXPECT_FALSE(recorder.isRecording());
}

TEST_F(DictationControllerTest, TakeOfExactlyTheThresholdIsTooShort) {
    holdFor(0.35);
    EXPECT_EQ(phases, (std::vector<Phase>{Recording{}, Idle{}}));
    EXPECT_TRUE(backend.streamRequests.empty());
    EXPECT_FALSE(recorder.isRecording());
}

TEST_F(DictationControllerTest, TakeAboveTheThresholdIsSent) {
    holdFor(0.36);
    EXPECT_EQ(backend.streamRequests.size(), 1U);
}

TEST_F(DictationControllerTest, ChordInTheFirstSecondCancelsTheTake) {
    keyboard.press(Hotkey::rightCommand);
    speak(0.9);
    keyboard.keyDown(8);
    EXPECT_TRUE(isIdle());
    EXPECT_FALSE(recorder.isRecording());
    keyboard.release(Hotkey::rightCommand);
    EXPECT_TRUE(isIdle());
    EXPECT_TRUE(backend.streamRequests.empty());
}

TEST_F(DictationControllerTest, KeyAfterTheFirstSecondChangesNothing) {
    keyboard.press(Hotkey::rightCommand);
    speak(1);
    keyboard.keyDown(8);
    EXPECT_TRUE(isRecording());
    keyboard.release(Hotkey::rightCommand);
    EXPECT_EQ(backend.streamRequests.size(), 1U);
}

TEST_F(DictationControllerTest, ToggleKeyStartsAndEndsATake) {
    startRecordingByToggle();
    tapToggle();
    EXPECT_EQ(backend.streamRequests.size(), 1U);
}

TEST_F(DictationControllerTest, ToggleKeyEndsATakeThatIsHeld) {
    slowBackend();
    keyboard.press(Hotkey::rightCommand);
    speak(1);
    tapToggle();
    EXPECT_TRUE(isProcessing());
    keyboard.release(Hotkey::rightCommand);
    EXPECT_TRUE(isProcessing());
    EXPECT_EQ(backend.streamRequests.size(), 1U);
}

TEST_F(DictationControllerTest, HoldKeyEndsAHandsFreeTakeAtThePressAndItsReleaseIsSwallowed) {
    startRecordingByToggle();
    keyboard.press(Hotkey::rightCommand);
    EXPECT_EQ(backend.streamRequests.size(), 1U);
    advance(0.2);
    ASSERT_TRUE(isDone());
    controller.startDictation(Source::hold);
    speak(0.5);
    keyboard.release(Hotkey::rightCommand);
    EXPECT_TRUE(isRecording());
}

TEST_F(DictationControllerTest, SwallowedReleaseIsNotRememberedPastAChord) {
    startRecordingByToggle();
    keyboard.press(Hotkey::rightCommand);
    keyboard.keyDown(8);
    keyboard.release(Hotkey::rightCommand);
    advance(5);
    holdFor(1);
    EXPECT_EQ(backend.streamRequests.size(), 2U);
}

TEST_F(DictationControllerTest, TapOfTheHoldKeyNeverBecomesHandsFree) {
    holdFor(0.1);
    advance(3);
    EXPECT_TRUE(isIdle());
    EXPECT_FALSE(recorder.isRecording());
}

TEST_F(DictationControllerTest, ReleaseOfTheHoldKeyDoesNotEndAHandsFreeTake) {
    keyboard.press(Hotkey::rightCommand);
    speak(0.4);
    controller.cancelRecording();
    controller.startDictation(Source::toggle);
    keyboard.release(Hotkey::rightCommand);
    EXPECT_TRUE(isRecording());
}

TEST_F(DictationControllerTest, ControlsOnScreenStartAndEndAHandsFreeTake) {
    controller.toggleDictation();
    EXPECT_TRUE(isRecording());
    speak(1);
    slowBackend();
    controller.toggleDictation();
    EXPECT_TRUE(isProcessing());
    controller.toggleDictation();
    EXPECT_TRUE(isProcessing());
}

// --- Phases that do not take a start ---------------------------------------------------------------------

TEST_F(DictationControllerTest, MessageOnScreenBlocksANewTake) {
    status.showNotice("Busy", NoticeSeverity::warning);
    keyboard.press(Hotkey::rightCommand);
    EXPECT_EQ(notice(), "Busy");
    EXPECT_FALSE(recorder.isRecording());
    advance(0.5);
    keyboard.release(Hotkey::rightCommand);
    EXPECT_EQ(notice(), "Busy");
    tapToggle();
    EXPECT_EQ(notice(), "Busy");
    controller.toggleDictation();
    EXPECT_EQ(notice(), "Busy");
}

TEST_F(DictationControllerTest, HoldAndToggleDoNothingWhileProcessing) {
    slowBackend();
    holdFor(1);
    ASSERT_TRUE(isProcessing());
    keyboard.press(Hotkey::rightCommand);
    advance(0.5);
    keyboard.release(Hotkey::rightCommand);
    tapToggle();
    EXPECT_TRUE(isProcessing());
    EXPECT_EQ(backend.streamRequests.size(), 1U);
}

TEST_F(DictationControllerTest, NewTakeStartsAtOnceFromDoneAndIsNotHidden) {
    holdFor(1);
    advance(0.2);
    ASSERT_TRUE(isDone());
    keyboard.press(Hotkey::rightCommand);
    EXPECT_TRUE(isRecording());
    speak(2);
    EXPECT_TRUE(isRecording());
    EXPECT_EQ(std::count(phases.begin(), phases.end(), Phase(Idle{})), 0);
}

TEST_F(DictationControllerTest, StopAndCancelDoNothingInIdle) {
    controller.stopDictation();
    controller.cancelRecording();
    controller.cancelProcessing();
    EXPECT_TRUE(isIdle());
    EXPECT_TRUE(phases.empty());
}

TEST_F(DictationControllerTest, CancelOfAProcessingTakeDoesNothingWhileRecording) {
    startRecordingByToggle();
    controller.cancelProcessing();
    EXPECT_TRUE(isRecording());
}

// --- A recorder that cannot start ------------------------------------------------------------------------

TEST_F(DictationControllerTest, DeniedMicrophoneIsSaid) {
    engines.system().authorisation = AudioAuthorisation::denied;
    keyboard.press(Hotkey::rightCommand);
    EXPECT_EQ(notice(), "Allow microphone access, then try again");
    EXPECT_EQ(phases.size(), 1U);
    keyboard.release(Hotkey::rightCommand);
    advance(1.4);
    EXPECT_TRUE(isIdle());
}

TEST_F(DictationControllerTest, MissingInputIsSaid) {
    engines.system().format = InputFormat{0, 0};
    keyboard.press(Hotkey::rightCommand);
    EXPECT_EQ(notice(), "No microphone on the selected input — check Sound settings");
}

TEST_F(DictationControllerTest, EngineThatFailsIsSaid) {
    engines.system().startFailure = EngineFailure{false, "no"};
    keyboard.press(Hotkey::rightCommand);
    EXPECT_EQ(notice(), "Couldn't start the microphone. Try again.");
}

TEST_F(DictationControllerTest, FailureToStartFromDoneReplacesIt) {
    holdFor(1);
    advance(0.2);
    engines.system().startFailure = EngineFailure{false, "no"};
    keyboard.press(Hotkey::rightCommand);
    EXPECT_EQ(notice(), "Couldn't start the microphone. Try again.");
    advance(1.39);
    EXPECT_NE(notice(), "");
    advance(0.01);
    EXPECT_TRUE(isIdle());
}

// --- Takes with nothing in them --------------------------------------------------------------------------

TEST_F(DictationControllerTest, TakeWithoutSoundIsNotSent) {
    keyboard.press(Hotkey::rightCommand);
    advance(1);
    keyboard.release(Hotkey::rightCommand);
    EXPECT_EQ(notice(), "Didn't catch that");
    EXPECT_TRUE(backend.streamRequests.empty());
    advance(1.4);
    EXPECT_TRUE(isIdle());
}

} // namespace

} // namespace lorvane
