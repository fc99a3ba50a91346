// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/ByteBudget.h"

#include <cstdint>
#include <stop_token>
#include <string_view>
#include <variant>
#include <vector>

namespace lorvane::backend {

enum class AudioError { unreadable, tooLong, stopped, noMemory };

using DecodedAudio = std::variant<std::vector<std::int16_t>, AudioError>;

// A whole M4A (AAC), FLAC or WAV file in memory to 16 kHz mono. The kind is told from the bytes, never from a
// name. No bytes at all decode to no samples. Reads nothing but `file`; holds at most `maxSeconds` of sound,
// whatever the file announces. A file cut short gives the sound it has. One that keeps the processor busy
// without giving sound for it (see decodingTime) is unreadable. Processor time that a file may take before
// its first sample, and after that for each second of sound that it has given. Real ones take a hundredth of
// it.
inline constexpr double decodingTime = 2.0;
inline constexpr double decodingTimeOfASecond = 0.1;

// The samples are taken out of `memory` as they come, unless it is null; noMemory when it has no more.
DecodedAudio decodeAudio(std::string_view file, double maxSeconds, const std::stop_token& stop,
                         ByteBudget::Share* memory = nullptr);

} // namespace lorvane::backend
