// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/CaptureTap.h"
#include "base/testing/VirtualClock.h"

#include <gtest/gtest.h>

#include <cmath>

namespace lorvane {

namespace {

// Gives what a test put down, and notes what it was asked.
class StatedConverter final : public PCMConverter {
 public:
    struct Stated {
        std::optional<QByteArray> result;
        std::vector<std::size_t> capacities;
    };
    explicit StatedConverter(Stated& stated) : stated_(stated) {}
    std::optional<QByteArray> convert(const InputBuffer&, std::size_t capacity) override {
        stated_.capacities.push_back(capacity);
        return stated_.result;
    }

 private:
    Stated& stated_;
};

double levelOfConstant(float value, unsigned channels = 1) {
    const std::vector<float> samples(480U * channels, value);
    return levelOf({samples.data(), 480, channels});
}

TEST(LevelOf, SilenceIsZero) { EXPECT_EQ(levelOfConstant(0.0F), 0.0); }

TEST(LevelOf, IsTheRootMeanSquareTimesEighteen) {
    EXPECT_NEAR(levelOfConstant(0.02F), 0.36, 1e-6);
    EXPECT_NEAR(levelOfConstant(-0.02F), 0.36, 1e-6);
    std::vector<float> sine(48'000);
    for (std::size_t i = 0; i < sine.size(); ++i) {
        sine[i] = 0.03F * static_cast<float>(std::sin(static_cast<double>(i) * 0.05));
    }
    EXPECT_NEAR(levelOf({sine.data(), sine.size(), 1}), 0.03 / std::sqrt(2.0) * 18.0, 1e-3);
}

TEST(LevelOf, AnEighteenthOrMoreIsFull) {
    EXPECT_NEAR(levelOfConstant(1.0F / 18.0F), 1.0, 1e-6);
    EXPECT_EQ(levelOfConstant(0.06F), 1.0);
    EXPECT_EQ(levelOfConstant(1.0F), 1.0);
}

TEST(LevelOf, HearsTheFirstChannelAlone) {
    const std::vector<float> leftSilent{0.0F, 0.9F, 0.0F, 0.9F};
    const std::vector<float> leftLoud{0.02F, 0.0F, 0.02F, 0.0F};
    EXPECT_EQ(levelOf({leftSilent.data(), 2, 2}), 0.0);
    EXPECT_NEAR(levelOf({leftLoud.data(), 2, 2}), 0.36, 1e-6);
}

TEST(LevelOf, NoFramesAreSilence) {
    const float sample = 1.0F;
    EXPECT_EQ(levelOf({&sample, 0, 1}), 0.0);
    EXPECT_EQ(levelOf({nullptr, 10, 1}), 0.0);
}

class CaptureTapTest : public ::testing::Test {
 protected:
    void hear(const InputFormat& format, std::size_t frames, float value = 0.02F) {
        CaptureTap tap(format, std::make_unique<StatedConverter>(stated), sink);
        const std::vector<float> samples(frames * format.channels, value);
        tap({samples.data(), frames, format.channels});
    }
    VirtualClock clock;
    PCMSink sink{clock};
    StatedConverter::Stated stated{QByteArray("pcm!"), {}};
};

TEST_F(CaptureTapTest, AsksForTheConvertedLengthCutToAWholeNumberAndSixtyFourFrames) {
    hear({48'000.0, 1}, 4096); // 1365.33
    hear({44'100.0, 2}, 441);  // 160
    hear({16'000.0, 1}, 320);
    hear({8'000.0, 1}, 80);
    EXPECT_EQ(stated.capacities, (std::vector<std::size_t>{1365 + 64, 160 + 64, 320 + 64, 160 + 64}));
}

TEST_F(CaptureTapTest, PutsPcmAndTheInputsLevelIntoTheSink) {
    hear({48'000.0, 1}, 480);
    EXPECT_NEAR(sink.lastLevel(), 0.36, 1e-6);
    EXPECT_EQ(sink.drain(), "pcm!");
}

TEST_F(CaptureTapTest, DropsABufferThatCannotBeConverted) {
    hear({48'000.0, 1}, 480);
    const double before = sink.lastLevel();
    stated.result = std::nullopt;
    hear({48'000.0, 1}, 480, 0.9F);
    stated.result = QByteArray();
    hear({48'000.0, 1}, 480, 0.9F);
    EXPECT_EQ(sink.lastLevel(), before);
    EXPECT_EQ(sink.levelCount(), 1U);
    EXPECT_EQ(sink.drain(), "pcm!");
}

} // namespace

} // namespace lorvane
