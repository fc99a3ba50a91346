// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <stop_token>
#include <string_view>
#include <variant>
#include <vector>

namespace lorvane::backend {

enum class AudioError { unreadable, tooLong, stopped };

using DecodedAudio = std::variant<std::vector<std::int16_t>, AudioError>;

// A whole M4A (AAC), FLAC or WAV file in memory to 16 kHz mono. The kind is told from the bytes, never from a
// name. No bytes at all decode to no samples. Reads nothing but `file`; holds at most `maxSeconds` of sound,
// whatever the file announces. A file cut short gives the sound it has.
DecodedAudio decodeAudio(std::string_view file, double maxSeconds, const std::stop_token& stop);

} // namespace lorvane::backend
