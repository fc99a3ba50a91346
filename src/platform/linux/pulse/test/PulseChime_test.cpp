// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseChime.h"

#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/pulse/PulseAudioEngine.h"
#include "platform/linux/pulse/test/PulseServer.h"
#include "support/VirtualMicrophone.h"

#include <atomic>

namespace lorvane {

namespace {

QString playing() { return pactl({"list", "short", "sink-inputs"}); }

class PulseChimeTest : public ::testing::Test {
 protected:
    void SetUp() override { connection.awaitReady(generously); }
    QtClock clock;
    PulseConnection connection{clock};
    PulseChime chime{connection};
};

TEST_F(PulseChimeTest, IsHeardInTheDefaultOutputAndLeavesNothingBehind) {
    PulseAudioEngine microphone(connection);
    std::atomic<float> loudest{0.0F};
    std::atomic<std::size_t> frames{0};
    ASSERT_GT(microphone.inputFormat().channels, 0U);
    ASSERT_TRUE(microphone.start(4'096, [&](const InputBuffer& buffer) {
        for (std::size_t i = 0; i < buffer.frames * buffer.channels; ++i) {
            loudest = std::max(loudest.load(), buffer.samples[i]);
        }
        frames += buffer.frames;
    }));
    ASSERT_TRUE(waitUntil([&] { return frames > 0; }));
    chime.play();
    EXPECT_TRUE(waitUntil([&] { return loudest > 0.05F; })) << loudest;
    EXPECT_TRUE(waitUntil([] { return playing().isEmpty(); })) << playing().toStdString();
    EXPECT_LT(loudest, 0.25F);
}

TEST_F(PulseChimeTest, SeveralAtOnceEndByThemselves) {
    for (int i = 0; i < 5; ++i) {
        chime.play();
    }
    EXPECT_TRUE(waitUntil([] { return !playing().isEmpty(); }));
    EXPECT_TRUE(waitUntil([] { return playing().isEmpty(); })) << playing().toStdString();
}

TEST_F(PulseChimeTest, EndsWithItsOwner) {
    auto brief = std::make_unique<PulseChime>(connection);
    brief->play();
    brief.reset();
    EXPECT_TRUE(waitUntil([] { return playing().isEmpty(); })) << playing().toStdString();
}

TEST_F(PulseChimeTest, IsSilentWithoutAServer) {
    sound::stopServer();
    ASSERT_TRUE(waitUntil([&] { return connection.state() == PulseConnection::State::absent; }));
    chime.play();
    sound::startServer();
    connection.awaitReady(generously);
    EXPECT_EQ(playing(), QString());
    chime.play();
    EXPECT_TRUE(waitUntil([] { return !playing().isEmpty(); }));
}

} // namespace

} // namespace lorvane
