// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"

#include <QUuid>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Backend = FakeDictationEndpoints;
using Kind = Failure::Kind;

class TakeDeliveryTest : public ::testing::Test, public DictationWorld {
 protected:
    void SetUp() override { start(); }
    void streamAnswers(const DictationResult& outcome, const QStringList& deltas = {}) {
        backend.streams.push_back(Backend::answer(outcome, deltas));
    }
    void uploadAnswers(const DictationResult& outcome) {
        backend.uploads.push_back(Backend::answer(outcome));
    }
    /// One take up to the moment at which everything but a wait for a retry is over.
    void dictate() {
        holdFor(2);
        advance(0.2);
    }
    QString words(Kind kind) { return errorDescription(Failure{kind}, world.words); }
};

// --- What goes out ---------------------------------------------------------------------------------------

TEST_F(TakeDeliveryTest, TakeGoesToTheStreamFirst) {
    dictate();
    ASSERT_EQ(backend.streamRequests.size(), 1U);
    EXPECT_TRUE(backend.uploadRequests.empty());
    const DictationRequest& request = backend.streamRequests[0];
    EXPECT_EQ(request.ext, "m4a");
    EXPECT_FALSE(request.audio.isEmpty());
    EXPECT_EQ(request.prefix, "");
    EXPECT_EQ(request.translate, std::nullopt);
    EXPECT_TRUE(request.allowRetry);
    ASSERT_TRUE(request.takeID);
    EXPECT_FALSE(QUuid(*request.takeID).isNull());
    EXPECT_EQ(*request.takeID, request.takeID->toUpper());
}

TEST_F(TakeDeliveryTest, TakeIsUnderWayUntilItsTextHasCome) {
    backend.streams.push_back(Backend::answer(backend.otherwise, {}, seconds(1)));
    EXPECT_EQ(delivery.underWay(), nullptr);
    holdFor(1);
    ASSERT_NE(delivery.underWay(), nullptr);
    EXPECT_EQ(delivery.underWay()->take->data, backend.streamRequests[0].audio);
    advance(2);
    EXPECT_EQ(delivery.underWay(), nullptr);
}

TEST_F(TakeDeliveryTest, CancelledTakeIsNotUnderWayAnyMore) {
    backend.streams.push_back(Backend::answer(backend.otherwise, {}, seconds(5)));
    holdFor(1);
    ASSERT_NE(delivery.underWay(), nullptr);
    controller.cancelProcessing();
    advance(1);
    EXPECT_EQ(delivery.underWay(), nullptr);
}

TEST_F(TakeDeliveryTest, TakeThatIsCancelledWhileItsTextIsPastedIsNotUnderWayAnyMore) {
    holdFor(1);
    advance(0.1);
    ASSERT_TRUE(pasteboard.isLent());
    ASSERT_TRUE(delivery.underWay());
    escape();
    EXPECT_FALSE(delivery.underWay());
}

TEST_F(TakeDeliveryTest, TakeUnderWayBearsTheIdOfTheAttemptThatRuns) {
    streamAnswers(Backend::failed(Kind::server));
    backend.streams.push_back(Backend::answer(backend.otherwise, {}, seconds(5)));
    holdFor(1);
    advance(1.3);
    ASSERT_EQ(backend.streamRequests.size(), 2U);
    ASSERT_TRUE(delivery.underWay());
    EXPECT_EQ(delivery.underWay()->takeID, backend.streamRequests[1].takeID);
}

TEST_F(TakeDeliveryTest, TargetLanguageIsSentTrimmed) {
    backend.streams.push_back(Backend::answer(backend.otherwise, {}, seconds(1)));
    preferences.set(preference::translateLang, QString(" \tde\u00a0"));
    holdFor(1);
    EXPECT_EQ(backend.streamRequests[0].translate, "de");
    EXPECT_TRUE(controller.isTranslating());
    advance(2);
    EXPECT_FALSE(controller.isTranslating());
}

TEST_F(TakeDeliveryTest, LanguageOfBlanksIsNone) {
    backend.streams.push_back(Backend::answer(backend.otherwise, {}, seconds(1)));
    preferences.set(preference::translateLang, QString("  \t "));
    holdFor(1);
    EXPECT_EQ(backend.streamRequests[0].translate, std::nullopt);
    EXPECT_FALSE(controller.isTranslating());
}

