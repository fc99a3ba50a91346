// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lorvane::backend::testing {

// A WAV file of 16-bit samples.
std::string wavFile(const std::vector<std::int16_t>& samples, int rate = 16'000, int channels = 1);

// Each second a tone of that loudness (0 to 1 of full scale).
std::vector<std::int16_t> tone(double seconds, double loudness, double frequency = 440, int rate = 16'000);

// The file as ffmpeg writes it with these options, such as "-c:a aac -b:a 32k"; throws when ffmpeg fails.
std::string convertedByFfmpeg(const std::string& wav, const std::string& options, const std::string& ext);

} // namespace lorvane::backend::testing
