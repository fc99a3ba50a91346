// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/AudioDecoder.h"
#include "testing/Sound.h"

#include <cmath>
#include <ctime>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;

namespace {

constexpr double bound = 60;

DecodedAudio decoded(const std::string& file) { return decodeAudio(file, bound, {}); }

double seconds(const DecodedAudio& audio) {
    const auto* samples = std::get_if<std::vector<std::int16_t>>(&audio);
    return samples ? static_cast<double>(samples->size()) / 16'000 : -1;
}

// Root mean square, of full scale.
double loudness(const DecodedAudio& audio) {
    const auto& samples = std::get<std::vector<std::int16_t>>(audio);
    double sum = 0;
    for (const auto sample : samples)
        sum += static_cast<double>(sample) * sample;
    return std::sqrt(sum / static_cast<double>(samples.size())) / 32768;
}

void expectTone(const DecodedAudio& audio, double length, double tolerance) {
    ASSERT_TRUE(std::holds_alternative<std::vector<std::int16_t>>(audio));
    EXPECT_NEAR(seconds(audio), length, tolerance);
    EXPECT_NEAR(loudness(audio), 0.3 / std::sqrt(2.0), 0.02);
}

const std::string& sample() {
    static const auto file = wavFile(tone(2.0, 0.3));
    return file;
}

double processorSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void putNumber(std::string& file, std::size_t at, std::uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i)
        file.at(at + i) = static_cast<char>(number >> (24 - 8 * i) & 0xffU);
}

// An M4A whose index says that it has `packets`, each of one byte; so many are there.
std::string bombOf(std::uint32_t packets, std::size_t there) {
    auto file = convertedByFfmpeg(sample(), "-c:a aac -b:a 32k -movflags +faststart", "m4a");
    const auto place = [&](const char* box) {
        const auto at = file.find(box);
        if (at == std::string::npos)
            throw std::runtime_error(box);
        return at + 8; // after its name, version and flags
    };
    file.replace(file.find("edts"), 4, "free"); // it would cut the sound to its true length
    putNumber(file, place("stsz"), 1);
    putNumber(file, place("stsz") + 4, packets);
    putNumber(file, place("stts") + 4, packets);
    putNumber(file, place("stsc") + 8, packets);
    return file.append(there, '\x21');
}

long mostKiB() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

TEST(AudioDecoder, AWavOfTheRightKindComesOutAsItIs) {
    const auto audio = decoded(sample());
    ASSERT_TRUE(std::holds_alternative<std::vector<std::int16_t>>(audio));
    EXPECT_EQ(std::get<std::vector<std::int16_t>>(audio), tone(2.0, 0.3));
}

TEST(AudioDecoder, AacInM4aIsRead) {
    expectTone(decoded(convertedByFfmpeg(sample(), "-c:a aac -b:a 32k", "m4a")), 2.0, 0.15);
}

TEST(AudioDecoder, FlacIsReadWithoutLoss) {
    const auto audio = decoded(convertedByFfmpeg(sample(), "-c:a flac", "flac"));
    ASSERT_TRUE(std::holds_alternative<std::vector<std::int16_t>>(audio));
    EXPECT_EQ(std::get<std::vector<std::int16_t>>(audio), tone(2.0, 0.3));
}

TEST(AudioDecoder, OtherRatesBecome16kHz) {
    expectTone(decoded(convertedByFfmpeg(sample(), "-ar 48000 -c:a pcm_s16le", "wav")), 2.0, 0.01);
    expectTone(decoded(convertedByFfmpeg(sample(), "-ar 44100 -c:a pcm_f32le", "wav")), 2.0, 0.01);
    expectTone(decoded(convertedByFfmpeg(sample(), "-ar 24000 -c:a flac -sample_fmt s32", "flac")), 2.0,
               0.01);
}

