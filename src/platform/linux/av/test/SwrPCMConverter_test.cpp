// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/av/SwrPCMConverter.h"

#include "audio/testing/PCMConverterContract.h"

namespace lorvane {

namespace {

struct MakeSwr {
    std::unique_ptr<PCMConverter> operator()(const InputFormat& format) {
        return SwrPCMConverter::make(format);
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Swr, PCMConverterContract, MakeSwr);

TEST(SwrPCMConverter, IsNotMadeOfAFormatThatCannotBe) {
    EXPECT_EQ(SwrPCMConverter::make({0, 1}), nullptr);
    EXPECT_EQ(SwrPCMConverter::make({-48'000, 1}), nullptr);
    EXPECT_EQ(SwrPCMConverter::make({48'000, 0}), nullptr);
    EXPECT_EQ(SwrPCMConverter::make({48'000, 1'000}), nullptr);
}

TEST(SwrPCMConverter, WillNotReadABufferOfAnotherFormat) {
    const auto converter = SwrPCMConverter::make({48'000, 2});
    const std::vector<float> samples(480, 0.5F);
    EXPECT_EQ(converter->convert({samples.data(), 480, 1}, 200), std::nullopt);
    EXPECT_TRUE(converter->convert({samples.data(), 240, 2}, 200));
}

class SwrTone : public PCMConverterContract<MakeSwr> {};

TEST_F(SwrTone, HoldsBackAtMostTwoMilliseconds) {
    for (const double rate : {8'000.0, 44'100.0, 48'000.0}) {
        const auto pcm = convertTone({rate, 2}, 440, 0.5, 1.0, 441);
        EXPECT_GE(pcm.size(), 16'000U - 32U) << rate;
    }
}

TEST_F(SwrTone, WhatIsTooHighForTheRateIsGoneAndNotFoldedDown) {
    const auto pcm = convertTone({48'000.0, 1}, 12'000, 0.5, 1.0, 480);
    const auto loudest = std::max_element(pcm.begin() + 800, pcm.end());
    EXPECT_LT(*loudest, 33) << "more than 60 dB down";
}

TEST(SwrPCMConverter, MixesAllChannelsWithEqualWeight) {
    const auto converter = SwrPCMConverter::make({16'000, 4});
    std::vector<float> samples;
    for (int i = 0; i < 1'600; ++i) {
        samples.insert(samples.end(), {0.8F, 0.0F, 0.0F, 0.4F});
    }
    const auto pcm = converter->convert({samples.data(), 1'600, 4}, 1'664);
    ASSERT_TRUE(pcm);
    ASSERT_EQ(pcm->size(), 3'200);
    qint16 middle = 0;
    std::memcpy(&middle, pcm->constData() + 1'600, sizeof middle);
    EXPECT_NEAR(middle, 0.3 * 32'768, 2);
}

} // namespace

} // namespace lorvane
