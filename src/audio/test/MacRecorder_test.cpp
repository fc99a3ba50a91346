// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/MacRecorder.h"
#include "audio/testing/FakeAudioEngine.h"
#include "audio/testing/FakeInputDevices.h"
#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Kind = MacRecorder::StartFailure::Kind;
constexpr std::size_t tenMilliseconds = 480;

class MacRecorderTest : public ::testing::Test {
 protected:
    MacRecorder::StartFailure startFailure() {
        const auto started = recorder.start();
        EXPECT_FALSE(started.has_value());
        EXPECT_FALSE(recorder.isRecording());
        return started ? MacRecorder::StartFailure{} : started.error();
    }
    void startTake() { ASSERT_TRUE(recorder.start().has_value()); }
    // A headset that is the user's choice.
    void chooseHeadset() {
        devices.set({{5, 1, "headset", "Headset", false}});
        world.preferences.set(preference::inputUID, QStringLiteral("headset"));
        engines.system().devices = {{5, {16'000.0, 2}}};
    }
    FakeAudioEngine& engine() { return engines.engine(); }

    TestFoundation world;
    FakeAudioEngineFactory engines;
    FakeInputDevices devices;
    MacRecorder recorder{world.foundation, engines, devices};
};

TEST_F(MacRecorderTest, IsIdleWithOneEngineWhenItIsMade) {
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_EQ(recorder.level(), 0.0);
    EXPECT_EQ(engines.enginesMade(), 1);
    EXPECT_EQ(world.clock.pendingTimers(), 0U);
}

TEST_F(MacRecorderTest, StartsAFreshEngineAtEachStartAndNotesTheTime) {
    world.clock.advance(seconds(3));
    startTake();
    EXPECT_TRUE(recorder.isRecording());
    EXPECT_EQ(recorder.startedAt(), world.clock.now());
    EXPECT_EQ(engines.enginesMade(), 2);
    EXPECT_TRUE(engine().isRunning());
    EXPECT_EQ(engine().requestedFrames(), 4096U);
    recorder.cancel();
    startTake();
    EXPECT_EQ(engines.enginesMade(), 3);
}

TEST_F(MacRecorderTest, StartWhileRecordingLeavesTheTakeUntouched) {
    startTake();
    engine().deliver(0.02F, tenMilliseconds);
    const Instant began = recorder.startedAt();
    world.clock.advance(seconds(1));
    engines.system().authorisation = AudioAuthorisation::denied;
    startTake();
    EXPECT_EQ(recorder.startedAt(), began);
    EXPECT_EQ(engines.enginesMade(), 2);
    EXPECT_EQ(recorder.stop()->size(), 160 * 2);
}

TEST_F(MacRecorderTest, AnythingButAuthorisedIsDeniedAndChangesNothing) {
    for (const auto status :
         {AudioAuthorisation::denied, AudioAuthorisation::restricted, AudioAuthorisation::notDetermined}) {
        engines.system().authorisation = status;
        EXPECT_EQ(startFailure(), MacRecorder::StartFailure{Kind::denied});
    }
    EXPECT_EQ(engines.enginesMade(), 1);
}

TEST_F(MacRecorderTest, NoUsableFormatIsNoInput) {
    for (const InputFormat format : {InputFormat{0, 1}, InputFormat{48'000, 0}, InputFormat{-1, 1}}) {
        engines.system().format = format;
        EXPECT_EQ(startFailure(), MacRecorder::StartFailure{Kind::noInput});
    }
    EXPECT_EQ(engine().starts(), 0);
    EXPECT_EQ(engines.enginesMade(), 4) << "the fresh engine stays";
    EXPECT_EQ(world.clock.pendingTimers(), 0U);
}

TEST_F(MacRecorderTest, ASystemWithoutInputDevicesIsNoInput) {
    devices.set({});
    engines.system().format = {};
    EXPECT_EQ(startFailure().kind, Kind::noInput);
}

TEST_F(MacRecorderTest, AConverterThatCannotBeMadeIsAnEngineFailure) {
    engines.system().converterCannotBeMade = true;
    EXPECT_EQ(startFailure(),
              (MacRecorder::StartFailure{Kind::engine, QStringLiteral("Audio converter failed")}));
    EXPECT_EQ(engine().starts(), 0);
}

TEST_F(MacRecorderTest, AnEngineThatWontStartGivesTheSystemsWords) {
    engines.system().startFailure = EngineFailure{false, QStringLiteral("Connection refused")};
    EXPECT_EQ(startFailure(),
              (MacRecorder::StartFailure{Kind::engine, QStringLiteral("Connection refused")}));
    EXPECT_FALSE(engine().isRunning());
    EXPECT_EQ(recorder.stop(), std::nullopt);
}

TEST_F(MacRecorderTest, AnInputThatIsForbiddenToUsIsDenied) {
    engines.system().startFailure = EngineFailure{true, QStringLiteral("Access denied")};
    EXPECT_EQ(startFailure(), MacRecorder::StartFailure{Kind::denied});
}

TEST_F(MacRecorderTest, AFailedStartCanBeFollowedByAGoodOne) {
    engines.system().startFailure = EngineFailure{false, QStringLiteral("Connection refused")};
    startFailure();
    engines.system().startFailure.reset();
    startTake();
    engine().deliver(0.02F, tenMilliseconds);
    EXPECT_EQ(recorder.stop()->size(), 160 * 2);
}

TEST_F(MacRecorderTest, StopGivesTheWholeTakeAndOneLogLine) {
    startTake();
    engine().deliver(0.02F, tenMilliseconds);
    engine().deliver(0.005F, tenMilliseconds);
    const auto pcm = recorder.stop();
    ASSERT_TRUE(pcm);
    EXPECT_EQ(pcm->size(), 2 * 160 * 2);
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_FALSE(engine().isRunning());
    EXPECT_EQ(world.lines,
              QStringList{QStringLiteral("[part] take ended — levels p5 0.090 p10 0.090 p25 0.090 "
                                         "p50 0.360, 50% below 0.18")});
}

TEST_F(MacRecorderTest, StopWhenIdleGivesNothingAndLogsNothing) {
    EXPECT_EQ(recorder.stop(), std::nullopt);
    EXPECT_TRUE(world.lines.isEmpty());
}

TEST_F(MacRecorderTest, ATakeWithoutBuffersIsEmptyBytes) {
    startTake();
    EXPECT_EQ(recorder.stop(), QByteArray());
    EXPECT_EQ(world.lines, QStringList{QStringLiteral("[part] take ended — no levels")});
}

TEST_F(MacRecorderTest, CancelThrowsTheTakeAwayInSilence) {
    startTake();
    engine().deliver(0.02F, tenMilliseconds);
    recorder.cancel();
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_FALSE(engine().isRunning());
    EXPECT_EQ(recorder.stop(), std::nullopt);
    EXPECT_TRUE(world.lines.isEmpty());
    EXPECT_EQ(world.clock.pendingTimers(), 0U);
}

TEST_F(MacRecorderTest, CancelWhenIdleDoesNothing) {
    recorder.cancel();
    EXPECT_EQ(engine().stops(), 0);
}

TEST_F(MacRecorderTest, ATakeHasNothingOfTheOneBefore) {
    startTake();
    engine().deliver(0.02F, tenMilliseconds);
    recorder.cancel();
    startTake();
    engine().deliver(0.9F, tenMilliseconds);
    EXPECT_EQ(recorder.stop()->size(), 160 * 2);
    EXPECT_TRUE(world.lines.front().contains(QStringLiteral("p5 1.000")))
        << world.lines.front().toStdString();
}

TEST_F(MacRecorderTest, PublishesTheLevelEveryTwentiethOfASecond) {
    std::vector<double> told;
    const Handle observer = recorder.subscribeLevel([&](const double& level) { told.push_back(level); });
    startTake();
    engine().deliver(0.02F, tenMilliseconds);
    world.clock.advance(std::chrono::milliseconds(49));
    EXPECT_EQ(recorder.level(), 0.0);
    world.clock.advance(std::chrono::milliseconds(1));
    EXPECT_NEAR(recorder.level(), 0.36, 1e-6);
    engine().deliver(1.0F, tenMilliseconds);
    world.clock.advance(std::chrono::milliseconds(50));
    EXPECT_EQ(recorder.level(), 1.0);
    ASSERT_TRUE(recorder.stop());
    EXPECT_EQ(recorder.level(), 0.0);
    ASSERT_EQ(told.size(), 3U);
    EXPECT_NEAR(told[0], 0.36, 1e-6);
    EXPECT_EQ(told[1], 1.0);
    EXPECT_EQ(told[2], 0.0);
    EXPECT_EQ(world.clock.pendingTimers(), 0U);
}

TEST_F(MacRecorderTest, ABufferThatCannotBeConvertedLeavesNoTrace) {
    startTake();
    engine().deliver(0.02F, tenMilliseconds);
    engines.system().conversionFails = true;
    engine().deliver(0.9F, tenMilliseconds);
    engines.system().conversionFails = false;
    world.clock.advance(std::chrono::milliseconds(50));
    EXPECT_NEAR(recorder.level(), 0.36, 1e-6);
    EXPECT_EQ(recorder.stop()->size(), 160 * 2);
}

TEST_F(MacRecorderTest, CapturesFromTheChosenInputInItsOwnFormat) {
    chooseHeadset();
    startTake();
    EXPECT_EQ(engine().selected(), 5U);
    engine().deliver(0.02F, 160);
    EXPECT_EQ(recorder.stop()->size(), 160 * 2);
    EXPECT_EQ(engines.capacities(), std::vector<std::size_t>{160 + 64});
}

TEST_F(MacRecorderTest, NoChoiceIsTheDefaultInput) {
    devices.set({{5, 1, "headset", "Headset", false}});
    startTake();
    EXPECT_EQ(engine().selected(), std::nullopt);
}

TEST_F(MacRecorderTest, AChosenInputThatIsGoneIsPassedOverAndStaysChosen) {
    chooseHeadset();
    devices.set({});
    startTake();
    EXPECT_EQ(engine().selected(), std::nullopt);
    EXPECT_TRUE(world.lines.isEmpty());
    EXPECT_EQ(world.preferences.get(preference::inputUID), QStringLiteral("headset"));
}

TEST_F(MacRecorderTest, AChosenInputThatCannotBeSelectedIsSaidAndTheDefaultServes) {
    chooseHeadset();
    engines.system().selectFailure = QStringLiteral("No such entity");
    startTake();
    EXPECT_EQ(world.lines,
              QStringList{QStringLiteral("[tirra-mic] could not select the chosen input: No such entity")});
    engine().deliver(0.02F, tenMilliseconds);
    EXPECT_EQ(recorder.stop()->size(), 160 * 2);
}

TEST_F(MacRecorderTest, FollowsADeviceChangeAndKeepsWhatItHeard) {
    startTake();
    engine().deliver(0.02F, tenMilliseconds);
    engines.system().format = {16'000.0, 2};
    engine().changeConfiguration();
    EXPECT_EQ(engine().stops(), 1);
    EXPECT_EQ(engine().starts(), 2);
    EXPECT_EQ(engines.enginesMade(), 2) << "the same engine goes on";
    EXPECT_EQ(engines.convertersMade(), 2);
    engine().deliver(0.02F, 160);
    EXPECT_EQ(recorder.stop()->size(), 2 * 160 * 2);
}

TEST_F(MacRecorderTest, AppliesTheChosenInputAnewWhenItFollows) {
    startTake();
    chooseHeadset();
    engine().changeConfiguration();
    EXPECT_EQ(engine().selected(), 5U);
}

TEST_F(MacRecorderTest, ASecondDeviceChangeInOneTakeIsNotFollowed) {
    startTake();
    engine().changeConfiguration();
    engine().changeConfiguration();
    EXPECT_EQ(engine().stops(), 1);
    EXPECT_EQ(engine().starts(), 2);
    EXPECT_EQ(engines.convertersMade(), 2);
    engine().deliver(0.02F, tenMilliseconds);
    EXPECT_EQ(recorder.stop()->size(), 160 * 2);
}

TEST_F(MacRecorderTest, TheNextTakeFollowsADeviceChangeAgain) {
    startTake();
    engine().changeConfiguration();
    recorder.cancel();
    startTake();
    engine().changeConfiguration();
    EXPECT_EQ(engine().starts(), 2);
}

TEST_F(MacRecorderTest, AChangeThatCannotBeFollowedLeavesADeafTake) {
    startTake();
    engine().deliver(0.02F, tenMilliseconds);
    engines.system().startFailure = EngineFailure{false, QStringLiteral("Connection refused")};
    engine().changeConfiguration();
    EXPECT_EQ(world.lines, QStringList{QStringLiteral(
                               "[tirra-mic] could not follow the device change: Connection refused")});
    EXPECT_TRUE(recorder.isRecording());
    EXPECT_EQ(world.clock.pendingTimers(), 1U) << "the level timer runs on";
    engine().deliver(0.02F, tenMilliseconds);
    EXPECT_EQ(recorder.stop()->size(), 160 * 2);
}

TEST_F(MacRecorderTest, SaysInTheUsersWordsWhyItCouldNotFollow) {
    startTake();
    engines.system().format = {};
    engine().changeConfiguration();
    EXPECT_EQ(world.lines, QStringList{QStringLiteral("[tirra-mic] could not follow the device change: No "
                                                      "microphone on the selected input")});
}

TEST_F(MacRecorderTest, ADeviceChangeAfterTheTakeIsNobodysBusiness) {
    startTake();
    recorder.cancel();
    engine().changeConfiguration();
    EXPECT_EQ(engine().starts(), 1);
}

TEST_F(MacRecorderTest, NeverCallsOnPart) {
    int parts = 0;
    recorder.onPart = [&](const QByteArray&) { ++parts; };
    startTake();
    engine().deliver(0.02F, 48'000);
    engine().deliver(0.0F, 480'000);
    engine().deliver(0.02F, 48'000);
    ASSERT_TRUE(recorder.stop());
    EXPECT_EQ(parts, 0);
}

TEST_F(MacRecorderTest, EndsItsCaptureWithItself) {
    auto other = std::make_unique<MacRecorder>(world.foundation, engines, devices);
    ASSERT_TRUE(other->start().has_value());
    other.reset();
    EXPECT_EQ(world.clock.pendingTimers(), 0U);
    world.clock.advance(seconds(1));
}

TEST(MacRecorderErrorDescription, IsInTheUsersWords) {
    const Localisation words;
    EXPECT_EQ(errorDescription({Kind::denied}, words), QStringLiteral("Microphone access is off"));
    EXPECT_EQ(errorDescription({Kind::noInput}, words),
              QStringLiteral("No microphone on the selected input"));
    EXPECT_EQ(errorDescription({Kind::engine, QStringLiteral("as it is")}, words),
              QStringLiteral("as it is"));
}

} // namespace

} // namespace lorvane
