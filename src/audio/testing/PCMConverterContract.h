// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/AudioEngine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace lorvane {

/// What every converter keeps. `Maker` is default constructible and turns an InputFormat into a converter.
template <typename Maker>
class PCMConverterContract : public ::testing::Test {
 protected:
    // Feeds `seconds` of a tone in buffers of `frames`, with the capacity that the recorder asks for.
    std::vector<qint16> convertTone(const InputFormat& format, double hertz, double amplitude, double seconds,
                                    std::size_t frames) {
        const auto converter = Maker()(format);
        std::vector<qint16> pcm;
        std::size_t time = 0;
        const auto total = static_cast<std::size_t>(format.sampleRate * seconds);
        while (time < total) {
            const std::size_t count = std::min(frames, total - time);
            std::vector<float> samples;
            for (std::size_t end = time + count; time < end; ++time) {
                const double angle = 2 * M_PI * hertz * static_cast<double>(time) / format.sampleRate;
                samples.insert(samples.end(), format.channels,
                               static_cast<float>(amplitude * std::sin(angle)));
            }
            const auto capacity =
                static_cast<std::size_t>(16'000.0 / format.sampleRate * static_cast<double>(count)) + 64;
            const auto part = converter->convert({samples.data(), count, format.channels}, capacity);
            EXPECT_TRUE(part.has_value());
            EXPECT_LE(part->size(), static_cast<qsizetype>(capacity * 2));
            const std::size_t before = pcm.size();
            pcm.resize(before + static_cast<std::size_t>(part->size()) / 2);
            std::memcpy(pcm.data() + before, part->constData(), static_cast<std::size_t>(part->size()));
        }
        return pcm;
    }
    static int crossings(const std::vector<qint16>& pcm) {
        int count = 0;
        for (std::size_t i = 1; i < pcm.size(); ++i) {
            count += (pcm[i - 1] < 0) != (pcm[i] < 0) ? 1 : 0;
        }
        return count;
    }
};
TYPED_TEST_SUITE_P(PCMConverterContract);

TYPED_TEST_P(PCMConverterContract, KeepsDurationAndPitchFromEveryRate) {
    for (const double rate : {8'000.0, 16'000.0, 22'050.0, 44'100.0, 48'000.0, 96'000.0, 192'000.0}) {
        for (const unsigned channels : {1U, 2U, 4U}) {
            const auto pcm = this->convertTone({rate, channels}, 440, 0.5, 2.0, 441);
            EXPECT_NEAR(static_cast<double>(pcm.size()), 32'000, 64) << rate << " Hz, " << channels;
            EXPECT_NEAR(this->crossings(pcm), 1'760, 6) << rate << " Hz, " << channels;
        }
    }
}

TYPED_TEST_P(PCMConverterContract, GivesTheSameWhateverTheLengthOfTheBuffers) {
    const InputFormat format{44'100.0, 2};
    const auto whole = this->convertTone(format, 440, 0.5, 1.0, 44'100);
    for (const std::size_t frames : {100U, 441U, 4'096U}) {
        const auto parts = this->convertTone(format, 440, 0.5, 1.0, frames);
        const std::size_t common = std::min(whole.size(), parts.size());
        ASSERT_GT(common, 15'900U);
        for (std::size_t i = 0; i < common; ++i) {
            ASSERT_NEAR(whole[i], parts[i], 2) << "sample " << i << " in buffers of " << frames;
        }
    }
}

TYPED_TEST_P(PCMConverterContract, KeepsTheLoudness) {
    const auto pcm = this->convertTone({48'000.0, 2}, 440, 0.5, 1.0, 480);
    double sum = 0;
    for (const qint16 sample : pcm) {
        sum += static_cast<double>(sample) * sample;
    }
    const double rms = std::sqrt(sum / static_cast<double>(pcm.size())) / 32'768.0;
    EXPECT_NEAR(rms, 0.5 / std::sqrt(2.0), 0.01);
}

TYPED_TEST_P(PCMConverterContract, ClipsWhatIsTooLoud) {
    const auto pcm = this->convertTone({16'000.0, 1}, 100, 4.0, 0.5, 160);
    EXPECT_EQ(*std::max_element(pcm.begin(), pcm.end()), 32'767);
    EXPECT_LE(*std::min_element(pcm.begin(), pcm.end()), -32'767);
}

REGISTER_TYPED_TEST_SUITE_P(PCMConverterContract, KeepsDurationAndPitchFromEveryRate,
                            GivesTheSameWhateverTheLengthOfTheBuffers, KeepsTheLoudness, ClipsWhatIsTooLoud);

} // namespace lorvane
