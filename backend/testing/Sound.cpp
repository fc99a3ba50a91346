// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/Sound.h"

#include "testing/TemporaryFolder.h"

#include <cmath>
#include <numbers>

namespace lorvane::backend::testing {

namespace {

void putNumber(std::string& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>(value >> (8 * i) & 0xffU);
}

} // namespace

std::string wavFile(const std::vector<std::int16_t>& samples, int rate, int channels) {
    const auto size = static_cast<std::uint32_t>(samples.size() * 2);
    const auto channelCount = static_cast<std::uint32_t>(channels);
    const auto byteRate = static_cast<std::uint32_t>(rate) * channelCount * 2;
    std::string out = "RIFF";
    putNumber(out, 36 + size, 4);
    out += "WAVEfmt ";
    putNumber(out, 16, 4);
    putNumber(out, 1, 2);
    putNumber(out, channelCount, 2);
    putNumber(out, static_cast<std::uint32_t>(rate), 4);
    putNumber(out, byteRate, 4);
    putNumber(out, channelCount * 2, 2);
    putNumber(out, 16, 2);
    out += "data";
    putNumber(out, size, 4);
    for (const auto sample : samples)
        putNumber(out, static_cast<std::uint16_t>(sample), 2);
    return out;
}

std::vector<std::int16_t> tone(double seconds, double loudness, double frequency, int rate) {
    std::vector<std::int16_t> samples(static_cast<std::size_t>(seconds * rate));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(
            32767 * loudness * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i) / rate));
    return samples;
}

std::string convertedByFfmpeg(const std::string& wav, const std::string& options, const std::string& ext) {
    const TemporaryFolder folder;
    const auto from = folder / "in.wav";
    const auto to = folder / ("out." + ext);
    std::ofstream(from, std::ios::binary) << wav;
    const auto command =
        "ffmpeg -nostdin -loglevel error -y -i " + from.string() + ' ' + options + ' ' + to.string();
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("ffmpeg failed: " + command);
    return readFile(to);
}

} // namespace lorvane::backend::testing