TEST_F(TakeDeliveryTest, TranslatingEndsWithACancelledTake) {
    backend.streams.push_back(Backend::answer(backend.otherwise, {}, seconds(5)));
    preferences.set(preference::translateLang, QString("de"));
    holdFor(1);
    escape();
    EXPECT_FALSE(controller.isTranslating());
}

TEST_F(TakeDeliveryTest, BrokenStreamFallsBackToTheUploadOfTheSameTake) {
    preferences.set(preference::translateLang, QString("de"));
    streamAnswers(Backend::dropped("the line went dead"), {"Hel"});
    uploadAnswers(Backend::text("Hello."));
    dictate();
    EXPECT_EQ(logged("falling back"),
              QStringList{"[tirra-dictate] stream dropped, falling back: the line went dead"});
    ASSERT_EQ(backend.uploadRequests.size(), 1U);
    const DictationRequest& sent = backend.streamRequests[0];
    const DictationRequest& again = backend.uploadRequests[0];
    EXPECT_EQ(again.audio, sent.audio);
    EXPECT_EQ(again.ext, sent.ext);
    EXPECT_EQ(again.translate, sent.translate);
    EXPECT_EQ(again.takeID, sent.takeID);
    EXPECT_EQ(again.prefix, sent.prefix);
    EXPECT_EQ(pasted, QStringList{"Hello."});
}

TEST_F(TakeDeliveryTest, FailureThatTheBackendSaysDoesNotFallBack) {
    streamAnswers(Backend::failed(Kind::tooManyRequests));
    dictate();
    EXPECT_TRUE(backend.uploadRequests.empty());
}

TEST_F(TakeDeliveryTest, FragmentsAreConsumedAndTheTextIsPastedWhole) {
    streamAnswers(Backend::text("Hello there."), {"Hello ", "there."});
    dictate();
    EXPECT_EQ(pasted, QStringList{"Hello there."});
    EXPECT_EQ(logged("[tirra-type]").size(), 2);
}

TEST_F(TakeDeliveryTest, TextThatIsTypedLiveIsMeasuredFromItsLastLine) {
    showField();
    streamAnswers(Backend::text("Hello there."), {"Hello ", "there."});
    dictate();
    EXPECT_EQ(field.text(), "Hello there.");
    EXPECT_EQ(logged("tirra-landed"), QStringList{"[tirra-landed] typed 0 ms after the final line"});
}

// --- Failures --------------------------------------------------------------------------------------------

TEST_F(TakeDeliveryTest, ServerFailureIsTriedThreeTimesInAll) {
    for (int i = 0; i < 3; ++i) {
        streamAnswers(Backend::failed(Kind::server));
    }
    holdFor(1);
    EXPECT_EQ(backend.streamRequests.size(), 1U);
    advance(1.19);
    EXPECT_EQ(backend.streamRequests.size(), 1U);
    advance(0.01);
    EXPECT_EQ(backend.streamRequests.size(), 2U);
    advance(2.39);
    EXPECT_EQ(backend.streamRequests.size(), 2U);
    EXPECT_TRUE(isProcessing());
    advance(0.01);
    EXPECT_EQ(backend.streamRequests.size(), 3U);
    EXPECT_EQ(notice(), "error: " + words(Kind::server));
    EXPECT_EQ(logged("retry"), (QStringList{"[tirra-dictate] upload failed, retry 1",
                                            "[tirra-dictate] upload failed, retry 2"}));
    advance(1.4);
    EXPECT_TRUE(isIdle());
    advance(60);
    EXPECT_EQ(backend.streamRequests.size(), 3U);
}

TEST_F(TakeDeliveryTest, EachAttemptHasItsOwnTakeIdAndTheSameAudio) {
    streamAnswers(Backend::failed(Kind::server));
    holdFor(1);
    advance(1.2);
    ASSERT_EQ(backend.streamRequests.size(), 2U);
    EXPECT_NE(backend.streamRequests[0].takeID, backend.streamRequests[1].takeID);
    EXPECT_EQ(backend.streamRequests[0].audio, backend.streamRequests[1].audio);
    advance(0.2);
    EXPECT_TRUE(isDone());
    EXPECT_EQ(journal.takes.size(), 1U);
}

