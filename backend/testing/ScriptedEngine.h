// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engines/Engine.h"

#include <atomic>
#include <functional>
#include <set>
#include <utility>
#include <vector>

namespace lorvane::backend::testing {

// Says the segments it was given, whatever the audio is. `beforeSegment` may block, and throw.
class ScriptedEngine : public Engine {
 public:
    // What happens to the engine, for the test to see after the backend has taken it.
    struct Record {
        std::atomic<int> runs = 0;
        std::atomic<int> segments = 0;
        std::atomic<int> stopped = 0;
        std::function<void(std::size_t index, const std::stop_token& stop)> beforeSegment;
        std::string lastAdaptation;
        std::string lastContext;
        std::chrono::milliseconds pause{0}; // before each segment
        bool sentences = false;             // whether it says that it writes sentences
        std::set<std::size_t> written;      // the segments that are sentences all the same
    };

    ScriptedEngine(std::vector<std::string> segments, Record& record)
        : segments_(std::move(segments)), record_(record) {}

    std::string_view name() const override { return "scripted"; }
    bool speaks(std::string_view language) const override { return language != "ru"; }
    bool mayBePlain(std::string_view) const override { return !record_.sentences; }
    void warmUp() override {}
    Recognition recognise(const RecognitionJob& job, const OnSegment& onSegment,
                          std::stop_token stop) override {
        ++record_.runs;
        record_.lastAdaptation = job.adaptation;
        record_.lastContext = std::string(job.context);
        for (std::size_t i = job.segmentsKnown; i < segments_.size(); ++i) {
            if (record_.beforeSegment)
                record_.beforeSegment(i, stop);
            if (stop.stop_requested()) {
                ++record_.stopped;
                return {Recognition::End::stopped, {}, {}};
            }
            ++record_.segments;
            onSegment({segments_[i], record_.pause, !record_.sentences && !record_.written.contains(i)});
        }
        return {segments_.empty() ? Recognition::End::noSpeech : Recognition::End::complete, "learnt", {}};
    }

 private:
    const std::vector<std::string> segments_;
    Record& record_;
};

} // namespace lorvane::backend::testing
