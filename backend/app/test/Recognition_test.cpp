// SPDX-License-Identifier: GPL-3.0-or-later
// The real recogniser on recordings of people, through the whole service.
#include "engines/PocketsphinxEngine.h"
#include "testing/BackendUnderTest.h"
#include "testing/ServerUnderTest.h"
#include "testing/Sound.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <sstream>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;

namespace {

const std::filesystem::path recordings = "/usr/share/pocketsphinx/test/data";
constexpr const char* models = "/usr/share/pocketsphinx/model/en-us";

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}

// Words to change, add or leave out, at least, to make the one of the other.
std::size_t wordErrors(const std::vector<std::string>& said, const std::vector<std::string>& heard) {
    std::vector<std::size_t> row(heard.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 0; i < said.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t k = 0; k < heard.size(); ++k) {
            const auto change = diagonal + (said[i] == heard[k] ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({change, row[k] + 1, diagonal + 1});
        }
    }
    return row.back();
}

struct Recording {
    std::filesystem::path file;
    std::string said;
};

// Lines of "<s> words </s> (name)".
std::vector<Recording> readings() {
    std::istringstream in(readFile(recordings / "librivox/transcription"));
    std::vector<Recording> all;
    for (std::string line; std::getline(in, line);) {
        const auto begin = line.find("<s> ");
        const auto end = line.find(" </s> (");
        if (begin == std::string::npos || end == std::string::npos)
            continue;
        const auto name = line.substr(end + 7, line.rfind(')') - end - 7);
        all.push_back({recordings / "librivox" / (name + ".wav"), line.substr(begin + 4, end - begin - 4)});
    }
    return all;
}

std::string rawRecording(const std::string& name) {
    const auto bytes = readFile(recordings / name);
    std::vector<std::int16_t> samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
    return wavFile(samples);
}

} // namespace

class RecognitionTest : public ::testing::Test {
 protected:
    BackendUnderTest backend_{std::make_unique<PocketsphinxEngine>(models, 2)};
    std::string token_ = backend_.registerDevice();

    std::string dictated(const std::string& audio, const std::string& member_ = "text",
                         const std::string& token = {}) {
        const auto reply =
            request(backend_.port(), backend_.take("dictate", token.empty() ? token_ : token, audio));
        EXPECT_EQ(reply.status, 200) << reply.body;
        return member(reply.body, member_);
    }
};

TEST(WordErrors, AreCounted) {
    EXPECT_EQ(wordErrors({"a", "b", "c"}, {"a", "b", "c"}), 0U);
    EXPECT_EQ(wordErrors({"a", "b", "c"}, {"a", "x", "c"}), 1U);
    EXPECT_EQ(wordErrors({"a", "b", "c"}, {"b", "c", "d"}), 2U);
    EXPECT_EQ(wordErrors({}, {"a"}), 1U);
    EXPECT_EQ(wordErrors({"a", "b"}, {}), 2U);
}

TEST_F(RecognitionTest, AShortCommandIsHeardInEveryFormat) {
    const auto wav = rawRecording("goforward.raw");
    EXPECT_EQ(dictated(wav), "Go forward 10 meters.");
    EXPECT_EQ(dictated(convertedByFfmpeg(wav, "-c:a flac", "flac")), "Go forward 10 meters.");
    EXPECT_EQ(dictated(convertedByFfmpeg(wav, "-c:a aac -b:a 48k", "m4a")), "Go forward 10 meters.");
}

// The bound is the measured rate and a margin for other builds of the libraries; it is far from what a user
// of a good recogniser expects.
TEST_F(RecognitionTest, ReadAloudProseIsHeardWithinTheBound) {
    const auto all = readings();
    ASSERT_EQ(all.size(), 5U);
    std::size_t errors = 0;
    std::size_t words = 0;
    for (const auto& recording : all) {
        const auto said = wordsOf(recording.said);
        const auto heard = dictated(readFile(recording.file), "raw");
        errors += wordErrors(said, wordsOf(heard));
        words += said.size();
        std::printf("said:  %s\nheard: %s\n", recording.said.c_str(), heard.c_str());
    }
    const double rate = 100.0 * static_cast<double>(errors) / static_cast<double>(words);
    std::printf("word error rate %.1f %% (%zu of %zu words)\n", rate, errors, words);
    EXPECT_EQ(words, 71U);
    EXPECT_LE(rate, 35.0);
}