TEST_F(TakeDeliveryTest, TranslatingLastsOverTheRetries) {
    preferences.set(preference::translateLang, QString("de"));
    streamAnswers(Backend::failed(Kind::server));
    holdFor(1);
    advance(1);
    EXPECT_TRUE(controller.isTranslating());
    advance(1);
    EXPECT_FALSE(controller.isTranslating());
}

TEST_F(TakeDeliveryTest, ServerFailureOfTheUploadIsRetriedThroughTheStream) {
    streamAnswers(Backend::dropped());
    uploadAnswers(Backend::failed(Kind::server));
    holdFor(1);
    advance(1.2);
    EXPECT_EQ(backend.streamRequests.size(), 2U);
    EXPECT_EQ(backend.uploadRequests.size(), 1U);
}

TEST_F(TakeDeliveryTest, NoSpeechIsAWarning) {
    streamAnswers(Backend::failed(Kind::noSpeech));
    dictate();
    EXPECT_EQ(notice(), words(Kind::noSpeech));
    advance(1.4);
    EXPECT_TRUE(isIdle());
    EXPECT_EQ(backend.streamRequests.size(), 1U);
}

TEST_F(TakeDeliveryTest, TooLongStaysSixSeconds) {
    streamAnswers(Backend::failed(Kind::tooLong));
    holdFor(1);
    EXPECT_EQ(notice(), "error: " + words(Kind::tooLong));
    advance(5.99);
    EXPECT_NE(notice(), "");
    advance(0.01);
    EXPECT_TRUE(isIdle());
}

TEST_F(TakeDeliveryTest, OtherFailuresShowTheirWordsAsErrors) {
    streamAnswers(Backend::failed(Kind::tooManyRequests));
    holdFor(1);
    EXPECT_EQ(notice(), "error: " + words(Kind::tooManyRequests));
    advance(2);
    const Failure offline{Kind::noToken, RegistrationFailure::offline};
    streamAnswers(Backend::failed(Kind::noToken, RegistrationFailure::offline));
    holdFor(1);
    EXPECT_EQ(notice(), "error: " + errorDescription(offline, world.words));
}

TEST_F(TakeDeliveryTest, FailureWithoutWordsSaysTryAgain) {
    streamAnswers(Backend::dropped());
    uploadAnswers(Backend::dropped());
    holdFor(1);
    EXPECT_EQ(notice(), "error: Try again");
    EXPECT_EQ(backend.streamRequests.size(), 1U);
    EXPECT_TRUE(journal.takes.empty());
}

// --- Success ---------------------------------------------------------------------------------------------

TEST_F(TakeDeliveryTest, TakeIsRecordedAndCounted) {
    DictationResponse response{"  Well-known facts, don't you think?\n", "well known facts", {}, "note", {}};
    streamAnswers(response);
    const WallTime before = clock.wallNow();
    dictate();
    ASSERT_EQ(journal.takes.size(), 1U);
    const DeliveredTake& take = journal.takes[0];
    EXPECT_FALSE(QUuid(take.id).isNull());
    EXPECT_EQ(take.text, "Well-known facts, don't you think?");
    EXPECT_EQ(take.raw, "well known facts");
    EXPECT_EQ(take.category, "note");
    EXPECT_EQ(take.device, "mac");
    EXPECT_NEAR(take.durationSec, 2.0, 1e-6);
    EXPECT_EQ(take.createdAt, before + seconds(2.15));
    EXPECT_EQ(journal.hits, (std::vector<std::pair<QString, int>>{{"Editor", 5}}));
    EXPECT_EQ(pasted, QStringList{"Well-known facts, don't you think?"});
}

TEST_F(TakeDeliveryTest, HitBelongsToTheApplicationAtTheMomentOfDelivery) {
    backend.streams.push_back(Backend::answer(backend.otherwise, {}, seconds(2)));
    holdFor(1);
    workspace.front = RunningApplication{7, "Mail", "mail"};
    advance(2.1);
    workspace.front = RunningApplication{8, "Chat", "chat"};
    advance(1);
    EXPECT_EQ(journal.hits.at(0).first, "Mail");
}

