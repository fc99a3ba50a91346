// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseAudioEngine.h"

#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/pulse/PulseAudioEngineFactory.h"
#include "platform/linux/pulse/test/PulseServer.h"
#include "support/VirtualMicrophone.h"

#include <atomic>
#include <iostream>
#include <pulse/def.h>

namespace lorvane {

namespace {

class PulseAudioEngineTest : public ::testing::Test {
 protected:
    void SetUp() override { connection.awaitReady(generously); }
    AudioEngine::Tap counting() {
        return [this](const InputBuffer& buffer) {
            ++buffers;
            frames += buffer.frames;
            longest = std::max<std::size_t>(longest, buffer.frames);
            channels = buffer.channels;
        };
    }
    bool started() {
        EXPECT_GT(engine.inputFormat().channels, 0U);
        const auto result = engine.start(4'096, counting());
        EXPECT_TRUE(result.has_value()) << (result ? "" : result.error().description.toStdString());
        return result.has_value();
    }
    bool hears() {
        const std::size_t before = frames;
        return waitUntil([&] { return frames > before; });
    }
    std::optional<AudioDeviceID> idOf(const QString& name) {
        for (const PulseSource& source : connection.inputs().sources) {
            if (source.name == name) {
                return source.index;
            }
        }
        return std::nullopt;
    }
    bool choose(const QString& name) {
        if (!waitUntil([&] { return idOf(name).has_value(); })) {
            return false;
        }
        return engine.selectInput(*idOf(name)).has_value();
    }
    static QString streams() { return pactl({"list", "short", "source-outputs"}); }
    // The remapped microphone is itself a stream of the server's.
    static qsizetype streamsOfPrograms() {
        return streams().split(u'\n').filter(QStringLiteral("float32")).size();
    }

    QtClock clock;
    PulseConnection connection{clock};
    PulseAudioEngine engine{connection};
    std::atomic<std::size_t> buffers{0};
    std::atomic<std::size_t> frames{0};
    std::atomic<std::size_t> longest{0};
    std::atomic<unsigned> channels{0};
};

TEST_F(PulseAudioEngineTest, CapturesFromTheDefaultInputInItsOwnFormat) {
    EXPECT_EQ(engine.inputFormat(), (InputFormat{48'000, 2}));
    ASSERT_TRUE(started());
    EXPECT_TRUE(hears());
    EXPECT_EQ(channels, 2U);
}

TEST_F(PulseAudioEngineTest, BuffersComeInTwentyMillisecondsOrLess) {
    ASSERT_TRUE(started());
    ASSERT_TRUE(waitUntil([&] { return frames > 48'000; }));
    const double average = static_cast<double>(frames) / static_cast<double>(buffers);
    EXPECT_LE(average, 48'000 * 0.020);
}

TEST_F(PulseAudioEngineTest, NothingIsHeardAfterTheStop) {
    ASSERT_TRUE(started());
    ASSERT_TRUE(hears());
    engine.stop();
    const std::size_t heard = frames;
    // A whole other capture goes by meanwhile.
    PulseAudioEngine other(connection);
    std::atomic<std::size_t> otherFrames{0};
    ASSERT_GT(other.inputFormat().channels, 0U);
    ASSERT_TRUE(other.start(4'096, [&](const InputBuffer& buffer) { otherFrames += buffer.frames; }));
    ASSERT_TRUE(waitUntil([&] { return otherFrames > 9'600; }));
    EXPECT_EQ(frames, heard);
}

TEST_F(PulseAudioEngineTest, NoStreamIsOpenAtRest) {
    EXPECT_EQ(streamsOfPrograms(), 0) << streams().toStdString();
    ASSERT_TRUE(started());
    EXPECT_TRUE(waitUntil([] { return streamsOfPrograms() == 1; })) << streams().toStdString();
    engine.stop();
    EXPECT_TRUE(waitUntil([] { return streamsOfPrograms() == 0; })) << streams().toStdString();
}

TEST_F(PulseAudioEngineTest, TheChosenDeviceIsHeardInItsOwnFormat) {
    const PulseModule sink({"module-null-sink", "sink_name=s44", "rate=44100", "channels=1"});
    const PulseModule source({"module-remap-source", "source_name=m44", "master=s44.monitor"});
    ASSERT_TRUE(choose(QStringLiteral("m44")));
    EXPECT_EQ(engine.inputFormat(), (InputFormat{44'100, 1}));
    ASSERT_TRUE(started());
    EXPECT_TRUE(hears());
    EXPECT_EQ(channels, 1U);
}

TEST_F(PulseAudioEngineTest, ADeviceThatIsNotThereCannotBeSelected) {
    const auto selected = engine.selectInput(4'000'000);
    ASSERT_FALSE(selected.has_value());
    EXPECT_EQ(selected.error(), QStringLiteral("No such entity"));
}

TEST_F(PulseAudioEngineTest, ASelectedDeviceThatWentAwayCountsAsNone) {
    {
        const PluggedMicrophone headset(QStringLiteral("usb_headset"), QStringLiteral("Headset"));
        ASSERT_TRUE(choose(QStringLiteral("usb_headset")));
    }
    ASSERT_TRUE(waitUntil([&] { return !idOf(QStringLiteral("usb_headset")); }));
    ASSERT_TRUE(started());
    EXPECT_TRUE(hears());
}

TEST_F(PulseAudioEngineTest, TellsWhenItsDeviceIsUnplugged) {
    std::optional<PluggedMicrophone> headset(std::in_place, QStringLiteral("usb_headset"),
                                             QStringLiteral("Headset"));
    ASSERT_TRUE(choose(QStringLiteral("usb_headset")));
    ASSERT_TRUE(started());
    ASSERT_TRUE(hears());
    int told = 0;
    const Handle observer = engine.subscribeConfigurationChange([&] { ++told; });
    headset.reset();
    ASSERT_TRUE(waitUntil([&] { return told > 0; }));
    EXPECT_FALSE(idOf(QStringLiteral("usb_headset"))) << "told before the list is true";
    ASSERT_TRUE(started());
    EXPECT_TRUE(hears());
}

TEST_F(PulseAudioEngineTest, TellsWhenTheServerMovesItToAnotherDevice) {
    const PulseModule rescue({"module-rescue-streams"});
    std::optional<PluggedMicrophone> headset(std::in_place, QStringLiteral("usb_headset"),
                                             QStringLiteral("Headset"));
    ASSERT_TRUE(choose(QStringLiteral("usb_headset")));
    ASSERT_TRUE(started());
    int told = 0;
    const Handle observer = engine.subscribeConfigurationChange([&] { ++told; });
    headset.reset();
    EXPECT_TRUE(waitUntil([&] { return told > 0; }));
}

TEST_F(PulseAudioEngineTest, TellsWhenAnotherDeviceBecomesTheDefault) {
    const PluggedMicrophone headset(QStringLiteral("usb_headset"), QStringLiteral("Headset"));
    ASSERT_TRUE(started());
    int told = 0;
    const Handle observer = engine.subscribeConfigurationChange([&] { ++told; });
    headset.makeDefault();
    EXPECT_TRUE(waitUntil([&] { return told > 0; }));
    sound::setDefaultSource(QStringLiteral("virtual_mic"));
}

TEST_F(PulseAudioEngineTest, WithoutAServerThereIsNoInputAndItIsBackWithTheServer) {
    ASSERT_TRUE(started());
    int told = 0;
    const Handle observer = engine.subscribeConfigurationChange([&] { ++told; });
    sound::stopServer();
    ASSERT_TRUE(waitUntil([&] { return connection.state() == PulseConnection::State::absent; }));
    PulseAudioEngine other(connection);
    EXPECT_EQ(other.inputFormat(), InputFormat());
    EXPECT_FALSE(other.start(4'096, counting()).has_value());
    EXPECT_EQ(told, 0) << "told before there is anything to open";
    sound::startServer();
    ASSERT_TRUE(waitUntil([&] { return told > 0; }));
    ASSERT_TRUE(started());
    EXPECT_TRUE(hears());
}

TEST_F(PulseAudioEngineTest, AStartRightAfterTheServersReturnNeedsNoSecondTry) {
    sound::stopServer();
    ASSERT_TRUE(waitUntil([&] { return connection.state() == PulseConnection::State::absent; }));
    // Long enough away that the connection looks for it only now and then.
    EXPECT_EQ(engine.inputFormat(), InputFormat());
    sound::startServer();
    EXPECT_EQ(engine.inputFormat(), (InputFormat{48'000, 2}));
}

TEST_F(PulseAudioEngineTest, AServerThatFreezesHoldsUpAStartForASecondAndAStopNotAtAll) {
    ASSERT_TRUE(started());
    ASSERT_TRUE(hears());
    PulseAudioEngine other(connection);
    const FrozenServer frozen;
    const Instant begin = clock.now();
    engine.stop();
    const Instant stopped = clock.now();
    EXPECT_GT(other.inputFormat().channels, 0U);
    const auto start = other.start(4'096, counting());
    const Instant failed = clock.now();
    other.stop();
    std::cout << "with a frozen server the stop took " << inSeconds(stopped - begin) * 1'000
              << " ms and the start that fails " << inSeconds(failed - stopped) * 1'000 << " ms\n";
    EXPECT_LE(stopped - begin, std::chrono::milliseconds(100));
    EXPECT_LE(failed - stopped, std::chrono::milliseconds(1'400));
    ASSERT_FALSE(start.has_value());
    EXPECT_EQ(start.error(), engineFailure(PA_ERR_TIMEOUT));
    frozen.thaw();
    const std::size_t before = frames;
    ASSERT_TRUE(started());
    EXPECT_TRUE(waitUntil([&] { return frames > before; }));
    engine.stop();
    EXPECT_TRUE(waitUntil([] { return streamsOfPrograms() == 0; })) << streams().toStdString();
}

TEST_F(PulseAudioEngineTest, AConnectionToAFrozenServerHoldsUpAStartForAThirdOfASecond) {
    const FrozenServer frozen;
    PulseConnection fresh(clock);
    PulseAudioEngine other(fresh);
    const Instant begin = clock.now();
    EXPECT_EQ(other.inputFormat(), InputFormat());
    const Duration took = clock.now() - begin;
    std::cout << "without a connection to a frozen server that took " << inSeconds(took) * 1'000 << " ms\n";
    EXPECT_LE(took, std::chrono::milliseconds(500));
    frozen.thaw();
    EXPECT_TRUE(waitUntil([&] { return other.inputFormat().channels > 0; }));
}

TEST_F(PulseAudioEngineTest, AServerThatRefusesUsIsDenied) {
    const PulseModule door(
        {"module-native-protocol-tcp", "port=4719", "listen=127.0.0.1", "auth-anonymous=0"});
    qputenv("PULSE_COOKIE", "/dev/zero");
    PulseConnection refused(clock, "tcp:127.0.0.1:4719");
    refused.awaitReady(generously);
    qunsetenv("PULSE_COOKIE");
    EXPECT_EQ(refused.state(), PulseConnection::State::forbidden);
    const PulseAudioEngineFactory engines(refused, [](const InputFormat&) { return nullptr; });
    EXPECT_EQ(engines.authorisation(), AudioAuthorisation::denied);
    const PulseAudioEngineFactory ours(connection, [](const InputFormat&) { return nullptr; });
    EXPECT_EQ(ours.authorisation(), AudioAuthorisation::authorised);
}

TEST(EngineFailure, OnlyARefusalIsForbidden) {
    EXPECT_EQ(engineFailure(PA_ERR_ACCESS), (EngineFailure{true, QStringLiteral("Access denied")}));
    EXPECT_EQ(engineFailure(PA_ERR_NOENTITY), (EngineFailure{false, QStringLiteral("No such entity")}));
}

} // namespace

} // namespace lorvane
