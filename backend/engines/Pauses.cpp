// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/Pauses.h"

#include <algorithm>
#include <cmath>

namespace lorvane::backend {

namespace {

constexpr std::size_t frame = sampleRate / 100; // 10 ms
constexpr std::size_t pauseFrames = 50;
constexpr std::size_t longestFrames = 2000;
constexpr std::size_t earliestForcedCut = 1500;
constexpr float speechAboveNoise = 9.0F; // dB
constexpr float speechBelowPeak = 40.0F; // dB
constexpr float quietest = -70.0F;       // dB of full scale
constexpr float quietestVoice = -50.0F;  // likewise

std::vector<float> frameLevels(Samples samples) {
    std::vector<float> levels;
    levels.reserve(samples.size() / frame);
    for (std::size_t at = 0; at + frame <= samples.size(); at += frame) {
        double energy = 0;
        for (const auto sample : samples.subspan(at, frame))
            energy += static_cast<double>(sample) * sample;
        const double power = energy / frame / (32768.0 * 32768.0);
        levels.push_back(std::max(quietest, static_cast<float>(10.0 * std::log10(power + 1e-12))));
    }
    return levels;
}

float levelAt(std::vector<float> levels, double share) {
    const auto index = static_cast<std::ptrdiff_t>(share * static_cast<double>(levels.size() - 1));
    std::nth_element(levels.begin(), levels.begin() + index, levels.end());
    return levels[static_cast<std::size_t>(index)];
}

// Above this a frame is speech: clear of the room's noise, yet never so high that a quiet word counts as a
// pause.
float speechBound(const std::vector<float>& levels) {
    const float noise = levelAt(levels, 0.10);
    const float peak = levelAt(levels, 0.98);
    return std::max(std::min(noise + speechAboveNoise, peak - 12.0F), peak - speechBelowPeak);
}

std::size_t quietestFrame(const std::vector<float>& levels, std::size_t from, std::size_t to) {
    constexpr std::size_t width = 10;
    std::size_t best = from;
    float lowest = 1e9F;
    for (std::size_t at = from; at + width <= to; ++at) {
        float sum = 0;
        for (std::size_t k = 0; k < width; ++k)
            sum += levels[at + k];
        if (sum < lowest) {
            lowest = sum;
            best = at + width / 2;
        }
    }
    return best;
}

struct Cut {
    std::size_t at = 0;
    std::size_t pause = 0;
};

// The frames to cut at: the middles of pauses that have speech on both sides.
std::vector<Cut> pauseCuts(const std::vector<float>& levels) {
    std::vector<Cut> cuts;
    const float bound = speechBound(levels);
    std::size_t quietSince = 0;
    bool heard = false;
    for (std::size_t at = 0; at < levels.size(); ++at) {
        if (levels[at] <= bound)
            continue;
        if (heard && at - quietSince >= pauseFrames)
            cuts.push_back({quietSince + (at - quietSince) / 2, at - quietSince});
        heard = true;
        quietSince = at + 1;
    }
    return cuts;
}

} // namespace

std::vector<SpeechSegment> cutAtPauses(Samples samples) {
    if (samples.size() < frame)
        return samples.empty() ? std::vector<SpeechSegment>{}
                               : std::vector<SpeechSegment>{{0, samples.size(), {}}};
    const auto levels = frameLevels(samples);
    auto cuts = pauseCuts(levels);
    cuts.push_back({levels.size(), 0});
    std::vector<SpeechSegment> segments;
    std::size_t begin = 0;
    std::size_t pause = 0;
    const auto add = [&](std::size_t end, std::size_t pauseAfter) {
        segments.push_back({begin * frame, end * frame, std::chrono::milliseconds(pause * 10)});
        begin = end;
        pause = pauseAfter;
    };
    for (const auto& cut : cuts) {
        while (cut.at - begin > longestFrames)
            add(quietestFrame(levels, begin + earliestForcedCut, begin + longestFrames), 0);
        add(cut.at, cut.pause);
    }
    if (!segments.empty())
        segments.back().end = samples.size(); // with the last part of a frame
    return segments;
}

double speechSeconds(Samples samples) {
    if (samples.size() < frame)
        return 0;
    const auto levels = frameLevels(samples);
    const float bound = std::max(speechBound(levels), quietestVoice);
    const auto loud = std::count_if(levels.begin(), levels.end(), [&](float level) { return level > bound; });
    return static_cast<double>(loud) * frame / sampleRate;
}

} // namespace lorvane::backend