TEST_F(TakeDeliveryTest, UnknownApplicationIsCountedWithoutAName) {
    workspace.front.reset();
    dictate();
    EXPECT_EQ(journal.hits.at(0).first, "");
}

TEST_F(TakeDeliveryTest, GoalStreakIsPassedOnEvenWithoutText) {
    DictationResponse response{" ", "", {}, {}, DailyGoal{10, 100, false, 3}};
    streamAnswers(response);
    dictate();
    EXPECT_EQ(journal.goalStreak, 3);
}

TEST_F(TakeDeliveryTest, EmptyTextIsNotRecorded) {
    streamAnswers(Backend::text(" \n "));
    dictate();
    EXPECT_EQ(notice(), "Didn't catch that");
    EXPECT_TRUE(journal.takes.empty());
    EXPECT_TRUE(journal.hits.empty());
    EXPECT_EQ(controller.lastText(), "");
    EXPECT_EQ(pasteboard.writes, 0);
}

TEST_F(TakeDeliveryTest, WithoutAccessibilityTheTextIsCopiedAndRecorded) {
    accessibility.setTrusted(false);
    dictate();
    EXPECT_EQ(notice(), "Copied — enable Accessibility to auto-paste");
    EXPECT_FALSE(controller.permissionsGranted());
    EXPECT_EQ(pasteboard.text(), "Hello there.");
    EXPECT_TRUE(pasteKeys.posted.empty());
    EXPECT_EQ(journal.takes.size(), 1U);
    EXPECT_EQ(accessibility.settingsOpened, 1);
    EXPECT_EQ(chime.plays, 0);
}

TEST_F(TakeDeliveryTest, SettingsAreOpenedOnceInARun) {
    accessibility.setTrusted(false);
    dictate();
    advance(5);
    dictate();
    EXPECT_EQ(accessibility.settingsOpened, 1);
    EXPECT_EQ(journal.takes.size(), 2U);
}

TEST_F(TakeDeliveryTest, ChimePlaysAfterAPasteUnlessItIsOff) {
    dictate();
    EXPECT_EQ(chime.plays, 1);
    advance(5);
    preferences.set(preference::soundOn, true);
    dictate();
    EXPECT_EQ(chime.plays, 2);
    advance(5);
    preferences.set(preference::soundOn, false);
    dictate();
    EXPECT_EQ(chime.plays, 2);
    EXPECT_TRUE(isDone());
}

TEST_F(TakeDeliveryTest, SecureFieldGetsNothingAndTheTakeIsRecorded) {
    fields.secure = true;
    pasteboard.copyElsewhere("mine");
    dictate();
    EXPECT_EQ(notice(), "Secure field — not inserted");
    EXPECT_EQ(pasteboard.writes, 0);
    EXPECT_EQ(pasteboard.text(), "mine");
    EXPECT_EQ(journal.takes.size(), 1U);
    EXPECT_EQ(chime.plays, 0);
}

TEST_F(TakeDeliveryTest, KeysThatCannotBePostedHandTheTextOver) {
    pasteKeys.outcome = KeysOutcome::notPosted;
    pasteboard.copyElsewhere("mine");
    dictate();
    EXPECT_EQ(notice(), "Copied — press ⌘V");
    EXPECT_EQ(journal.takes.size(), 1U);
    EXPECT_EQ(chime.plays, 0);
    advance(10);
    EXPECT_EQ(pasteboard.text(), "Hello there.");
    EXPECT_FALSE(pasteboard.isLent());
}

TEST_F(TakeDeliveryTest, UnansweredPasteIsSaidWhenNoTakeIsRunning) {
    pasteKeys.onPosted = nullptr;
    dictate();
    EXPECT_TRUE(isDone());
    advance(2);
    EXPECT_EQ(notice(), "Copied — press ⌘V");
    EXPECT_EQ(pasteboard.text(), "Hello there.");
    advance(1.4);
    EXPECT_TRUE(isIdle());
}

TEST_F(TakeDeliveryTest, UnansweredPasteDoesNotDisturbTheNextTake) {
    pasteKeys.onPosted = nullptr;
    dictate();
    keyboard.press(Hotkey::rightCommand);
    speak(2);
    EXPECT_TRUE(isRecording());
    EXPECT_EQ(pasteboard.text(), "Hello there.");
}

} // namespace

} // namespace lorvane