TEST_F(RecognitionTest, SegmentsOfALongTakeAreStreamedOneByOne) {
    const std::string silence(16'000 * 2, '\0'); // a second
    std::string together;
    for (const auto& recording : readings())
        together += readFile(recording.file).substr(44) + silence;
    std::vector<std::int16_t> samples(together.size() / 2);
    std::memcpy(samples.data(), together.data(), samples.size() * 2);
    Connection connection(backend_.port());
    connection.send(requestText(backend_.take("dictate-stream", token_, wavFile(samples))));
    ASSERT_EQ(connection.readHead().status, 200);
    const auto began = std::chrono::steady_clock::now();
    std::chrono::duration<double> first{};
    std::string body;
    while (const auto line = connection.readLine()) {
        if (body.empty())
            first = std::chrono::steady_clock::now() - began;
        body += *line + '\n';
    }
    const std::chrono::duration<double> all = std::chrono::steady_clock::now() - began;
    const auto stream = readStream(body);
    EXPECT_GE(stream.deltas.size(), 5U);
    EXPECT_EQ(std::accumulate(stream.deltas.begin(), stream.deltas.end(), std::string()), stream.done);
    EXPECT_LT(first.count(), all.count() / 2) << "the first text comes while the rest is worked on";
    std::printf("%zu deltas, first after %.2f s, all after %.2f s of %.1f s of sound\n", stream.deltas.size(),
                first.count(), all.count(), static_cast<double>(samples.size()) / 16'000);
}

TEST_F(RecognitionTest, TheSameTakeIsHeardTheSameForANewDevice) {
    const auto audio = readFile(readings().front().file);
    EXPECT_EQ(dictated(audio, "raw", backend_.registerDevice(deviceOne)),
              dictated(audio, "raw", backend_.registerDevice(deviceTwo)));
}

TEST_F(RecognitionTest, SilenceIsNoSpeech) {
    const auto reply = request(backend_.port(),
                               backend_.take("dictate", token_, wavFile(std::vector<std::int16_t>(48'000))));
    EXPECT_EQ(reply.status, 422);
    const auto tooShort = request(backend_.port(), backend_.take("dictate", token_, wavFile(tone(0.1, 0.3))));
    EXPECT_EQ(tooShort.status, 422);
}

TEST_F(RecognitionTest, TakesAtOnceGiveWhatTheyGiveAlone) {
    const auto audio = rawRecording("goforward.raw");
    std::vector<std::string> texts(4);
    std::vector<std::thread> threads;
    threads.reserve(texts.size());
    for (auto& text : texts)
        threads.emplace_back([&] { text = dictated(audio); });
    for (auto& thread : threads)
        thread.join();
    for (const auto& text : texts)
        EXPECT_EQ(text, "Go forward 10 meters.");
}

TEST_F(RecognitionTest, ADisconnectStopsTheRecogniser) {
    // A minute of speech takes many seconds to recognise.
    std::string together;
    while (together.size() < 16'000 * 2 * 60)
        together += readFile(readings().front().file).substr(44);
    std::vector<std::int16_t> samples(together.size() / 2);
    std::memcpy(samples.data(), together.data(), samples.size() * 2);
    {
        Connection connection(backend_.port());
        connection.send(requestText(backend_.take("dictate-stream", token_, wavFile(samples))));
        ASSERT_EQ(connection.readHead().status, 200);
        ASSERT_TRUE(connection.readLine()) << "in the middle: one segment is done, the next ones wait";
    }
    const auto began = std::chrono::steady_clock::now();
    EXPECT_TRUE(eventually([&] { return backend_.backend().busy() == 0; }));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
    std::printf("the worker was free %.2f s after the client left\n", took.count());
    EXPECT_LT(took.count(), 3.0);
}

TEST(RecognitionWithoutModels, IsAServerErrorAndNoCrash) {
    BackendUnderTest backend(std::make_unique<PocketsphinxEngine>("/nonexistent", 1));
    const auto token = backend.registerDevice();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(request(backend.port(), backend.take("dictate", token, wavFile(tone(1, 0.3)))).status, 500);
}
