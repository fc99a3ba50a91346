// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engines/Engine.h"

#include <chrono>
#include <vector>

namespace lorvane::backend {

struct SpeechSegment {
    std::size_t begin = 0; // samples
    std::size_t end = 0;
    std::chrono::milliseconds pause{0}; // the silence that it begins in; none where a cut had to be made
};

// Where speech may be cut without cutting a word: in the middle of each pause of at least half a second. A
// stretch of more than 20 s without such a pause is cut at its quietest place between the 15th and the 20th
// second, which bounds the work that cannot be interrupted. The segments follow each other without a gap and
// together are all of the sound; the same sound always gives the same segments.
std::vector<SpeechSegment> cutAtPauses(Samples samples);

// How much of the sound is louder than the room; 0 when all of it is too quiet for a voice. Steady noise
// counts as speech: it only tells silence.
double speechSeconds(Samples samples);

} // namespace lorvane::backend
