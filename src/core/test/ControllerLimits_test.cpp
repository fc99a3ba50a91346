// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

class ControllerLimitsTest : public ::testing::Test, public DictationWorld {
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

// --- The record limit ------------------------------------------------------------------------------------

TEST_F(ControllerLimitsTest, RecordLimitShowsItsMessageAndCaptureRunsOn) {
    preferences.set(preference::recordLimit, 10);
    keyboard.press(Hotkey::rightCommand);
    speak(9.9);
    EXPECT_TRUE(isRecording());
    speak(0.2);
    EXPECT_EQ(notice(), "Recording limit reached");
    keyboard.release(Hotkey::rightCommand);
    EXPECT_TRUE(backend.streamRequests.empty());
    advance(1.4);
    EXPECT_TRUE(isIdle());
    EXPECT_TRUE(recorder.isRecording());
}

TEST_F(ControllerLimitsTest, TakeAfterTheRecordLimitHoldsEverythingSinceCaptureBegan) {
    preferences.set(preference::recordLimit, 10);
    keyboard.press(Hotkey::rightCommand);
    speak(10.1);
    keyboard.release(Hotkey::rightCommand);
    advance(2);
    const int engineCount = engines.enginesMade();
    holdFor(1);
    EXPECT_EQ(engines.enginesMade(), engineCount);
    ASSERT_EQ(backend.streamRequests.size(), 1U);
    EXPECT_GT(codec.calls.back().samples.size(), 11 * 32'000);
    EXPECT_FALSE(recorder.isRecording());
}

TEST_F(ControllerLimitsTest, NoLimitWhenItIsZeroOrNegative) {
    for (const int limit : {0, -5}) {
        preferences.set(preference::recordLimit, limit);
        controller.startDictation(Source::toggle);
        advance(3600);
        EXPECT_TRUE(isRecording());
        controller.cancelRecording();
    }
}

TEST_F(ControllerLimitsTest, LimitOfAnEndedTakeDoesNotEndTheNext) {
    preferences.set(preference::recordLimit, 10);
    controller.startDictation(Source::toggle);
    advance(6);
    controller.cancelRecording();
    controller.startDictation(Source::toggle);
    advance(6);
    EXPECT_TRUE(isRecording());
    controller.cancelRecording();
    preferences.set(preference::recordLimit, 0);
    controller.startDictation(Source::toggle);
    advance(30);
    EXPECT_TRUE(isRecording());
}

// --- Escape ----------------------------------------------------------------------------------------------

TEST_F(ControllerLimitsTest, EscapeIsWatchedOnlyWhileATakeIsAlive) {
    slowBackend();
    EXPECT_FALSE(isWatchingEscape());
    keyboard.press(Hotkey::rightCommand);
    EXPECT_TRUE(isWatchingEscape());
    speak(1);
    keyboard.release(Hotkey::rightCommand);
    EXPECT_TRUE(isWatchingEscape());
    advance(5.2);
    EXPECT_TRUE(isDone());
    EXPECT_FALSE(isWatchingEscape());
}

TEST_F(ControllerLimitsTest, EscapeWhileRecordingThrowsTheTakeAway) {
    startRecordingByToggle();
    escape();
    EXPECT_TRUE(isIdle());
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_EQ(logged("Escape"), QStringList{"[tirra-dictate] cancelled by Escape while recording"});
    EXPECT_TRUE(backend.streamRequests.empty());
}

TEST_F(ControllerLimitsTest, EscapeWhileProcessingCancelsTheRequest) {
    slowBackend();
    holdFor(1);
    escape();
    EXPECT_TRUE(isIdle());
    EXPECT_EQ(backend.cancelledCalls, 1);
    EXPECT_EQ(logged("Escape"), QStringList{"[tirra-dictate] cancelled by Escape while processing"});
    advance(10);
    EXPECT_EQ(phases, (std::vector<Phase>{Recording{}, Processing{}, Idle{}}));
    EXPECT_TRUE(journal.takes.empty());
    EXPECT_TRUE(pasted.isEmpty());
}

TEST_F(ControllerLimitsTest, EscapeIsLookedAtWhenItsReactionRuns) {
    slowBackend();
    keyboard.press(Hotkey::rightCommand);
    speak(1.5);
    keyboard.keyDown(keyCode::escape);
    EXPECT_TRUE(isRecording());
    keyboard.release(Hotkey::rightCommand);
    clock.settle();
    EXPECT_TRUE(isIdle());
    EXPECT_EQ(logged("Escape"), QStringList{"[tirra-dictate] cancelled by Escape while processing"});
}

TEST_F(ControllerLimitsTest, CancelledTakeLeavesRoomForTheNextAtOnce) {
    slowBackend();
    holdFor(1);
    escape();
    holdFor(1);
    advance(0.2);
    EXPECT_TRUE(isDone());
    EXPECT_EQ(pasted.size(), 1);
}

// --- The pill --------------------------------------------------------------------------------------------

TEST_F(ControllerLimitsTest, HiddenBarShowsForATakeAndGoesWithIt) {
    controller.hideBar(seconds(3600));
    EXPECT_FALSE(pill.isShown);
    holdFor(1);
    EXPECT_TRUE(pill.isShown);
    advance(3);
    ASSERT_TRUE(isIdle());
    EXPECT_FALSE(pill.isShown);
}

TEST_F(ControllerLimitsTest, BarStaysAgainAfterItsHour) {
    controller.hideBar(seconds(3600));
    advance(3600);
    EXPECT_FALSE(pill.isShown);
    holdFor(1);
    advance(3);
    ASSERT_TRUE(isIdle());
    EXPECT_TRUE(pill.isShown);
}

TEST_F(ControllerLimitsTest, HidingTheBarDoesNotEndATake) {
    startRecordingByToggle();
    controller.hideBar(seconds(3600));
    EXPECT_TRUE(isRecording());
}

// --- The rest of what others call ------------------------------------------------------------------------

TEST_F(ControllerLimitsTest, LastTranscriptIsCopied) {
    controller.copyLastTranscript();
    EXPECT_EQ(pasteboard.writes, 0);
    holdFor(1);
    advance(3);
    controller.copyLastTranscript();
    EXPECT_EQ(pasteboard.text(), "Hello there.");
    EXPECT_FALSE(pasteboard.isLent());
}

TEST_F(ControllerLimitsTest, TranscriptCopiedDuringTheLoanStays) {
    holdFor(1);
    advance(0.5);
    controller.copyLastTranscript();
    advance(5);
    EXPECT_EQ(pasteboard.text(), "Hello there.");
}

TEST_F(ControllerLimitsTest, WindowsAreOpenedThroughTheirPort) {
    windows.calls.clear();
    controller.openHomeWindow();
    controller.openFeedback("pill");
    controller.openWhatsNew();
    EXPECT_EQ(windows.calls, (QStringList{"home", "feedback pill", "what's new"}));
}

TEST_F(ControllerLimitsTest, PublishedFieldsTellOfEachChange) {
    QStringList texts;
    std::vector<bool> translating;
    const Handle text = status.lastText.subscribe([&](const QString& value) { texts.append(value); });
    const Handle flag = status.isTranslating.subscribe([&](bool value) { translating.push_back(value); });
    preferences.set(preference::translateLang, QString("de"));
    holdFor(1);
    advance(3);
    EXPECT_EQ(texts, QStringList{"Hello there."});
    EXPECT_EQ(translating, (std::vector<bool>{true, false}));
}

} // namespace

} // namespace lorvane