TEST(AudioDecoder, ChannelsAreMixedToOne) {
    std::vector<std::int16_t> stereo;
    for (const auto value : tone(2.0, 0.3))
        stereo.insert(stereo.end(), {value, value});
    const auto file = wavFile(stereo, 16'000, 2);
    expectTone(decoded(file), 2.0, 0.01);
    expectTone(decoded(convertedByFfmpeg(file, "-c:a aac -b:a 64k", "m4a")), 2.0, 0.15);
}

// A header may claim any rate; each of these would cost the resampler minutes or gigabytes.
TEST(AudioDecoder, ARateThatNoMicrophoneHasIsUnreadable) {
    for (const int rate : {1, 100, 1'000'000, 2'147'483'647}) {
        const auto audio = decoded(wavFile(tone(0.1, 0.3), rate));
        ASSERT_TRUE(std::holds_alternative<AudioError>(audio)) << rate;
        EXPECT_EQ(std::get<AudioError>(audio), AudioError::unreadable);
    }
}

TEST(AudioDecoder, NoBytesAreNoSamples) { EXPECT_EQ(seconds(decoded("")), 0); }

TEST(AudioDecoder, AFileWithoutAnySoundIsNoSamples) { EXPECT_EQ(seconds(decoded(wavFile({}))), 0); }

TEST(AudioDecoder, BytesThatAreNoAudioAreUnreadable) {
    for (const std::string& bytes : {std::string("hello"), std::string(100'000, 'x'), std::string(1, '\0'),
                                     std::string("RIFF"), std::string("fLaC"),
                                     std::string("\0\0\0\x20"
                                                 "ftypM4A ",
                                                 12)}) {
        const auto audio = decoded(bytes);
        ASSERT_TRUE(std::holds_alternative<AudioError>(audio)) << bytes.substr(0, 8);
        EXPECT_EQ(std::get<AudioError>(audio), AudioError::unreadable);
    }
}

TEST(AudioDecoder, AFormatThatNoTakeHasIsUnreadable) {
    EXPECT_EQ(seconds(decoded(convertedByFfmpeg(sample(), "-c:a libmp3lame", "mp3"))), -1);
    EXPECT_EQ(seconds(decoded("#EXTM3U\n#EXTINF:1,\n/etc/hostname\n")), -1);
    EXPECT_EQ(seconds(decoded("ffconcat version 1.0\nfile /etc/hostname\n")), -1);
}

TEST(AudioDecoder, AWavCutShortGivesTheSoundItHas) {
    const auto audio = decoded(sample().substr(0, 44 + 16'000));
    EXPECT_NEAR(seconds(audio), 0.5, 0.01);
}

TEST(AudioDecoder, SoundBeyondTheBoundIsTooLong) {
    const auto file = wavFile(tone(2.0, 0.3));
    EXPECT_TRUE(std::holds_alternative<std::vector<std::int16_t>>(decodeAudio(file, 2.0, {})));
    const auto audio = decodeAudio(file, 1.99, {});
    ASSERT_TRUE(std::holds_alternative<AudioError>(audio));
    EXPECT_EQ(std::get<AudioError>(audio), AudioError::tooLong);
}

// An hour of silence is some kilobytes of FLAC: the bound holds for what comes out, not for what comes in.
TEST(AudioDecoder, ASmallFileOfMuchSoundIsTooLong) {
    const auto file =
        convertedByFfmpeg(wavFile(std::vector<std::int16_t>(16'000 * 600, 0)), "-c:a flac", "flac");
    EXPECT_LT(file.size(), 200'000U);
    const auto audio = decoded(file);
    ASSERT_TRUE(std::holds_alternative<AudioError>(audio));
    EXPECT_EQ(std::get<AudioError>(audio), AudioError::tooLong);
}

TEST(AudioDecoder, AStopEndsIt) {
    std::stop_source stop;
    stop.request_stop();
    const auto audio = decodeAudio(wavFile(tone(30, 0.3)), bound, stop.get_token());
    ASSERT_TRUE(std::holds_alternative<AudioError>(audio));
    EXPECT_EQ(std::get<AudioError>(audio), AudioError::stopped);
}

// Damage must cost no more than the sound it hits: any answer is right, a crash or a hang is not.
TEST(AudioDecoder, DamagedFilesNeitherCrashNorHang) {
    const std::string files[] = {sample(), convertedByFfmpeg(sample(), "-c:a aac -b:a 32k", "m4a"),
                                 convertedByFfmpeg(sample(), "-c:a flac", "flac")};
    std::mt19937 random(3);
    int readable = 0;
    for (const auto& file : files)
        for (int round = 0; round < 150; ++round) {
            auto damaged = file;
            for (int k = 0; k < 1 + round % 20; ++k)
                damaged[random() % (round % 2 ? damaged.size() : 400)] = static_cast<char>(random());
            if (round % 5 == 0)
                damaged.resize(random() % damaged.size());
            readable += seconds(decoded(damaged)) >= 0 ? 1 : 0;
        }
    EXPECT_GT(readable, 50);
}

TEST(AudioDecoder, AFileThatKeepsTheProcessorBusyForNothingIsGivenUp) {
    const auto bomb = bombOf(2'500'000, 2'500'000);
    const auto began = processorSeconds();
    const auto audio = decoded(bomb);
    const auto took = processorSeconds() - began;
    std::printf("given up after %.2f s of processor time\n", took);
    ASSERT_TRUE(std::holds_alternative<AudioError>(audio));
    EXPECT_EQ(std::get<AudioError>(audio), AudioError::unreadable);
    EXPECT_GE(took, decodingTime);
    EXPECT_LT(took, 2 * decodingTime);
}

TEST(AudioDecoder, AnIndexOfBillionsTakesNeitherMemoryNorTime) {
    const auto bomb = bombOf(0x7fffffff, 4'000);
    const auto began = processorSeconds();
    const auto before = mostKiB();
    EXPECT_LT(seconds(decoded(bomb)), 1);
    EXPECT_LT(processorSeconds() - began, decodingTime);
    EXPECT_LT(mostKiB() - before, 128 * 1024);
}
